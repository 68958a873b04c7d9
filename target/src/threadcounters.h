// The counters of all threads.
#pragma once

#include <cstdint>
#include <span>

#include "tablesizes.h"
#include "target/showbudget.h"

namespace showbudget
{
// How many threads ever had counters at one time; their indices are below. The counters of a thread that ended keep
// what it counted, and the next thread goes on with them.
uint32_t ThreadCount();
detail::CSiteCounters *GetCounters( uint32_t nThread );
// The index of the thread that has these counters, which begin with those of SITE_NONE.
uint32_t ThreadIndex( const detail::CSiteCounters *pCounters );
// The sites that were entered with these counters, each once.
std::span<const uint16_t> EnteredSites( uint32_t nThread );

// The calling thread's counters, given to it now if it has none. Null when MAX_THREADS have some.
detail::CSiteCounters *AttachThread();

// In a forked child, which has no other threads: their counters are free.
void ForgetOtherThreads();

// Ends and begins every open scope of the calling thread, whose counters are pOwn, at one moment, so that no scope
// reaches over it.
void SplitOpenScopes( const detail::CSiteCounters *pOwn, uint64_t nNow );

// A site's m_pCaller with its lowest bit set is the caller all the same, but a scope that is entered from it takes the
// slow way once. Only for sites that are not open, and only their thread may do it.
inline void MarkCaller( detail::CSiteCounters &counters )
{
	const auto nCaller = reinterpret_cast<uintptr_t>( counters.m_pCaller.load( std::memory_order_relaxed ) );
	if ( nCaller != 0 )
		counters.m_pCaller.store( reinterpret_cast<detail::CSiteCounters *>( nCaller | 1 ), std::memory_order_relaxed );
}

// The counters of the scope around the last entry, marked or not; null before the first one.
inline detail::CSiteCounters *LastCaller( const detail::CSiteCounters &counters )
{
	const auto nCaller = reinterpret_cast<uintptr_t>( counters.m_pCaller.load( std::memory_order_relaxed ) );
	return reinterpret_cast<detail::CSiteCounters *>( nCaller & ~uintptr_t( 1 ) );
}

// Threads that found no room so far.
uint32_t UnmeasuredThreads();
} // namespace showbudget
