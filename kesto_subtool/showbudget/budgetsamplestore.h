// The budget samples of one connection: the newest 4,096 frames of every budget, and their peaks.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "views/budgetviewdata.h"

// Plain data that knows no widget. It is fixed in size between two SetCategories: adding a sample allocates nothing and
// the ring wraps silently. A slot holds something only for the newest min( SampleCount(), BUDGET_RING_SIZE ) frames.
class CBudgetSampleStore
{
public:
	static constexpr double PEAK_HOLD_SECONDS = 3.0;

	// Replaces the categories by the given ones (at most wire::MAX_CATEGORIES) and a white "Totals" behind them, makes
	// a new block for each, and clears.
	void SetCategories( std::vector<BudgetCategory> categories );

	// Forgets all frames and peaks. The slots keep their values until new frames overwrite them.
	void Clear();

	// Adds the times of one frame, in microseconds, in the order of the categories; values beyond the categories before
	// "Totals" are not read, missing ones count as 0. "Totals" becomes the sum of all others.
	//
	// A sample opens a new frame, number SampleCount() - 1 once it was counted; one that accumulates is added to the
	// newest frame instead and is lost when there is none. A peak holds the largest value for PEAK_HOLD_SECONDS on the
	// host's clock; the first frame after that replaces it, with bTickSampling by the larger of that frame and the one
	// before it, since the new frame is then only the first part of a tick.
	//
	// flFrameRate (frames per second) belongs to the frame; one that is not finite is stored as 0.
	void AddSample( std::span<const uint32_t> values, float flFrameRate, bool bAccumulate, bool bTickSampling );

	std::span<const BudgetCategory> Categories() const { return m_Categories; }
	uint32_t SampleCount() const { return m_nSampleCount; } // frames since the last clear, modulo 2^32
	bool ArePeaksJustReset() const { return m_bPeaksJustReset; }

	// Points the spans and the counter of `data` at this store; they are valid until SetCategories or the store's end.
	// Without categories there is nothing to look at, and the views are told of no frames.
	void FillViewData( BudgetViewData &data ) const;

private:
	friend class CBudgetSampleStoreTester; // brings the counter close to its wrap

	void OpenFrame();
	void ResetPeaks( bool bTickSampling );
	void WriteFrame( std::span<const uint32_t> values, uint32_t nSlot );
	void AddToFrame( std::span<const uint32_t> values, uint32_t nSlot );
	void RaisePeak( size_t nCategory, uint32_t nValue );

	uint32_t *Block( size_t nCategory ) { return m_Blocks.data() + nCategory * BUDGET_BLOCK_STRIDE; }
	void SetPeak( size_t nCategory, uint32_t nValue );

	std::vector<BudgetCategory> m_Categories;
	std::vector<uint32_t> m_Blocks; // BUDGET_BLOCK_STRIDE for each category, in order

	// The peaks once more, side by side: most frames raise none, and finding that out touches no other line of a block.
	std::vector<uint32_t> m_Peaks;

	std::vector<float> m_FrameRates = std::vector<float>( BUDGET_RING_SIZE );
	uint32_t m_nSampleCount = 0;

	// Seconds of the host's clock, which counts from before the process began: after a month of that, single precision
	// would round to a quarter of a second.
	double m_flPeakResetTime = 0.0;
	bool m_bPeaksJustReset = false;
};
