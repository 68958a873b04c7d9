// The player of profiling recordings.
#pragma once

#include <QWidget>

// Says plainly that no recording can be opened yet.
class CQKestoPlayerWidget final : public QWidget
{
	Q_OBJECT

public:
	explicit CQKestoPlayerWidget( QWidget *pParent );
};
