// The rows that the names column and the bars panel share: one map for painting, scrolling and picking.
#pragma once

#include <QRect>
#include <cstddef>

// Rows that fit below the header row. Not above 0 when the widget is lower than two rows.
constexpr int VisibleBudgetRows( int nWidgetHeight, int nRowHeight )
{
	return ( nWidgetHeight - nRowHeight ) / nRowHeight;
}

struct BudgetRows
{
	int m_nRowHeight; // pixels, > 0; the header row is as high
	int m_nInset;     // pixels kept free above and below each box
	int m_nFirst;     // budget in the first row
	int m_nEnd;       // one past the budget in the last row

	static BudgetRows Make( int nWidgetHeight, int nRowHeight, int nInset, int nFirst, size_t nBudgetCount );

	int Count() const { return m_nEnd > m_nFirst ? m_nEnd - m_nFirst : 0; }

	// The box of a budget that has a row, from nLeft to nRight (both included).
	QRect Box( int nBudget, int nLeft, int nRight ) const;

	// The budget whose row holds y, or -1.
	int BudgetAt( int y ) const;
};
