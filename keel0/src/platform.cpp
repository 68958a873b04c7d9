#include "keel0/platform.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#if defined( __x86_64__ ) || defined( __i386__ )
#include <cpuid.h>
#include <x86intrin.h>
#define KEEL0_HAS_TIME_STAMP_COUNTER 1
#else
#define KEEL0_HAS_TIME_STAMP_COUNTER 0
#endif

namespace
{
constexpr uint64_t NANOSECONDS_PER_SECOND = 1'000'000'000;

uint64_t MonotonicNanoseconds()
{
	timespec now{};
	clock_gettime( CLOCK_MONOTONIC, &now );
	return static_cast<uint64_t>( now.tv_sec ) * NANOSECONDS_PER_SECOND + static_cast<uint64_t>( now.tv_nsec );
}

#if KEEL0_HAS_TIME_STAMP_COUNTER
// Whether the counter runs at one rate whatever the processor's clock and sleep states do.
bool IsTimeStampCounterInvariant()
{
	constexpr unsigned int ADVANCED_POWER_MANAGEMENT = 0x80000007;
	constexpr unsigned int INVARIANT_COUNTER_BIT = 1u << 8;
	unsigned int a = 0;
	unsigned int b = 0;
	unsigned int c = 0;
	unsigned int d = 0;
	return __get_cpuid( ADVANCED_POWER_MANAGEMENT, &a, &b, &c, &d ) != 0 && ( d & INVARIANT_COUNTER_BIT ) != 0;
}

// Both clocks at one moment.
struct ClockPair
{
	uint64_t m_nTicks;
	uint64_t m_nNanoseconds;
};

// Of several readings, the one in which the least time passed around the system clock's: the others were interrupted.
ClockPair ReadBothClocks()
{
	ClockPair best{};
	uint64_t nShortest = UINT64_MAX;
	for ( int i = 0; i < 16; i++ )
	{
		const uint64_t nBefore = __rdtsc();
		const uint64_t nNanoseconds = MonotonicNanoseconds();
		const uint64_t nAround = __rdtsc() - nBefore;
		if ( nAround < nShortest )
		{
			nShortest = nAround;
			best = { nBefore + nAround / 2, nNanoseconds };
		}
	}
	return best;
}

// Ticks per second, measured from the given moment until now, over at least 20 ms: a reading is good to some tens of
// nanoseconds, so the result is good to a few millionths.
uint64_t MeasureTickFrequency( const ClockPair &begin )
{
	constexpr uint64_t SHORTEST_MEASUREMENT = 20'000'000;
	ClockPair end = ReadBothClocks();
	while ( end.m_nNanoseconds - begin.m_nNanoseconds < SHORTEST_MEASUREMENT )
		end = ReadBothClocks();
	const double flTicks = static_cast<double>( end.m_nTicks - begin.m_nTicks );
	const double flSeconds = static_cast<double>( end.m_nNanoseconds - begin.m_nNanoseconds ) / 1e9;
	return static_cast<uint64_t>( flTicks / flSeconds );
}

const bool g_bTimeStampCounter = IsTimeStampCounterInvariant();
// Taken when the library is loaded, so that the first question for the frequency rarely has to wait.
const ClockPair g_LoadTime = ReadBothClocks();
#endif

__attribute__( ( format( printf, 1, 2 ) ) ) void PrintAndAbort( const char *pFormat, ... )
{
	va_list arguments;
	va_start( arguments, pFormat );
	std::vfprintf( stderr, pFormat, arguments );
	va_end( arguments );
	std::fflush( stderr );
	std::abort();
}

// Other threads read the clock while a host or a test sets it.
std::atomic<double ( * )()> g_pFloatTimeSource{ nullptr };
std::atomic<void ( * )( const char * )> g_pClipboardSink{ nullptr };
} // namespace

void ( *Plat_FatalErrorFunc )( const char *pFormat, ... ) = PrintAndAbort;

double Plat_FloatTime()
{
	if ( double ( *pSource )() = g_pFloatTimeSource.load( std::memory_order_acquire ) )
		return pSource();
	timespec now{};
	clock_gettime( CLOCK_MONOTONIC, &now );
	return static_cast<double>( now.tv_sec ) + static_cast<double>( now.tv_nsec ) * 1e-9;
}

uint64_t Plat_CPUTicks()
{
#if KEEL0_HAS_TIME_STAMP_COUNTER
	if ( g_bTimeStampCounter )
		return __rdtsc();
#endif
	return MonotonicNanoseconds();
}

uint64_t Plat_CPUTickFrequency()
{
#if KEEL0_HAS_TIME_STAMP_COUNTER
	if ( g_bTimeStampCounter )
	{
		static const uint64_t nFrequency = MeasureTickFrequency( g_LoadTime );
		return nFrequency;
	}
#endif
	return NANOSECONDS_PER_SECOND;
}

void Plat_DebugPrint( const char *pText )
{
	if ( pText )
		std::fputs( pText, stderr );
}

void Plat_SetClipboardText( const char *pText )
{
	if ( void ( *pSink )( const char * ) = g_pClipboardSink.load( std::memory_order_acquire ) )
		pSink( pText ? pText : "" );
}

void Plat_SetFloatTimeSource( double ( *pSource )() )
{
	g_pFloatTimeSource.store( pSource, std::memory_order_release );
}

void Plat_SetClipboardSink( void ( *pSink )( const char *pText ) )
{
	g_pClipboardSink.store( pSink, std::memory_order_release );
}
