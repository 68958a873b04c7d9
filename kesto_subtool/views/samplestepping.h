// Which sample a key leads to while sampling is stopped. Only samples that the ring still holds are ever offered.
#pragma once

#include <cstdint>
#include <optional>

#include "views/budgetviewdata.h"

// The samples in the ring, first to last.
struct HeldSamples
{
	uint32_t m_nOldest = 0;
	uint32_t m_nNewest = 0;

	static std::optional<HeldSamples> Of( uint32_t nSampleCount ); // nothing before the first sample
};

enum class SearchDirection
{
	Later,
	Earlier
};

// The sample nSteps later (below 0: earlier), as far as the ring goes: a step from a sample that has left the ring
// leads to the oldest one.
uint32_t StepSample( const HeldSamples &held, uint32_t nCursor, int64_t nSteps );

// The nearest sample in that direction whose frame rate, as the graph shows it, lies below flRate. The search goes on
// at the other end of the ring and ends at the cursor. A frame without a measured time is not slow.
std::optional<uint32_t> FindSlowerSample(
	const BudgetViewData &data, uint32_t nCursor, SearchDirection direction, float flRate );

// The sample with the lowest frame rate, the newest of several; nothing when no frame has a measured time.
std::optional<uint32_t> FindSlowestSample( const BudgetViewData &data );
