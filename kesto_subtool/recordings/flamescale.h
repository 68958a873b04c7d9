// What the scale below a flame graph covers.
#pragma once

#include <cstdint>

// The scale must not jump while the frame time hovers at a boundary: it never shrinks by a single millisecond, and its
// budgets never move up by a single power of two.
class FlameScale
{
public:
	// For a frame of nTime microseconds. A frame of no time, or less, shows one millisecond and keeps the exponent.
	void SetFrameTime( int32_t nTime );
	// For no recording: one frame at 60 frames per second.
	void SetDefault();
	void Reset() { *this = {}; }

	int GetMilliseconds() const { return m_nMilliseconds; } // >= 1
	int GetExponent() const { return m_nExponent; }         // budgets are for 2 to the power of this, and above

	// The time of a frame at 2 to the power of nExponent frames per second, microseconds.
	static float BudgetOf( int nExponent );

private:
	void Set( int nMilliseconds, int nExponent );

	int m_nMilliseconds = 1;
	int m_nExponent = 1;
};
