#include "views/budgetrows.h"

#include <gtest/gtest.h>

TEST( BudgetRows, FitBelowTheHeaderRow )
{
	EXPECT_EQ( VisibleBudgetRows( 100, 20 ), 4 );
	EXPECT_EQ( VisibleBudgetRows( 119, 20 ), 4 );
	EXPECT_EQ( VisibleBudgetRows( 120, 20 ), 5 );
	EXPECT_EQ( VisibleBudgetRows( 39, 20 ), 0 );
	EXPECT_EQ( VisibleBudgetRows( 0, 20 ), -1 );
}

TEST( BudgetRows, EndAtTheLastBudgetOrTheLastRowThatFits )
{
	EXPECT_EQ( BudgetRows::Make( 100, 20, 2, 0, 64 ).m_nEnd, 4 );
	EXPECT_EQ( BudgetRows::Make( 100, 20, 2, 62, 64 ).m_nEnd, 64 );
	EXPECT_EQ( BudgetRows::Make( 100, 20, 2, 0, 64 ).Count(), 4 );
	EXPECT_EQ( BudgetRows::Make( 100, 20, 2, 62, 64 ).Count(), 2 );
	EXPECT_EQ( BudgetRows::Make( 100, 20, 2, 0, 0 ).Count(), 0 );
	EXPECT_EQ( BudgetRows::Make( 100, 20, 2, 10, 4 ).Count(), 0 ); // scrolled beyond a list that became shorter
	EXPECT_EQ( BudgetRows::Make( 0, 20, 2, 0, 64 ).Count(), 0 );
}

TEST( BudgetRows, KeepTheInsetAboveAndBelowABox )
{
	const BudgetRows rows = BudgetRows::Make( 200, 20, 2, 3, 64 );
	EXPECT_EQ( rows.Box( 3, 0, 49 ), QRect( QPoint( 0, 22 ), QPoint( 49, 37 ) ) );
	EXPECT_EQ( rows.Box( 5, 7, 9 ), QRect( QPoint( 7, 62 ), QPoint( 9, 77 ) ) );
}

TEST( BudgetRows, FindTheBudgetOfEveryPixelOfItsRowAndNoneElsewhere )
{
	const BudgetRows rows = BudgetRows::Make( 100, 20, 2, 3, 5 );
	EXPECT_EQ( rows.BudgetAt( -1 ), -1 );
	EXPECT_EQ( rows.BudgetAt( 19 ), -1 ); // the header
	EXPECT_EQ( rows.BudgetAt( 20 ), 3 );
	EXPECT_EQ( rows.BudgetAt( 39 ), 3 );
	EXPECT_EQ( rows.BudgetAt( 40 ), 4 );
	EXPECT_EQ( rows.BudgetAt( 59 ), 4 );
	EXPECT_EQ( rows.BudgetAt( 60 ), -1 );
}
