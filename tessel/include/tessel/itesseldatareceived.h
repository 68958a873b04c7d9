// The receiving end of a connection's chunks.
#pragma once

#include <cstdint>

#include "tessel/visibility.h"

class ITesselConnection;

class TESSEL_INTERFACE ITesselDataReceived
{
public:
	// pBuffer is one g_pMemAlloc block: a 12-byte chunk header, then nLength bytes of payload. The receiver frees it on
	// every path. The result is false when the version is not one that the receiver speaks.
	virtual bool OnDataReceived( ITesselConnection *pConnection, uint32_t nChunkType, uint16_t nVersion,
		uint32_t nLength, uint8_t *pBuffer ) = 0;

protected:
	~ITesselDataReceived() = default;
};
