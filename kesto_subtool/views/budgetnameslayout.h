// Where the names column draws what.
#pragma once

#include <QColor>
#include <QRect>
#include <QString>
#include <vector>

#include "views/budgetrows.h"
#include "views/budgetviewdata.h"

struct BudgetNameRow
{
	QRect m_Box;
	QColor m_Colour;
	QString m_Name; // see BudgetNameText; empty for a budget without one
};

struct BudgetNamesLayout
{
	QRect m_Header;
	std::vector<BudgetNameRow> m_Rows;
};

BudgetNamesLayout LayoutBudgetNames( const BudgetViewData &data, const BudgetRows &rows, int nWidth );
