#include "views/historybarslayout.h"

#include <algorithm>

#include "views/budgetscale.h"
#include "views/historyscale.h"

// One budget's bars, from the right: a budget's samples lie side by side in memory and its bars share a colour.
static void StackBudget( HistoryBarsLayout &layout, std::span<const uint32_t> block, const HistoryView &view,
	int nFirstColumn, float flUnitFactor )
{
	const HistoryMeasures &measures = view.m_Columns.m_Measures;
	const int nPixelsPerStep = HistoryPixelsPerStep( view.m_nZoomStep );
	const int nHeight = view.m_Size.height();
	int64_t nSample = view.m_Columns.NewestShown() - nFirstColumn;
	int x = view.m_Columns.RightEdge( view.m_Size.width(), nFirstColumn ) - measures.m_nGap - measures.m_nBarWidth;
	for ( int &nTop : layout.m_Tops )
	{
		const uint32_t nValue = block[BudgetSlot( nSample )];
		const int nLength = std::min( BudgetLength( nValue, flUnitFactor, nPixelsPerStep ), nHeight );
		if ( nLength > 0 && nTop >= 0 )
		{
			nTop -= nLength;
			layout.m_Bars.emplace_back( x, nTop, measures.m_nBarWidth, nLength + 1 );
		}
		x -= measures.Pitch();
		nSample--;
	}
}

void LayoutHistoryBars(
	HistoryBarsLayout &layout, const BudgetViewData &data, const HistoryView &view, const HistoryColumnRange &range )
{
	layout.m_Bars.clear();
	layout.m_Budgets.clear();
	layout.m_Tops.assign( static_cast<size_t>( range.m_nEnd - range.m_nFirst ), view.m_Size.height() );
	for ( size_t i = 0; i + 1 < data.m_Categories.size(); i++ )
	{
		const size_t nFirst = layout.m_Bars.size();
		StackBudget( layout, data.Block( i ), view, range.m_nFirst, BudgetUnitFactor( data.m_bFPSUnits ) );
		if ( layout.m_Bars.size() > nFirst )
			layout.m_Budgets.push_back( { data.m_Categories[i].m_Colour, nFirst, layout.m_Bars.size() - nFirst } );
	}
}

std::optional<QRect> HistoryBarsCursor( const HistoryView &view )
{
	const std::optional<int> column = view.m_Cursor ? view.m_Columns.ColumnOf( *view.m_Cursor ) : std::nullopt;
	if ( !column )
		return std::nullopt;
	const int x = view.m_Columns.RightEdge( view.m_Size.width(), *column );
	return QRect( QPoint( x - view.m_Columns.m_Measures.Pitch(), 0 ), QPoint( x - 1, view.m_Size.height() - 2 ) );
}
