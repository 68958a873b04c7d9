// The Show Budget window: its actions, menus and tool bar, and what they do.
#include <QAction>
#include <QDockWidget>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

#include "miniprofiler/miniprofilerwidget.h"
#include "showbudget/budgetwidget.h"
#include "views/budgethistorywidget.h"

void CQBudgetWidget::CreateActions()
{
	m_Actions = BudgetActions::Make( *this, m_Options );
	m_Actions.m_pHistoryToggle = m_pHistoryDock->toggleViewAction();
	m_Actions.m_pPlayerToggle = m_pPlayerDock->toggleViewAction();
	m_Actions.m_pPlayerToggle->setIcon( QIcon( QStringLiteral( "game:tools/images/tessel/flamegraph.png" ) ) );
	ConnectActions();
}

void CQBudgetWidget::ConnectActions()
{
	connect( m_Actions.m_pFPSUnits, SIGNAL( toggled( bool ) ), SLOT( OnFPSLabels() ) );
	connect( m_Actions.m_pShowAverages, SIGNAL( toggled( bool ) ), SLOT( OnShowBudgetAverages() ) );
	connect( m_Actions.m_pFPSThresholds, SIGNAL( toggled( bool ) ), SLOT( OnFPSThresholdsToggled() ) );
	connect( m_Actions.m_pFPSAverages, SIGNAL( toggled( bool ) ), SLOT( OnFPSAveragesToggled() ) );
	connect( m_Actions.m_pClearSamples, SIGNAL( triggered( bool ) ), SLOT( OnClearSamples() ) );
	connect( m_Actions.m_pStartSampling, SIGNAL( triggered( bool ) ), SLOT( StartSampling() ) );
	connect( m_Actions.m_pStopSampling, SIGNAL( triggered( bool ) ), SLOT( StopSampling() ) );
	connect( m_Actions.m_pTickSampling, SIGNAL( toggled( bool ) ), SLOT( TickSampling( bool ) ) );
	connect( m_Actions.m_pMicroprofiler, SIGNAL( toggled( bool ) ), SLOT( ShowMiniProfiler( bool ) ) );

	// The dock's own close button and a restored layout show and hide it too.
	connect( m_pMiniProfilerDock->toggleViewAction(), SIGNAL( toggled( bool ) ), m_Actions.m_pMicroprofiler,
		SLOT( setChecked( bool ) ) );
}

void CQBudgetWidget::CreateMenusAndToolBar()
{
	m_Actions.FillMenu( *menuBar()->addMenu( tr( "&Options" ) ) );

	m_pContextMenu = new QMenu( this );
	m_Actions.FillMenu( *m_pContextMenu );

	QToolBar *pToolBar = addToolBar( tr( "ShowBudget" ) );
	pToolBar->setObjectName( QStringLiteral( "ShowBudget" ) ); // the saved window state names it
	m_Actions.FillToolBar( *pToolBar );
}

void CQBudgetWidget::OnFPSLabels()
{
	m_Options.m_bFPSLabels = m_Actions.m_pFPSUnits->isChecked();
	RepaintViews();
}

void CQBudgetWidget::OnShowBudgetAverages()
{
	m_Options.m_bShowAverages = m_Actions.m_pShowAverages->isChecked();
	RepaintViews();
}

void CQBudgetWidget::OnFPSThresholdsToggled()
{
	m_Options.m_bShowThresholds = m_Actions.m_pFPSThresholds->isChecked();
	RepaintViews();
}

void CQBudgetWidget::OnFPSAveragesToggled()
{
	m_Options.m_bFPSAverages = m_Actions.m_pFPSAverages->isChecked();
	RefreshStatusTexts();
	RepaintViews();
}

void CQBudgetWidget::OnClearSamples()
{
	m_Samples.Clear();
	m_pHistoryView->OnSamplesCleared();
	m_pMiniProfiler->Clear();
	RefreshStatusTexts();
	RepaintViews();
}

void CQBudgetWidget::TickSampling( bool bOn )
{
	m_pMiniProfiler->SetInterval( bOn ? QStringLiteral( "tick" ) : QStringLiteral( "frame" ) );
	RefreshStatusTexts();
	RepaintViews();
}

void CQBudgetWidget::ShowMiniProfiler( bool bShow )
{
	m_pMiniProfilerDock->setVisible( bShow );
	SendMiniProfilerUpdateFlags();
}
