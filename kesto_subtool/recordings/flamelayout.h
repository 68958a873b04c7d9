// A frame of a recording as bars: which node stands where, and how wide.
#pragma once

#include <cstdint>
#include <vector>

#include "recordings/kestofile.h"
#include "recordings/noderows.h"

struct FlameBar
{
	int32_t m_nStart = 0; // microseconds from the left edge
	int32_t m_nWidth = 0; // microseconds

	friend bool operator==( const FlameBar &, const FlameBar & ) = default;
};

// Fills bars with one per row: as wide as the node's time and at least as wide as its children together, which stand
// side by side from its left edge on. Arithmetic is 32 bits and wraps. Extends the frame as reading it does.
void LayoutFlameGraph( std::vector<FlameBar> &bars, const NodeRows &rows, CKestoFile::CTickTimings &frame );

// Which of the four fill colours a row has: a checkerboard by depth and leaf position; the root always has the first.
int FlameColourIndex( const NodeRow &row );

// Pixels of a flame graph's scene, in single precision.
struct FlameMap
{
	float m_flXScale = 0.1f;     // pixels per microsecond
	float m_flRowHeight = 20.0f; // pixels
	float m_flXOrigin = 0.0f;    // x of time 0
	float m_flYOrigin = 0.0f;    // y of the root's row

	float X( float flTime ) const { return flTime * m_flXScale + m_flXOrigin; }
	float Y( float flRow ) const { return m_flYOrigin + flRow * m_flRowHeight; } // rows count downwards here
	float TimeAt( float x ) const { return ( x - m_flXOrigin ) / m_flXScale; }
	float RowAt( float y ) const { return ( y - m_flYOrigin ) / m_flRowHeight; }
};

struct FlameRect
{
	float m_flX, m_flY, m_flWidth, m_flHeight; // pixels
};

// Bars grow upwards from the root's row and leave a gap of 0.15 rows.
FlameRect FlameBarRect( const FlameBar &bar, int32_t nDepth, const FlameMap &map );
