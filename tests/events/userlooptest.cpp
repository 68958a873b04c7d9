// What the tests of the order of events stand on.
#include "support/userloop.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QApplication>
#include <QMenu>
#include <vector>

#include "support/watchdog.h"

namespace
{
void ClosePopup()
{
	if ( QWidget *pPopup = QApplication::activePopupWidget() )
		pPopup->close();
}
} // namespace

TEST( UserLoop, MakesOneStepPerTurnAndLetsSomethingHappenInOneTurnInstead )
{
	std::vector<char> order;
	CUserLoop loop( [] {} );
	for ( const char c : { 'a', 'b', 'c' } )
		loop.AddStep( [&order, c] { order.push_back( c ); } );
	EXPECT_TRUE( loop.Run( 1, [&] { order.push_back( '!' ); } ) );
	EXPECT_EQ( order, ( std::vector<char>{ 'a', '!', 'b', 'c' } ) );
	EXPECT_FALSE( loop.WasAsked() );
}

TEST( UserLoop, SaysThatATurnDidNotCome )
{
	CUserLoop loop( [] {} );
	loop.AddStep( nullptr );
	EXPECT_FALSE( loop.Run( 10, [] { ADD_FAILURE() << "there are fewer turns"; } ) );
}

TEST( UserLoop, HasTurnsInsideTheLoopOfAStep )
{
	bool bMenuIsOpen = false;
	bool bCameBack = false;
	CUserLoop loop( &ClosePopup );
	loop.AddStep(
		[&]
		{
			QMenu menu;
			menu.addAction( "entry" );
			menu.exec();
			bCameBack = true;
		} );
	loop.AddStep( nullptr );
	EXPECT_TRUE( loop.Run( 1,
		[&]
		{
			bMenuIsOpen = QApplication::activePopupWidget() != nullptr;
			EXPECT_FALSE( bCameBack );
		} ) );
	EXPECT_TRUE( bMenuIsOpen );
	EXPECT_TRUE( bCameBack );
	EXPECT_TRUE( loop.WasAsked() );
}

TEST( UserLoop, WhatNeverEndsFailsTheTest )
{
	EXPECT_NONFATAL_FAILURE(
		{
			CUserLoop loop( [] {} ); // a user who does not answer
			loop.AddStep( [] { QMenu().exec(); } );
			loop.Run( -1, [] {} );
		},
		"it does not end" );
}

TEST( WatchdogDeathTest, EndsWhatHangsWithItsName )
{
	const auto hang = []
	{
		const CWatchdog watchdog( "dragging while quitting in turn 3", 1 );
		for ( ;; )
			pause();
	};
	EXPECT_DEATH( hang(), "Hangs: dragging while quitting in turn 3" );
}

TEST( Watchdog, LeavesAloneWhatEnds )
{
	{
		const CWatchdog watchdog( "nothing", 1 );
	}
	EXPECT_EQ( alarm( 0 ), 0u ) << "no alarm is left";
}
