// What EndFrame() costs while a console has stopped reading: half a minute of frames of 64 KiB, 60 in a second.
#include <benchmark/benchmark.h>

#include <time.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <thread>
#include <vector>

#include "target/showbudget.h"
#include "watcher.h"

namespace
{
constexpr int SITES = 1820; // of 36 bytes each
constexpr auto FRAME_TIME = std::chrono::microseconds( 16667 );

SHOWBUDGET_BUDGET( g_Budget, "Stopped reader", 0, 0, 0 );

double Seconds( clockid_t clock )
{
	timespec time{};
	clock_gettime( clock, &time );
	return static_cast<double>( time.tv_sec ) + static_cast<double>( time.tv_nsec ) * 1.0e-9;
}

double Longest( const std::vector<double> &times )
{
	return *std::ranges::max_element( times ) * 1.0e6;
}

// The wall's clock counts what the machine does besides, too; the thread's does not.
void EndFrameWithAStoppedReader( benchmark::State &state )
{
	CWatcher watcher( false );
	static std::deque<showbudget::detail::CSite> s_Sites; // call sites live as long as the process
	while ( s_Sites.size() < SITES )
		s_Sites.emplace_back( "Site", "", "", 0u, &g_Budget, "" );
	std::vector<double> wall, thread;
	auto next = std::chrono::steady_clock::now();
	for ( auto iteration : state )
	{
		for ( showbudget::detail::CSite &site : s_Sites )
			const showbudget::detail::CScope scope( site );
		const double flWall = Seconds( CLOCK_MONOTONIC );
		const double flThread = Seconds( CLOCK_THREAD_CPUTIME_ID );
		showbudget::EndFrame();
		thread.push_back( Seconds( CLOCK_THREAD_CPUTIME_ID ) - flThread );
		wall.push_back( Seconds( CLOCK_MONOTONIC ) - flWall );
		state.SetIterationTime( thread.back() );
		next += FRAME_TIME;
		std::this_thread::sleep_until( next );
	}
	state.counters["longest_wall_us"] = Longest( wall );
	state.counters["longest_thread_us"] = Longest( thread );
	std::ranges::nth_element( thread, thread.begin() + static_cast<ptrdiff_t>( thread.size() / 2 ) );
	state.counters["median_thread_us"] = thread[thread.size() / 2] * 1.0e6;
}
BENCHMARK( EndFrameWithAStoppedReader )->UseManualTime()->Iterations( 1800 );
} // namespace
