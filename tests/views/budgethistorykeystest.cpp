// The keys of the history panel.
#include <gtest/gtest.h>

#include "views/historypanel.h"

TEST( BudgetHistoryKeys, StepThroughTheSamples )
{
	Panel panel( 1000 );
	panel.m_Widget.SetCursorMode( true );
	const auto nScreen = static_cast<uint32_t>( panel.Visible() );
	panel.Press( Qt::Key_Right );
	EXPECT_EQ( panel.m_Widget.Cursor(), 999u );
	panel.Press( Qt::Key_Left );
	EXPECT_EQ( panel.m_Widget.Cursor(), 998u );
	EXPECT_EQ( panel.m_Label.text(), " Cursor: 999 " );
	panel.Press( Qt::Key_Left, Qt::ShiftModifier );
	EXPECT_EQ( panel.m_Widget.Cursor(), 988u );
	panel.Press( Qt::Key_Left, Qt::ControlModifier );
	EXPECT_EQ( panel.m_Widget.Cursor(), 988u - nScreen );
	panel.Press( Qt::Key_Right, Qt::ControlModifier );
	EXPECT_EQ( panel.m_Widget.Cursor(), 988u );
	panel.Press( Qt::Key_Right, Qt::ShiftModifier );
	EXPECT_EQ( panel.m_Widget.Cursor(), 998u );
	panel.Press( Qt::Key_Home );
	EXPECT_EQ( panel.m_Widget.Cursor(), 0u );
	panel.Press( Qt::Key_End );
	EXPECT_EQ( panel.m_Widget.Cursor(), 999u );
}

TEST( BudgetHistoryKeys, KeepTheCursorOnTheScreen )
{
	Panel panel( 1000 );
	panel.m_Widget.SetCursorMode( true );
	const int nScreen = panel.Visible();
	const auto IsVisible = [&]
	{
		const int nCursor = static_cast<int>( panel.m_Widget.Cursor() );
		return nCursor >= panel.m_ScrollBar.value() && nCursor < panel.m_ScrollBar.value() + nScreen;
	};
	for ( int i = 0; i < nScreen - 1; i++ )
		panel.Press( Qt::Key_Left );
	EXPECT_EQ( panel.m_ScrollBar.value(), 1000 - nScreen ); // still on the leftmost column
	panel.Press( Qt::Key_Left );
	EXPECT_EQ( panel.m_ScrollBar.value(), 1000 - nScreen - 1 );
	const std::pair<int, Qt::KeyboardModifier> keys[] = { { Qt::Key_Home, Qt::NoModifier },
		{ Qt::Key_Right, Qt::ControlModifier }, { Qt::Key_Right, Qt::ControlModifier },
		{ Qt::Key_Right, Qt::ShiftModifier }, { Qt::Key_End, Qt::NoModifier }, { Qt::Key_Left, Qt::ControlModifier },
		{ Qt::Key_Left, Qt::ControlModifier } };
	for ( const auto &[nKey, modifier] : keys )
	{
		panel.Press( nKey, modifier );
		EXPECT_TRUE( IsVisible() ) << "cursor " << panel.m_Widget.Cursor() << ", scrolled to "
								   << panel.m_ScrollBar.value();
	}
	panel.m_ScrollBar.setValue( 0 ); // the user scrolls away, and the next key comes back
	panel.Press( Qt::Key_Left );
	EXPECT_TRUE( IsVisible() );
}

TEST( BudgetHistoryKeys, RefreshTheWindowOncePerMove )
{
	Panel panel( 1000 );
	panel.m_Widget.SetCursorMode( true );
	panel.m_Owner.m_nCursorChanges = 0;
	panel.Press( Qt::Key_Left );
	EXPECT_EQ( panel.m_Owner.m_nCursorChanges, 1 );
	panel.Press( Qt::Key_Home ); // scrolls
	EXPECT_EQ( panel.m_Owner.m_nCursorChanges, 2 );
	panel.Press( Qt::Key_Home ); // stays
	EXPECT_EQ( panel.m_Owner.m_nCursorChanges, 2 );
}

TEST( BudgetHistoryKeys, NeverLeaveTheRing )
{
	Panel panel( BUDGET_RING_SIZE + 100 );
	panel.m_Widget.SetCursorMode( true );
	panel.Press( Qt::Key_Home );
	EXPECT_EQ( panel.m_Widget.Cursor(), 100u );
	panel.Press( Qt::Key_Left, Qt::ControlModifier );
	EXPECT_EQ( panel.m_Widget.Cursor(), 100u );
	// The mouse may still select a sample whose slot holds a later one; the next key comes back into the ring.
	panel.m_ScrollBar.setValue( 0 );
	QTest::mouseClick( &panel.m_Bars, Qt::LeftButton, Qt::NoModifier, panel.AtColumn( 3 ) );
	EXPECT_EQ( panel.m_Widget.Cursor(), 3u );
	panel.Press( Qt::Key_Right );
	EXPECT_EQ( panel.m_Widget.Cursor(), 100u );
}

TEST( BudgetHistoryKeys, FindSlowFramesAndShowThemWithTheirSurroundings )
{
	Panel panel( 300 );
	panel.m_Owner.AddSample( { 40000 } ); // sample 300, 25 frames per second
	panel.Add( 300 );
	panel.m_Owner.AddSample( { 90000 } ); // sample 601
	panel.Add( 300 );
	panel.m_Widget.SetCursorMode( true );
	panel.Press( Qt::Key_N );
	EXPECT_EQ( panel.m_Widget.Cursor(), 300u ); // from the newest sample the search goes on with the oldest
	const int nFromLeft = 300 - panel.m_ScrollBar.value();
	EXPECT_NEAR( nFromLeft, panel.Visible() / 2, 1 );
	panel.Press( Qt::Key_N );
	EXPECT_EQ( panel.m_Widget.Cursor(), 601u );
	panel.Press( Qt::Key_N, Qt::ShiftModifier );
	EXPECT_EQ( panel.m_Widget.Cursor(), 300u );
	panel.Press( Qt::Key_M );
	EXPECT_EQ( panel.m_Widget.Cursor(), 601u );
}

TEST( BudgetHistoryKeys, SlowIsWhatLiesBelowTheLowerMarker )
{
	Panel panel( 100 );
	panel.m_Widget.SetCursorMode( true );
	panel.Press( Qt::Key_N ); // about 95 frames per second, all of them
	EXPECT_EQ( panel.m_Widget.Cursor(), 99u );

	CFakeHistoryOwner owner;
	owner.m_Settings.SetFloat( "fps_lower_marker", 200.0f );
	CQBudgetHistoryWidget widget( owner, nullptr );
	owner.AddSample( { 10000 } );
	owner.AddSample( { 1000 } );
	widget.SetCursorMode( true );
	QTest::keyClick( &widget, Qt::Key_N );
	EXPECT_EQ( widget.Cursor(), 0u );
}

TEST( BudgetHistoryKeys, OnlySpaceWorksWhileSamplingRuns )
{
	Panel panel( 100 );
	panel.Press( Qt::Key_Left );
	panel.Press( Qt::Key_M );
	EXPECT_EQ( panel.m_Widget.Cursor(), 0u );
	EXPECT_EQ( panel.m_Owner.m_nToggles, 0 );
	panel.Press( Qt::Key_Space );
	EXPECT_EQ( panel.m_Owner.m_nToggles, 1 );
	panel.m_Widget.SetCursorMode( true );
	panel.Press( Qt::Key_Space );
	EXPECT_EQ( panel.m_Owner.m_nToggles, 2 );
}

TEST( BudgetHistoryKeys, HoldingSpaceTogglesOnce )
{
	Panel panel( 100 );
	QKeyEvent repeated( QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, " ", true );
	EXPECT_TRUE( panel.m_Widget.HandleKey( repeated ) );
	EXPECT_EQ( panel.m_Owner.m_nToggles, 0 );
}

TEST( BudgetHistoryKeys, OthersAreLeftToTheWindow )
{
	Panel panel( 100 );
	panel.m_Widget.SetCursorMode( true );
	EXPECT_FALSE( panel.m_Widget.HandleKey( QKeyEvent( QEvent::KeyPress, Qt::Key_Up, Qt::NoModifier ) ) );
	EXPECT_TRUE( panel.m_Widget.HandleKey( QKeyEvent( QEvent::KeyPress, Qt::Key_Left, Qt::NoModifier ) ) );
	panel.m_Widget.SetCursorMode( false );
	EXPECT_FALSE( panel.m_Widget.HandleKey( QKeyEvent( QEvent::KeyPress, Qt::Key_Left, Qt::NoModifier ) ) );
}

TEST( BudgetHistoryKeys, DoNothingWithoutSamples )
{
	Panel panel;
	panel.m_Widget.SetCursorMode( true );
	for ( const int nKey : { Qt::Key_Left, Qt::Key_Right, Qt::Key_Home, Qt::Key_End, Qt::Key_N, Qt::Key_M } )
	{
		panel.Press( nKey );
		EXPECT_EQ( panel.m_Widget.Cursor(), 0u );
	}
}

TEST( BudgetHistoryKeys, ASearchThatEndsOnTheScreenLeavesTheViewInPlace )
{
	Panel panel( 1000 );
	panel.m_Owner.AddSample( { 90000 } ); // sample 1000, far slower than the others
	panel.Add( static_cast<uint32_t>( panel.Visible() ) - 5 );
	panel.m_Widget.SetCursorMode( true );
	const int nLeftmost = panel.m_ScrollBar.value();
	for ( const int nKey : { Qt::Key_M, Qt::Key_N } )
	{
		panel.Press( Qt::Key_End );
		panel.Press( nKey );
		EXPECT_EQ( panel.m_Widget.Cursor(), 1000u );
		EXPECT_EQ( panel.m_ScrollBar.value(), nLeftmost );
	}
}

TEST( BudgetHistoryKeys, AClickOnAViewBringsTheFocusToThem )
{
	Panel panel( 100 );
	panel.m_Widget.SetCursorMode( true );
	panel.m_Widget.activateWindow();
	QApplication::processEvents();
	QTest::mouseClick( &panel.m_Graph, Qt::LeftButton, Qt::NoModifier, QPoint( 300, 5 ) );
	EXPECT_EQ( panel.m_Widget.focusWidget(), &panel.m_Widget );
}
