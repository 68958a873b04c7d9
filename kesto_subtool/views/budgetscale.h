// How a budget's time becomes pixels. Everything is computed in single precision and truncated toward zero, so that all
// views agree on the same pixel.
#pragma once

#include <cstdint>

// Grid steps per microsecond: a step is 5 ms, or 1/60 s in frame-rate units.
constexpr float BudgetUnitFactor( bool bFPSUnits )
{
	return bFPSUnits ? 0.00006f : 0.0002f;
}

// A length of at most 2^30 pixels fits for every 32-bit value: nPixelsPerStep is at most 1,200.
constexpr int BudgetLength( uint32_t nMicroseconds, float flUnitFactor, int nPixelsPerStep )
{
	return static_cast<int>(
		static_cast<float>( nMicroseconds ) * flUnitFactor * static_cast<float>( nPixelsPerStep ) );
}

// The horizontal scale of the bars: 41 zoom steps.
constexpr int BUDGET_BARS_MIN_ZOOM = -20;
constexpr int BUDGET_BARS_MAX_ZOOM = 20;

// 0.25 at step -20, 3.125 at step 0, 6.0 at step 20.
constexpr float BudgetBarsZoomFactor( int nZoomStep )
{
	return static_cast<float>( nZoomStep - BUDGET_BARS_MIN_ZOOM ) * 0.14375f + 0.25f;
}

// 50 at step -20, 625 at step 0, 1200 at step 20.
constexpr int BudgetBarsPixelsPerStep( int nZoomStep )
{
	return static_cast<int>( BudgetBarsZoomFactor( nZoomStep ) * 200.0f );
}
