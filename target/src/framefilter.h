// Chooses the frames that a recording keeps.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <vector>

#include "recordingencoder.h"

namespace showbudget
{
// Keeps frames that are slower than a limit, and some around each. Frames that may still be wanted wait in memory.
class CFrameFilter
{
public:
	// With nSlowerThan 0, all frames are kept.
	CFrameFilter( uint64_t nSlowerThanTicks, uint32_t nAround )
		: m_nSlowerThan( nSlowerThanTicks )
		, m_nAround( nAround )
	{
	}

	// Calls keep for every frame that is now known to be kept, oldest first. The frame's memory goes back to TakeEmpty.
	void Add( RecordedFrame &&frame, const std::function<void( const RecordedFrame & )> &keep );
	// A frame to fill, with memory of an earlier one if there is any.
	RecordedFrame TakeEmpty();

private:
	void PutBack( RecordedFrame &&frame );

	uint64_t m_nSlowerThan;
	uint32_t m_nAround;
	uint32_t m_nAfter = 0; // frames that are kept because of the last slow one
	std::deque<RecordedFrame> m_Waiting;
	std::vector<RecordedFrame> m_Empty;
};
} // namespace showbudget
