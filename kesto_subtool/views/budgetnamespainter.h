// Draws the names column.
#pragma once

#include "views/budgetnameslayout.h"
#include "views/budgetviewstyle.h"

class CViewPainter;

void PaintBudgetNames( CViewPainter &painter, const BudgetNamesLayout &layout, const BudgetViewStyle &style );
