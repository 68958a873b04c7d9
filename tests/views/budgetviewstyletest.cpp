#include "views/budgetviewstyle.h"

#include <gtest/gtest.h>

#include <QFontMetrics>

TEST( BudgetViewStyle, HasTheColoursOfTheHostsDarkOrLightStyle )
{
	const BudgetViewColours dark = BudgetViewColours::ForStyle( true );
	EXPECT_EQ( dark.m_Text, QColor( Qt::lightGray ) );
	EXPECT_EQ( dark.m_Grid, QColor( Qt::lightGray ) );
	EXPECT_EQ( dark.m_SubGrid, QColor( Qt::lightGray ) );
	EXPECT_EQ( dark.m_Statistics, QColor( 255, 255, 0 ) );
	EXPECT_EQ( dark.m_Cursor, QColor( 255, 255, 255 ) );
	const BudgetViewColours light = BudgetViewColours::ForStyle( false );
	EXPECT_EQ( light.m_Text, QColor( Qt::black ) );
	EXPECT_EQ( light.m_Grid, QColor( Qt::black ) );
	EXPECT_EQ( light.m_SubGrid, QColor( Qt::black ) );
	EXPECT_EQ( light.m_Statistics, QColor( Qt::black ) );
	EXPECT_EQ( light.m_Cursor, QColor( Qt::blue ) );
}

TEST( BudgetViewStyle, HasAFontForRowsAndOneForCaptionsWithTheirLineHeights )
{
	const BudgetViewStyle style = BudgetViewStyle::Make( true, 1.5f );
	EXPECT_EQ( style.m_RowFont.family(), "Verdana" );
	EXPECT_EQ( style.m_RowFont.pointSize(), 9 );
	EXPECT_EQ( style.m_RowFont.weight(), 50 );
	EXPECT_EQ( style.m_CaptionFont.family(), "Courier New" );
	EXPECT_EQ( style.m_CaptionFont.pointSize(), 10 );
	EXPECT_EQ( style.m_CaptionFont.weight(), 50 );
	EXPECT_EQ( style.m_nRowHeight, QFontMetrics( QFont( "Verdana", 9 ) ).height() + 2 );
	EXPECT_EQ( style.m_nCaptionHeight, QFontMetrics( QFont( "Courier New", 10 ) ).height() + 2 );
	EXPECT_EQ( style.m_nRowInset, 2 );
	EXPECT_EQ( style.m_flUIScale, 1.5f );
}
