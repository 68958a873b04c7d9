#include "tools/statistics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "support/randomseed.h"

namespace
{
// The definition in other words: the point at p percent of a line through the sorted numbers.
double PercentileOf( std::vector<int32_t> numbers, double flPercent )
{
	std::sort( numbers.begin(), numbers.end() );
	const double flPlace = flPercent / 100.0 * static_cast<double>( numbers.size() - 1 );
	const double flLow = numbers[static_cast<size_t>( std::floor( flPlace ) )];
	const double flHigh = numbers[static_cast<size_t>( std::ceil( flPlace ) )];
	return flLow + ( flHigh - flLow ) * ( flPlace - std::floor( flPlace ) );
}
} // namespace

TEST( Statistics, PercentilesLieBetweenTheTwoNearestRanks )
{
	const CDistribution numbers( { 40, 10, 30, 20, 50 } );
	EXPECT_EQ( numbers.Percentile( 0.0 ), 10.0 );
	EXPECT_EQ( numbers.Percentile( 25.0 ), 20.0 );
	EXPECT_EQ( numbers.Percentile( 100.0 ), 50.0 );
	EXPECT_NEAR( numbers.Percentile( 90.0 ), 46.0, 1e-12 );
	EXPECT_NEAR( numbers.Percentile( 99.0 ), 49.6, 1e-12 );
}

TEST( Statistics, TheMedianOfAnEvenCountIsTheMeanOfTheMiddleTwo )
{
	EXPECT_EQ( CDistribution( { 4, 1, 100, 2 } ).Median(), 3.0 );
	EXPECT_EQ( CDistribution( { 4, 1, 100 } ).Median(), 4.0 );
}

TEST( Statistics, WithoutNumbersEveryFigureIsZero )
{
	const CDistribution none;
	EXPECT_EQ( none.Count(), 0u );
	EXPECT_EQ( none.Mean(), 0.0 );
	EXPECT_EQ( none.Variance(), 0.0 );
	EXPECT_EQ( none.Percentile( 99.0 ), 0.0 );
	EXPECT_EQ( none.Minimum(), 0 );
	EXPECT_EQ( none.Maximum(), 0 );
}

TEST( Statistics, OneNumberHasNoVariance )
{
	EXPECT_EQ( CDistribution( { 7 } ).Variance(), 0.0 );
	EXPECT_EQ( CDistribution( { 7 } ).Percentile( 95.0 ), 7.0 );
}

TEST( Statistics, TheVarianceIsThatOfASample )
{
	EXPECT_NEAR( CDistribution( { 2, 4, 4, 4, 5, 5, 7, 9 } ).Variance(), 32.0 / 7.0, 1e-12 );
}

TEST( Statistics, LargeNumbersDoNotOverflow )
{
	const int32_t nLargest = 0x7FFFFFFF;
	const CDistribution numbers( std::vector<int32_t>( 10, nLargest ) );
	EXPECT_EQ( numbers.Mean(), static_cast<double>( nLargest ) );
	EXPECT_EQ( numbers.Variance(), 0.0 );
	EXPECT_EQ( CDistribution( { -nLargest - 1, nLargest } ).Percentile( 50.0 ), -0.5 );
}

TEST( Statistics, ZerosGivenByTheirCountAreNumbersLikeTheOthers )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	for ( int nRound = 0; nRound < 300; nRound++ )
	{
		std::vector<int32_t> numbers( random() % 9 );
		for ( int32_t &nNumber : numbers )
			nNumber = static_cast<int32_t>( random() % 11 ) - 5;
		const size_t nZeros = random() % 6;
		const CDistribution counted( numbers, nZeros );
		numbers.insert( numbers.end(), nZeros, 0 );
		if ( numbers.empty() )
			continue;
		double flSum = 0.0;
		for ( const int32_t nNumber : numbers )
			flSum += nNumber;
		const double flMean = flSum / static_cast<double>( numbers.size() );
		double flSquares = 0.0;
		for ( const int32_t nNumber : numbers )
			flSquares += std::pow( nNumber - flMean, 2 );
		ASSERT_EQ( counted.Count(), numbers.size() );
		EXPECT_NEAR( counted.Mean(), flMean, 1e-9 );
		if ( numbers.size() > 1 )
		{
			EXPECT_NEAR( counted.Variance(), flSquares / static_cast<double>( numbers.size() - 1 ), 1e-9 );
		}
		for ( const double flPercent : { 0.0, 10.0, 33.0, 50.0, 95.0, 99.0, 100.0 } )
			EXPECT_NEAR( counted.Percentile( flPercent ), PercentileOf( numbers, flPercent ), 1e-9 ) << flPercent;
		EXPECT_EQ( counted.Maximum(), *std::max_element( numbers.begin(), numbers.end() ) );
		EXPECT_EQ( counted.Minimum(), *std::min_element( numbers.begin(), numbers.end() ) );
	}
}
