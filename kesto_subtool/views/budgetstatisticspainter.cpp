#include "views/budgetstatisticspainter.h"

#include "views/viewpainter.h"

namespace
{
constexpr int TICK_REACH = 3; // pixels above and below the centre line
} // namespace

void PaintBudgetStatistics( CViewPainter &painter, const BudgetStatisticsLayout &layout, const BudgetViewStyle &style )
{
	painter.SetPen( style.m_Colours.m_Statistics );
	for ( const BudgetWhisker &whisker : layout.m_Whiskers )
	{
		painter.DrawLine( whisker.m_nLow, whisker.m_nY, whisker.m_nHigh, whisker.m_nY );
		for ( const int x : { whisker.m_nLow, whisker.m_nMean, whisker.m_nHigh } )
			painter.DrawLine( x, whisker.m_nY - TICK_REACH, x, whisker.m_nY + TICK_REACH );
	}

	painter.SetFont( style.m_CaptionFont );
	painter.SetPen( Qt::black );
	for ( const BudgetCaption &caption : layout.m_Captions )
	{
		painter.FillRect( caption.m_Box, caption.m_Colour, Qt::Dense4Pattern );
		painter.DrawText( caption.m_Box, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, caption.m_Text );
	}
}
