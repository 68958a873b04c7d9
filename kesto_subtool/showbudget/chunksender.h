// What a Show Budget window tells its engine.
#pragma once

#include <array>
#include <cstdint>
#include <span>

class ITesselConnection;

// 'KSTO': starts or stops sampling. The option bytes mean nothing yet. False when the connection did not send it.
bool SendSamplingRequest( ITesselConnection &connection, bool bStart, const std::array<uint8_t, 2> &options );

// 'KMPC': whether the engine's scopes are wanted.
bool SendMiniProfilerControl( ITesselConnection &connection, bool bWanted );

// One 'KMPN' asks for this many names at most, so that it stays under 1 MiB.
constexpr size_t MAX_NAMES_PER_REQUEST = ( ( 1u << 20 ) - 1 ) / 8;

// 'KMPN': asks for the names of scopes. At most MAX_NAMES_PER_REQUEST ids.
bool SendNameRequest( ITesselConnection &connection, std::span<const uint64_t> ids );
