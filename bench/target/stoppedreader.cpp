// What EndFrame() costs while a console has stopped reading: half a minute of frames of 64 KiB, 60 in a second.
#include <chrono>
#include <deque>
#include <thread>

#include "framecost.h"
#include "watcher.h"

namespace
{
constexpr int SITES = 1820; // of 36 bytes each
constexpr auto FRAME_TIME = std::chrono::microseconds( 16667 );

SHOWBUDGET_BUDGET( g_Budget, "Stopped reader", 0, 0, 0 );

void EndFrameWithAStoppedReader( benchmark::State &state )
{
	CWatcher watcher( false );
	static std::deque<showbudget::detail::CSite> s_Sites; // call sites live as long as the process
	while ( s_Sites.size() < SITES )
		s_Sites.emplace_back( "Site", "", "", 0u, &g_Budget, "" );
	CFrameCost cost;
	auto next = std::chrono::steady_clock::now();
	for ( auto iteration : state )
	{
		for ( showbudget::detail::CSite &site : s_Sites )
			const showbudget::detail::CScope scope( site );
		state.SetIterationTime( cost.EndFrame() );
		next += FRAME_TIME;
		std::this_thread::sleep_until( next );
	}
	cost.Tell( state );
}
BENCHMARK( EndFrameWithAStoppedReader )->UseManualTime()->Iterations( 1800 );
} // namespace
