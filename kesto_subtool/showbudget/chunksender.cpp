#include "showbudget/chunksender.h"

#include <algorithm>
#include <span>

#include "keel0/memalloc.h"
#include "tessel/itesselconnection.h"
#include "wire/controlchunks.h"

namespace
{
static_assert( MAX_NAMES_PER_REQUEST * wire::NAME_REQUEST_SIZE < 1u << 20 );

bool Send( ITesselConnection &connection, uint32_t nType, std::span<const uint8_t> payload )
{
	// The connection takes the block over, whatever becomes of it.
	auto *pBuffer = static_cast<uint8_t *>( g_pMemAlloc->Alloc( payload.size() ) );
	std::copy( payload.begin(), payload.end(), pBuffer );
	return connection.SendChunk( nType, wire::CHUNK_VERSION, static_cast<uint32_t>( payload.size() ), pBuffer );
}
} // namespace

bool SendSamplingRequest( ITesselConnection &connection, bool bStart, const std::array<uint8_t, 2> &options )
{
	return Send( connection, wire::CHUNK_SAMPLING, wire::WriteSamplingRequest( { bStart, options } ) );
}

bool SendMiniProfilerControl( ITesselConnection &connection, bool bWanted )
{
	return Send( connection, wire::CHUNK_MINIPROFILER_CONTROL, wire::WriteMiniProfilerControl( bWanted ) );
}

bool SendNameRequest( ITesselConnection &connection, std::span<const uint64_t> ids )
{
	const size_t nLength = ids.size() * wire::NAME_REQUEST_SIZE;
	auto *pBuffer = static_cast<uint8_t *>( g_pMemAlloc->Alloc( nLength ) );
	wire::WriteNameRequests( { pBuffer, nLength }, ids );
	return connection.SendChunk(
		wire::CHUNK_MINIPROFILER_NAMES, wire::CHUNK_VERSION, static_cast<uint32_t>( nLength ), pBuffer );
}
