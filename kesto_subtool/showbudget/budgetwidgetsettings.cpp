// The Show Budget window: what it keeps in the settings that all windows share.
#include "recordings/kestoplayerwidget.h"
#include "showbudget/budgetwidget.h"
#include "showbudget/ibudgetwindowowner.h"
#include "views/budgethistorywidget.h"
#include "views/budgetsampleswidget.h"
#include "views/layoutformats.h"
#include "views/layoutsettings.h"

namespace
{
constexpr char GEOMETRY_KEY[] = "geometry";
constexpr char WINDOW_STATE_KEY[] = "windowState";
} // namespace

void CQBudgetWidget::SaveSettings()
{
	KeyValues *pSettings = m_Owner.GetSettings();
	if ( !pSettings )
		return;
	if ( isVisible() && !m_bArrangedForRecording )
	{
		WriteLayout( *pSettings, GEOMETRY_KEY, saveGeometry() );
		WriteLayout( *pSettings, WINDOW_STATE_KEY, saveState() );
	}
	m_Options.Write( *pSettings );
	m_pSamplesView->SaveSettings( *pSettings );
	m_pHistoryView->SaveSettings( *pSettings );
	m_pPlayer->SaveSettings( *pSettings );
}

// What is missing or broken leaves geometry and layout as they are.
void CQBudgetWidget::RestoreLayout()
{
	KeyValues *pSettings = m_Owner.GetSettings();
	if ( !pSettings )
		return;
	restoreGeometry( ReadLayout( *pSettings, GEOMETRY_KEY, &IsWindowGeometry ) );
	restoreState( ReadLayout( *pSettings, WINDOW_STATE_KEY, &IsMainWindowState ) );
}
