#include "clock.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <ctime>
#include <mutex>

#if defined( __x86_64__ )
#include <cpuid.h>
#endif

namespace showbudget
{
namespace
{
constexpr uint64_t NANOSECONDS = 1000000000;
constexpr uint64_t CALIBRATION_TIME = 20000000; // ns: an error of 100 ns at both ends is 10 parts in a million

uint64_t ReadSystemClock()
{
	timespec time{};
	clock_gettime( CLOCK_MONOTONIC, &time );
	return static_cast<uint64_t>( time.tv_sec ) * NANOSECONDS + static_cast<uint64_t>( time.tv_nsec );
}

bool IsCounterInvariant()
{
#if defined( __x86_64__ )
	constexpr unsigned int POWER_LEAF = 0x80000007;
	constexpr unsigned int INVARIANT_COUNTER = 1u << 8; // in edx
	unsigned int nEax = 0, nEbx = 0, nEcx = 0, nEdx = 0;
	return __get_cpuid( POWER_LEAF, &nEax, &nEbx, &nEcx, &nEdx ) != 0 && ( nEdx & INVARIANT_COUNTER ) != 0;
#else
	return false;
#endif
}

// The same moment on both clocks.
struct Moment
{
	uint64_t m_nTicks = 0;
	uint64_t m_nNanoseconds = 0;
};

// The best of a few tries: the one with the least time between the two reads of the counter around the clock.
Moment TakeMoment()
{
	constexpr int TRIES = 16;
	Moment best;
	uint64_t nBestGap = ~uint64_t( 0 );
	for ( int i = 0; i < TRIES; i++ )
	{
		const uint64_t nBefore = detail::ReadCounter();
		const uint64_t nNanoseconds = ReadSystemClock();
		const uint64_t nGap = detail::ReadCounter() - nBefore;
		if ( nGap < nBestGap )
		{
			nBestGap = nGap;
			best = { nBefore + nGap / 2, nNanoseconds };
		}
	}
	return best;
}

void WaitUntil( uint64_t nNanoseconds )
{
	const timespec time{
		static_cast<time_t>( nNanoseconds / NANOSECONDS ), static_cast<long>( nNanoseconds % NANOSECONDS ) };
	while ( clock_nanosleep( CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr ) == EINTR )
	{
	}
}

std::once_flag g_Chosen;
std::once_flag g_Calibrated;
std::atomic<bool> g_bCounter{ false };
Moment g_Chosing;
uint64_t g_nFrequency = NANOSECONDS;

void Calibrate()
{
	if ( !IsCounterUsed() )
		return;
	WaitUntil( g_Chosing.m_nNanoseconds + CALIBRATION_TIME );
	const Moment now = TakeMoment();
	const double flSeconds =
		static_cast<double>( now.m_nNanoseconds - g_Chosing.m_nNanoseconds ) / static_cast<double>( NANOSECONDS );
	g_nFrequency = static_cast<uint64_t>( static_cast<double>( now.m_nTicks - g_Chosing.m_nTicks ) / flSeconds + 0.5 );
}
} // namespace

void ChooseClock( Clock clock )
{
	std::call_once( g_Chosen,
		[clock]
		{
			if ( clock == Clock::Best && IsCounterInvariant() )
			{
				g_Chosing = TakeMoment();
				g_bCounter.store( true, std::memory_order_release );
			}
		} );
}

bool IsCounterUsed()
{
	return g_bCounter.load( std::memory_order_relaxed );
}

uint64_t ReadTicks()
{
	return IsCounterUsed() ? detail::ReadCounter() : ReadSystemClock();
}

uint64_t TickFrequency()
{
	std::call_once( g_Calibrated, Calibrate );
	return g_nFrequency;
}
} // namespace showbudget
