// An engine that offers no commands; in a program where no other test offers one.
#include <gtest/gtest.h>

#include "session.h"
#include "target/src/engine.h"

namespace
{
class NoCommands : public CSession
{
	// As the other tests of this program want it.
	showbudget::Settings MakeSettings() override
	{
		showbudget::Settings settings = CSession::MakeSettings();
		settings.m_Clock = showbudget::Clock::System;
		return settings;
	}
};

TEST_F( NoCommands, AreTakenUntilTheEngineOffersOne )
{
	ASSERT_FALSE( showbudget::g_Engine.m_Commands.Any() );
	CTestConsole console( showbudget::Port() );
	console.Greet();
	for ( const char *pLine : { "help", "record start x", "anything" } )
	{
		console.Command( pLine );
		EXPECT_EQ( console.ReceiveLine(), "This engine takes no commands.\n" );
	}
	showbudget::EndFrame();
	EXPECT_FALSE( showbudget::GetRecordingState().m_bRunning );
	EXPECT_EQ( showbudget::GetRecordingState().m_nFrames, 0u );
}
} // namespace
