// 'KSTO', 'KMPC', 'KMPN': what the console asks of an engine. Numbers are little-endian.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "wire/chunks.h"

namespace wire
{
// 'KSTO': u8 start (1; any value but 0) or stop (0), two option bytes. Here and below, bytes behind the last field are
// ignored.
struct SamplingRequest
{
	bool m_bStart = false;
	std::array<uint8_t, 2> m_Options{};
};
constexpr size_t SAMPLING_SIZE = 3;
std::array<uint8_t, SAMPLING_SIZE> WriteSamplingRequest( const SamplingRequest &request );
std::optional<SamplingRequest> ReadSamplingRequest( std::span<const uint8_t> payload ); // none when too short

// 'KMPC': u32 zero, u8 whether scopes are wanted, three bytes without meaning.
constexpr size_t MINIPROFILER_CONTROL_SIZE = 8;
std::array<uint8_t, MINIPROFILER_CONTROL_SIZE> WriteMiniProfilerControl( bool bWanted );
std::optional<bool> ReadMiniProfilerControl( std::span<const uint8_t> payload );

// 'KMPN': u64 ids up to the end of the payload; a rest of fewer than 8 bytes is ignored.
constexpr size_t NAME_REQUEST_SIZE = 8;
size_t NameRequestCount( std::span<const uint8_t> payload );
uint64_t ReadNameRequest( std::span<const uint8_t> payload, size_t nIndex );       // nIndex < NameRequestCount
size_t WriteNameRequests( std::span<uint8_t> out, std::span<const uint64_t> ids ); // 0 when `out` is too small
} // namespace wire
