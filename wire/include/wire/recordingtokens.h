// The bytes of a recording (.kesto): what its writer and its reader must agree on. Numbers are little-endian.
// docs/recording-format.md describes the whole file.
#pragma once

#include <cstdint>

namespace wire
{
// The file: u32 version, i32 root node id, then frames up to the end of the data. There is no magic number.
constexpr uint32_t RECORDING_VERSION = 1;
constexpr int RECORDING_HEADER_SIZE = 8;

// A frame: FRAME, u32 without meaning, records, END_OF_FRAME.
enum class RecordingToken : int8_t
{
	Frame = 0,
	Node = 1,          // i32 parent id, zero-terminated name, u32 value, i32 id
	String = 2,        // zero-terminated text, u32 value
	Timings = 3,       // an entry for every node, depth first, children in the order of their chain
	EndOfFrame = 4,    // also what a record token counts as that is not there any more
	EndOfRecording = 5 // in place of Frame: whatever follows is not looked at
};

// An entry: u8 calls, or RECORDING_LONG_CALLS and a u16; u16 time, or RECORDING_LONG_TIME and a u32.
constexpr uint8_t RECORDING_LONG_CALLS = 255;
constexpr uint16_t RECORDING_LONG_TIME = 65535;
constexpr uint32_t RECORDING_TIME_UNIT = 4; // microseconds per unit of a stored time
// Longer times come back negative, or short: readers multiply in 32 bits and compare as signed numbers.
constexpr uint32_t RECORDING_MAX_TIME = 0x7FFFFFFF / RECORDING_TIME_UNIT; // units; 35 minutes
constexpr int RECORDING_MIN_ENTRY_SIZE = 3;
constexpr int RECORDING_MAX_ENTRY_SIZE = 9;

constexpr int32_t RECORDING_MAX_NODES = 1 << 20; // node ids are 0 to RECORDING_MAX_NODES - 1
constexpr int RECORDING_MAX_TEXT = 511;          // bytes of a name or a string that are kept; the rest is dropped
} // namespace wire
