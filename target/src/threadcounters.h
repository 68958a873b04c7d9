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

// Threads that found no room so far.
uint32_t UnmeasuredThreads();
} // namespace showbudget
