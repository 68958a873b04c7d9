// Finds slow frames of a recording.
#pragma once

#include <cstdint>
#include <vector>

#include "recordings/kestofile.h"

// A frame's time is its root's. A frame is slow when it takes more than twice the recording's median (of an even number
// of frames: the mean of the middle two).
class FrameFinder
{
public:
	FrameFinder() = default; // no frames
	explicit FrameFinder( const CKestoFile &file );

	double GetMedian() const { return m_flMedian; } // microseconds; 0 without frames

	int FindNextSlow( int nFrame ) const;     // the first after nFrame; -1 = none
	int FindPreviousSlow( int nFrame ) const; // the last before nFrame; -1 = none
	int FindSlowest() const;                  // the first of equals; -1 = none

private:
	bool IsSlow( int nFrame ) const { return m_Times[static_cast<size_t>( nFrame )] > 2.0 * m_flMedian; }
	int Count() const { return static_cast<int>( m_Times.size() ); }

	std::vector<int32_t> m_Times; // microseconds
	double m_flMedian = 0.0;
};
