// What a 'PMPF' chunk says, in the order in which it says it.
#pragma once

#include <cstdint>
#include <string_view>

#include "miniprofiler/miniprofilerhistory.h"

class IMiniProfilerSink
{
public:
	// Collection is paused: blocks of data are skipped, names and costs are not.
	virtual bool IsPaused() const = 0;

	// A block of data begins; the first of its chunk opens an interval for the scopes, every one for the system's cost.
	virtual void BeginData( bool bFirstOfChunk ) = 0;
	virtual void SetCounts( uint32_t nRegistered, uint32_t nTransmitted ) = 0;

	// A scope that was active. Never with an id of 0; nCallerId is 0 for none. pSample is null when the engine sends no
	// samples; it is valid during the call.
	virtual void AddEntry( uint64_t nId, uint64_t nCallerId, const MiniProfilerSample *pSample ) = 0;

	// A block of names.
	virtual void SetTickFrequency( uint64_t nTicksPerSecond ) = 0; // > 0
	virtual void SetNamesSent( int32_t nCount ) = 0;

	// Never with an id of 0; nStaticParentId is 0 for none. The texts lie in the chunk.
	virtual void AddName(
		uint64_t nId, uint64_t nStaticParentId, std::string_view name, std::string_view description ) = 0;

	// Once at the end of a chunk: the engine's own cost of the interval and the chunk's payload length in bytes.
	virtual void EndChunk( uint64_t nServiceTicks, uint32_t nLength ) = 0;

protected:
	~IMiniProfilerSink() = default;
};
