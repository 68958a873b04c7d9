// Takes 'PMPF' chunks apart. Numbers are little-endian.
//
// Payload: u64 the engine's own cost of the interval in ticks, then sub-records up to the end: u32 kind, u32 end offset
// (from the start of the payload), data up to there.
// Kind 0, data: 16 bytes of which the first 8 may be the sample mark, u32 scopes registered, u32 scopes transmitted,
// then entries: u32 unused, u64 id, u64 caller id, 16 bytes that are a sample (u64 inclusive ticks, u64 calls) with the
// mark and mean nothing without it. Kind 1, names: u64 ticks per second, i32 count, then entries: u64 id, u64 static
// parent id, name, description, both zero-terminated.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "miniprofiler/iminiprofilersink.h"

constexpr size_t MINIPROFILER_SUBRECORD_HEADER_SIZE = 8;
constexpr size_t MINIPROFILER_SERVICE_TIME_SIZE = 8;
constexpr size_t MINIPROFILER_DATA_HEADER_SIZE = 24;
constexpr size_t MINIPROFILER_ENTRY_SIZE = 36;
constexpr size_t MINIPROFILER_NAMES_HEADER_SIZE = 12;

enum class MiniProfilerSubrecord : uint32_t
{
	Data = 0,
	Names = 1 // others are skipped
};

// The first 16 bytes of a data block whose entries carry samples: mark, layout version, 8 zero bytes.
constexpr uint32_t MINIPROFILER_SAMPLE_MARK = 0x4B4D5331;
constexpr uint32_t MINIPROFILER_SAMPLE_VERSION = 1;

// Hands what the payload says to the sink; copies nothing and allocates nothing itself. What does not hold together is
// reported with a Warning (after 16 of a chunk only how many more), and what was handed over before stays. True when a
// block of data was decoded.
bool DecodeMiniProfilerChunk( std::span<const uint8_t> payload, IMiniProfilerSink &sink );
