// The Show Budget window: what it keeps in the settings that all windows share.
#include "keel0/keyvalues.h"
#include "recordings/kestoplayerwidget.h"
#include "showbudget/budgetwidget.h"
#include "showbudget/ibudgetwindowowner.h"
#include "views/budgethistorywidget.h"
#include "views/budgetsampleswidget.h"

namespace
{
constexpr char GEOMETRY_KEY[] = "geometry";
constexpr char WINDOW_STATE_KEY[] = "windowState";

QByteArray ReadBytes( const KeyValues &settings, const char *pKey )
{
	return QByteArray::fromBase64( settings.GetString( pKey ) );
}
} // namespace

void CQBudgetWidget::SaveSettings()
{
	KeyValues *pSettings = m_Owner.GetSettings();
	if ( !pSettings )
		return;
	if ( isVisible() && !m_bArrangedForRecording )
	{
		pSettings->SetString( GEOMETRY_KEY, saveGeometry().toBase64() );
		pSettings->SetString( WINDOW_STATE_KEY, saveState().toBase64() );
	}
	m_Options.Write( *pSettings );
	m_pSamplesView->SaveSettings( *pSettings );
	m_pHistoryView->SaveSettings( *pSettings );
	m_pPlayer->SaveSettings( *pSettings );
}

// What is missing or broken leaves geometry and layout as they are.
void CQBudgetWidget::RestoreLayout()
{
	const KeyValues *pSettings = m_Owner.GetSettings();
	if ( !pSettings )
		return;
	restoreGeometry( ReadBytes( *pSettings, GEOMETRY_KEY ) );
	restoreState( ReadBytes( *pSettings, WINDOW_STATE_KEY ) );
}
