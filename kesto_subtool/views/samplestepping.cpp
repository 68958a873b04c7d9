#include "views/samplestepping.h"

#include <algorithm>

#include "views/framerate.h"

std::optional<HeldSamples> HeldSamples::Of( uint32_t nSampleCount )
{
	if ( nSampleCount == 0 )
		return std::nullopt;
	return HeldSamples{ nSampleCount - std::min( nSampleCount, BUDGET_RING_SIZE ), nSampleCount - 1 };
}

uint32_t StepSample( const HeldSamples &held, uint32_t nCursor, int64_t nSteps )
{
	return static_cast<uint32_t>( std::clamp<int64_t>( int64_t{ nCursor } + nSteps, held.m_nOldest, held.m_nNewest ) );
}

std::optional<uint32_t> FindSlowerSample(
	const BudgetViewData &data, uint32_t nCursor, SearchDirection direction, float flRate )
{
	const std::optional<HeldSamples> held = HeldSamples::Of( data.m_nSampleCount );
	if ( !held )
		return std::nullopt;
	const uint32_t nHeld = held->m_nNewest - held->m_nOldest + 1;
	// Offsets from the oldest sample go round: one step back is nHeld - 1 steps ahead. A cursor in front of the ring
	// stands between its two ends, so that the first step leads to one of them.
	const bool bLater = direction == SearchDirection::Later;
	const uint32_t nStep = bLater ? 1 : nHeld - 1;
	const uint32_t nBetweenEnds = bLater ? nHeld - 1 : 0;
	uint32_t nOffset = nCursor < held->m_nOldest ? nBetweenEnds : ( nCursor - held->m_nOldest ) % nHeld;
	for ( uint32_t i = 0; i < nHeld; i++ )
	{
		nOffset = ( nOffset + nStep ) % nHeld;
		const float flSampleRate = SampleFrameRate( data, held->m_nOldest + nOffset );
		if ( flSampleRate > 0.0f && flSampleRate < flRate )
			return held->m_nOldest + nOffset;
	}
	return std::nullopt;
}

std::optional<uint32_t> FindSlowestSample( const BudgetViewData &data )
{
	const std::optional<HeldSamples> held = HeldSamples::Of( data.m_nSampleCount );
	if ( !held )
		return std::nullopt;
	std::optional<uint32_t> slowest;
	float flSlowestRate = 0.0f;
	for ( uint32_t i = held->m_nOldest; i <= held->m_nNewest; i++ )
	{
		const float flRate = SampleFrameRate( data, i );
		if ( flRate > 0.0f && ( !slowest || flRate <= flSlowestRate ) )
		{
			slowest = i;
			flSlowestRate = flRate;
		}
	}
	return slowest;
}
