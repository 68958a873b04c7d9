// Replays the layouts of the history views.
#pragma once

#include "views/budgetviewstyle.h"
#include "views/fpsgraphlayout.h"
#include "views/historybarslayout.h"

class QPainter;

void PaintHistoryBars( QPainter &painter, const HistoryBarsLayout &layout, const BudgetViewStyle &style );
void PaintFPSGraph( QPainter &painter, const FPSGraphLayout &layout, const BudgetViewStyle &style );
