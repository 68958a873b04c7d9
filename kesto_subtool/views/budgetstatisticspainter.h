// Draws whiskers and captions over the bars.
#pragma once

#include "views/budgetstatisticslayout.h"
#include "views/budgetviewstyle.h"

class CViewPainter;

void PaintBudgetStatistics( CViewPainter &painter, const BudgetStatisticsLayout &layout, const BudgetViewStyle &style );
