// Where the bars panel draws its axis, its bars and its peaks.
#pragma once

#include <QColor>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <array>
#include <optional>
#include <vector>

#include "views/budgetrows.h"
#include "views/budgetviewdata.h"
#include "views/budgetviewstyle.h"

// What a layout of the bars panel depends on beside the data and the style.
struct BudgetBarsView
{
	QSize m_Size;              // of the widget
	int m_nScrollBarWidth = 0; // 0 while the scroll bar is hidden
	int m_nFirstRow = 0;       // budget in the first row
	int m_nZoomStep = 0;       // BUDGET_BARS_MIN_ZOOM..BUDGET_BARS_MAX_ZOOM
	int m_nCaptionWidth = 0;   // of the statistics captions, pixels

	int UsableWidth() const { return m_Size.width() - m_nScrollBarWidth; }
	BudgetRows Rows( const BudgetViewData &data, const BudgetViewStyle &style ) const;
};

struct BudgetAxisMark
{
	int m_nX;
	QRect m_LabelBox;
	QString m_Label;
};

struct BudgetAxisStep
{
	std::optional<BudgetAxisMark> m_Major; // the first step has none: its line would be the panel's edge
	std::array<int, 4> m_MinorX;
};

struct BudgetAxisLayout
{
	QRect m_Header;
	int m_nTop = 0;    // of every grid line
	int m_nBottom = 0; // of every grid line, below the widget
	std::vector<BudgetAxisStep> m_Steps;
	bool m_bMinor = false;                       // whether the minor lines are drawn
	std::optional<BudgetAxisMark> m_Millisecond; // in frame-rate units, where it fits
};

struct BudgetBarRow
{
	QColor m_Colour;
	QRect m_Bar; // empty: none
	bool m_bPeak = false;
	std::array<QPoint, 4> m_Diamond; // when m_bPeak
	QRect m_PeakBox;
	QString m_PeakText; // empty: none
};

BudgetAxisLayout LayoutBudgetAxis(
	const BudgetViewData &data, const BudgetViewStyle &style, const BudgetBarsView &view );

// No rows while there are no samples.
std::vector<BudgetBarRow> LayoutBudgetBars(
	const BudgetViewData &data, const BudgetViewStyle &style, const BudgetBarsView &view );
