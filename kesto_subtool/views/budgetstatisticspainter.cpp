#include "views/budgetstatisticspainter.h"

#include <QPainter>

namespace
{
constexpr int TICK_REACH = 3; // pixels above and below the centre line
} // namespace

void PaintBudgetStatistics( QPainter &painter, const BudgetStatisticsLayout &layout, const BudgetViewStyle &style )
{
	painter.setPen( style.m_Colours.m_Statistics );
	for ( const BudgetWhisker &whisker : layout.m_Whiskers )
	{
		painter.drawLine( whisker.m_nLow, whisker.m_nY, whisker.m_nHigh, whisker.m_nY );
		for ( const int x : { whisker.m_nLow, whisker.m_nMean, whisker.m_nHigh } )
			painter.drawLine( x, whisker.m_nY - TICK_REACH, x, whisker.m_nY + TICK_REACH );
	}

	painter.setFont( style.m_CaptionFont );
	painter.setPen( Qt::black );
	for ( const BudgetCaption &caption : layout.m_Captions )
	{
		painter.fillRect( caption.m_Box, QBrush( caption.m_Colour, Qt::Dense4Pattern ) );
		painter.drawText( caption.m_Box, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, caption.m_Text );
	}
}
