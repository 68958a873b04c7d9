// What a recording says of the scopes of an engine.
#include <gmock/gmock.h>

#include <deque>
#include <random>
#include <thread>

#include "recordingfile.h"
#include "session.h"
#include "target/src/engine.h"
#include "tests/support/randomseed.h"

namespace
{
using showbudget::EndFrame;
using testing::ElementsAre;
using testing::Pair;
using testing::UnorderedElementsAre;
using Figures = CRecordingFileOfTest::Figures;

SHOWBUDGET_BUDGET( g_TreeBudget, "Recording test", 0x12, 0x34, 0x56 );

// Recordings work without a session, so there is none here.
class RecordTree : public testing::Test
{
protected:
	void SetUp() override { Start(); }
	void TearDown() override
	{
		showbudget::StopRecording();
		EndFrame();
	}
	void Start( bool bOtherThreads = false )
	{
		showbudget::RecordingSettings settings;
		settings.m_pFile = m_File.c_str();
		settings.m_bOtherThreads = bOtherThreads;
		ASSERT_TRUE( showbudget::StartRecording( settings ) );
		m_nStarted = NowMicroseconds();
		EndFrame(); // the starting line
	}
	CRecordingFileOfTest Stop()
	{
		showbudget::StopRecording();
		EXPECT_FALSE( showbudget::GetRecordingState().m_bRunning );
		return CRecordingFileOfTest( ReadBytes( m_File ) );
	}

	CTemporaryFolder m_Folder;
	std::string m_File = m_Folder.File( "test.kesto" );
	uint64_t m_nStarted = 0; // a moment before the first frame
};

void Leaf()
{
	SHOWBUDGET_SCOPE( g_TreeBudget, "Leaf" );
}
void Middle( int nLeaves )
{
	SHOWBUDGET_SCOPE( g_TreeBudget, "Middle" );
	for ( int i = 0; i < nLeaves; i++ )
		Leaf();
}
void First( int nLeaves )
{
	SHOWBUDGET_SCOPE( g_TreeBudget, "First" );
	Middle( nLeaves );
}
void Second( int nLeaves )
{
	SHOWBUDGET_SCOPE( g_TreeBudget, "Second" );
	Middle( nLeaves );
}

TEST_F( RecordTree, AScopeHasANodeForEachPathThatLeadsToIt )
{
	First( 2 );
	Second( 3 );
	Middle( 1 );
	First( 4 );
	Leaf();
	EndFrame();
	Second( 1 );
	EndFrame();
	const CRecordingFileOfTest file = Stop();
	ASSERT_EQ( file.FrameCount(), 2 );
	const std::map<std::string, uint32_t> expected[] = {
		{ { "Frame", 1 }, { "Frame/First", 2 }, { "Frame/First/Middle", 2 }, { "Frame/First/Middle/Leaf", 6 },
			{ "Frame/Second", 1 }, { "Frame/Second/Middle", 1 }, { "Frame/Second/Middle/Leaf", 3 },
			{ "Frame/Middle", 1 }, { "Frame/Middle/Leaf", 1 }, { "Frame/Leaf", 1 } },
		{ { "Frame", 1 }, { "Frame/Second", 1 }, { "Frame/Second/Middle", 1 }, { "Frame/Second/Middle/Leaf", 1 } } };
	for ( int nFrame = 0; nFrame < 2; nFrame++ )
	{
		std::map<std::string, uint32_t> calls;
		for ( const auto &[path, figures] : file.Frame( nFrame ) )
			calls[path] = figures.m_nCalls;
		EXPECT_EQ( calls, expected[nFrame] ) << "frame " << nFrame;
	}
}

TEST_F( RecordTree, ScopesThatRanFirstComeFirst )
{
	for ( int nFrame = 0; nFrame < 2; nFrame++ )
	{
		SHOWBUDGET_SCOPE( g_TreeBudget, "In order" );
		{
			SHOWBUDGET_SCOPE( g_TreeBudget, "1" );
		}
		{
			SHOWBUDGET_SCOPE( g_TreeBudget, "2" );
			Leaf();
		}
		{
			SHOWBUDGET_SCOPE( g_TreeBudget, "3" );
		}
		EndFrame();
	}
	EXPECT_THAT( Stop().Children( "Frame/In order" ), ElementsAre( "1", "2", "3" ) );
}

TEST_F( RecordTree, TimesAreInclusiveAndChildrenFitIntoTheirParents )
{
	std::vector<uint64_t> atLeast;
	for ( int i = 0; i < 50; i++ )
	{
		SHOWBUDGET_SCOPE( g_TreeBudget, "Around" );
		{
			SHOWBUDGET_SCOPE( g_TreeBudget, "Busy A" );
			atLeast.push_back( BeBusy( 37 ) );
		}
		{
			SHOWBUDGET_SCOPE( g_TreeBudget, "Busy B" );
			BeBusy( 3 );
		}
		EndFrame();
	}
	const uint64_t nElapsed = NowMicroseconds() - m_nStarted;
	const CRecordingFileOfTest file = Stop();
	ASSERT_EQ( file.FrameCount(), 50 );
	uint64_t nTotal = 0;
	for ( int i = 0; i < 50; i++ )
	{
		const Figures frame = file.At( i, "Frame" );
		const Figures around = file.At( i, "Frame/Around" );
		const Figures busyA = file.At( i, "Frame/Around/Busy A" );
		const Figures busyB = file.At( i, "Frame/Around/Busy B" );
		EXPECT_GE( busyA.m_nTime + 4 + 1, atLeast[static_cast<size_t>( i )] ); // the file's unit, the clock's
		EXPECT_GE( around.m_nTime, busyA.m_nTime + busyB.m_nTime );
		EXPECT_GE( frame.m_nTime, around.m_nTime );
		nTotal += frame.m_nTime;
	}
	EXPECT_LE( nTotal, nElapsed + 4 + 50 ); // the file's unit, and what a calibrated clock is off
	EXPECT_GE( nTotal, 50u * 37u );
}

TEST_F( RecordTree, AScopeThatIsOpenWhenTheFrameEndsIsSplit )
{
	{
		SHOWBUDGET_SCOPE( g_TreeBudget, "Open" );
		SHOWBUDGET_SCOPE( g_TreeBudget, "Open inside" );
		BeBusy( 100 );
		EndFrame();
		BeBusy( 200 );
		EndFrame();
	}
	const CRecordingFileOfTest file = Stop();
	ASSERT_EQ( file.FrameCount(), 2 );
	EXPECT_GE( file.At( 0, "Frame/Open/Open inside" ).m_nTime, 100u - 8 );
	EXPECT_GE( file.At( 1, "Frame/Open/Open inside" ).m_nTime, 200u - 8 );
	EXPECT_EQ( file.At( 0, "Frame/Open/Open inside" ).m_nCalls, 1u );
	EXPECT_EQ( file.At( 1, "Frame/Open/Open inside" ).m_nCalls, 0u );
}

TEST_F( RecordTree, AScopeThatWasOpenBeforeTheRecordingHasItsPath )
{
	Stop();
	{
		SHOWBUDGET_SCOPE( g_TreeBudget, "Not measured" );
		Start();
		SHOWBUDGET_SCOPE( g_TreeBudget, "Open one" );
		SHOWBUDGET_SCOPE( g_TreeBudget, "Open two" );
		Stop();
		Start();
		Leaf();
		EndFrame();
		const CRecordingFileOfTest file = Stop();
		EXPECT_EQ( file.At( 0, "Frame/Open one/Open two/Leaf" ).m_nCalls, 1u );
		EXPECT_EQ( file.Frame( 0 ).size(), 4u );
	}
}

TEST_F( RecordTree, RecursionCountsCallsOfTheOuterScope )
{
	struct Local
	{
		static void Recurse( int nDepth )
		{
			SHOWBUDGET_SCOPE( g_TreeBudget, "Recursive" );
			Leaf();
			if ( nDepth > 0 )
				Recurse( nDepth - 1 );
		}
	};
	Local::Recurse( 9 );
	EndFrame();
	EXPECT_THAT( Stop().Calls(),
		UnorderedElementsAre( Pair( "Frame", 1 ), Pair( "Frame/Recursive", 10 ), Pair( "Frame/Recursive/Leaf", 10 ) ) );
}

TEST_F( RecordTree, ANodeCarriesTheColourOfItsBudget )
{
	Leaf();
	EndFrame();
	const CRecordingFileOfTest file = Stop();
	ASSERT_TRUE( file.Nodes().contains( "Frame/Leaf" ) );
	EXPECT_EQ( file.File().GetNodeValue( file.Nodes().at( "Frame/Leaf" ) ), 0x123456u );
}

TEST_F( RecordTree, ManyCallsAreWrittenUpToWhatTheFileHolds )
{
	Middle( 254 );
	EndFrame();
	Middle( 255 );
	EndFrame();
	Middle( 65535 );
	EndFrame();
	Middle( 65536 );
	EndFrame();
	const CRecordingFileOfTest file = Stop();
	const uint32_t expected[] = { 254, 255, 65535, 65535 };
	for ( int i = 0; i < 4; i++ )
		EXPECT_EQ( file.At( i, "Frame/Middle/Leaf" ).m_nCalls, expected[i] );
}

// Call sites live as long as the process.
std::deque<showbudget::detail::CSite> &SomeSites()
{
	static std::deque<std::string> s_Names;
	static std::deque<showbudget::detail::CSite> s_Sites;
	for ( int i = 0; s_Sites.size() < 600; i++ )
	{
		s_Names.push_back( "s" + std::to_string( i ) );
		s_Sites.emplace_back( s_Names.back().c_str(), "", "", 0u, &g_TreeBudget, "" );
	}
	return s_Sites;
}

// Enters sites below each other and says under which paths that has to appear.
void EnterRandomly( std::mt19937 &random, const std::string &path, std::vector<bool> &open, int nDepth,
	std::map<std::string, uint64_t> &expected )
{
	const int nCalls = std::uniform_int_distribution( 0, 3 )( random );
	for ( int i = 0; i < nCalls; i++ )
	{
		const auto nSite = std::uniform_int_distribution<size_t>( 0, open.size() - 1 )( random );
		if ( open[nSite] )
			continue;
		open[nSite] = true;
		const std::string below = path + "/s" + std::to_string( nSite );
		expected[below]++;
		const showbudget::detail::CScope scope( SomeSites()[nSite] );
		if ( nDepth < 12 )
			EnterRandomly( random, below, open, nDepth + 1, expected );
		open[nSite] = false;
	}
}

TEST_F( RecordTree, RandomCallsAreFoundUnderTheirPaths )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	std::map<std::string, uint64_t> expected;
	std::vector<bool> open( 7 );
	for ( uint64_t nFrame = 1; nFrame <= 300; nFrame++ )
	{
		EnterRandomly( random, "Frame", open, 0, expected );
		EndFrame();
		expected["Frame"]++;
	}
	EXPECT_EQ( Stop().Calls(), expected );
}

void EnterDeeper( size_t nSite )
{
	if ( nSite == SomeSites().size() )
		return;
	const showbudget::detail::CScope scope( SomeSites()[nSite] );
	EnterDeeper( nSite + 1 );
}

TEST_F( RecordTree, AFrameMayBeDeep )
{
	EnterDeeper( 0 );
	EndFrame();
	EnterDeeper( 300 );
	EndFrame();
	const CRecordingFileOfTest file = Stop();
	std::string path = "Frame";
	for ( size_t i = 0; i < 600; i++ )
		path += "/s" + std::to_string( i );
	EXPECT_EQ( file.At( 0, path ).m_nCalls, 1u );
	EXPECT_EQ( file.At( 1, path ).m_nCalls, 0u );
	EXPECT_EQ( file.Frame( 0 ).size(), 601u );
	EXPECT_EQ( file.Frame( 1 ).size(), 301u );
}

TEST_F( RecordTree, OtherThreadsStayOutOfTheFrameUnlessAskedFor )
{
	std::thread( [] { First( 3 ); } ).join();
	Leaf();
	EndFrame();
	EXPECT_THAT( Stop().Calls(), UnorderedElementsAre( Pair( "Frame", 1 ), Pair( "Frame/Leaf", 1 ) ) );
}

TEST_F( RecordTree, OtherThreadsAreBelowOneNodeWhenAskedFor )
{
	Stop();
	std::thread( [] { First( 5 ); } ).join(); // before the recording
	Start( true );
	for ( int i = 0; i < 2; i++ )
	{
		std::thread(
			[]
			{
				First( 3 );
				BeBusy( 20 );
			} )
			.join();
	}
	Leaf();
	EndFrame();
	const CRecordingFileOfTest file = Stop();
	std::map<std::string, uint64_t> calls = file.Calls();
	EXPECT_GE( calls["Frame/Other threads"], 1u ); // the second thread may have got the place of the first
	calls.erase( "Frame/Other threads" );
	EXPECT_THAT( calls,
		UnorderedElementsAre( Pair( "Frame", 1 ), Pair( "Frame/Leaf", 1 ), Pair( "Frame/Other threads/First", 2 ),
			Pair( "Frame/Other threads/First/Middle", 2 ), Pair( "Frame/Other threads/First/Middle/Leaf", 6 ) ) );
	EXPECT_LE(
		file.At( 0, "Frame/Other threads/First/Middle" ).m_nTime, file.At( 0, "Frame/Other threads/First" ).m_nTime );
}

TEST_F( RecordTree, AnotherThreadMayTakeTheFramesOver )
{
	First( 1 );
	EndFrame();
	std::thread(
		[]
		{
			EndFrame(); // its starting line
			Second( 2 );
			EndFrame();
		} )
		.join();
	Leaf();
	EndFrame(); // the starting line again
	First( 3 );
	EndFrame();
	const CRecordingFileOfTest file = Stop();
	ASSERT_EQ( file.FrameCount(), 3 );
	EXPECT_EQ( file.At( 0, "Frame/First/Middle/Leaf" ).m_nCalls, 1u );
	EXPECT_EQ( file.At( 1, "Frame/Second/Middle/Leaf" ).m_nCalls, 2u );
	EXPECT_EQ( file.At( 2, "Frame/First/Middle/Leaf" ).m_nCalls, 3u );
	EXPECT_EQ( file.Frame( 2 ).size(), 4u );
}

TEST_F( RecordTree, ThreadsMayTakeTheFramesFromEachOtherWhileAllAreBusy )
{
	std::atomic<int> nTurn{ 0 };
	std::vector<std::thread> threads;
	for ( int i = 0; i < 3; i++ )
	{
		threads.emplace_back(
			[&nTurn, i]
			{
				while ( nTurn < 60 )
				{
					First( 1 );
					Second( 1 );
					if ( nTurn % 3 != i )
						continue;
					EndFrame();
					EndFrame();
					nTurn++;
				}
			} );
	}
	for ( std::thread &thread : threads )
		thread.join();
	const CRecordingFileOfTest file = Stop();
	for ( const auto &[path, nNode] : file.Nodes() )
		EXPECT_THAT( path, testing::MatchesRegex( "Frame(/(First|Second)(/Middle(/Leaf)?)?)?" ) );
}

// The thread that ends frames may still be writing one when the recording that it was for is over.
TEST_F( RecordTree, AFrameOfAnEarlierRecordingIsLeftOut )
{
	showbudget::CRecordTree &tree = showbudget::g_Engine.m_RecordTree;
	constexpr size_t BYTES = sizeof( showbudget::RecordFrameHeader ) + sizeof( showbudget::RecordEntry );
	uint8_t *pLate = tree.Queue().Reserve( BYTES );
	ASSERT_NE( pLate, nullptr );
	*reinterpret_cast<showbudget::RecordFrameHeader *>( pLate ) = { 1, 2, 0, 0, 1, 0 };
	*reinterpret_cast<showbudget::RecordEntry *>( pLate + sizeof( showbudget::RecordFrameHeader ) ) = { 0, 77, 1 };
	tree.Queue().Commit( BYTES );
	Leaf();
	EndFrame();
	EXPECT_THAT( Stop().Calls(), UnorderedElementsAre( Pair( "Frame", 1 ), Pair( "Frame/Leaf", 1 ) ) );
}

TEST_F( RecordTree, AConsoleSeesTheSameWhileARecordingRuns )
{
	showbudget::Settings settings;
	settings.m_nPort = 0;
	settings.m_pLog = []( showbudget::Severity, const char *, void * ) {};
	ASSERT_TRUE( showbudget::Start( settings ) );
	{
		CTestConsole console( showbudget::Port() );
		console.Greet();
		console.WantBudgets( true );
		console.WantScopes( true );
		ASSERT_TRUE( WaitUntil( [] { return showbudget::detail::g_nWanted.load() == 7; } ) );
		EndFrame();
		First( 2 );
		Second( 5 );
		EndFrame();
		const ProfilerFrame frame = ReadProfilerFrame( console.ReceiveType( wire::CHUNK_MINIPROFILER ) );
		std::vector<uint64_t> calls;
		for ( const ProfilerEntry &entry : frame.m_Entries )
			calls.push_back( entry.m_nCalls );
		EXPECT_THAT( calls, UnorderedElementsAre( 1, 1, 2, 7 ) );
	}
	const CRecordingFileOfTest file = Stop();
	EXPECT_EQ( file.At( file.FrameCount() - 1, "Frame/Second/Middle/Leaf" ).m_nCalls, 5u );
	showbudget::Stop();
}
} // namespace
