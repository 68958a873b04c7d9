#include "views/budgetstatistics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/randomseed.h"
#include "views/fakebudgetviewowner.h"

namespace
{
// Values of samples 0, 1, 2, … of budget 0; the last one is the newest.
void Take( CFakeBudgetViewOwner &owner, const std::vector<uint32_t> &values )
{
	owner.m_Data.m_nSampleCount = static_cast<uint32_t>( values.size() );
	for ( uint32_t i = 0; i < values.size(); i++ )
		owner.SetValue( 0, i, values[i] );
}

BudgetStatistics StatisticsOf( const CFakeBudgetViewOwner &owner )
{
	return ComputeBudgetStatistics( owner.GetViewData(), 0 );
}

// By long doubles and a list of sample numbers, which wrap like the ring.
BudgetStatistics Model( const CFakeBudgetViewOwner &owner, int nBudget )
{
	const BudgetViewData data = owner.GetViewData();
	const int64_t nNewest = data.m_nSampleCount == 0 ? 0
							: data.m_bLive           ? int64_t{ data.m_nSampleCount } - ( data.m_bTickSampling ? 2 : 1 )
													 : int64_t{ data.m_nCursor };
	const int64_t nStart = nNewest < 0 ? 0 : nNewest % 4096;
	std::vector<uint32_t> window;
	for ( int64_t i = 0; i < 32 && i < data.m_nSampleCount; i++ )
		window.push_back( owner.m_Blocks[static_cast<size_t>(
			nBudget * static_cast<int>( BUDGET_BLOCK_STRIDE ) + ( nStart - i + 4096 ) % 4096 )] );

	const size_t nSkipped = data.m_bTickSampling ? 1 : 0;
	BudgetStatistics expected;
	expected.m_nBudget = nBudget;
	if ( window.size() < nSkipped + 2 )
		return expected;
	const size_t nCounted = window.size() - nSkipped; // the newest ones
	long double flSum = 0;
	uint32_t nMinimum = window[0];
	uint32_t nMaximum = window[0];
	for ( size_t i = 0; i < nCounted; i++ )
	{
		flSum += window[i];
		nMinimum = std::min( nMinimum, window[i] );
		nMaximum = std::max( nMaximum, window[i] );
	}
	const long double flCount = nCounted;
	const long double flMean = flSum / flCount;
	long double flSquares = 0;
	for ( const uint32_t nValue : window )
		flSquares += ( nValue - flMean ) * ( nValue - flMean );
	expected.m_nMinimum = nMinimum;
	expected.m_nMaximum = nMaximum;
	expected.m_flMean = static_cast<float>( flMean );
	expected.m_flDeviation = static_cast<float>( std::sqrt( flSquares / ( flCount - 1 ) ) );
	return expected;
}

void ExpectNear( const BudgetStatistics &actual, const BudgetStatistics &expected )
{
	EXPECT_EQ( actual.m_nBudget, expected.m_nBudget );
	EXPECT_EQ( actual.m_nMinimum, expected.m_nMinimum );
	EXPECT_EQ( actual.m_nMaximum, expected.m_nMaximum );
	EXPECT_FLOAT_EQ( actual.m_flMean, expected.m_flMean );
	EXPECT_FLOAT_EQ( actual.m_flDeviation, expected.m_flDeviation );
}
} // namespace

TEST( BudgetStatistics, AreZeroWithoutSamplesAndWithOne )
{
	CFakeBudgetViewOwner owner( 2 );
	EXPECT_EQ( StatisticsOf( owner ), BudgetStatistics{} );
	Take( owner, { 777 } );
	EXPECT_EQ( StatisticsOf( owner ), BudgetStatistics{} );
	EXPECT_EQ( BudgetStatisticsText( StatisticsOf( owner ) ), "avg  0.00 stddev  0.000 [ 0.000-> 0.000]" );
}

TEST( BudgetStatistics, DescribeTwoSamples )
{
	CFakeBudgetViewOwner owner( 2 );
	Take( owner, { 1000, 3000 } );
	const BudgetStatistics statistics = StatisticsOf( owner );
	EXPECT_EQ( statistics.m_nMinimum, 1000u );
	EXPECT_EQ( statistics.m_nMaximum, 3000u );
	EXPECT_EQ( statistics.m_flMean, 2000.0f );
	EXPECT_FLOAT_EQ( statistics.m_flDeviation, std::sqrt( 2'000'000.0f ) ); // (1000² + 1000²) / (2 - 1)
	EXPECT_EQ( BudgetStatisticsText( statistics ), "avg  2.00 stddev  1.414 [ 1.000-> 3.000]" );
}

TEST( BudgetStatistics, CoverTheNewest32Samples )
{
	CFakeBudgetViewOwner owner( 2 );
	std::vector<uint32_t> values( 100, 1'000'000 );
	std::fill( values.end() - 32, values.end(), 500 );
	Take( owner, values );
	EXPECT_EQ( StatisticsOf( owner ).m_nMaximum, 500u );
	EXPECT_EQ( StatisticsOf( owner ).m_flDeviation, 0.0f );

	values[100 - 33] = 500; // one further back changes nothing
	values[100 - 32] = 900;
	Take( owner, values );
	EXPECT_EQ( StatisticsOf( owner ).m_nMaximum, 900u );
	EXPECT_EQ( StatisticsOf( owner ).m_flMean, ( 31 * 500 + 900 ) / 32.0f );
}

TEST( BudgetStatistics, MoveBackWithTheHistoryCursor )
{
	CFakeBudgetViewOwner owner( 2 );
	std::vector<uint32_t> values;
	for ( uint32_t i = 0; i < 200; i++ )
		values.push_back( i * 10 );
	Take( owner, values );
	owner.m_Data.m_bLive = false;
	owner.m_Data.m_nCursor = 150;
	EXPECT_EQ( StatisticsOf( owner ).m_nMinimum, 119u * 10 );
	EXPECT_EQ( StatisticsOf( owner ).m_nMaximum, 150u * 10 );
	EXPECT_EQ( StatisticsOf( owner ).m_flMean, 1345.0f );
}

TEST( BudgetStatistics, GoBackwardsRoundTheRing )
{
	CFakeBudgetViewOwner owner( 2 );
	owner.m_Data.m_nSampleCount = 4096 + 10; // slots 0..9 hold the newest ten, 4074..4095 the 22 before them
	for ( uint32_t nSample = 4096 + 10 - 32; nSample < 4096 + 10; nSample++ )
		owner.SetValue( 0, nSample, 100 + nSample );
	const BudgetStatistics statistics = StatisticsOf( owner );
	EXPECT_EQ( statistics.m_nMinimum, 100u + 4074 );
	EXPECT_EQ( statistics.m_nMaximum, 100u + 4105 );
}

TEST( BudgetStatistics, HaveOneOlderValueInTheSumOfSquaresWithTickSampling )
{
	CFakeBudgetViewOwner owner( 2 );
	Take( owner, { 100, 200, 700, 5000 } ); // 5000 is still being filled, 700 is the selected sample
	owner.m_Data.m_bTickSampling = true;
	owner.SetValue( 0, 4095, 400 ); // one further back than the oldest: round the ring
	const BudgetStatistics statistics = StatisticsOf( owner );
	// Counted: 700, 200 and 100. Squared: 400 as well.
	const double flMean = 1000.0 / 3;
	EXPECT_EQ( statistics.m_nMinimum, 100u );
	EXPECT_EQ( statistics.m_nMaximum, 700u );
	EXPECT_FLOAT_EQ( statistics.m_flMean, static_cast<float>( flMean ) );
	const double flSquares = std::pow( 700 - flMean, 2 ) + std::pow( 200 - flMean, 2 ) + std::pow( 100 - flMean, 2 ) +
							 std::pow( 400 - flMean, 2 );
	EXPECT_FLOAT_EQ( statistics.m_flDeviation, static_cast<float>( std::sqrt( flSquares / 2 ) ) );
}

TEST( BudgetStatistics, CoverTheNewest31SamplesWithTickSampling )
{
	CFakeBudgetViewOwner owner( 2 );
	owner.m_Data.m_bTickSampling = true;
	std::vector<uint32_t> values( 100, 1'000'000 );
	std::fill( values.end() - 1 - 31, values.end() - 1, 500 );
	Take( owner, values );
	EXPECT_EQ( StatisticsOf( owner ).m_nMaximum, 500u );
	EXPECT_EQ( StatisticsOf( owner ).m_flMean, 500.0f );
	EXPECT_GT( StatisticsOf( owner ).m_flDeviation, 100'000.0f ); // the 32nd

	values[100 - 1 - 31] = 900;
	Take( owner, values );
	EXPECT_EQ( StatisticsOf( owner ).m_nMaximum, 900u );
}

TEST( BudgetStatistics, NeedThreeSamplesWithTickSampling )
{
	CFakeBudgetViewOwner owner( 2 );
	owner.m_Data.m_bTickSampling = true;
	Take( owner, { 100, 200 } );
	EXPECT_EQ( StatisticsOf( owner ), BudgetStatistics{} );
	Take( owner, { 100, 200, 300 } );
	EXPECT_NE( StatisticsOf( owner ), BudgetStatistics{} );
}

TEST( BudgetStatistics, HoldTheLargestValues )
{
	const uint32_t nLargest = std::numeric_limits<uint32_t>::max();
	CFakeBudgetViewOwner owner( 2 );
	Take( owner, std::vector<uint32_t>( 32, nLargest ) );
	const BudgetStatistics statistics = StatisticsOf( owner );
	EXPECT_EQ( statistics.m_nMinimum, nLargest );
	EXPECT_EQ( statistics.m_flMean, 4294967296.0f );
	EXPECT_EQ( statistics.m_flDeviation, 0.0f );
}

TEST( BudgetStatistics, AgreeWithAModelOnRandomRings )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	CFakeBudgetViewOwner owner( 4 );
	for ( int nRound = 0; nRound < 300; nRound++ )
	{
		if ( nRound % 50 == 0 )
			owner.FillRings( random, nRound % 100 == 0 ? 20'000 : std::numeric_limits<uint32_t>::max() );
		const uint32_t nRange = nRound % 3 == 0 ? 40 : nRound % 3 == 1 ? 5000 : std::numeric_limits<uint32_t>::max();
		owner.m_Data.m_nSampleCount = static_cast<uint32_t>( random() ) % nRange;
		owner.m_Data.m_nCursor = static_cast<uint32_t>( random() ) % ( owner.m_Data.m_nSampleCount + 1 );
		owner.m_Data.m_bLive = random() % 2 == 0;
		owner.m_Data.m_bTickSampling = random() % 2 == 0;
		const int nBudget = static_cast<int>( random() % 4 );
		ExpectNear( ComputeBudgetStatistics( owner.GetViewData(), nBudget ), Model( owner, nBudget ) );
	}
}

TEST( BudgetStatistics, AreCopiedAsOneLineWithTheName )
{
	CFakeBudgetViewOwner owner( 2 );
	owner.m_Categories[0].m_Name = "Rendu 3D é";
	Take( owner, { 1000, 3000 } );
	owner.SetPeak( 0, 4567 );
	EXPECT_EQ( BudgetSummaryText( owner.GetViewData(), 0 ).toStdString(),
		"Rendu 3D é: avg 2.00 stddev 1.414 [1.000->3.000] peak 4.57" );
}
