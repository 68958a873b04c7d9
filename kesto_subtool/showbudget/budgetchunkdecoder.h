// Takes the budget chunks of an engine apart. What does not hold together is dropped whole, with a Warning that names
// the chunk, its count and its length; the caller's data is then unchanged.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "views/budgetviewdata.h"

// 'PCAT': the categories in the chunk's order, without "Totals". False when the chunk was dropped.
bool DecodeCategories( std::span<const uint8_t> payload, std::vector<BudgetCategory> &categories );

struct BudgetSample
{
	std::vector<uint32_t> m_Values; // microseconds, one for each category before "Totals"
	float m_flFrameRate = 0.0f;     // as the engine sent it: may be anything
	bool m_bContinuation = false;   // the sample goes on with the tick of the one before it
};

// 'PCPU' for a store of nCategories categories, "Totals" among them. Reuses the memory of sample.m_Values. False when
// the chunk was dropped, also for carrying fewer values than there are categories before "Totals".
bool DecodeSample( std::span<const uint8_t> payload, size_t nCategories, BudgetSample &sample );
