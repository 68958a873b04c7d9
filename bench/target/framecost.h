// What each EndFrame() of a run costs, by the wall's clock, which counts what the machine does besides, and by the
// thread's, which does not.
#pragma once

#include <benchmark/benchmark.h>

#include <time.h>

#include <algorithm>
#include <vector>

#include "target/showbudget.h"

class CFrameCost
{
public:
	// Seconds of the thread, for the benchmark's own clock.
	double EndFrame()
	{
		const double flWall = Seconds( CLOCK_MONOTONIC );
		const double flThread = Seconds( CLOCK_THREAD_CPUTIME_ID );
		showbudget::EndFrame();
		m_Thread.push_back( Seconds( CLOCK_THREAD_CPUTIME_ID ) - flThread );
		m_Wall.push_back( Seconds( CLOCK_MONOTONIC ) - flWall );
		return m_Thread.back();
	}

	// Behind at least one frame.
	void Tell( benchmark::State &state )
	{
		state.counters["longest_wall_us"] = *std::ranges::max_element( m_Wall ) * 1.0e6;
		state.counters["longest_thread_us"] = *std::ranges::max_element( m_Thread ) * 1.0e6;
		std::ranges::nth_element( m_Thread, m_Thread.begin() + static_cast<ptrdiff_t>( m_Thread.size() / 2 ) );
		state.counters["median_thread_us"] = m_Thread[m_Thread.size() / 2] * 1.0e6;
	}

private:
	static double Seconds( clockid_t clock )
	{
		timespec time{};
		clock_gettime( clock, &time );
		return static_cast<double>( time.tv_sec ) + static_cast<double>( time.tv_nsec ) * 1.0e-9;
	}

	std::vector<double> m_Wall;
	std::vector<double> m_Thread;
};
