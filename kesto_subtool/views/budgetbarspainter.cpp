#include "views/budgetbarspainter.h"

#include <QPainter>

namespace
{
void PaintAxisStep(
	QPainter &painter, const BudgetAxisStep &step, const BudgetAxisLayout &layout, const BudgetViewColours &colours )
{
	if ( step.m_Major )
	{
		painter.setPen( colours.m_Text );
		painter.drawText( step.m_Major->m_LabelBox, Qt::AlignCenter, step.m_Major->m_Label );
		painter.setPen( colours.m_Grid );
		painter.drawLine( step.m_Major->m_nX, layout.m_nTop, step.m_Major->m_nX, layout.m_nBottom );
	}
	if ( layout.m_bMinor )
	{
		painter.setPen( QPen( colours.m_SubGrid, 1, Qt::DashDotLine ) );
		for ( const int x : step.m_MinorX )
			painter.drawLine( x, layout.m_nTop, x, layout.m_nBottom );
	}
}
} // namespace

void PaintBudgetAxis( QPainter &painter, const BudgetAxisLayout &layout, const BudgetViewStyle &style )
{
	painter.setFont( style.m_RowFont );
	painter.setPen( Qt::black );
	painter.drawRect( layout.m_Header );

	for ( const BudgetAxisStep &step : layout.m_Steps )
		PaintAxisStep( painter, step, layout, style.m_Colours );

	if ( const auto &mark = layout.m_Millisecond )
	{
		painter.setPen( style.m_Colours.m_Grid );
		painter.drawLine( mark->m_nX, layout.m_nTop, mark->m_nX, layout.m_nBottom );
		painter.setPen( style.m_Colours.m_Text );
		painter.drawText( mark->m_LabelBox, Qt::AlignCenter, mark->m_Label );
	}
}

void PaintBudgetBars( QPainter &painter, const std::vector<BudgetBarRow> &rows, const BudgetViewStyle &style )
{
	for ( const BudgetBarRow &row : rows )
	{
		painter.setBrush( row.m_Colour );
		if ( !row.m_Bar.isEmpty() )
		{
			painter.setPen( Qt::black );
			painter.drawRect( row.m_Bar );
		}
		if ( row.m_bPeak )
		{
			const int nPoints = static_cast<int>( row.m_Diamond.size() );
			painter.drawPolygon( row.m_Diamond.data(), nPoints, Qt::OddEvenFill );
			painter.setPen( Qt::black );
			painter.drawPolyline( row.m_Diamond.data(), nPoints );
		}
		if ( !row.m_PeakText.isEmpty() )
		{
			painter.setPen( style.m_Colours.m_Text );
			painter.drawText( row.m_PeakBox, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, row.m_PeakText );
		}
	}
}
