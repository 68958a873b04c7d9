// A budget's name, which an engine sent, as people get to see it.
#pragma once

#include <QString>

#include "views/budgetviewdata.h"

constexpr int BUDGET_NAME_LIMIT = 128; // characters shown; the wire carries 64 bytes

// One line of plain text in the order of its characters. What is no UTF-8, control characters, and the invisible ones
// that turn the writing direction of what follows or end a line are shown as U+FFFD; what is longer than
// BUDGET_NAME_LIMIT ends in an ellipsis. "&", "<" and the like stand for themselves.
QString BudgetNameText( const BudgetCategory &category );
