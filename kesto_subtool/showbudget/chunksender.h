// What a Show Budget window tells its engine.
#pragma once

#include <array>
#include <cstdint>

class ITesselConnection;

// 'KSTO': starts or stops sampling. The option bytes mean nothing yet. False when the connection did not send it.
bool SendSamplingRequest( ITesselConnection &connection, bool bStart, const std::array<uint8_t, 2> &options );

// 'KMPC': whether the engine's scopes are wanted.
bool SendMiniProfilerControl( ITesselConnection &connection, bool bWanted );
