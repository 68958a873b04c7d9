// The search field of the mini-profiler.
#pragma once

#include <QLineEdit>

class CQMiniProfilerSearchEdit final : public QLineEdit
{
	Q_OBJECT

public:
	explicit CQMiniProfilerSearchEdit( QWidget *pParent );

signals:
	void StepRequested( bool bForward ); // Return, or Shift+Return for back

protected:
	// Esc empties the field, which counts as an edit of the user's.
	void keyPressEvent( QKeyEvent *pEvent ) override;
};
