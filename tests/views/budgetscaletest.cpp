#include "views/budgetscale.h"

#include <gtest/gtest.h>

#include <limits>

TEST( BudgetScale, ZoomsFromAQuarterToSix )
{
	EXPECT_EQ( BudgetBarsZoomFactor( -20 ), 0.25f );
	EXPECT_EQ( BudgetBarsZoomFactor( 0 ), 3.125f );
	EXPECT_EQ( BudgetBarsZoomFactor( 20 ), 6.0f );
}

TEST( BudgetScale, HasFiftyTo1200PixelsPerStep )
{
	EXPECT_EQ( BudgetBarsPixelsPerStep( -20 ), 50 );
	EXPECT_EQ( BudgetBarsPixelsPerStep( 0 ), 625 );
	EXPECT_EQ( BudgetBarsPixelsPerStep( 20 ), 1200 );
}

TEST( BudgetScale, GrowsWithEveryZoomStepByTheSameAmountButForTheTruncation )
{
	for ( int nStep = -20; nStep <= 20; nStep++ )
	{
		// In hundredths of a pixel the exact number is a whole one.
		const int nExactHundredths = 5000 + ( nStep + 20 ) * 2875;
		const int nPixels = BudgetBarsPixelsPerStep( nStep );
		EXPECT_LE( nPixels, nExactHundredths / 100 ) << "step " << nStep;
		// Single precision may miss a whole number by a hair.
		EXPECT_GE( nPixels, ( nExactHundredths - 1 ) / 100 ) << "step " << nStep;
	}
}

TEST( BudgetScale, TurnsFiveMillisecondsIntoOneStep )
{
	EXPECT_EQ( BudgetLength( 5000, BudgetUnitFactor( false ), 625 ), 625 );
	EXPECT_EQ( BudgetLength( 2500, BudgetUnitFactor( false ), 50 ), 25 );
}

TEST( BudgetScale, TurnsASixtiethOfASecondIntoOneStepInFrameRateUnits )
{
	EXPECT_NEAR( BudgetLength( 16667, BudgetUnitFactor( true ), 625 ), 625, 1 );
	EXPECT_EQ( BudgetLength( 50000, BudgetUnitFactor( true ), 100 ), 300 );
}

TEST( BudgetScale, TruncatesALengthTowardZero )
{
	EXPECT_EQ( BudgetLength( 0, BudgetUnitFactor( false ), 625 ), 0 );
	EXPECT_EQ( BudgetLength( 7, BudgetUnitFactor( false ), 625 ), 0 );  // 0.875 pixels
	EXPECT_EQ( BudgetLength( 15, BudgetUnitFactor( false ), 625 ), 1 ); // 1.875 pixels
}

TEST( BudgetScale, HoldsTheLargestValueAtTheLargestZoom )
{
	const uint32_t nLargest = std::numeric_limits<uint32_t>::max();
	EXPECT_NEAR( BudgetLength( nLargest, BudgetUnitFactor( false ), 1200 ), nLargest * 0.0002 * 1200, 200 );
	EXPECT_NEAR( BudgetLength( nLargest, BudgetUnitFactor( true ), 1200 ), nLargest * 0.00006 * 1200, 200 );
}
