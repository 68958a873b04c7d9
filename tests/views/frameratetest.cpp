#include "views/framerate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "views/fakehistoryowner.h"

namespace
{
const QRgb RED = qRgb( 255, 0, 0 );
const QRgb YELLOW = qRgb( 255, 255, 0 );
const QRgb GREEN = qRgb( 0, 255, 0 );
} // namespace

TEST( FrameRate, IsTheInverseOfTheFrameTotal )
{
	CFakeHistoryOwner owner( 2 );
	owner.AddSample( { 4000, 6000 }, 55.5f );
	owner.AddSample( {}, 44.5f );
	EXPECT_FLOAT_EQ( SampleFrameRate( owner.GetViewData(), 0 ), 100.0f );
	EXPECT_EQ( SampleFrameTime( owner.GetViewData(), 0 ), 10000u );
	EXPECT_EQ( SampleFrameRate( owner.GetViewData(), 1 ), 0.0f ); // a frame without time
}

TEST( FrameRate, IsTheTargetsAverageWhenAveragesAreOn )
{
	CFakeHistoryOwner owner( 2 );
	owner.AddSample( { 4000, 6000 }, 55.5f );
	owner.m_Data.m_bFPSAverages = true;
	EXPECT_EQ( SampleFrameRate( owner.GetViewData(), 0 ), 55.5f );
}

TEST( FrameRate, ReadsTheSlotOfTheSample )
{
	CFakeHistoryOwner owner( 1 );
	for ( uint32_t i = 0; i < BUDGET_RING_SIZE + 5; i++ )
		owner.AddSample( { 1000 + i } );
	EXPECT_EQ( SampleFrameTime( owner.GetViewData(), BUDGET_RING_SIZE + 2 ), 1000u + BUDGET_RING_SIZE + 2 );
	EXPECT_EQ( SampleFrameTime( owner.GetViewData(), 4000 ), 5000u );
}

TEST( FrameRate, IsZeroBeforeThereAreBudgets )
{
	CFakeBudgetViewOwner owner;
	owner.m_Data.m_nSampleCount = 1; // a sample can arrive before the categories do
	EXPECT_EQ( SampleFrameRate( owner.GetViewData(), 0 ), 0.0f );
}

TEST( FrameRateColour, GoesFromRedThroughYellowToGreen )
{
	const float flLower = 30.0f;
	const float flUpper = 60.0f;
	EXPECT_EQ( FrameRateColour( 0.0f, flLower, flUpper ), RED );
	EXPECT_EQ( FrameRateColour( 30.0f, flLower, flUpper ), RED );
	EXPECT_EQ( FrameRateColour( 33.0f, flLower, flUpper ), qRgb( 255, 51, 0 ) );  // 3 of 15: 255 / 5
	EXPECT_EQ( FrameRateColour( 37.5f, flLower, flUpper ), qRgb( 255, 127, 0 ) ); // half of 255, truncated
	EXPECT_EQ( FrameRateColour( 45.0f, flLower, flUpper ), YELLOW );
	EXPECT_EQ( FrameRateColour( 52.5f, flLower, flUpper ), qRgb( 127, 255, 0 ) );
	EXPECT_EQ( FrameRateColour( 60.0f, flLower, flUpper ), GREEN );
	EXPECT_EQ( FrameRateColour( 60.1f, flLower, flUpper ), GREEN );
	EXPECT_EQ( FrameRateColour( 1e9f, flLower, flUpper ), GREEN );
}

TEST( FrameRateColour, HasNoMiddleBetweenEqualMarkers )
{
	EXPECT_EQ( FrameRateColour( 59.0f, 60.0f, 60.0f ), RED );
	EXPECT_EQ( FrameRateColour( 60.0f, 60.0f, 60.0f ), RED );
	EXPECT_EQ( FrameRateColour( 60.5f, 60.0f, 60.0f ), GREEN );
	EXPECT_EQ( FrameRateColour( 300.0f, 300.0f, 300.0f ), RED ); // the upper marker's own colour, both at the end
	EXPECT_EQ( FrameRateColour( 300.0f, 299.0f, 299.0f ), GREEN );
}

TEST( FrameRateColour, CountsWhatIsNoNumberAsTheWorst )
{
	EXPECT_EQ( FrameRateColour( std::numeric_limits<float>::quiet_NaN(), 30.0f, 60.0f ), RED );
}

TEST( FrameRateColour, IsAColourOfTheScaleForAnyInput )
{
	constexpr float INFINITE = std::numeric_limits<float>::infinity();
	const float special[] = { 0.0f, -0.0f, 1.0f, 30.0f, 60.0f, 300.0f, -5.0f, 1e-40f, 3e38f, -3e38f, INFINITE,
		-INFINITE, std::numeric_limits<float>::quiet_NaN() };
	for ( const float flRate : special )
	{
		for ( const float flLower : special )
		{
			for ( const float flUpper : special )
			{
				const QRgb colour = FrameRateColour( flRate, flLower, flUpper );
				EXPECT_TRUE( qRed( colour ) == 255 || qGreen( colour ) == 255 )
					<< flRate << " between " << flLower << " and " << flUpper << ": " << std::hex << colour;
				EXPECT_EQ( qBlue( colour ), 0 );
				EXPECT_EQ( qAlpha( colour ), 255 );
			}
		}
	}
}

TEST( FrameRateColour, NeverGetsWorseWithTheRate )
{
	std::mt19937 random( 7 );
	std::uniform_int_distribution<int> marker( 1, 300 );
	const auto Goodness = []( QRgb colour ) { return qGreen( colour ) - qRed( colour ); };
	for ( int i = 0; i < 200; i++ )
	{
		const auto flLower = static_cast<float>( marker( random ) );
		const auto flUpper = static_cast<float>( marker( random ) );
		if ( flLower > flUpper )
			continue;
		int nBefore = -256;
		for ( float flRate = 0.0f; flRate < 310.0f; flRate += 0.5f )
		{
			const int nGoodness = Goodness( FrameRateColour( flRate, flLower, flUpper ) );
			EXPECT_GE( nGoodness, nBefore ) << flRate << " between " << flLower << " and " << flUpper;
			nBefore = nGoodness;
		}
	}
}
