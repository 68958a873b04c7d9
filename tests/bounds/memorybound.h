// What an input may make a program take from the heap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "countedmemory.h"

constexpr size_t SHORT_INPUT = 100; // bytes

// In bytes, for an input of as many.
inline int64_t MemoryBound( size_t nInput )
{
	constexpr int64_t MEBIBYTE = 1 << 20;
	return nInput <= SHORT_INPUT ? 16 * MEBIBYTE : 64 * MEBIBYTE + 16 * static_cast<int64_t>( nInput );
}

// The most that the work has from the heap at a time, beyond what was there before.
inline int64_t PeakMemoryOf( const std::function<void()> &work )
{
	const int64_t nBefore = countedmemory::Now();
	countedmemory::ResetPeak();
	work();
	return countedmemory::Peak() - nBefore;
}
