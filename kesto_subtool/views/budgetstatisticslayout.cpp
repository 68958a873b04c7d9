#include "views/budgetstatisticslayout.h"

#include <QFontMetrics>
#include <algorithm>
#include <limits>

#include "views/budgetscale.h"

namespace
{
int TruncateToInt( double flValue )
{
	return static_cast<int>(
		std::clamp<double>( flValue, std::numeric_limits<int>::min(), std::numeric_limits<int>::max() ) );
}

struct WhiskerScale
{
	float m_flUnitFactor;
	int m_nPixelsPerStep;
	int m_nWidth;

	int X( float flMicroseconds ) const
	{
		const float flSteps = flMicroseconds * m_flUnitFactor;
		return std::min( TruncateToInt( double( m_nPixelsPerStep ) * double{ flSteps } ), m_nWidth );
	}
};
} // namespace

BudgetStatisticsLayout LayoutBudgetStatistics(
	const BudgetViewData &data, const BudgetViewStyle &style, const BudgetBarsView &view )
{
	BudgetStatisticsLayout layout;
	if ( !data.m_bShowAverages )
		return layout;

	const int nWidth = view.UsableWidth();
	const WhiskerScale scale = {
		BudgetUnitFactor( data.m_bFPSUnits ), BudgetBarsPixelsPerStep( view.m_nZoomStep ), nWidth };
	const BudgetRows rows = view.Rows( data, style );
	layout.m_Captions.reserve( static_cast<size_t>( rows.Count() ) );
	for ( int nBudget = rows.m_nFirst; nBudget < rows.m_nEnd; nBudget++ )
	{
		const BudgetStatistics statistics = ComputeBudgetStatistics( data, nBudget );
		const int nTop = style.m_nRowHeight * ( 1 + nBudget - rows.m_nFirst );
		const float flMean = statistics.m_flMean;
		if ( flMean * scale.m_flUnitFactor != 0.0f )
		{
			layout.m_Whiskers.push_back( { scale.X( flMean - statistics.m_flDeviation ), scale.X( flMean ),
				scale.X( flMean + statistics.m_flDeviation ), nTop + style.m_nRowHeight / 2 } );
		}
		layout.m_Captions.push_back( { QRect( QPoint( nWidth - view.m_nCaptionWidth, nTop ),
										   QPoint( nWidth - 1, nTop + style.m_nRowHeight - 1 ) ),
			data.m_Categories[static_cast<size_t>( nBudget )].m_Colour, BudgetStatisticsText( statistics ) } );
	}
	return layout;
}

int MeasureBudgetCaption( const QFont &captionFont )
{
	return QFontMetrics( captionFont ).horizontalAdvance( QLatin1Char( ' ' ) + BudgetStatisticsText( {} ) );
}
