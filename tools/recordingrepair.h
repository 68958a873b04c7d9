// What of a damaged recording makes a whole one.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

// The repaired recording is the first m_nLength bytes of the damaged one and m_Tail behind them. It has the frames that
// were read from the damaged one, each with the same entries, and is read without a failure. A definition that was cut
// inside the last frame is left out: it would be applied with ids of 0.
struct RecordingRepair
{
	size_t m_nLength = 0;
	std::string m_Tail;
	int m_nFrames = 0;
	bool m_bDamaged = false;
	std::string m_Failure; // as the recording's reader was told
	size_t m_nOffset = 0;  // where
};

// The progress is told now and then how many bytes are read.
RecordingRepair FindRepair(
	std::span<const uint8_t> bytes, const std::function<void( int64_t nPosition )> &progress = {} );
