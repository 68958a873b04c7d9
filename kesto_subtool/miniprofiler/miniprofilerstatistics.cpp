#include "miniprofiler/miniprofilerstatistics.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace
{
// Records are computed a few side by side: their samples lie side by side in memory, and the compiler makes vector
// instructions of the inner loops.
constexpr uint32_t LANES = 4;
static_assert( CMiniProfilerHistory::BLOCK_RECORDS % LANES == 0 );

using Lanes = std::array<double, LANES>;

struct LaneSamples
{
	std::array<Lanes, CMiniProfilerHistory::CAPACITY> m_Ticks;
	std::array<Lanes, CMiniProfilerHistory::CAPACITY> m_Calls;
	std::array<Lanes, CMiniProfilerHistory::CAPACITY> m_PerCall;
};

struct LaneTotals
{
	Lanes m_Ticks{};
	Lanes m_Calls{};
	Lanes m_PeakTicks{};
	Lanes m_PeakCalls{};
	Lanes m_PeakPerCall{};
};

struct LaneDeviations // sums of squares, and over how many samples the one per call goes
{
	Lanes m_Ticks{};
	Lanes m_Calls{};
	Lanes m_PerCall{};
	Lanes m_CallSamples{};
};

// The nearest double, as a conversion gives it, from operations that exist for vectors: each half of the number becomes
// the mantissa of a double with a fixed exponent, and one rounding happens in the last addition.
double ToDouble( uint64_t nValue )
{
	constexpr uint64_t LOW_EXPONENT = 0x4330000000000000;  // 2^52
	constexpr uint64_t HIGH_EXPONENT = 0x4530000000000000; // 2^84
	constexpr double BOTH = 0x1p84 + 0x1p52;
	const double flLow = std::bit_cast<double>( ( nValue & 0xFFFFFFFF ) | LOW_EXPONENT );
	const double flHigh = std::bit_cast<double>( ( nValue >> 32 ) | HIGH_EXPONENT );
	return ( flHigh - BOTH ) + flLow;
}

// Slots that a young record has not reached hold 0 and change neither sums nor peaks.
LaneTotals ReadLanes(
	const CMiniProfilerHistory &history, uint32_t nFirstRecord, uint32_t nSamples, LaneSamples &samples )
{
	const CMiniProfilerHistory::Block &block = history.BlockAt( nFirstRecord / CMiniProfilerHistory::BLOCK_RECORDS );
	const uint32_t nLane = nFirstRecord % CMiniProfilerHistory::BLOCK_RECORDS;
	LaneTotals totals;
	for ( uint32_t i = 0; i < nSamples; i++ )
	{
		const uint32_t nSlot = history.Slot( i );
		const uint64_t *pTicks = &block.m_Ticks[nSlot][nLane];
		const uint64_t *pCalls = &block.m_Calls[nSlot][nLane];
		for ( uint32_t j = 0; j < LANES; j++ )
		{
			const double flTicks = ToDouble( pTicks[j] );
			const double flCalls = ToDouble( pCalls[j] );
			const double flPerCall = flTicks / std::max( flCalls, 1.0 );
			totals.m_Ticks[j] += flTicks;
			totals.m_Calls[j] += flCalls;
			totals.m_PeakTicks[j] = std::max( totals.m_PeakTicks[j], flTicks );
			totals.m_PeakCalls[j] = std::max( totals.m_PeakCalls[j], flCalls );
			totals.m_PeakPerCall[j] = std::max( totals.m_PeakPerCall[j], flPerCall );
			samples.m_Ticks[i][j] = flTicks;
			samples.m_Calls[i][j] = flCalls;
			samples.m_PerCall[i][j] = flPerCall;
		}
	}
	return totals;
}

LaneDeviations SumDeviations( const LaneSamples &samples, uint32_t nSamples, const Lanes &counts,
	const LaneDeviations &means ) // the means stand where their sums will
{
	LaneDeviations sums;
	for ( uint32_t i = 0; i < nSamples; i++ )
	{
		const double flAge = i;
		for ( uint32_t j = 0; j < LANES; j++ )
		{
			const double flTaken = flAge < counts[j] ? 1.0 : 0.0;
			const double flCalled = samples.m_Calls[i][j] != 0.0 ? 1.0 : 0.0;
			const double flTicks = ( samples.m_Ticks[i][j] - means.m_Ticks[j] ) * flTaken;
			const double flCalls = ( samples.m_Calls[i][j] - means.m_Calls[j] ) * flTaken;
			const double flPerCall = ( samples.m_PerCall[i][j] - means.m_PerCall[j] ) * flCalled;
			sums.m_Ticks[j] += flTicks * flTicks;
			sums.m_Calls[j] += flCalls * flCalls;
			sums.m_PerCall[j] += flPerCall * flPerCall;
			sums.m_CallSamples[j] += flCalled;
		}
	}
	return sums;
}

MiniProfilerArray MakeArray( double flCalls, double flInclusive, double flInclusiveCall )
{
	return { 0.0f, static_cast<float>( flCalls ), static_cast<float>( flInclusive ), 0.0f,
		static_cast<float>( flInclusiveCall ), 0.0f };
}

void ComputeLanes( const CMiniProfilerHistory &history, std::span<const std::unique_ptr<CQMiniProfilerRecord>> records,
	uint32_t nFirst, bool bPeaks )
{
	const uint32_t nRecords = std::min( LANES, static_cast<uint32_t>( records.size() ) - nFirst );
	Lanes counts{};
	for ( uint32_t j = 0; j < nRecords; j++ )
		counts[j] = history.Count( nFirst + j );
	const auto nSamples = static_cast<uint32_t>( *std::max_element( counts.begin(), counts.end() ) );

	LaneSamples samples;
	const LaneTotals totals = ReadLanes( history, nFirst, nSamples, samples );
	LaneDeviations means;
	for ( uint32_t j = 0; j < LANES; j++ )
	{
		const double flCount = std::max( counts[j], 1.0 );
		means.m_Ticks[j] = totals.m_Ticks[j] / flCount;
		means.m_Calls[j] = totals.m_Calls[j] / flCount;
		means.m_PerCall[j] = totals.m_Ticks[j] / std::max( totals.m_Calls[j], 1.0 );
	}
	const LaneDeviations sums = SumDeviations( samples, nSamples, counts, means );

	for ( uint32_t j = 0; j < nRecords; j++ )
	{
		if ( counts[j] == 0.0 )
			continue;
		CQMiniProfilerRecord &record = *records[nFirst + j];
		record.m_Cur = MakeArray( samples.m_Calls[0][j], samples.m_Ticks[0][j], samples.m_PerCall[0][j] );
		record.m_Peaks =
			bPeaks ? MakeArray( totals.m_PeakCalls[j], totals.m_PeakTicks[j], totals.m_PeakPerCall[j] ) : record.m_Cur;
		record.SetFlag( MINIPROFILER_ROW_IDLE, totals.m_Calls[j] == 0.0 && totals.m_Ticks[j] == 0.0 );
		record.m_Ave = MakeArray( means.m_Calls[j], means.m_Ticks[j], means.m_PerCall[j] );
		if ( counts[j] >= 2.0 )
		{
			const double flCallSamples = std::max( sums.m_CallSamples[j], 1.0 );
			record.m_StDev = MakeArray( std::sqrt( sums.m_Calls[j] / counts[j] ),
				std::sqrt( sums.m_Ticks[j] / counts[j] ), std::sqrt( sums.m_PerCall[j] / flCallSamples ) );
		}
	}
}
} // namespace

void ComputeMiniProfilerStatistics(
	const CMiniProfilerHistory &history, std::span<const std::unique_ptr<CQMiniProfilerRecord>> records, bool bPeaks )
{
	for ( uint32_t nFirst = 0; nFirst < records.size(); nFirst += LANES )
		ComputeLanes( history, records, nFirst, bPeaks );
}
