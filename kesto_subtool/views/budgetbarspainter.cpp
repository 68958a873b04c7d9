#include "views/budgetbarspainter.h"

#include "views/viewpainter.h"

namespace
{
void PaintAxisStep( CViewPainter &painter, const BudgetAxisStep &step, const BudgetAxisLayout &layout,
	const BudgetViewColours &colours )
{
	if ( step.m_Major )
	{
		painter.SetPen( colours.m_Text );
		painter.DrawText( step.m_Major->m_LabelBox, Qt::AlignCenter, step.m_Major->m_Label );
		painter.SetPen( colours.m_Grid );
		painter.DrawLine( step.m_Major->m_nX, layout.m_nTop, step.m_Major->m_nX, layout.m_nBottom );
	}
	if ( layout.m_bMinor )
	{
		painter.SetPen( QPen( colours.m_SubGrid, 1, Qt::DashDotLine ) );
		for ( const int x : step.m_MinorX )
			painter.DrawLine( x, layout.m_nTop, x, layout.m_nBottom );
	}
}
} // namespace

void PaintBudgetAxis( CViewPainter &painter, const BudgetAxisLayout &layout, const BudgetViewStyle &style )
{
	painter.SetFont( style.m_RowFont );
	painter.SetPen( Qt::black );
	painter.DrawRect( layout.m_Header );

	for ( const BudgetAxisStep &step : layout.m_Steps )
		PaintAxisStep( painter, step, layout, style.m_Colours );

	if ( const auto &mark = layout.m_Millisecond )
	{
		painter.SetPen( style.m_Colours.m_Grid );
		painter.DrawLine( mark->m_nX, layout.m_nTop, mark->m_nX, layout.m_nBottom );
		painter.SetPen( style.m_Colours.m_Text );
		painter.DrawText( mark->m_LabelBox, Qt::AlignCenter, mark->m_Label );
	}
}

void PaintBudgetBars( CViewPainter &painter, const std::vector<BudgetBarRow> &rows, const BudgetViewStyle &style )
{
	for ( const BudgetBarRow &row : rows )
	{
		painter.SetBrush( row.m_Colour );
		if ( !row.m_Bar.isEmpty() )
		{
			painter.SetPen( Qt::black );
			painter.DrawRect( row.m_Bar );
		}
		if ( row.m_bPeak )
		{
			const int nPoints = static_cast<int>( row.m_Diamond.size() );
			painter.DrawPolygon( row.m_Diamond.data(), nPoints );
			painter.SetPen( Qt::black );
			painter.DrawPolyline( row.m_Diamond.data(), nPoints );
		}
		if ( !row.m_PeakText.isEmpty() )
		{
			painter.SetPen( style.m_Colours.m_Text );
			painter.DrawText( row.m_PeakBox, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, row.m_PeakText );
		}
	}
}
