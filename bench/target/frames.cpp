// What EndFrame() costs.
#include <benchmark/benchmark.h>

#include <time.h>

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

#include "benchrecording.h"
#include "target/showbudget.h"
#include "watcher.h"

namespace
{
constexpr int SCOPES_PER_FRAME = 10000;
constexpr int BUDGETS = 64;

// Call sites that are made at run time, as macros would make them at compile time.
class CSites
{
public:
	explicit CSites( int nSites )
	{
		for ( int i = 0; i < BUDGETS; i++ )
		{
			m_Names.push_back( "Budget " + std::to_string( i ) );
			m_Budgets.emplace_back( m_Names.back().c_str(), 0, 0, 0 );
		}
		for ( int i = 0; i < nSites; i++ )
			m_Sites.emplace_back( "Site", "", "", 0u, &m_Budgets[static_cast<size_t>( i % BUDGETS )], "" );
	}
	void RunFrame()
	{
		for ( int i = 0; i < SCOPES_PER_FRAME; )
		{
			for ( showbudget::detail::CSite &site : m_Sites )
			{
				const showbudget::detail::CScope scope( site );
				i++;
			}
		}
	}

private:
	std::deque<std::string> m_Names;
	std::deque<showbudget::CBudget> m_Budgets;
	std::deque<showbudget::detail::CSite> m_Sites;
};

double ThreadSeconds()
{
	timespec time{};
	clock_gettime( CLOCK_THREAD_CPUTIME_ID, &time );
	return static_cast<double>( time.tv_sec ) + static_cast<double>( time.tv_nsec ) * 1.0e-9;
}

template <typename Watcher>
void EndFrame( benchmark::State &state )
{
	Watcher watcher;
	static std::deque<CSites> s_Sites; // call sites live as long as the process
	CSites &sites = s_Sites.emplace_back( static_cast<int>( state.range( 0 ) ) );
	std::vector<double> times;
	for ( auto iteration : state )
	{
		sites.RunFrame();
		const double flBegin = ThreadSeconds();
		showbudget::EndFrame();
		const double flSeconds = ThreadSeconds() - flBegin;
		state.SetIterationTime( flSeconds );
		times.push_back( flSeconds * 1.0e9 );
	}
	std::ranges::nth_element( times, times.begin() + static_cast<ptrdiff_t>( times.size() / 2 ) );
	state.counters["end_frame_ns"] = times[times.size() / 2];
	state.counters["ns_per_scope"] = times[times.size() / 2] / SCOPES_PER_FRAME;
}
BENCHMARK( EndFrame<CWatcher> )->Arg( 64 )->Arg( 500 )->UseManualTime()->Iterations( 2000 );
BENCHMARK( EndFrame<CBenchRecording> )->Arg( 64 )->Arg( 500 )->UseManualTime()->Iterations( 2000 );
} // namespace
