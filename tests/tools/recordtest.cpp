#include <gmock/gmock.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "target/showbudget.h"
#include "tests/tools/fakeengine.h"
#include "tests/tools/kestorun.h"

namespace
{
// Until the console has enough.
void TalkForEver( CFakeEngine &engine )
{
	engine.ExpectGreetingAndStart();
	engine.SendBudgets( { "Physics", "Render" } );
	for ( uint32_t i = 0; i < 5; i++ )
		engine.SendFrame( { 100 + i, 200 } );
	engine.WaitForHangUp();
}

class KestoRecord : public testing::Test
{
protected:
	KestoRun Record( const std::string &address, const std::vector<std::string> &more )
	{
		std::vector<std::string> arguments{ "record", "--connect", address, m_Folder.Path( "x.csv" ) };
		arguments.insert( arguments.end(), more.begin(), more.end() );
		return CallKesto( arguments );
	}

	// The file's lines without the column of arrival times, which no test can know.
	std::vector<std::string> Lines()
	{
		std::vector<std::string> lines = SplitLines( m_Folder.Read( "x.csv" ) );
		for ( std::string &line : lines )
		{
			const size_t nFirst = line.find( ',' );
			line.erase( nFirst, line.find( ',', nFirst + 1 ) - nFirst );
		}
		return lines;
	}

	CTestFolder m_Folder;
};
} // namespace

TEST_F( KestoRecord, WritesARowForEachFrame )
{
	CFakeEngine engine(
		[]( CFakeEngine &self )
		{
			self.ExpectGreetingAndStart();
			self.SendBudgets( { "Physics", "Render, \"all\"" } );
			self.SendFrame( { 1500, 20 } );
			self.SendChunk( "PRNT", { 0, 0, 0, 0, 'x' } );
			self.SendChunk( "ZZZZ", { 1, 2, 3 } );
			self.SendFrame( { 4294967295u, 4294967295u }, false, 0x7FC00000 );
			self.SendFrame( { 0, 7, 9999 }, true, 0x41C80000 );
			self.WaitForHangUp();
		} );
	const KestoRun run = Record( engine.Address(), { "--frames", "3" } );
	EXPECT_EQ( run.m_nStatus, 0 );
	EXPECT_EQ( run.m_Output, "" );
	EXPECT_EQ( run.m_Errors, "" );
	EXPECT_EQ( Lines(),
		( std::vector<std::string>{ "frame,frame_rate,begins_tick,Physics_us,\"Render, \"\"all\"\"_us\",total_us",
			"0,60.000,1,1500,20,1520", "1,0.000,0,4294967295,4294967295,8589934590", "2,25.000,1,0,7,7" } ) );
	const std::vector<std::string> raw = SplitLines( m_Folder.Read( "x.csv" ) );
	EXPECT_TRUE( raw[0].starts_with( "frame,seconds,frame_rate," ) ) << raw[0];
	EXPECT_TRUE( raw[1].starts_with( "0,0.000000,60.000," ) ) << raw[1];
	EXPECT_EQ( m_Folder.Names(), std::vector<std::string>{ "x.csv" } );
}

TEST_F( KestoRecord, EndsInGoodOrderAfterTheSeconds )
{
	CFakeEngine engine( TalkForEver );
	const KestoRun run = Record( engine.Address(), { "--seconds", "0.3" } );
	EXPECT_EQ( run.m_nStatus, 0 ) << run.m_Errors;
	EXPECT_EQ( Lines().size(), 6u );
}

TEST_F( KestoRecord, AConnectionThatEndsEarlyLeavesWhatCame )
{
	CFakeEngine engine(
		[]( CFakeEngine &self )
		{
			self.ExpectGreetingAndStart();
			self.SendBudgets( { "Physics" } );
			self.SendFrame( { 5 } );
		} );
	const KestoRun run = Record( engine.Address(), { "--seconds", "60" } );
	EXPECT_EQ( run.m_nStatus, 1 );
	EXPECT_EQ( run.m_Errors, "kesto: " + engine.Address() + ": the engine closed the connection\n" );
	EXPECT_EQ(
		Lines(), ( std::vector<std::string>{ "frame,frame_rate,begins_tick,Physics_us,total_us", "0,60.000,1,5,5" } ) );
}

TEST_F( KestoRecord, TellsOfFramesThatTheEngineDropped )
{
	CFakeEngine engine(
		[]( CFakeEngine &self )
		{
			self.ExpectGreetingAndStart();
			self.SendBudgets( { "Physics" } );
			self.SendChunk( "DROP", { 0, 0, 0, 0, 0, 0, 0, 3 } );
			self.SendChunk( "DROP", { 0, 0, 0, 0, 0, 0, 1, 4 } );
			self.SendFrame( { 5 } );
			self.WaitForHangUp();
		} );
	const KestoRun run = Record( engine.Address(), { "--frames", "1" } );
	EXPECT_EQ( run.m_nStatus, 1 );
	EXPECT_EQ( run.m_Errors, "kesto: " + engine.Address() + ": frames that the engine could not send: 260\n" );
}

TEST_F( KestoRecord, LeavesOutChunksThatMakeNoSense )
{
	CFakeEngine engine(
		[]( CFakeEngine &self )
		{
			self.ExpectGreetingAndStart();
			self.SendFrame( { 1 } ); // before any budgets
			self.SendBudgets( { "Physics", "Render" } );
			self.SendFrame( { 1 } );                                                // too few values
			self.SendChunk( "PCPU", { 0, 0, 0, 9, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0 } ); // too short for its count
			self.SendChunk( "PCAT", { 0xFF, 0xFF, 0xFF, 0xFF } );                   // likewise
			self.SendChunk( "PCPU", { 0, 0, 0, 0 }, 3 ); // of another version: nobody's fault
			self.SendFrame( { 1, 2 } );
			self.WaitForHangUp();
		} );
	const KestoRun run = Record( engine.Address(), { "--frames", "1" } );
	EXPECT_EQ( run.m_nStatus, 1 );
	EXPECT_EQ( run.m_Errors, "kesto: " + engine.Address() + ": chunks that made no sense and were left out: 4\n" );
	EXPECT_EQ( Lines().back(), "0,60.000,1,1,2,3" );
}

TEST_F( KestoRecord, BudgetsThatChangeKeepTheirColumns )
{
	CFakeEngine engine(
		[]( CFakeEngine &self )
		{
			self.ExpectGreetingAndStart();
			self.SendBudgets( { "Physics", "Render" } );
			self.SendFrame( { 1, 2 } );
			self.SendBudgets( { "Render", "Sound" } );
			self.SendFrame( { 30, 40 } );
			self.WaitForHangUp();
		} );
	const KestoRun run = Record( engine.Address(), { "--frames", "2" } );
	EXPECT_EQ( run.m_nStatus, 1 );
	EXPECT_EQ(
		run.m_Errors, "kesto: " + engine.Address() + ": budgets that came later and have no column: \"Sound\"\n" );
	EXPECT_EQ( Lines(), ( std::vector<std::string>{ "frame,frame_rate,begins_tick,Physics_us,Render_us,total_us",
							"0,60.000,1,1,2,3", "1,60.000,1,,30,70" } ) );
}

TEST_F( KestoRecord, OfBudgetsWithoutEndNamesTheFirst )
{
	CFakeEngine engine(
		[]( CFakeEngine &self )
		{
			self.ExpectGreetingAndStart();
			for ( int i = 0; i < 30; i++ )
				self.SendBudgets( { "B" + std::to_string( i ), "B" + std::to_string( i ) } );
			self.SendFrame( { 1, 2 } );
			self.WaitForHangUp();
		} );
	const KestoRun run = Record( engine.Address(), { "--frames", "1" } );
	EXPECT_EQ( run.m_nStatus, 1 );
	std::string names;
	for ( int i = 1; i <= 20; i++ ) // the first list made the columns
		names += ( i > 1 ? ", \"B" : "\"B" ) + std::to_string( i ) + '"';
	EXPECT_EQ( run.m_Errors,
		"kesto: " + engine.Address() + ": budgets that came later and have no column: " + names + " and more\n" );
}

TEST_F( KestoRecord, BudgetsOfOneNameKeepTheirOrder )
{
	CFakeEngine engine(
		[]( CFakeEngine &self )
		{
			self.ExpectGreetingAndStart();
			self.SendBudgets( { "Physics", "Physics" } );
			self.SendFrame( { 1, 2 } );
			self.WaitForHangUp();
		} );
	EXPECT_EQ( Record( engine.Address(), { "--frames", "1" } ).m_nStatus, 0 );
	EXPECT_EQ( Lines().back(), "0,60.000,1,1,2,3" );
}

TEST_F( KestoRecord, WithoutFramesNothingIsWritten )
{
	m_Folder.Write( "x.csv", ToBytes( "old" ) );
	CFakeEngine engine(
		[]( CFakeEngine &self )
		{
			self.ExpectGreetingAndStart();
			self.SendBudgets( { "Physics" } );
			self.WaitForHangUp();
		} );
	const KestoRun run = Record( engine.Address(), { "--seconds", "0.2" } );
	EXPECT_EQ( run.m_nStatus, 2 );
	EXPECT_EQ( run.m_Errors, "kesto: " + engine.Address() + ": the engine sent no frames\n" );
	EXPECT_EQ( m_Folder.Read( "x.csv" ), "old" );
	EXPECT_EQ( m_Folder.Names(), std::vector<std::string>{ "x.csv" } );
}

TEST_F( KestoRecord, RefusesAnEngineOfAnotherProtocolVersion )
{
	CFakeEngine engine(
		[]( CFakeEngine &self )
		{
			self.Receive();
			self.SendHello( 7 );
			self.WaitForHangUp();
		} );
	const KestoRun run = Record( engine.Address(), { "--seconds", "60" } );
	EXPECT_EQ( run.m_nStatus, 2 );
	EXPECT_EQ( run.m_Errors,
		"kesto: " + engine.Address() + ": the engine speaks version 7 of the protocol, this program version 2\n" );
}

std::vector<uint8_t> HelloOf( std::string_view texts )
{
	std::vector<uint8_t> payload( 16 );
	payload[3] = 2;
	payload.insert( payload.end(), texts.begin(), texts.end() );
	return payload;
}

TEST_F( KestoRecord, SaysWhyTheEngineRefusesIt )
{
	using namespace std::string_view_literals;
	CFakeEngine engine(
		[]( CFakeEngine &self )
		{
			self.Receive();
			self.SendChunk( "HELO", HelloOf( "engine\0\0token required"sv ) );
			self.WaitForHangUp();
		} );
	const KestoRun run = Record( engine.Address(), { "--seconds", "60" } );
	EXPECT_EQ( run.m_nStatus, 2 );
	EXPECT_EQ( run.m_Errors, "kesto: " + engine.Address() + ": the engine refuses this program: token required\n" );
}

// Sets a variable of the environment for as long as it lives.
class CVariable
{
public:
	CVariable( const char *pName, const std::string &value )
		: m_pName( pName )
	{
		setenv( pName, value.c_str(), 1 );
	}
	~CVariable() { unsetenv( m_pName ); }
	CVariable( const CVariable & ) = delete;
	CVariable &operator=( const CVariable & ) = delete;

private:
	const char *m_pName;
};

// Records a frame of an engine that greets with certain texts, and keeps those of the program's own greeting.
class KestoRecordWithAToken : public KestoRecord
{
protected:
	KestoRun RecordFrom( const std::string &textsOfEngine )
	{
		CFakeEngine engine(
			[&]( CFakeEngine &self )
			{
				self.Receive();
				m_Sent.assign( self.m_Received.begin() + 16, self.m_Received.end() );
				self.SendChunk( "HELO", HelloOf( textsOfEngine ) );
				if ( self.Receive().empty() )
					return;
				self.SendBudgets( { "A" } );
				self.SendFrame( { 1 } );
				self.WaitForHangUp();
			} );
		return Record( engine.Address(), { "--frames", "1" } );
	}

	std::string SentToken() const
	{
		const size_t nEnd = m_Sent.find( '\0' );
		return nEnd == m_Sent.npos ? "none" : m_Sent.substr( nEnd + 1 );
	}

	const std::string m_EngineThatKnows{ "engine\0open sesame", 18 };
	std::string m_Sent;
};

TEST_F( KestoRecordWithAToken, SendsThatOfTheEnvironment )
{
	const CVariable token( "SHOWBUDGET_TOKEN", "open sesame" );
	EXPECT_EQ( RecordFrom( m_EngineThatKnows ).m_nStatus, 0 );
	EXPECT_EQ( SentToken(), "open sesame" );
}

TEST_F( KestoRecordWithAToken, SendsTheFirstLineOfTheFileThatTheEnvironmentNames )
{
	const std::string path = m_Folder.Path( "token" );
	std::ofstream( path ) << "open sesame\r\nand nothing of this\n";
	const CVariable file( "SHOWBUDGET_TOKEN_FILE", path );
	EXPECT_EQ( RecordFrom( m_EngineThatKnows ).m_nStatus, 0 );
	EXPECT_EQ( SentToken(), "open sesame" );
}

TEST_F( KestoRecordWithAToken, TalksToNoEngineThatDoesNotKnowIt )
{
	const CVariable token( "SHOWBUDGET_TOKEN", "open sesame" );
	const KestoRun without = RecordFrom( "engine" );
	EXPECT_EQ( without.m_nStatus, 2 );
	EXPECT_THAT( without.m_Errors, testing::HasSubstr( ": the engine has no token, and this program only talks to" ) );
	const KestoRun withAnother = RecordFrom( std::string( "engine\0open sesam", 17 ) );
	EXPECT_EQ( withAnother.m_nStatus, 2 );
	EXPECT_THAT( withAnother.m_Errors, testing::HasSubstr( ": the engine has another token than this program\n" ) );
	EXPECT_THAT( withAnother.m_Errors, testing::Not( testing::HasSubstr( "sesam" ) ) );
}

TEST_F( KestoRecordWithAToken, OfTheEngineAloneTalksToIt )
{
	EXPECT_EQ( RecordFrom( m_EngineThatKnows ).m_nStatus, 0 );
	EXPECT_EQ( SentToken(), "none" );
}

TEST_F( KestoRecordWithAToken, ThatIsNoneConnectsToNobody )
{
	const std::string rule = ": a token is one line of 1 to 255 bytes without control characters\n";
	{
		const CVariable token( "SHOWBUDGET_TOKEN", "two\nlines" );
		const KestoRun run = Record( "127.0.0.1:1", { "--frames", "1" } );
		EXPECT_EQ( run.m_nStatus, 2 );
		EXPECT_EQ( run.m_Errors, "kesto: SHOWBUDGET_TOKEN" + rule );
	}
	const CVariable file( "SHOWBUDGET_TOKEN_FILE", m_Folder.Path( "token" ) );
	EXPECT_EQ( Record( "127.0.0.1:1", { "--frames", "1" } ).m_Errors,
		"kesto: SHOWBUDGET_TOKEN_FILE: cannot read " + m_Folder.Path( "token" ) + ": No such file or directory\n" );
	std::ofstream( m_Folder.Path( "token" ) ) << std::string( 256, 'x' ) << '\n';
	EXPECT_EQ( Record( "127.0.0.1:1", { "--frames", "1" } ).m_Errors, "kesto: " + m_Folder.Path( "token" ) + rule );
}

TEST_F( KestoRecord, RefusesWhatDoesNotSpeakTheProtocol )
{
	for ( const std::string answer : { "HTTP/1.1 400 Bad Request\r\n\r\n", "PCATxxxxxxxx" } )
	{
		CFakeEngine engine(
			[&]( CFakeEngine &self )
			{
				self.Receive();
				self.SendBytes( ToBytes( answer ) );
				self.WaitForHangUp();
			} );
		const KestoRun run = Record( engine.Address(), { "--seconds", "60" } );
		EXPECT_EQ( run.m_nStatus, 2 );
		EXPECT_EQ( run.m_Errors, "kesto: " + engine.Address() + ": what answers does not speak this protocol\n" );
	}
	EXPECT_EQ( m_Folder.Names(), std::vector<std::string>{} );
}

TEST_F( KestoRecord, RefusesAnotherChunkInPlaceOfTheGreeting )
{
	CFakeEngine engine(
		[]( CFakeEngine &self )
		{
			self.Receive();
			self.SendBudgets( { "Physics" } );
			self.WaitForHangUp();
		} );
	EXPECT_EQ( Record( engine.Address(), { "--seconds", "60" } ).m_nStatus, 2 );
}

TEST_F( KestoRecord, NobodyListeningIsAnError )
{
	std::string address;
	{
		CFakeEngine engine( []( CFakeEngine &self ) { self.Receive(); } );
		address = engine.Address();
		Record( address, { "--seconds", "1" } ); // so that the engine ends; its port is free then
	}
	const KestoRun run = Record( address, { "--seconds", "60" } );
	EXPECT_EQ( run.m_nStatus, 2 );
	EXPECT_EQ( run.m_Errors, "kesto: " + address + ": Connection refused\n" );
}

TEST_F( KestoRecord, AFolderThatIsNotThereIsSaidBeforeAnythingIsRecorded )
{
	const KestoRun run =
		CallKesto( { "record", "--connect", "127.0.0.1:1", "--seconds", "1", m_Folder.Path( "a/x.csv" ) } );
	EXPECT_EQ( run.m_nStatus, 2 );
	EXPECT_EQ( run.m_Errors, "kesto: " + m_Folder.Path( "a/x.csv" ) + ": No such file or directory\n" );
}

TEST_F( KestoRecord, NeedsToKnowWhenToEnd )
{
	const KestoRun run = Record( "127.0.0.1:1", {} );
	EXPECT_EQ( run.m_nStatus, 2 );
	EXPECT_EQ( run.m_Errors, "kesto: when to end? Give --seconds or --frames\n" );
	for ( const std::string text : { "0", "-1", "x", "nan" } )
	{
		EXPECT_EQ( Record( "127.0.0.1:1", { "--seconds", text } ).m_nStatus, 2 ) << text;
		EXPECT_EQ( Record( "127.0.0.1:1", { "--frames", text } ).m_nStatus, 2 ) << text;
	}
	EXPECT_EQ( Record( "nowhere:", { "--frames", "1" } ).m_nStatus, 2 );
}

// So much text follows the frame that no socket could hold it: the console has read the frame when all is sent.
TEST_F( KestoRecord, AnInterruptEndsTheRecordingInGoodOrder )
{
	CFakeEngine engine(
		[]( CFakeEngine &self )
		{
			self.ExpectGreetingAndStart();
			self.SendBudgets( { "Physics" } );
			self.SendFrame( { 5 } );
			for ( int i = 0; i < 2000; i++ )
				self.SendChunk( "PRNT", std::vector<uint8_t>( 16384 ) );
			raise( SIGINT );
			self.WaitForHangUp();
		} );
	const KestoRun run = Record( engine.Address(), { "--seconds", "600" } );
	EXPECT_EQ( run.m_nStatus, 0 ) << run.m_Errors;
	EXPECT_EQ(
		Lines(), ( std::vector<std::string>{ "frame,frame_rate,begins_tick,Physics_us,total_us", "0,60.000,1,5,5" } ) );
}

SHOWBUDGET_BUDGET( g_Physics, "Physics", 230, 120, 40 );

TEST_F( KestoRecord, TakesTheBudgetsOfTheTargetLibrary )
{
	showbudget::Settings settings;
	settings.m_nPort = 0;
	settings.m_pLog = []( showbudget::Severity, const char *, void * ) {};
	showbudget::Start( settings );
	std::atomic<bool> bDone = false;
	std::thread engine(
		[&]
		{
			while ( !bDone )
			{
				SHOWBUDGET_SCOPE( g_Physics, "step" );
				showbudget::EndFrame();
			}
		} );
	const KestoRun run = Record( "127.0.0.1:" + std::to_string( showbudget::Port() ), { "--frames", "20" } );
	bDone = true;
	engine.join();
	showbudget::Stop();
	const std::vector<std::string> lines = Lines();
	ASSERT_EQ( lines.size(), 21u ) << run.m_Errors;
	EXPECT_TRUE( lines[0].starts_with( "frame,frame_rate,begins_tick," ) ) << lines[0];
	EXPECT_NE( lines[0].find( ",Physics_us," ), std::string::npos ) << lines[0];
	EXPECT_TRUE( lines[20].starts_with( "19," ) ) << lines[20];
}
