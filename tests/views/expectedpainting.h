// What the names column and the bars panel must draw, written down a second time: straight from the rules, one
// operation after the other, with the pen carried along as a painter carries it.
#pragma once

#include <vector>

#include "support/paintlog.h"
#include "views/fakebudgetviewowner.h"

struct ExpectedPanel
{
	int m_nWidth = 0;          // of the widget
	int m_nHeight = 0;         // of the widget
	int m_nScrollBarWidth = 0; // 0 while it is hidden
	int m_nFirstRow = 0;
	int m_nZoomStep = 0;
};

std::vector<PaintOp> ExpectedNames( const CFakeBudgetViewOwner &owner, const ExpectedPanel &panel );
std::vector<PaintOp> ExpectedBars( const CFakeBudgetViewOwner &owner, const ExpectedPanel &panel );
