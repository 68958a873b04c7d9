#include "views/historybarslayout.h"

#include <algorithm>

#include "views/budgetscale.h"

// One budget's bars, from the right: a budget's samples lie side by side in memory and its bars share a colour.
static void StackBudget(
	HistoryBarsLayout &layout, std::span<const uint32_t> block, const HistoryView &view, float flUnitFactor )
{
	const HistoryColumns &columns = view.m_Columns;
	const HistoryMeasures &measures = columns.m_Measures;
	const int nPixelsPerStep = HistoryPixelsPerStep( view.m_nZoomStep );
	const int nHeight = view.m_Size.height();
	const int64_t nNewest = columns.NewestShown();
	int x = columns.RightEdge( view.m_Size.width(), 0 ) - measures.m_nGap - measures.m_nBarWidth;
	for ( size_t i = 0; i < layout.m_Tops.size(); i++, x -= measures.Pitch() )
	{
		int &nTop = layout.m_Tops[i];
		const uint32_t nValue = block[BudgetSlot( nNewest - static_cast<int64_t>( i ) )];
		const int nLength = std::min( BudgetLength( nValue, flUnitFactor, nPixelsPerStep ), nHeight );
		if ( nLength <= 0 || nTop < 0 )
			continue;
		nTop -= nLength;
		layout.m_Bars.emplace_back( x, nTop, measures.m_nBarWidth, nLength + 1 );
	}
}

static std::optional<QRect> CursorRect( const HistoryView &view )
{
	if ( !view.m_Cursor )
		return std::nullopt;
	const std::optional<int> column = view.m_Columns.ColumnOf( *view.m_Cursor );
	if ( !column )
		return std::nullopt;
	const int x = view.m_Columns.RightEdge( view.m_Size.width(), *column );
	return QRect( QPoint( x - view.m_Columns.m_Measures.Pitch(), 0 ), QPoint( x - 1, view.m_Size.height() - 2 ) );
}

void LayoutHistoryBars( HistoryBarsLayout &layout, const BudgetViewData &data, const HistoryView &view, int nRowHeight )
{
	LayoutHistoryAxis( layout.m_Axis, view.m_Size, view.m_nZoomStep,
		data.m_bFPSUnits ? HistoryAxisUnit::FramesPerSecondOfTime : HistoryAxisUnit::Milliseconds, nRowHeight );
	layout.m_Bars.clear();
	layout.m_Budgets.clear();
	layout.m_Tops.assign( static_cast<size_t>( view.m_Columns.Filled() ), view.m_Size.height() );
	for ( size_t i = 0; i + 1 < data.m_Categories.size(); i++ )
	{
		const size_t nFirst = layout.m_Bars.size();
		StackBudget( layout, data.Block( i ), view, BudgetUnitFactor( data.m_bFPSUnits ) );
		if ( layout.m_Bars.size() > nFirst )
			layout.m_Budgets.push_back( { data.m_Categories[i].m_Colour, nFirst, layout.m_Bars.size() - nFirst } );
	}
	layout.m_Cursor = CursorRect( view );
}
