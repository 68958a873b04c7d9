#include "views/budgetnamespainter.h"

#include "views/viewpainter.h"

void PaintBudgetNames( CViewPainter &painter, const BudgetNamesLayout &layout, const BudgetViewStyle &style )
{
	painter.SetPen( style.m_Colours.m_Text );
	painter.DrawRect( layout.m_Header );
	painter.SetFont( style.m_RowFont );
	painter.DrawText( layout.m_Header, Qt::AlignCenter, QStringLiteral( "Budget Nodes" ) );

	for ( const BudgetNameRow &row : layout.m_Rows )
	{
		painter.FillRect( row.m_Box, row.m_Colour );
		// The pen turns black only after the first outline, which therefore keeps the colour of the header. That is
		// deliberate.
		painter.DrawRect( row.m_Box );
		painter.SetPen( Qt::black );
		painter.DrawText( row.m_Box, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, row.m_Name );
	}
}
