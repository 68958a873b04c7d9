#include "showbudget/budgetstatustexts.h"

#include <QCoreApplication>

namespace
{
QString Translate( const char *pText )
{
	return QCoreApplication::translate( "CQBudgetWidget", pText );
}

double FrameRate( const BudgetViewData &data, uint32_t nSlot, double flSeconds )
{
	if ( data.m_bFPSAverages )
		return data.m_FrameRates[nSlot];
	return flSeconds > 0.0 ? 1.0 / flSeconds : 0.0;
}
} // namespace

BudgetStatusTexts BudgetStatusTexts::Make( const BudgetViewData &data, uint32_t nSampleCount )
{
	if ( nSampleCount == 0 )
		return { Translate( "No Samples." ), Translate( "FPS:" ), Translate( "Frame:" ) };

	const uint32_t nSlot = BudgetSlot( data.SelectedSample() );
	const double flSeconds = data.m_Categories.empty() ? 0.0 : data.Value( data.m_Categories.size() - 1, nSlot ) * 1e-6;
	return { Translate( "Samples: %1" ).arg( nSampleCount ),
		Translate( "FPS: %1" ).arg( FrameRate( data, nSlot, flSeconds ), 0, 'f', 2 ),
		Translate( "Frame: %1" ).arg( flSeconds * 1000.0, 0, 'f', 2 ) };
}
