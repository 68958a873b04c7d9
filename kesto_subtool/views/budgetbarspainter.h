// Draws the bars panel's axis, bars and peaks. The passes are run in this order with one painter: a peak's marker is
// outlined with whatever pen the drawing before it left.
#pragma once

#include <vector>

#include "views/budgetbarslayout.h"
#include "views/budgetviewstyle.h"

class CViewPainter;

void PaintBudgetAxis( CViewPainter &painter, const BudgetAxisLayout &layout, const BudgetViewStyle &style );
void PaintBudgetBars( CViewPainter &painter, const std::vector<BudgetBarRow> &rows, const BudgetViewStyle &style );
