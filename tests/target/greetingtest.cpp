// How a conversation begins, and what is no conversation.
#include <gmock/gmock.h>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "session.h"
#include "wire/sessionchunks.h"

namespace
{
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Greeting : public CSession
{
};

TEST_F( Greeting, TheEngineIntroducesItselfAfterTheConsole )
{
	CTestConsole console( showbudget::Port() );
	const Chunk chunk = console.Greet();
	const std::optional<wire::Hello> hello = wire::ReadHello( chunk.m_Payload );
	ASSERT_TRUE( hello.has_value() );
	EXPECT_EQ( hello->m_nProtocol, 2u );
	EXPECT_EQ( hello->m_nProcessId, static_cast<uint32_t>( getpid() ) );
	EXPECT_EQ( hello->m_Name, "test engine" );
	EXPECT_GT( hello->m_nTickFrequency, 100000000u );
	EXPECT_TRUE( WaitForLog( "(test console) connected" ) );
}

TEST_F( Greeting, NothingIsSentBeforeTheConsoleIntroducedItself )
{
	CTestConsole silent( showbudget::Port() );
	CTestConsole greeted( showbudget::Port() );
	greeted.Greet();
	showbudget::Print( showbudget::Severity::Message, "for those who greeted" );
	EXPECT_EQ( greeted.ReceiveLine(), "for those who greeted\n" );
	EXPECT_FALSE( silent.HasBytes() );
}

TEST_F( Greeting, AGreetingMayComeByteByByte )
{
	CTestConsole console( showbudget::Port() );
	std::vector<uint8_t> bytes( wire::CHUNK_HEADER_SIZE );
	const std::vector<uint8_t> hello = wire::WriteHello( { wire::PROTOCOL_VERSION, 0, 0, "slow" } );
	wire::WriteChunkHeader( std::span<uint8_t, wire::CHUNK_HEADER_SIZE>( bytes.data(), wire::CHUNK_HEADER_SIZE ),
		{ wire::CHUNK_HELLO, wire::CHUNK_VERSION, static_cast<uint32_t>( hello.size() ) } );
	bytes.insert( bytes.end(), hello.begin(), hello.end() );
	for ( const uint8_t &nByte : bytes )
		console.SendBytes( { &nByte, 1 } );
	EXPECT_EQ( console.ReceiveType( wire::CHUNK_HELLO ).m_Header.m_nType, wire::CHUNK_HELLO );
}

TEST_F( Greeting, AnotherProtocolVersionLearnsTheEnginesAndIsRefused )
{
	CTestConsole console( showbudget::Port() );
	console.Send( wire::CHUNK_HELLO, wire::WriteHello( { 7, 0, 0, "from the future" } ) );
	const std::optional<wire::Hello> hello = wire::ReadHello( console.ReceiveType( wire::CHUNK_HELLO ).m_Payload );
	ASSERT_TRUE( hello.has_value() );
	EXPECT_EQ( hello->m_nProtocol, 2u );
	EXPECT_TRUE( console.IsEnded() );
	EXPECT_EQ( hello->m_Refusal, "the console speaks protocol version 7, this engine version 2" );
	EXPECT_TRUE( WaitForLog( "left: refused: the console speaks protocol version 7, this engine version 2" ) );
}

TEST_F( Greeting, AnotherChunkVersionEndsTheConnection )
{
	CTestConsole console( showbudget::Port() );
	console.Send( wire::CHUNK_HELLO, wire::WriteHello( {} ), 3 );
	EXPECT_TRUE( console.IsEnded() );
	EXPECT_TRUE( WaitForLog( "its chunks are version 3, this engine's 2" ) );
}

TEST_F( Greeting, WhatIsNoGreetingEndsTheConnectionUnanswered )
{
	const std::string zeros( 4096, '\0' );
	for ( const std::string_view garbage : { std::string_view( "GET / HTTP/1.1\r\nHost: localhost\r\n\r\n" ),
			  std::string_view( "\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03\x00" ), std::string_view( zeros ) } )
	{
		CTestConsole console( showbudget::Port() );
		console.SendText( garbage );
		EXPECT_FALSE( console.Receive().has_value() );
	}
	EXPECT_TRUE( WaitForLog( "it does not speak this protocol" ) );
}

TEST_F( Greeting, AnotherChunkBeforeTheGreetingEndsTheConnection )
{
	CTestConsole console( showbudget::Port() );
	console.WantBudgets( true );
	EXPECT_FALSE( console.Receive().has_value() );
	EXPECT_EQ( showbudget::detail::g_nWanted.load(), 0u );
}

TEST_F( Greeting, AGreetingThatIsTooShortEndsTheConnection )
{
	CTestConsole console( showbudget::Port() );
	console.Send( wire::CHUNK_HELLO, std::vector<uint8_t>( 15 ) );
	EXPECT_FALSE( console.Receive().has_value() );
	EXPECT_TRUE( WaitForLog( "its greeting is too short" ) );
}

TEST_F( Greeting, AnAnnouncedLengthThatNoConsoleNeedsEndsTheConnection )
{
	CTestConsole before( showbudget::Port() );
	before.SendText( std::string_view( "HELO\0\2\0\0\xff\xff\xff\xff", 12 ) );
	EXPECT_FALSE( before.Receive().has_value() );
	EXPECT_TRUE( WaitForLog( "'HELO' of 4294967295 bytes" ) );

	CTestConsole after( showbudget::Port() );
	after.Greet();
	after.SendText( std::string_view( "KMPN\0\2\0\0\0\x10\0\1", 12 ) );
	EXPECT_TRUE( after.IsEnded() );
	EXPECT_TRUE( WaitForLog( "'KMPN' of 1048577 bytes" ) );
}

TEST_F( Greeting, AConsolesNameIsOneLineInTheLog )
{
	CTestConsole console( showbudget::Port() );
	console.Send( wire::CHUNK_HELLO, wire::WriteHello( { 2, 0, 0, "me\nError: all is lost\x1b[2J" } ) );
	console.ReceiveType( wire::CHUNK_HELLO );
	EXPECT_TRUE( WaitForLog( "(me?Error: all is lost?[2J) connected" ) );
}

// Whoever reaches the port can write there what he likes, also when he is not let in.
TEST_F( Greeting, ANameHasNothingThatTheTerminalOfTheLogObeys )
{
	CTestConsole console( showbudget::Port() );
	// Escape sequences of 8-bit terminals, in UTF-8 and without, and a character that turns the direction of text.
	const std::string name = "a\xC2\x9B"
							 "1m\x9B"
							 "2J \xE2\x80\xAE"
							 "ereht \xC3\xA9";
	console.Send( wire::CHUNK_HELLO, wire::WriteHello( { 7, 0, 0, name } ) );
	console.ReceiveType( wire::CHUNK_HELLO );
	EXPECT_TRUE( console.IsEnded() );
	EXPECT_TRUE( WaitForLog( "(a?1m?2J ?ereht \xC3\xA9) left: refused" ) );
}

TEST_F( Greeting, TheFifthConsoleIsToldWhyItIsRefused )
{
	std::vector<std::unique_ptr<CTestConsole>> consoles;
	for ( int i = 0; i < 4; i++ )
	{
		consoles.push_back( std::make_unique<CTestConsole>( showbudget::Port() ) );
		consoles.back()->Greet();
	}
	CTestConsole fifth( showbudget::Port() );
	const std::optional<wire::Hello> hello = wire::ReadHello( fifth.Greet().m_Payload );
	ASSERT_TRUE( hello.has_value() );
	EXPECT_EQ( hello->m_Refusal, "too many consoles are connected (at most 4)" );
	EXPECT_FALSE( fifth.Receive().has_value() ) << "nothing follows a refusal";
	EXPECT_TRUE( WaitForLog( "left: refused: too many consoles are connected (at most 4)" ) );

	showbudget::Print( showbudget::Severity::Warning, "still here" );
	for ( const auto &pConsole : consoles )
		EXPECT_EQ( pConsole->ReceiveLine(), "still here\n" );

	consoles.pop_back();
	EXPECT_TRUE( WaitForLog( "left: it hung up" ) );
	CTestConsole next( showbudget::Port() );
	next.Greet();
	showbudget::Print( showbudget::Severity::Warning, "welcome" );
	EXPECT_EQ( next.ReceiveLine(), "welcome\n" );
}

TEST_F( Greeting, ManySilentConnectionsDoNotKeepAConsoleOut )
{
	std::vector<std::unique_ptr<CTestConsole>> silent;
	for ( int i = 0; i < 40; i++ )
		silent.push_back( std::make_unique<CTestConsole>( showbudget::Port() ) );
	CTestConsole console( showbudget::Port() );
	console.Greet();
	EXPECT_TRUE( WaitForLog( "too many others wait" ) );
}

TEST_F( Greeting, AConsoleThatStaysSilentIsHungUpOn )
{
	EXPECT_EQ( showbudget::g_Times.m_Greeting, std::chrono::seconds( 5 ) );
	RestartWith( { .m_Greeting = std::chrono::milliseconds( 1 ) } );
	CTestConsole silent( showbudget::Port() );
	EXPECT_FALSE( silent.Receive().has_value() );
	EXPECT_TRUE( WaitForLog( "left: it did not introduce itself in time" ) );
	RestartWith( {} );
	CTestConsole next( showbudget::Port() );
	next.Greet();
	EXPECT_TRUE( WaitForLog( "(test console) connected" ) );
}

TEST_F( Greeting, AGreetedConsoleMayBeSilentForEver )
{
	RestartWith( { .m_Greeting = std::chrono::milliseconds( 200 ) } );
	CTestConsole greeted( showbudget::Port() );
	greeted.Greet();
	CTestConsole silent( showbudget::Port() );
	EXPECT_TRUE( WaitForLog( "it did not introduce itself in time" ) );
	showbudget::Print( showbudget::Severity::Message, "still here" );
	EXPECT_EQ( greeted.ReceiveLine(), "still here\n" );
}

TEST_F( Greeting, ASecondStartIsRefused )
{
	const uint16_t nPort = showbudget::Port();
	EXPECT_FALSE( showbudget::Start( MakeSettings() ) );
	EXPECT_EQ( showbudget::Port(), nPort );
}

class Listening : public testing::Test
{
protected:
	static void Keep( showbudget::Severity, const char *pLine, void *pLines )
	{
		static_cast<std::vector<std::string> *>( pLines )->push_back( pLine );
	}
	std::vector<std::string> m_Lines;
};

TEST_F( Listening, APortThatIsTakenIsOneLineAndTheEngineRunsOn )
{
	const int nSocket = socket( AF_INET, SOCK_STREAM, 0 );
	sockaddr_in address{};
	address.sin_family = AF_INET;
	address.sin_addr.s_addr = htonl( INADDR_LOOPBACK );
	socklen_t nLength = sizeof( address );
	ASSERT_EQ( bind( nSocket, reinterpret_cast<sockaddr *>( &address ), nLength ), 0 );
	ASSERT_EQ( listen( nSocket, 1 ), 0 );
	ASSERT_EQ( getsockname( nSocket, reinterpret_cast<sockaddr *>( &address ), &nLength ), 0 );

	showbudget::Settings settings;
	settings.m_nPort = ntohs( address.sin_port );
	settings.m_pLog = Keep;
	settings.m_pLogContext = &m_Lines;
	EXPECT_FALSE( showbudget::Start( settings ) );
	EXPECT_EQ( showbudget::Port(), 0 );
	EXPECT_THAT( m_Lines, ElementsAre( "cannot listen on 127.0.0.1:" + std::to_string( settings.m_nPort ) +
									   ": Address already in use; the engine runs on without it" ) );
	showbudget::EndFrame();
	close( nSocket );
	EXPECT_TRUE( showbudget::Start( settings ) );
	showbudget::Stop();
}

TEST_F( Listening, AnAddressThatIsNoneIsOneLine )
{
	showbudget::Settings settings;
	settings.m_pAddress = "localhost:80";
	settings.m_pLog = Keep;
	settings.m_pLogContext = &m_Lines;
	EXPECT_FALSE( showbudget::Start( settings ) );
	EXPECT_THAT( m_Lines, ElementsAre( HasSubstr( "\"localhost:80\" is no numeric address" ) ) );
}

TEST_F( Listening, AnAddressThatOthersReachIsOneWarning )
{
	showbudget::Settings settings;
	settings.m_pAddress = "0.0.0.0";
	settings.m_nPort = 0;
	settings.m_pLog = Keep;
	settings.m_pLogContext = &m_Lines;
	for ( const char *pToken : { static_cast<const char *>( nullptr ), "open" } )
	{
		for ( const bool bCommands : { false, true } )
		{
			settings.m_pToken = pToken;
			settings.m_bCommands = bCommands;
			ASSERT_TRUE( showbudget::Start( settings ) );
			showbudget::Stop();
		}
	}
	EXPECT_THAT(
		m_Lines, ElementsAre( "listening on 0.0.0.0: whoever can reach it can watch this engine; nothing is encrypted",
					 "listening on 0.0.0.0: whoever can reach it can watch this engine and run its commands; nothing "
					 "is encrypted",
					 "listening on 0.0.0.0: whoever can reach it and knows the token can watch this engine; nothing is "
					 "encrypted",
					 "listening on 0.0.0.0: whoever can reach it and knows the token can watch this engine and run its "
					 "commands; "
					 "nothing is encrypted" ) );
}

TEST_F( Listening, WithoutAnAddressOnlyThisMachineReachesIt )
{
	showbudget::Settings settings;
	settings.m_nPort = 0;
	settings.m_pLog = Keep;
	settings.m_pLogContext = &m_Lines;
	ASSERT_TRUE( showbudget::Start( settings ) );
	// Another address of this machine, which a port that listens on all of them would answer.
	const int nSocket = socket( AF_INET, SOCK_STREAM, 0 );
	sockaddr_in address{};
	address.sin_family = AF_INET;
	address.sin_port = htons( showbudget::Port() );
	address.sin_addr.s_addr = htonl( INADDR_LOOPBACK + 1 );
	EXPECT_EQ( connect( nSocket, reinterpret_cast<sockaddr *>( &address ), sizeof( address ) ), -1 );
	EXPECT_EQ( errno, ECONNREFUSED );
	close( nSocket );
	showbudget::Stop();
	EXPECT_THAT( m_Lines, IsEmpty() );
}
} // namespace
