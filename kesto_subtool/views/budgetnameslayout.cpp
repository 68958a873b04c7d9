#include "views/budgetnameslayout.h"

#include "views/budgetname.h"

BudgetNamesLayout LayoutBudgetNames( const BudgetViewData &data, const BudgetRows &rows, int nWidth )
{
	BudgetNamesLayout layout;
	layout.m_Header = QRect( QPoint( 0, 0 ), QPoint( nWidth - 2, rows.m_nRowHeight - 1 ) );
	layout.m_Rows.reserve( static_cast<size_t>( rows.Count() ) );
	for ( int nBudget = rows.m_nFirst; nBudget < rows.m_nEnd; nBudget++ )
	{
		const BudgetCategory &category = data.m_Categories[static_cast<size_t>( nBudget )];
		layout.m_Rows.push_back(
			{ rows.Box( nBudget, 0, nWidth - 2 ), category.m_Colour, BudgetNameText( category ) } );
	}
	return layout;
}
