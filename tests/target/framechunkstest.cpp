// From ticks to microseconds.
#include <gtest/gtest.h>

#include <random>

#include "target/src/framechunks.h"

namespace
{
using showbudget::CMicroseconds;
using showbudget::Frame;

Frame MakeFrame( uint64_t nBegin, uint64_t nEnd, std::span<const uint64_t> budgets )
{
	Frame frame{};
	frame.m_Header.m_nBegin = nBegin;
	frame.m_Header.m_nEnd = nEnd;
	frame.m_Header.m_nBudgets = static_cast<uint32_t>( budgets.size() );
	frame.m_BudgetTicks = budgets;
	return frame;
}

TEST( Microseconds, OtherComesLast )
{
	CMicroseconds microseconds( 1000000 );
	const uint64_t ticks[] = { 30, 10, 20 }; // "Other" is the first budget
	const auto values = microseconds.Convert( MakeFrame( 500, 560, ticks ) );
	EXPECT_EQ( std::vector( values.begin(), values.end() ), ( std::vector<uint32_t>{ 10, 20, 30 } ) );
}

TEST( Microseconds, ANegativeBudgetIsNothing )
{
	CMicroseconds microseconds( 1000000 );
	const uint64_t ticks[] = { 60, ~uint64_t( 0 ) - 5 };
	const auto values = microseconds.Convert( MakeFrame( 500, 560, ticks ) );
	EXPECT_EQ( std::vector( values.begin(), values.end() ), ( std::vector<uint32_t>{ 0, 60 } ) );
}

TEST( Microseconds, AFrameOfHoursIsCutToWhatFits )
{
	CMicroseconds microseconds( 1000 );
	const uint64_t ticks[] = { 0, 10000000 };
	const auto values = microseconds.Convert( MakeFrame( 5, 10000005, ticks ) );
	EXPECT_EQ( values[0], 0xFFFFFFFFu );
}

TEST( Microseconds, SumsAreExactOverManyFrames )
{
	const uint32_t nSeed = std::random_device()();
	SCOPED_TRACE( nSeed );
	std::mt19937_64 random( nSeed );
	constexpr uint64_t FREQUENCY = 2499997957;
	CMicroseconds microseconds( FREQUENCY );
	const uint64_t nOrigin = random() >> 8;
	uint64_t nBegin = nOrigin;
	uint64_t nTotal = 0;
	for ( int i = 0; i < 2000; i++ )
	{
		uint64_t ticks[5];
		uint64_t nEnd = nBegin;
		for ( uint64_t &nTicks : ticks )
			nEnd += nTicks = random() % 20000000;
		const auto values = microseconds.Convert( MakeFrame( nBegin, nEnd, ticks ) );
		uint64_t nSum = 0;
		for ( size_t n = 0; n < 5; n++ )
		{
			nSum += values[n];
			const long double flExact = static_cast<long double>( ticks[( n + 1 ) % 5] ) * 1.0e6L / FREQUENCY;
			EXPECT_NEAR( static_cast<double>( values[n] ), static_cast<double>( flExact ), 1.001 );
		}
		nTotal += nSum;
		nBegin = nEnd;
	}
	const long double flExact = static_cast<long double>( nBegin - nOrigin ) * 1.0e6L / FREQUENCY;
	EXPECT_EQ( nTotal, static_cast<uint64_t>( flExact ) );
}

TEST( FrameRate, IsFramesOverTheirTime )
{
	showbudget::FrameHeader header{};
	EXPECT_EQ( showbudget::AveragedFrameRate( header, 1000 ), 0.0f );
	header.m_nAverageFrames = 30;
	header.m_nAverageTicks = 500;
	EXPECT_FLOAT_EQ( showbudget::AveragedFrameRate( header, 1000 ), 60.0f );
}
} // namespace
