// Counts what this program has from the heap.
#pragma once

#include <cstdint>

namespace countedmemory
{
// False in builds with a sanitizer, which has a heap of its own; the others are then 0.
bool IsCounted();

int64_t Now();  // bytes that are allocated
int64_t Peak(); // the most that were, since the last reset
void ResetPeak();
} // namespace countedmemory
