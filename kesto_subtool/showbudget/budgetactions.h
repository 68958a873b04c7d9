// The actions of the Show Budget window and the places where they stand.
#pragma once

#include "showbudget/budgetoptions.h"

class QAction;
class QMenu;
class QToolBar;
class QWidget;

// The actions belong to the window, the toggles to their docks.
struct BudgetActions
{
	QAction *m_pFPSUnits = nullptr;
	QAction *m_pShowAverages = nullptr;
	QAction *m_pFPSThresholds = nullptr;
	QAction *m_pFPSAverages = nullptr;
	QAction *m_pClearSamples = nullptr;
	QAction *m_pStartSampling = nullptr;
	QAction *m_pStopSampling = nullptr;
	QAction *m_pTickSampling = nullptr;
	QAction *m_pMicroprofiler = nullptr;
	QAction *m_pHistoryToggle = nullptr;
	QAction *m_pPlayerToggle = nullptr;

	// Makes all but the two toggles, which the docks have already.
	static BudgetActions Make( QWidget &window, const BudgetOptions &options );

	void FillMenu( QMenu &menu ) const; // the "&Options" menu and the context menu
	void FillToolBar( QToolBar &toolBar ) const;
};
