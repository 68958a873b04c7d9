// The player of profiling recordings.
#pragma once

#include <QWidget>

class CQKestoPlayerWidget : public QWidget
{
	Q_OBJECT

public:
	explicit CQKestoPlayerWidget( QWidget *pParent );
};
