// An engine that was not told to take commands.
#include <gtest/gtest.h>

#include "session.h"
#include "wire/sessionchunks.h"

namespace
{
int g_nCalls = 0;

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

TEST_F( NoCommands, AreTakenUntilTheEngineTurnsThemOn )
{
	const auto count = []( int, const char *const *, void * ) { g_nCalls++; };
	ASSERT_TRUE( showbudget::RegisterCommand( "count", "", count, nullptr ) );
	ASSERT_TRUE( showbudget::RegisterRecordCommand( "." ) );
	CTestConsole console( showbudget::Port() );
	console.Greet();
	for ( const char *pLine : { "help", "record start x", "count", "" } )
	{
		console.Command( pLine );
		const Chunk chunk = console.ReceiveType( wire::CHUNK_PRINT );
		const std::optional<wire::PrintLine> line = wire::ReadPrint( chunk.m_Payload );
		ASSERT_TRUE( line.has_value() );
		EXPECT_EQ( line->m_Severity, wire::PrintSeverity::Warning );
		EXPECT_EQ( line->m_Text, "This engine takes no commands; they are turned on with Settings::m_bCommands where "
								 "it calls showbudget::Start().\n" );
	}
	showbudget::EndFrame();
	EXPECT_EQ( g_nCalls, 0 );
	EXPECT_FALSE( showbudget::GetRecordingState().m_bRunning );
	EXPECT_EQ( showbudget::GetRecordingState().m_nFrames, 0u );
}
} // namespace
