// Console commands.
#include <gmock/gmock.h>

#include <thread>

#include "session.h"
#include "target/src/engine.h"
#include "wire/sessionchunks.h"

namespace
{
using testing::ElementsAre;
using testing::HasSubstr;

struct Call
{
	std::vector<std::string> m_Arguments;
	std::thread::id m_Thread;
};
std::vector<Call> g_Calls;

void OnTestCommand( int nArguments, const char *const *ppArguments, void *pContext )
{
	EXPECT_EQ( pContext, &g_Calls );
	g_Calls.push_back( { { ppArguments, ppArguments + nArguments }, std::this_thread::get_id() } );
}

class Commands : public CSession
{
protected:
	void SetUp() override
	{
		CSession::SetUp();
		m_pConsole = std::make_unique<CTestConsole>( showbudget::Port() );
		m_pConsole->Greet();
	}
	showbudget::Settings MakeSettings() override
	{
		showbudget::Settings settings = CSession::MakeSettings();
		settings.m_bCommands = true;
		return settings;
	}
	void Register()
	{
		g_Calls.clear();
		if ( s_bRegistered )
			return;
		s_bRegistered = true;
		ASSERT_TRUE( showbudget::RegisterCommand( "test", "ARGUMENT...: for the test", OnTestCommand, &g_Calls ) );
	}
	// Ends frames until that many calls were made.
	static bool RunUntil( size_t nCalls )
	{
		return WaitUntil(
			[nCalls]
			{
				showbudget::EndFrame();
				return g_Calls.size() >= nCalls;
			} );
	}

	static inline bool s_bRegistered = false;
	std::unique_ptr<CTestConsole> m_pConsole;
};

TEST_F( Commands, RunInsideEndFrameOnItsThread )
{
	Register();
	m_pConsole->Command( "test one \"two and a half\"  three\n" );
	ASSERT_TRUE( RunUntil( 1 ) );
	EXPECT_THAT( g_Calls[0].m_Arguments, ElementsAre( "test", "one", "two and a half", "three" ) );
	EXPECT_EQ( g_Calls[0].m_Thread, std::this_thread::get_id() );
}

TEST_F( Commands, KeepTheirOrder )
{
	Register();
	for ( const char *pLine : { "test 1", "test 2", "test 3" } )
		m_pConsole->Command( pLine );
	ASSERT_TRUE( RunUntil( 3 ) );
	for ( size_t i = 0; i < 3; i++ )
		EXPECT_EQ( g_Calls[i].m_Arguments.at( 1 ), std::to_string( i + 1 ) );
}

TEST_F( Commands, TheLastArgumentTakesWhatDoesNotFit )
{
	Register();
	std::string line = "test";
	for ( int i = 1; i < 40; i++ )
		line += ' ' + std::to_string( i );
	m_pConsole->Command( line );
	ASSERT_TRUE( RunUntil( 1 ) );
	ASSERT_EQ( g_Calls[0].m_Arguments.size(), 32u );
	EXPECT_EQ( g_Calls[0].m_Arguments[30], "30" );
	EXPECT_EQ( g_Calls[0].m_Arguments[31], "31 32 33 34 35 36 37 38 39" );
}

TEST_F( Commands, OneThatNobodyKnowsIsAnswered )
{
	Register();
	m_pConsole->Command( "nonsense" );
	m_pConsole->Command( "test" );
	ASSERT_TRUE( RunUntil( 1 ) );
	EXPECT_EQ( m_pConsole->ReceiveLine(), "Unknown command \"nonsense\"; \"help\" lists them.\n" );
}

TEST_F( Commands, HelpListsThem )
{
	Register();
	m_pConsole->Command( "help" );
	m_pConsole->Command( "test" );
	ASSERT_TRUE( RunUntil( 1 ) );
	EXPECT_EQ( m_pConsole->ReceiveLine(), "test - ARGUMENT...: for the test\n" );
}

TEST_F( Commands, OneThatIsTooLongEndsTheConnection )
{
	Register();
	m_pConsole->Command( std::string( wire::MAX_COMMAND_TEXT + 1, 'x' ) );
	EXPECT_TRUE( m_pConsole->IsEnded() );
	EXPECT_TRUE( WaitForLog( "its command is too long" ) );
}

TEST_F( Commands, AnEngineThatHangsTellsSo )
{
	Register();
	// No frame ends meanwhile.
	for ( uint32_t i = 0; i <= showbudget::CCommands::QUEUED; i++ )
		m_pConsole->Command( "test" );
	EXPECT_EQ( m_pConsole->ReceiveLine(), "The engine is busy; it did not get the command.\n" );
	ASSERT_TRUE( RunUntil( showbudget::CCommands::QUEUED ) );
}

TEST_F( Commands, NamesMustBeFreeSingleWords )
{
	Register();
	for ( const char *pName : { "test", "help", "", "two words", "tab\there", static_cast<const char *>( nullptr ) } )
		EXPECT_FALSE( showbudget::RegisterCommand( pName, "", OnTestCommand, nullptr ) );
	EXPECT_FALSE( showbudget::RegisterCommand( std::string( 64, 'n' ).c_str(), "", OnTestCommand, nullptr ) );
	EXPECT_FALSE( showbudget::RegisterCommand( "nothing", "", nullptr, nullptr ) );
}

TEST_F( Commands, LinesAreCutBetweenCharacters )
{
	showbudget::Print( showbudget::Severity::Error, ( std::string( 1999, 'x' ) + "\xC3\xBC and more" ).c_str() );
	EXPECT_EQ( m_pConsole->ReceiveLine(), std::string( 1999, 'x' ) + '\n' );
}

TEST_F( Commands, LinesKeepTheirSeverity )
{
	showbudget::PrintFormat( showbudget::Severity::Error, "%d of %s", 3, "a kind" );
	const Chunk chunk = m_pConsole->ReceiveType( wire::CHUNK_PRINT );
	const std::optional<wire::PrintLine> line = wire::ReadPrint( chunk.m_Payload );
	ASSERT_TRUE( line.has_value() );
	EXPECT_EQ( line->m_Severity, wire::PrintSeverity::Error );
	EXPECT_EQ( line->m_Text, "3 of a kind\n" );
}
} // namespace
