// What the budget views read: plain spans over the samples of one connection, and the options that the user chose.
#pragma once

#include <QColor>
#include <cstdint>
#include <span>

#include "keel0/utlstring.h"

// One budget. The last one of a list is the frame total, "Totals".
struct BudgetCategory
{
	CUtlString m_Name;
	QColor m_Colour;
};

constexpr uint32_t BUDGET_RING_SIZE = 4096;              // samples kept per budget
constexpr uint32_t BUDGET_PEAK_ENTRY = BUDGET_RING_SIZE; // where a block keeps its peak
constexpr uint32_t BUDGET_BLOCK_SIZE = BUDGET_RING_SIZE + 1;

// From block to block. One frame touches the same slot of every block: blocks that followed each other at once would
// put all of these into four or five sets of the first-level cache, where they drive each other out. 259 lines of 64
// bytes, an odd number, spread them over all sets, and writing a frame takes a fifth of the time.
constexpr uint32_t BUDGET_BLOCK_STRIDE = 259 * 64 / sizeof( uint32_t );
static_assert( BUDGET_BLOCK_STRIDE >= BUDGET_BLOCK_SIZE );

// The slot of a sample number in the ring; a number below 0 reads slot 0.
constexpr uint32_t BudgetSlot( int64_t nSample )
{
	return nSample < 0 ? 0 : static_cast<uint32_t>( nSample % BUDGET_RING_SIZE );
}

// A look at the store, valid until the store changes. Sample numbers count from 0; only the newest
// min( m_nSampleCount, BUDGET_RING_SIZE ) of them are in the ring, the slots of others hold anything.
struct BudgetViewData
{
	std::span<const BudgetCategory> m_Categories;

	// Block of category i: m_Blocks[i * BUDGET_BLOCK_STRIDE] on; sample values in microseconds, then the peak.
	std::span<const uint32_t> m_Blocks;

	// Per slot, the frame rate that the target averaged, in frames per second; BUDGET_RING_SIZE entries.
	std::span<const float> m_FrameRates;

	uint32_t m_nSampleCount = 0; // frames sampled since the last clear

	bool m_bLive = false;         // sampling runs: the newest sample is shown; else the history cursor's
	bool m_bTickSampling = false; // the newest sample is still being filled
	bool m_bFPSUnits = false;
	bool m_bShowAverages = true;
	bool m_bShowThresholds = true;
	bool m_bFPSAverages = false;

	uint32_t m_nCursor = 0; // sample number of the history cursor; counts only while not live

	std::span<const uint32_t> Block( size_t nCategory ) const
	{
		return m_Blocks.subspan( nCategory * BUDGET_BLOCK_STRIDE, BUDGET_BLOCK_SIZE );
	}
	uint32_t Value( size_t nCategory, uint32_t nSlot ) const
	{
		return m_Blocks[nCategory * BUDGET_BLOCK_STRIDE + nSlot];
	}
	uint32_t Peak( size_t nCategory ) const { return Value( nCategory, BUDGET_PEAK_ENTRY ); }

	// The sample that bars, statistics and status texts show: the newest whole one while live, else the cursor's. It is
	// below 0 when "Tick Sampling" is on and only one sample was taken.
	int64_t SelectedSample() const
	{
		if ( m_nSampleCount == 0 )
			return 0;
		if ( m_bLive )
			return int64_t{ m_nSampleCount } - ( m_bTickSampling ? 2 : 1 );
		return m_nCursor;
	}
};
