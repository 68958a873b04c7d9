// The mini-profiler panel of the Show Budget window.
#pragma once

#include <QColor>
#include <QString>
#include <QWidget>

class CQMiniProfilerWidget : public QWidget
{
	Q_OBJECT

public:
	explicit CQMiniProfilerWidget( QWidget *pParent );

signals:
	void OnPauseStateChanged( bool bPaused );
};
