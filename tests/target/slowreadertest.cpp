// Consoles that do not read, that vanish, and that have nothing to read.
#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <deque>
#include <thread>

#include "session.h"
#include "wire/sessionchunks.h"

namespace
{
using testing::HasSubstr;

SHOWBUDGET_BUDGET( g_Slow, "Slow reader test", 1, 2, 3 );

// Many sites make long frames.
class CManySites
{
public:
	explicit CManySites( int nCount )
	{
		for ( int i = 0; i < nCount; i++ )
			m_Sites.emplace_back( "One of many", "", "", 0u, &g_Slow, "" );
	}
	void Enter()
	{
		for ( showbudget::detail::CSite &site : m_Sites )
			const showbudget::detail::CScope scope( site );
	}

private:
	std::deque<showbudget::detail::CSite> m_Sites;
};

class SlowReader : public CSession
{
};

TEST_F( SlowReader, EveryFrameIsSentWholeOrCountedAsDropped )
{
	static CManySites s_Sites( 500 ); // call sites live as long as the process
	CTestConsole console( showbudget::Port() );
	console.Greet();
	console.WantBudgets( true );
	console.WantScopes( true );
	ASSERT_TRUE( WaitUntilWanted( 3 ) );
	showbudget::EndFrame();

	// 18 KB each: what the buffers of both sides hold is far less. The calls of one site number the frames.
	constexpr uint64_t FRAMES = 4000;
	for ( uint64_t i = 0; i < FRAMES; i++ )
	{
		s_Sites.Enter();
		for ( uint64_t n = 0; n <= i; n++ )
		{
			SHOWBUDGET_SCOPE( g_Slow, "As often as frames went by" );
		}
		showbudget::EndFrame( i % 2 == 0 ? showbudget::Tick::New : showbudget::Tick::Continued );
	}

	uint64_t nSamples = 0;
	uint64_t nDropped = 0;
	uint32_t nMark = 0;
	int64_t nLast = -1;
	while ( nSamples + nDropped < FRAMES )
	{
		const std::optional<Chunk> chunk = console.Receive();
		ASSERT_TRUE( chunk.has_value() );
		if ( chunk->m_Header.m_nType == wire::CHUNK_DROPPED )
		{
			const std::optional<uint64_t> nNow = wire::ReadDropped( chunk->m_Payload );
			ASSERT_TRUE( nNow.has_value() );
			EXPECT_GT( *nNow, nDropped ) << "the count only grows";
			nDropped = *nNow;
		}
		else if ( chunk->m_Header.m_nType == wire::CHUNK_SAMPLE )
			nMark = ReadSample( *chunk ).m_nMark;
		else if ( chunk->m_Header.m_nType == wire::CHUNK_MINIPROFILER )
		{
			uint64_t nCalls = 0;
			for ( const ProfilerEntry &entry : ReadProfilerFrame( *chunk ).m_Entries )
				nCalls = std::max( nCalls, entry.m_nCalls );
			const int64_t nFrame = static_cast<int64_t>( nCalls ) - 1;
			EXPECT_GT( nFrame, nLast );
			// A sample may continue a tick only when that tick's first frame came before it.
			EXPECT_EQ( nMark == 0, nFrame % 2 == 1 && nLast == nFrame - 1 ) << "frame " << nFrame << " after " << nLast;
			nLast = nFrame;
			nSamples++;
		}
	}
	EXPECT_EQ( nSamples + nDropped, FRAMES );
	EXPECT_GT( nDropped, 0u );
	EXPECT_GT( nSamples, 0u );
	showbudget::EndFrame();
	console.ReceiveType( wire::CHUNK_SAMPLE );
	console.ReceiveType( wire::CHUNK_MINIPROFILER );
}

// 64 KiB of scopes.
void RunLongFrame()
{
	static CManySites s_Sites( 1820 );
	s_Sites.Enter();
	showbudget::EndFrame();
}

TEST_F( SlowReader, OneThatStopsReadingStaysConnectedAndCostsNoMoreAndNoMore )
{
	// Far less than it stays silent below.
	RestartWith( { .m_Beat = std::chrono::milliseconds( 10 ), .m_Unanswered = std::chrono::milliseconds( 50 ) } );
	CTestConsole console( showbudget::Port() );
	console.Greet();
	console.WantScopes( true );
	ASSERT_TRUE( WaitUntilWanted( 2 ) );

	// Full is what it can get: the buffers of both sides, the queue of the console, the queue of the frames.
	for ( int i = 0; i < 1000; i++ )
		RunLongFrame();
	const size_t nFull = AllocatedBytes();
	const uint64_t nEnd = NowMicroseconds() + 1000000;
	uint64_t nFrames = 999; // the first one above was only the starting line
	for ( ; nFrames < 2000 || NowMicroseconds() < nEnd; nFrames++ )
		RunLongFrame();
	EXPECT_LT( AllocatedBytes(), nFull + 65536 );

	showbudget::Print( showbudget::Severity::Message, "still here" );
	console.ReceiveUntilLine( "still here" );
	uint64_t nDropped = 0;
	while ( nDropped < nFrames - 1000 )
		nDropped = wire::ReadDropped( console.ReceiveType( wire::CHUNK_DROPPED ).m_Payload ).value_or( nFrames );
	EXPECT_LT( nDropped, nFrames ) << "some had been sent";
}

TEST_F( SlowReader, StoppingDoesNotWaitForIt )
{
	CTestConsole console( showbudget::Port() );
	console.Greet();
	console.WantScopes( true );
	ASSERT_TRUE( WaitUntilWanted( 2 ) );
	for ( int i = 0; i < 300; i++ )
		RunLongFrame();
	showbudget::Stop();
	EXPECT_TRUE( WaitForLog( "left: the engine ended the session" ) );
}

TEST_F( SlowReader, LinesThatItDoesNotReadAreDroppedAndCounted )
{
	CTestConsole console( showbudget::Port() );
	console.Greet();
	const std::string text( 1900, 'x' );
	// More than the buffers of both sides and the queue hold.
	constexpr int LINES = 20000;
	for ( int i = 0; i < LINES; i++ )
	{
		showbudget::Print( showbudget::Severity::Message, text.c_str() );
		std::this_thread::yield();
	}
	uint64_t nWhole = 0;
	uint64_t nDropped = 0;
	while ( nWhole + nDropped < LINES )
	{
		const std::string line = console.ReceiveLine();
		if ( line == text + '\n' )
			nWhole++;
		else
		{
			ASSERT_THAT( line, HasSubstr( " lines came too fast and were dropped.\n" ) );
			nDropped += std::stoull( line );
		}
	}
	EXPECT_EQ( nWhole + nDropped, LINES );
	EXPECT_GT( nDropped, 0u );
}

TEST_F( SlowReader, AMachineThatIsGoneIsNoticed )
{
	constexpr showbudget::ConnectionTimes USUAL;
	EXPECT_LE( USUAL.m_Beat + USUAL.m_Unanswered, std::chrono::seconds( 5 ) );
	RestartWith( { .m_Beat = std::chrono::milliseconds( 20 ), .m_Unanswered = std::chrono::milliseconds( 100 ) } );
	CTestConsole idle( showbudget::Port() );
	idle.Greet();
	CTestConsole watching( showbudget::Port() );
	watching.Greet();
	watching.WantBudgets( true );
	ASSERT_TRUE( WaitUntilWanted( 1 ) );
	CTestConsole living( showbudget::Port() );
	living.Greet();
	idle.GoSilent();
	watching.GoSilent();
	EXPECT_TRUE( WaitUntil(
		[this]
		{
			showbudget::EndFrame();
			const std::vector<std::string> lines = LogLines();
			return std::ranges::count_if( lines, []( const std::string &line )
					   { return line.find( "left: its machine does not answer any more" ) != line.npos; } ) == 2;
		} ) );
	EXPECT_EQ( showbudget::detail::g_nWanted.load(), 0u );
	showbudget::Print( showbudget::Severity::Message, "still here" );
	living.ReceiveUntilLine( "still here" );
}

TEST_F( SlowReader, AnIdleEngineSaysThatItIsThere )
{
	RestartWith( { .m_Beat = std::chrono::milliseconds( 5 ) } );
	CTestConsole silent( showbudget::Port() );
	CTestConsole console( showbudget::Port() );
	console.Greet();
	for ( int i = 0; i < 3; i++ )
	{
		const std::optional<Chunk> chunk = console.Receive();
		ASSERT_TRUE( chunk.has_value() );
		EXPECT_EQ( chunk->m_Header.m_nType, wire::CHUNK_BEAT );
		EXPECT_EQ( chunk->m_Header.m_nLength, 0u );
	}
	EXPECT_FALSE( silent.HasBytes() );
}

TEST_F( SlowReader, ABusyEngineNeedNotSaySo )
{
	EXPECT_EQ( showbudget::g_Times.m_Beat, std::chrono::seconds( 1 ) );
	RestartWith( { .m_Beat = std::chrono::milliseconds( 100 ) } );
	CTestConsole console( showbudget::Port() );
	console.Greet();
	console.WantBudgets( true );
	ASSERT_TRUE( WaitUntilWanted( 1 ) );
	const uint64_t nEnd = NowMicroseconds() + 2000000;
	uint64_t nFrames = 0;
	for ( ; NowMicroseconds() < nEnd; nFrames++ )
	{
		showbudget::EndFrame();
		std::this_thread::yield();
	}
	showbudget::Print( showbudget::Severity::Message, "the end" );
	int nBeats = 0;
	for ( const Chunk &chunk : console.ReceiveUntilLine( "the end" ) )
		nBeats += chunk.m_Header.m_nType == wire::CHUNK_BEAT;
	EXPECT_LT( nBeats, 10 ) << "there were twenty times to say it, and the machine cannot have been that busy";
}

TEST_F( SlowReader, AConsoleThatVanishesDoesNotTakeTheEngineWithIt )
{
	signal( SIGPIPE, SIG_DFL );
	for ( int i = 0; i < 20; i++ )
	{
		CTestConsole console( showbudget::Port() );
		console.Greet();
		console.WantBudgets( true );
		ASSERT_TRUE( WaitUntilWanted( 1 ) );
		showbudget::EndFrame();
		console.Abort();
		ASSERT_TRUE( WaitUntil(
			[]
			{
				showbudget::EndFrame();
				return showbudget::detail::g_nWanted.load() == 0;
			} ) );
	}
	EXPECT_TRUE( WaitForLog( "left: it hung up" ) );
}
} // namespace
