#include "showbudget/budgetoptions.h"

#include "keel0/keyvalues.h"

namespace
{
struct Option
{
	const char *m_pKey;
	bool BudgetOptions::*m_pFlag;
};

constexpr Option g_Options[] = {
	{ "fps_labels", &BudgetOptions::m_bFPSLabels },
	{ "show_averages", &BudgetOptions::m_bShowAverages },
	{ "fps_show_thresholds", &BudgetOptions::m_bShowThresholds },
	{ "fps_averages", &BudgetOptions::m_bFPSAverages },
};
} // namespace

BudgetOptions BudgetOptions::Read( const KeyValues *pSettings )
{
	BudgetOptions options;
	if ( !pSettings )
		return options;
	for ( const Option &option : g_Options )
		options.*option.m_pFlag = pSettings->GetInt( option.m_pKey, options.*option.m_pFlag ? 1 : 0 ) != 0;
	return options;
}

void BudgetOptions::Write( KeyValues &settings ) const
{
	for ( const Option &option : g_Options )
		settings.SetInt( option.m_pKey, this->*option.m_pFlag ? 1 : 0 );
}
