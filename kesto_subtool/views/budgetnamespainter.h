// Draws the names column.
#pragma once

#include "views/budgetnameslayout.h"
#include "views/budgetviewstyle.h"

class QPainter;

void PaintBudgetNames( QPainter &painter, const BudgetNamesLayout &layout, const BudgetViewStyle &style );
