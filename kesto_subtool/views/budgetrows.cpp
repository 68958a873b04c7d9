#include "views/budgetrows.h"

#include <algorithm>

BudgetRows BudgetRows::Make( int nWidgetHeight, int nRowHeight, int nInset, int nFirst, size_t nBudgetCount )
{
	const int nEnd =
		std::min( nFirst + VisibleBudgetRows( nWidgetHeight, nRowHeight ), static_cast<int>( nBudgetCount ) );
	return { nRowHeight, nInset, nFirst, nEnd };
}

QRect BudgetRows::Box( int nBudget, int nLeft, int nRight ) const
{
	const int nTop = m_nRowHeight + m_nInset + ( nBudget - m_nFirst ) * m_nRowHeight;
	return { QPoint( nLeft, nTop ), QPoint( nRight, nTop + m_nRowHeight - 2 * m_nInset - 1 ) };
}

int BudgetRows::BudgetAt( int y ) const
{
	if ( y < m_nRowHeight )
		return -1;
	const int nBudget = m_nFirst + ( y - m_nRowHeight ) / m_nRowHeight;
	return nBudget < m_nEnd ? nBudget : -1;
}
