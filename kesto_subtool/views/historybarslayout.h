// The history bars as rectangles: per sample a column of its budgets, stacked from the bottom.
#pragma once

#include <QColor>
#include <QRect>
#include <optional>
#include <vector>

#include "views/budgetviewdata.h"
#include "views/historyview.h"

struct HistoryBarsLayout
{
	// All bars of one budget, m_nCount of m_Bars from m_nFirst on. A bar reaches one row into the one below it, whose
	// top row it paints over; this is deliberate.
	struct Budget
	{
		QColor m_Colour;
		size_t m_nFirst = 0;
		size_t m_nCount = 0;
	};

	std::vector<QRect> m_Bars;     // in painting order; those above the view's top are left out
	std::vector<Budget> m_Budgets; // without the frame total, which is not stacked

	std::vector<int> m_Tops; // of the stacks while they grow, per column
};

// Lays some of the filled columns out into layout, whose buffers are used again: after a few calls nothing is
// allocated.
void LayoutHistoryBars(
	HistoryBarsLayout &layout, const BudgetViewData &data, const HistoryView &view, const HistoryColumnRange &range );

// The frame around the selected column, while it is on screen.
std::optional<QRect> HistoryBarsCursor( const HistoryView &view );
