// The history bars as rectangles: per sample a column of its budgets, stacked from the bottom.
#pragma once

#include <QRect>
#include <cstdint>
#include <optional>
#include <vector>

#include "views/budgetviewdata.h"
#include "views/historycolumns.h"
#include "views/historyscale.h"

// What both views of the history are laid out from, beside the samples.
struct HistoryView
{
	QSize m_Size; // of the view's contents
	int m_nZoomStep = 0;
	HistoryColumns m_Columns;
	std::optional<uint32_t> m_Cursor; // the selected sample while the cursor is in force
};

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

	HistoryAxisLayout m_Axis;
	std::vector<QRect> m_Bars;     // in painting order; those above the view's top are left out
	std::vector<Budget> m_Budgets; // without the frame total, which is not stacked
	std::optional<QRect> m_Cursor;

	std::vector<int> m_Tops; // of the stacks while they grow, per column
};

// Lays out into layout, whose buffers are used again: after the first few calls nothing is allocated for the bars.
void LayoutHistoryBars(
	HistoryBarsLayout &layout, const BudgetViewData &data, const HistoryView &view, int nRowHeight );
