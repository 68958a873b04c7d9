// Large memory that is filled from front to back.
#pragma once

#include <cstddef>

// Asks for huge pages in what of the memory they fit into: one page fault then stands for hundreds, and those are half
// of what filling fresh memory takes. A hint; nothing depends on it.
void PreferHugePages( void *pMemory, size_t nBytes );

inline constexpr size_t HUGE_PAGE_SIZE = size_t{ 2 } << 20; // bytes
