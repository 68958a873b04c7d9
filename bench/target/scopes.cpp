// What a scope costs, against two reads of the time-stamp counter at the same places in the same run.
#include <benchmark/benchmark.h>

#include <time.h>

#include <algorithm>
#include <vector>

#include "benchrecording.h"
#include "target/showbudget.h"
#include "watcher.h"

namespace
{
constexpr int SCOPES_PER_FRAME = 10000;

SHOWBUDGET_BUDGET( g_BudgetA, "Benchmark A", 200, 100, 100 );
SHOWBUDGET_BUDGET( g_BudgetB, "Benchmark B", 100, 200, 100 );
SHOWBUDGET_BUDGET( g_BudgetC, "Benchmark C", 100, 100, 200 );

void KeepOrder()
{
	asm volatile( "" ::: "memory" );
}

struct CTwoReads
{
	__attribute__( ( always_inline ) ) CTwoReads() { Keep( showbudget::detail::ReadCounter() ); }
	__attribute__( ( always_inline ) ) ~CTwoReads() { Keep( showbudget::detail::ReadCounter() ); }
	static __attribute__( ( always_inline ) ) void Keep( uint64_t nTicks ) { asm volatile( "" ::"r"( nTicks ) ); }
};

// What is measured: the same code with scopes, with two reads of the counter in their places, and with nothing.
enum class Kind
{
	Scope,
	TwoReads,
	Nothing
};

template <Kind kind>
__attribute__( ( noinline ) ) void OneSite()
{
	for ( int i = 0; i < SCOPES_PER_FRAME; i++ )
	{
		if constexpr ( kind == Kind::Scope )
		{
			SHOWBUDGET_SCOPE( g_BudgetA, "One site" );
			KeepOrder();
		}
		else if constexpr ( kind == Kind::TwoReads )
		{
			CTwoReads reads;
			KeepOrder();
		}
		else
			KeepOrder();
	}
}

// Three sites of each instance, one inside the other.
template <Kind kind, int nInstance>
__attribute__( ( noinline ) ) void ThreeDeep()
{
	if constexpr ( kind == Kind::Scope )
	{
		SHOWBUDGET_SCOPE( g_BudgetA, "Outer" );
		KeepOrder();
		{
			SHOWBUDGET_SCOPE( g_BudgetB, "Middle" );
			KeepOrder();
			{
				SHOWBUDGET_SCOPE( g_BudgetC, "Inner" );
				KeepOrder();
			}
		}
	}
	else
	{
		CTwoReads outer;
		KeepOrder();
		{
			CTwoReads middle;
			KeepOrder();
			{
				CTwoReads inner;
				KeepOrder();
			}
		}
	}
}

template <Kind kind, int nInstance = 33>
void AllSites()
{
	if constexpr ( nInstance > 0 )
	{
		AllSites<kind, nInstance - 1>();
		ThreeDeep<kind, nInstance>();
	}
}

// 99 sites three deep and one alone make the hundred; a hundred rounds make a frame.
template <Kind kind>
__attribute__( ( noinline ) ) void HundredSites()
{
	for ( int i = 0; i < SCOPES_PER_FRAME / 100; i++ )
	{
		AllSites<kind>();
		if constexpr ( kind == Kind::Scope )
		{
			SHOWBUDGET_SCOPE( g_BudgetA, "Last" );
			KeepOrder();
		}
		else
		{
			CTwoReads reads;
			KeepOrder();
		}
	}
}

// A site that is entered from two others in turns, which is off a scope's straight way: six scopes a round.
template <Kind kind>
__attribute__( ( noinline ) ) void Shared()
{
	if constexpr ( kind == Kind::Scope )
	{
		SHOWBUDGET_SCOPE( g_BudgetC, "Shared" );
		KeepOrder();
		{
			SHOWBUDGET_SCOPE( g_BudgetC, "Inside of shared" );
			KeepOrder();
		}
	}
	else
	{
		CTwoReads outer;
		KeepOrder();
		{
			CTwoReads inner;
			KeepOrder();
		}
	}
}

template <Kind kind>
__attribute__( ( noinline ) ) void SharedSite()
{
	for ( int i = 0; i < SCOPES_PER_FRAME / 6; i++ )
	{
		if constexpr ( kind == Kind::Scope )
		{
			{
				SHOWBUDGET_SCOPE( g_BudgetA, "First caller" );
				Shared<kind>();
			}
			{
				SHOWBUDGET_SCOPE( g_BudgetB, "Second caller" );
				Shared<kind>();
			}
		}
		else
		{
			{
				CTwoReads caller;
				Shared<kind>();
			}
			{
				CTwoReads caller;
				Shared<kind>();
			}
		}
	}
}

double ThreadSeconds()
{
	timespec time{};
	clock_gettime( CLOCK_THREAD_CPUTIME_ID, &time );
	return static_cast<double>( time.tv_sec ) + static_cast<double>( time.tv_nsec ) * 1.0e-9;
}

template <typename Function>
double NanosecondsPerScope( Function function )
{
	const double flBegin = ThreadSeconds();
	function();
	return ( ThreadSeconds() - flBegin ) * 1.0e9 / SCOPES_PER_FRAME;
}

double Median( std::vector<double> &values )
{
	std::ranges::nth_element( values, values.begin() + static_cast<ptrdiff_t>( values.size() / 2 ) );
	return values[values.size() / 2];
}

// Runs both kinds frame by frame in turns, so that whatever else the machine does meets both alike, and reports the
// medians of the times and of the ratio of neighbours.
template <typename Measured, typename Baseline>
void Compare( benchmark::State &state, Measured measured, Baseline baseline )
{
	std::vector<double> times, baselineTimes, ratios, differences;
	for ( auto iteration : state )
	{
		const double flBaseline = NanosecondsPerScope( baseline );
		const double flMeasured = NanosecondsPerScope( measured );
		showbudget::EndFrame();
		times.push_back( flMeasured );
		baselineTimes.push_back( flBaseline );
		ratios.push_back( flMeasured / flBaseline );
		differences.push_back( flMeasured - flBaseline );
		state.SetIterationTime( flMeasured * 1.0e-9 * SCOPES_PER_FRAME );
	}
	state.counters["scope_ns"] = Median( times );
	state.counters["baseline_ns"] = Median( baselineTimes );
	state.counters["ratio"] = Median( ratios );
	state.counters["more_ns"] = Median( differences );
}

void ScopeFromOneSite( benchmark::State &state )
{
	CWatcher watcher;
	Compare( state, OneSite<Kind::Scope>, OneSite<Kind::TwoReads> );
}
BENCHMARK( ScopeFromOneSite )->UseManualTime()->Iterations( 3000 )->Repetitions( 3 );

void ScopeFromHundredSites( benchmark::State &state )
{
	CWatcher watcher;
	Compare( state, HundredSites<Kind::Scope>, HundredSites<Kind::TwoReads> );
}
BENCHMARK( ScopeFromHundredSites )->UseManualTime()->Iterations( 3000 )->Repetitions( 3 );

// A recording alone, then for the worst case: every third scope is entered from elsewhere than before.
void RecordedFromOneSite( benchmark::State &state )
{
	CBenchRecording recording;
	Compare( state, OneSite<Kind::Scope>, OneSite<Kind::TwoReads> );
}
BENCHMARK( RecordedFromOneSite )->UseManualTime()->Iterations( 3000 )->Repetitions( 3 );

void RecordedFromHundredSites( benchmark::State &state )
{
	CBenchRecording recording;
	Compare( state, HundredSites<Kind::Scope>, HundredSites<Kind::TwoReads> );
}
BENCHMARK( RecordedFromHundredSites )->UseManualTime()->Iterations( 3000 )->Repetitions( 3 );

void SharedSiteWatched( benchmark::State &state )
{
	CWatcher watcher;
	Compare( state, SharedSite<Kind::Scope>, SharedSite<Kind::TwoReads> );
}
BENCHMARK( SharedSiteWatched )->UseManualTime()->Iterations( 1000 )->Repetitions( 3 );

void SharedSiteRecorded( benchmark::State &state )
{
	CBenchRecording recording;
	Compare( state, SharedSite<Kind::Scope>, SharedSite<Kind::TwoReads> );
}
BENCHMARK( SharedSiteRecorded )->UseManualTime()->Iterations( 1000 )->Repetitions( 3 );

// Nobody watches: more_ns is the cost of a scope over an empty loop.
void ScopeWhileOff( benchmark::State &state )
{
	Compare( state, OneSite<Kind::Scope>, OneSite<Kind::Nothing> );
}
BENCHMARK( ScopeWhileOff )->UseManualTime()->Iterations( 3000 )->Repetitions( 3 );
} // namespace
