// A dock of the window.
#pragma once

#include <QDockWidget>

// Shares the icons of its title bar with all docks of its style. The toolkit makes new ones for each dock, and never
// forgets the key under which it once kept an icon's picture: over half a kilobyte for each window ever opened.
class CQBudgetDock final : public QDockWidget
{
	Q_OBJECT

public:
	using QDockWidget::QDockWidget;

protected:
	bool event( QEvent *pEvent ) override;
};
