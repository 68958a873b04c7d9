// A console that does not read.
#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <deque>

#include "session.h"
#include "wire/sessionchunks.h"

namespace
{
SHOWBUDGET_BUDGET( g_Slow, "Slow reader test", 1, 2, 3 );

// Many sites make long frames.
class CManySites
{
public:
	CManySites()
	{
		for ( int i = 0; i < 500; i++ )
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
	static CManySites s_Sites; // call sites live as long as the process
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
