// What EndFrame() costs while others than consoles come to the port: 500 that keep silent, and one that comes, says
// something else and goes as fast as it can. Over it: the same frames without them.
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "framecost.h"
#include "watcher.h"

namespace
{
constexpr int SILENT = 500;
constexpr auto FRAME_TIME = std::chrono::microseconds( 2000 );

SHOWBUDGET_BUDGET( g_Budget, "Among strangers", 0, 0, 0 );

// A connection to the port that is aborted at its end, so that none waits in the system's tables.
class CStranger
{
public:
	CStranger()
		: m_nSocket( ConnectToPort() )
	{
		const linger abort = { 1, 0 };
		setsockopt( m_nSocket, SOL_SOCKET, SO_LINGER, &abort, sizeof( abort ) );
	}
	~CStranger() { close( m_nSocket ); }
	CStranger( const CStranger & ) = delete;
	CStranger &operator=( const CStranger & ) = delete;

	void Speak() const
	{
		constexpr char REQUEST[] = "GET / HTTP/1.1\r\n\r\n";
		send( m_nSocket, REQUEST, sizeof( REQUEST ) - 1, MSG_NOSIGNAL );
	}

private:
	int m_nSocket;
};

// Strangers as long as it lives.
class CCrowd
{
public:
	CCrowd()
		: m_Silent( SILENT )
		, m_Speaker(
			  [this]
			  {
				  for ( ; !m_bEnds; m_nCame++ )
					  CStranger().Speak();
			  } )
	{
	}
	~CCrowd()
	{
		m_bEnds = true;
		m_Speaker.join();
	}
	CCrowd( const CCrowd & ) = delete;
	CCrowd &operator=( const CCrowd & ) = delete;

	int Came() const { return m_nCame; }

private:
	std::vector<CStranger> m_Silent;
	std::atomic<bool> m_bEnds = false;
	std::atomic<int> m_nCame = 0;
	std::thread m_Speaker;
};

void RunFrames( benchmark::State &state )
{
	CFrameCost cost;
	auto next = std::chrono::steady_clock::now();
	for ( auto iteration : state )
	{
		{
			SHOWBUDGET_SCOPE( g_Budget, "Frame" );
		}
		state.SetIterationTime( cost.EndFrame() );
		next += FRAME_TIME;
		std::this_thread::sleep_until( next );
	}
	cost.Tell( state );
}

void EndFrameAlone( benchmark::State &state )
{
	const CWatcher watcher;
	RunFrames( state );
}
BENCHMARK( EndFrameAlone )->UseManualTime()->Iterations( 2000 );

void EndFrameAmongStrangers( benchmark::State &state )
{
	const CWatcher watcher;
	const CCrowd crowd;
	RunFrames( state );
	state.counters["strangers"] = SILENT + crowd.Came();
}
BENCHMARK( EndFrameAmongStrangers )->UseManualTime()->Iterations( 2000 );
} // namespace
