// The demo engine as a program: its command line, its end, its recordings.
#include <gmock/gmock.h>

#include <sys/wait.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <random>
#include <set>

#include "demoprocess.h"
#include "recordingfile.h"
#include "recordings/kestomemoryreader.h"
#include "session.h"
#include "tests/support/randomseed.h"

namespace
{
using testing::HasSubstr;

// Of a process that has said where it listens.
uint16_t PortOf( const CDemoProcess &demo )
{
	const std::string &output = demo.Output();
	return static_cast<uint16_t>( std::stoi( output.substr( output.find( "listening on 127.0.0.1:" ) + 23 ) ) );
}

TEST( DemoEngine, HelpIsPrinted )
{
	CDemoProcess demo( { "--help" } );
	EXPECT_EQ( demo.Wait(), 0 ) << demo.Output();
	for ( const char *pOption :
		{ "--port", "--bind", "--name", "--bodies", "--frames", "--record", "--picture", "--help" } )
		EXPECT_THAT( demo.Output(), HasSubstr( pOption ) );
}

TEST( DemoEngine, WrongArgumentsAreOneLineAndStatusTwo )
{
	const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
		{ { "--port", "65536" }, "--port: \"65536\" is not a number from 0 to 65535" },
		{ { "--port=-1" }, "--port: \"-1\" is not a number from 0 to 65535" },
		{ { "--port=" }, "--port: \"\" is not a number from 0 to 65535" },
		{ { "--bodies=many" }, "--bodies: \"many\" is not a number from 0 to 20000" },
		{ { "--frames", "1x" }, "--frames: \"1x\" is not a number from 0 to 4294967295" },
		{ { "--colour", "red" }, "unknown option \"--colour\"; --help lists them" },
		{ { "file" }, "\"file\" is no option or lacks its value; --help lists them" },
		{ { "--record" }, "\"--record\" is no option or lacks its value; --help lists them" } };
	for ( const auto &[arguments, line] : cases )
	{
		CDemoProcess demo( arguments );
		EXPECT_EQ( demo.Wait(), 2 );
		EXPECT_EQ( demo.Output(), "demo_engine: " + line + '\n' );
	}
}

TEST( DemoEngine, EndsByItselfAfterItsFrames )
{
	CDemoProcess demo( { "--port", "0", "--bodies", "50", "--frames", "3" } );
	EXPECT_EQ( demo.Wait(), 0 ) << demo.Output();
	EXPECT_THAT( demo.Output(), HasSubstr( "listening on 127.0.0.1:" ) );
}

TEST( DemoEngine, DrawsAPicture )
{
	const CTemporaryFolder folder;
	const std::string file = folder.File( "picture.ppm" );
	CDemoProcess demo( { "--port", "0", "--frames", "30", "--picture", file } );
	EXPECT_EQ( demo.Wait(), 0 ) << demo.Output();
	const std::vector<uint8_t> bytes = ReadBytes( file );
	const std::string header = "P6\n256 144\n255\n";
	ASSERT_EQ( bytes.size(), header.size() + 256 * 144 * 3 );
	EXPECT_TRUE( std::equal( header.begin(), header.end(), bytes.begin() ) );
	std::set<std::array<uint8_t, 3>> colours;
	for ( size_t i = header.size(); i < bytes.size(); i += 3 )
		colours.insert( { bytes[i], bytes[i + 1], bytes[i + 2] } );
	EXPECT_GT( colours.size(), 256u ) << "sky, ground, and balls in the light";
}

TEST( DemoEngine, APictureThatCannotBeWrittenIsALineAndStatusOne )
{
	CDemoProcess demo( { "--port", "0", "--bodies", "50", "--frames", "3", "--picture", "/no/such/folder/a.ppm" } );
	EXPECT_EQ( demo.Wait(), 1 );
	EXPECT_THAT( demo.Output(), HasSubstr( "demo_engine: cannot write /no/such/folder/a.ppm: No such file" ) );
}

TEST( DemoEngine, TakesItsCommands )
{
	CDemoProcess demo( { "--port", "0", "--bodies", "50" } );
	demo.WaitForOutput( "\n" );
	CTestConsole console( PortOf( demo ) );
	console.Greet();
	const std::vector<std::pair<std::string, std::string>> cases{
		{ "bodies 70", "70 bodies." },
		{ "status", "70 bodies, " },
		{ "bodies", "bodies takes a number from 0 to 20000; there are 70." },
		{ "bodies 20001", "bodies takes a number from 0 to 20000; there are 70." },
		{ "bodies 0", "0 bodies." },
		{ "slow 10001", "slow takes milliseconds from 0 to 10000." },
		{ "slow", "slow takes milliseconds from 0 to 10000." },
	};
	for ( const auto &[command, line] : cases )
	{
		console.Command( command );
		console.ReceiveUntilLine( line );
	}
	console.Command( "explode" );
	console.Command( "status" );
	const std::string before = "0 bodies, ";
	std::string line;
	for ( int i = 0; i < 100 && line.find( before ) != 0; i++ )
		line = console.ReceiveLine();
	ASSERT_EQ( line.find( before ), 0u );
	EXPECT_GE( std::stoi( line.substr( before.size() ) ), 9000 ) << line << "particles of one explosion";
	demo.Signal( SIGTERM );
	EXPECT_EQ( demo.Wait(), 0 ) << demo.Output();
}

TEST( DemoEngine, TermAndInterruptEndItInOrder )
{
	for ( const int nSignal : { SIGTERM, SIGINT } )
	{
		const CTemporaryFolder folder;
		const std::string file = folder.File( "demo.kesto" );
		CDemoProcess demo( { "--port", "0", "--bodies", "50", "--record", file } );
		demo.WaitForOutput( "recording to \"" + file + '"' );
		demo.Signal( nSignal );
		EXPECT_EQ( demo.Wait(), 0 ) << demo.Output();
		EXPECT_THAT( demo.Output(), HasSubstr( "the recording \"" + file + "\" ended: " ) );
		const CRecordingFileOfTest recording( ReadBytes( file ) );
		EXPECT_GE( recording.File().GetRootNode(), 0 );
	}
}

TEST( DemoEngine, APortThatIsTakenDoesNotStopIt )
{
	CDemoProcess first( { "--port", "0" } );
	first.WaitForOutput( "\n" );
	const std::string port = std::to_string( PortOf( first ) );
	CDemoProcess second( { "--port", port, "--bodies", "50", "--frames", "3" } );
	EXPECT_EQ( second.Wait(), 0 );
	EXPECT_THAT( second.Output(), HasSubstr( "cannot listen on 127.0.0.1:" + port ) );
}

TEST( DemoEngine, RecordsWhatItsSubsystemsDo )
{
	const CTemporaryFolder folder;
	const std::string file = folder.File( "demo.kesto" );
	CDemoProcess demo( { "--port", "0", "--bodies", "200", "--frames", "40", "--record", file } );
	EXPECT_EQ( demo.Wait(), 0 ) << demo.Output();
	const CRecordingFileOfTest recording( ReadBytes( file ) );
	EXPECT_EQ( recording.FrameCount(), 39 ); // the first one is the starting line
	for ( const char *pPath : { "Frame/Animation", "Frame/Particles", "Frame/Streaming", "Frame/Visibility",
			  "Frame/Render", "Frame/Post process", "Frame/Audio mix", "Frame/Wait for next frame" } )
		EXPECT_TRUE( recording.Nodes().contains( pPath ) ) << pPath;
	for ( int i = 0; i < recording.FrameCount(); i++ )
		EXPECT_EQ( recording.At( i, "Frame/Render" ).m_nCalls, 1u );
}

TEST( DemoEngine, ARecordingThatCannotBeMadeIsAnError )
{
	CDemoProcess demo( { "--port", "0", "--record", "/no/such/folder/file" } );
	EXPECT_EQ( demo.Wait(), 1 );
	EXPECT_THAT( demo.Output(), HasSubstr( "cannot record to \"/no/such/folder/file\": No such file or directory" ) );
}

TEST( DemoEngine, TheEnvironmentMayAskForARecording )
{
	const CTemporaryFolder folder;
	CDemoProcess demo( { "--port", "0", "--bodies", "50", "--frames", "30" },
		{ "SHOWBUDGET_RECORD=" + folder.File( "%p.kesto" ), "SHOWBUDGET_RECORD_OPTIONS=  frames=7\tthreads=all " } );
	EXPECT_EQ( demo.Wait(), 0 ) << demo.Output();
	const std::filesystem::directory_iterator files( folder.Path() );
	ASSERT_NE( files, std::filesystem::directory_iterator() );
	const CRecordingFileOfTest recording( ReadBytes( files->path() ) );
	EXPECT_EQ( recording.FrameCount(), 7 );
	EXPECT_TRUE( recording.Nodes().contains( "Frame/Other threads" ) );
}

TEST( DemoEngine, WrongOptionsInTheEnvironmentAreALineAndNoRecording )
{
	const CTemporaryFolder folder;
	CDemoProcess demo( { "--port", "0", "--bodies", "50", "--frames", "3" },
		{ "SHOWBUDGET_RECORD=" + folder.File( "x.kesto" ), "SHOWBUDGET_RECORD_OPTIONS=frames=7 frame=8" } );
	EXPECT_EQ( demo.Wait(), 0 ) << demo.Output();
	EXPECT_THAT( demo.Output(), HasSubstr( "SHOWBUDGET_RECORD_OPTIONS: \"frame=8\" is not understood" ) );
	EXPECT_FALSE( std::filesystem::exists( folder.File( "x.kesto" ) ) );
}

TEST( DemoEngine, KilledAtAnyMomentItLeavesARecordingWithAllWholeFrames )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	for ( int i = 0; i < 8; i++ )
	{
		const CTemporaryFolder folder;
		const std::string file = folder.File( "killed.kesto" );
		CDemoProcess demo( { "--port", "0", "--bodies", "50", "--record", file } );
		demo.WaitForOutput( "recording to" );
		// Some bytes more or less: the moment is somewhere in a frame.
		const auto nBytes = std::uniform_int_distribution<uint64_t>( 1, 6000 )( random );
		WaitUntil( [&] { return std::filesystem::file_size( file ) >= nBytes; } );
		demo.Signal( SIGKILL );
		EXPECT_EQ( demo.Wait(), -SIGKILL );
		const std::vector<uint8_t> bytes = ReadBytes( file );
		const CRecordingFileOfTest recording( bytes, false );
		EXPECT_TRUE( nBytes < 2000 || recording.FrameCount() > 0 );
		// Nothing is left unread but the rest of a frame that was cut.
		CKestoMemoryReader reader( bytes );
		const auto pFile = CRefPtr<CKestoFile>::Adopt( new CKestoFile( reader ) );
		EXPECT_LT( static_cast<int64_t>( bytes.size() ) - reader.GetPosition(), 4 );
	}
}
} // namespace
