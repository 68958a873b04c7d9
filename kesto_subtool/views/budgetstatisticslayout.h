// Where the bars panel draws whiskers and captions over the bars.
#pragma once

#include <QColor>
#include <QRect>
#include <QString>
#include <vector>

#include "views/budgetbarslayout.h"
#include "views/budgetstatistics.h"

// Mean and deviation over a bar. No lower clamp: the left end may lie outside the widget.
struct BudgetWhisker
{
	int m_nLow; // mean - deviation
	int m_nMean;
	int m_nHigh; // mean + deviation
	int m_nY;    // centre line
};

struct BudgetCaption
{
	QRect m_Box;
	QColor m_Colour;
	QString m_Text;
};

struct BudgetStatisticsLayout
{
	std::vector<BudgetWhisker> m_Whiskers; // of budgets whose mean is not 0
	std::vector<BudgetCaption> m_Captions; // of every visible budget
};

// Empty while averages are switched off.
BudgetStatisticsLayout LayoutBudgetStatistics(
	const BudgetViewData &data, const BudgetViewStyle &style, const BudgetBarsView &view );

// The width that a caption of zeros takes in the caption font, with a blank in front that the drawn text lacks: it
// keeps a margin left of the text.
int MeasureBudgetCaption( const QFont &captionFont );
