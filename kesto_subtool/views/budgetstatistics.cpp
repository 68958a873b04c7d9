#include "views/budgetstatistics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "views/budgetname.h"
#include "views/fixeddecimals.h"

namespace
{
float Milliseconds( float flMicroseconds )
{
	return flMicroseconds * 0.001f;
}

float Milliseconds( uint32_t nMicroseconds )
{
	return Milliseconds( static_cast<float>( nMicroseconds ) );
}
} // namespace

BudgetStatistics ComputeBudgetStatistics( const BudgetViewData &data, int nBudget )
{
	const std::span<const uint32_t> ring = data.Block( static_cast<size_t>( nBudget ) );
	const uint32_t nStart = BudgetSlot( data.SelectedSample() );
	const auto valueBack = [&]( uint32_t nSteps )
	{ return ring[( nStart + BUDGET_RING_SIZE - nSteps ) % BUDGET_RING_SIZE]; };
	const uint32_t nWindow = std::min( data.m_nSampleCount, BUDGET_STATISTICS_WINDOW );
	const uint32_t nSkipped = data.m_bTickSampling ? 1 : 0;

	BudgetStatistics statistics;
	statistics.m_nBudget = nBudget;
	if ( nWindow < nSkipped + 2 )
		return statistics;

	const uint32_t nCount = nWindow - nSkipped;
	uint32_t nMinimum = std::numeric_limits<uint32_t>::max();
	uint32_t nMaximum = 0;
	double flSum = 0;
	for ( uint32_t i = 0; i < nCount; i++ )
	{
		nMinimum = std::min( nMinimum, valueBack( i ) );
		nMaximum = std::max( nMaximum, valueBack( i ) );
		flSum += valueBack( i );
	}
	const double flMean = flSum / nCount;

	// With "Tick Sampling" this sweep goes one sample further back than the first one: the sum has one value more, the
	// oldest, than mean and divisor count. That is deliberate.
	double flSquares = 0;
	for ( uint32_t i = 0; i < nWindow; i++ )
		flSquares += ( valueBack( i ) - flMean ) * ( valueBack( i ) - flMean );

	statistics.m_nMinimum = nMinimum;
	statistics.m_nMaximum = nMaximum;
	statistics.m_flMean = static_cast<float>( flMean );
	statistics.m_flDeviation = static_cast<float>( std::sqrt( flSquares / ( nCount - 1 ) ) );
	return statistics;
}

QString BudgetStatisticsText( const BudgetStatistics &statistics )
{
	std::string text = "avg ";
	AppendDecimals( text, Milliseconds( statistics.m_flMean ), 5, 2 );
	text += " stddev ";
	AppendDecimals( text, Milliseconds( statistics.m_flDeviation ), 6, 3 );
	text += " [";
	AppendDecimals( text, Milliseconds( statistics.m_nMinimum ), 6, 3 );
	text += "->";
	AppendDecimals( text, Milliseconds( statistics.m_nMaximum ), 6, 3 );
	text += "]";
	return QString::fromLatin1( text.data(), static_cast<int>( text.size() ) );
}

QString BudgetSummaryText( const BudgetViewData &data, int nBudget )
{
	const BudgetStatistics statistics = ComputeBudgetStatistics( data, nBudget );
	const size_t nCategory = static_cast<size_t>( nBudget );
	std::string text = BudgetNameText( data.m_Categories[nCategory] ).toStdString();
	text += ": avg ";
	AppendDecimals( text, Milliseconds( statistics.m_flMean ), 0, 2 );
	text += " stddev ";
	AppendDecimals( text, Milliseconds( statistics.m_flDeviation ), 0, 3 );
	text += " [";
	AppendDecimals( text, Milliseconds( statistics.m_nMinimum ), 0, 3 );
	text += "->";
	AppendDecimals( text, Milliseconds( statistics.m_nMaximum ), 0, 3 );
	text += "] peak ";
	AppendDecimals( text, Milliseconds( data.Peak( nCategory ) ), 0, 2 );
	return QString::fromUtf8( text.data(), static_cast<int>( text.size() ) );
}
