// Mean, deviation, minimum and maximum of a budget's newest samples.
#pragma once

#include <QString>
#include <cstdint>
#include <span>

#include "views/budgetviewdata.h"

constexpr uint32_t BUDGET_STATISTICS_WINDOW = 32; // samples

// Microseconds. All 0 when fewer than two samples were read.
struct BudgetStatistics
{
	int32_t m_nBudget = 0; // index into the categories
	uint32_t m_nMinimum = 0;
	uint32_t m_nMaximum = 0;
	float m_flMean = 0;
	float m_flDeviation = 0; // sample standard deviation

	friend bool operator==( const BudgetStatistics &, const BudgetStatistics & ) = default;
};

// Looks at the newest (up to) 32 samples that end at the selected one, backwards round the ring.
BudgetStatistics ComputeBudgetStatistics( const BudgetViewData &data, int nBudget );

// "avg … stddev … [min->max]" in milliseconds, in columns of fixed width.
QString BudgetStatisticsText( const BudgetStatistics &statistics );

// "name: avg … stddev … [min->max] peak …" in milliseconds, for the clipboard.
QString BudgetSummaryText( const BudgetViewData &data, int nBudget );
