// The clock that scopes are measured with, chosen once for the life of the process.
#pragma once

#include <cstdint>

#include "target/showbudget.h"

namespace showbudget
{
// The first call chooses: the time-stamp counter where the processor says that it runs at one speed in all states,
// unless the system's clock is asked for. Later calls change nothing.
void ChooseClock( Clock clock );

// Before ChooseClock, false.
bool IsCounterUsed();

// Ticks of the chosen clock; never 0.
uint64_t ReadTicks();

// Ticks per second. The first call for the counter compares it with the system's clock over at least 20 ms since
// ChooseClock and may wait for that; not for instrumented threads.
uint64_t TickFrequency();
} // namespace showbudget
