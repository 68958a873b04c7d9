#include "showbudget/budgetactions.h"

#include <QAction>
#include <QCoreApplication>
#include <QIcon>
#include <QMenu>
#include <QToolBar>

namespace
{
QAction *AddAction( QWidget &window, const char *pText, const char *pIconPath = nullptr )
{
	auto *pAction = new QAction( QCoreApplication::translate( "CQBudgetWidget", pText ), &window );
	if ( pIconPath )
		pAction->setIcon( QIcon( QString::fromLatin1( pIconPath ) ) );
	return pAction;
}

QAction *AddCheckableAction( QWidget &window, const char *pText, bool bChecked, const char *pIconPath = nullptr )
{
	QAction *pAction = AddAction( window, pText, pIconPath );
	pAction->setCheckable( true );
	pAction->setChecked( bChecked );
	return pAction;
}
} // namespace

BudgetActions BudgetActions::Make( QWidget &window, const BudgetOptions &options )
{
	BudgetActions actions;
	actions.m_pFPSUnits = AddCheckableAction( window, "FPS Units", options.m_bFPSLabels );
	actions.m_pShowAverages = AddCheckableAction( window, "Show Budget Averages", options.m_bShowAverages );
	actions.m_pFPSThresholds = AddCheckableAction( window, "FPS Thresholds", options.m_bShowThresholds );
	actions.m_pFPSAverages = AddCheckableAction( window, "FPS Averages", options.m_bFPSAverages );
	actions.m_pClearSamples = AddAction( window, "Clear Samples" );
	actions.m_pStartSampling = AddAction( window, "Start Sampling", "game:tools/images/showbudgettool/start.png" );
	actions.m_pStopSampling = AddAction( window, "Stop Sampling", "game:tools/images/showbudgettool/stop.png" );
	actions.m_pTickSampling =
		AddCheckableAction( window, "Tick Sampling", false, "game:tools/images/showbudgettool/tick.png" );
	actions.m_pMicroprofiler =
		AddCheckableAction( window, "Microprofiler", false, "game:tools/images/showbudgettool/microprofiler.png" );
	return actions;
}

void BudgetActions::FillMenu( QMenu &menu ) const
{
	menu.addAction( m_pFPSUnits );
	menu.addAction( m_pShowAverages );
	menu.addSeparator();
	menu.addAction( m_pHistoryToggle );
	menu.addAction( m_pFPSThresholds );
	menu.addAction( m_pFPSAverages );
	menu.addSeparator();
	menu.addAction( m_pTickSampling );
	menu.addAction( m_pMicroprofiler );
	menu.addAction( m_pPlayerToggle );
	menu.addSeparator();
	menu.addAction( m_pClearSamples );
	menu.addSeparator();
	menu.addAction( m_pStartSampling );
	menu.addAction( m_pStopSampling );
}

void BudgetActions::FillToolBar( QToolBar &toolBar ) const
{
	for ( QAction *pAction : { m_pStartSampling, m_pStopSampling, m_pTickSampling, m_pMicroprofiler, m_pPlayerToggle } )
		toolBar.addAction( pAction );
}
