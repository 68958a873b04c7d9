// A budget's name, which an engine sent, as people get to see it.
#pragma once

#include <QString>

#include "views/budgetviewdata.h"

constexpr int BUDGET_NAME_LIMIT = 128; // characters shown; the wire carries 64 bytes

// As ShownText, cut to BUDGET_NAME_LIMIT; what is no UTF-8 is shown as U+FFFD. "&", "<" and the like stand for
// themselves.
QString BudgetNameText( const BudgetCategory &category );
