#include "views/budgetnamespainter.h"

#include <QPainter>

void PaintBudgetNames( QPainter &painter, const BudgetNamesLayout &layout, const BudgetViewStyle &style )
{
	painter.setPen( style.m_Colours.m_Text );
	painter.drawRect( layout.m_Header );
	painter.setFont( style.m_RowFont );
	painter.drawText( layout.m_Header, Qt::AlignCenter, QStringLiteral( "Budget Nodes" ) );

	for ( const BudgetNameRow &row : layout.m_Rows )
	{
		painter.fillRect( row.m_Box, row.m_Colour );
		// The pen turns black only after the first outline, which therefore keeps the colour of the header. That is
		// deliberate.
		painter.drawRect( row.m_Box );
		painter.setPen( Qt::black );
		painter.drawText( row.m_Box, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, row.m_Name );
	}
}
