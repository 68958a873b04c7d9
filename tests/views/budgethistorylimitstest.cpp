// The history panel where its counter of samples comes to its limits.
#include <gtest/gtest.h>

#include <limits>

#include "views/historypanel.h"

namespace
{
constexpr uint32_t LAST_COUNT = std::numeric_limits<uint32_t>::max();
} // namespace

// A scroll bar counts in int: from 2^31 samples on, its range begins at another sample than 0.
TEST( BudgetHistory, KeepsCursorScrollBarAndColumnsRightWhereAnIntWouldOverflow )
{
	Panel panel;
	panel.m_Owner.m_Data.m_nSampleCount = 0x80000000u - 4990;
	panel.Add( 4990 - 2 );
	for ( uint32_t nCount = 0x7FFFFFFEu; nCount < 0x80000000u + 1000; nCount += 7 )
	{
		ASSERT_EQ( panel.m_Owner.m_Data.m_nSampleCount, nCount );
		panel.m_Widget.SetCursorMode( true );
		ASSERT_EQ( panel.m_Widget.Cursor(), nCount - 1 );
		ASSERT_EQ( panel.m_Label.text(), QString( " Cursor: %1 " ).arg( nCount ) );
		ASSERT_FALSE( panel.m_ScrollBar.isHidden() );
		ASSERT_EQ( panel.m_ScrollBar.value(), panel.m_ScrollBar.maximum() );
		QTest::mouseClick( &panel.m_Bars, Qt::LeftButton, Qt::NoModifier, panel.AtColumn( 0 ) );
		ASSERT_EQ( panel.m_Widget.Cursor(), nCount - static_cast<uint32_t>( panel.Visible() ) );
		panel.m_ScrollBar.setValue( panel.m_ScrollBar.value() - 10 );
		QTest::mouseClick( &panel.m_Bars, Qt::LeftButton, Qt::NoModifier, panel.AtColumn( 0 ) );
		ASSERT_EQ( panel.m_Widget.Cursor(), nCount - static_cast<uint32_t>( panel.Visible() ) - 10 );
		panel.Press( Qt::Key_Home );
		ASSERT_EQ( panel.m_Widget.Cursor(), nCount - BUDGET_RING_SIZE );
		panel.Press( Qt::Key_End );
		ASSERT_EQ( panel.m_Widget.Cursor(), nCount - 1 );
		panel.m_Widget.SetCursorMode( false );
		panel.Add( 7 );
	}
	EXPECT_FALSE( panel.m_Widget.grab().isNull() );
}

TEST( BudgetHistory, StaysValidAtTheCountersLastStepAndAtItsWrap )
{
	Panel panel;
	panel.m_Owner.m_Data.m_nSampleCount = LAST_COUNT - 5000;
	panel.Add( 5000 );
	ASSERT_EQ( panel.m_Owner.m_Data.m_nSampleCount, LAST_COUNT );
	panel.m_Widget.SetCursorMode( true );
	EXPECT_EQ( panel.m_Widget.Cursor(), LAST_COUNT - 1 );
	EXPECT_EQ( panel.m_Label.text(), " Cursor: 4294967295 " );
	EXPECT_EQ( panel.m_ScrollBar.value(), panel.m_ScrollBar.maximum() );
	QTest::mouseClick( &panel.m_Bars, Qt::LeftButton, Qt::NoModifier, panel.AtColumn( 0 ) );
	EXPECT_EQ( panel.m_Widget.Cursor(), LAST_COUNT - static_cast<uint32_t>( panel.Visible() ) );
	panel.Press( Qt::Key_Home );
	EXPECT_EQ( panel.m_Widget.Cursor(), LAST_COUNT - BUDGET_RING_SIZE );
	QTest::mouseClick( &panel.m_Bars, Qt::LeftButton, Qt::NoModifier, panel.AtColumn( 1 ) );
	EXPECT_EQ( panel.m_Widget.Cursor(), LAST_COUNT - BUDGET_RING_SIZE + 1 ); // the cursor was in the leftmost column

	panel.m_Widget.SetCursorMode( false );
	panel.Add( 1 );
	ASSERT_EQ( panel.m_Owner.m_Data.m_nSampleCount, 0u );
	panel.m_Widget.SetCursorMode( true );
	EXPECT_EQ( panel.m_Widget.Cursor(), 0u );
	EXPECT_TRUE( panel.m_ScrollBar.isHidden() );
	panel.m_Widget.SetCursorMode( false );
	panel.Add( 3 );
	panel.m_Widget.SetCursorMode( true );
	EXPECT_EQ( panel.m_Widget.Cursor(), 2u );
	EXPECT_FALSE( panel.m_Widget.grab().isNull() );
}
