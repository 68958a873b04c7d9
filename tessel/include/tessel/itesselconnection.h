// One connection from the console to a running engine process.
#pragma once

#include <cstdint>

#include "tessel/visibility.h"

class ITesselDataReceived;

class TESSEL_INTERFACE ITesselConnection
{
public:
	virtual const char *GetName() const = 0; // never null, may be empty; valid until the next call

	// From now on every chunk of that type and version goes to pReceiver, which must live until it is told that the
	// connection ended.
	virtual void RegisterReceiver( uint32_t nChunkType, uint16_t nVersion, ITesselDataReceived *pReceiver ) = 0;
	virtual int GetState() const = 0; // 3 = connected; anything else: not now

	// Sends nLength bytes of payload; the connection puts the chunk header in front. pBuffer is a g_pMemAlloc block
	// that the connection takes over, also when the result is false (not sent).
	virtual bool SendChunk( uint32_t nChunkType, uint16_t nVersion, uint32_t nLength, uint8_t *pBuffer ) = 0;

protected:
	~ITesselConnection() = default;
};
