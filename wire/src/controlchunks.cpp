#include "wire/controlchunks.h"

#include <cassert>

#include "keel0/strtools.h"
#include "wire/bytewriter.h"

namespace wire
{
std::array<uint8_t, SAMPLING_SIZE> WriteSamplingRequest( const SamplingRequest &request )
{
	return { static_cast<uint8_t>( request.m_bStart ? 1 : 0 ), request.m_Options[0], request.m_Options[1] };
}

std::optional<SamplingRequest> ReadSamplingRequest( std::span<const uint8_t> payload )
{
	if ( payload.size() < SAMPLING_SIZE )
		return std::nullopt;
	return SamplingRequest{ payload[0] != 0, { payload[1], payload[2] } };
}

std::array<uint8_t, MINIPROFILER_CONTROL_SIZE> WriteMiniProfilerControl( bool bWanted )
{
	return { 0, 0, 0, 0, static_cast<uint8_t>( bWanted ? 1 : 0 ), 0, 0, 0 };
}

std::optional<bool> ReadMiniProfilerControl( std::span<const uint8_t> payload )
{
	if ( payload.size() < MINIPROFILER_CONTROL_SIZE )
		return std::nullopt;
	return payload[4] != 0;
}

size_t NameRequestCount( std::span<const uint8_t> payload )
{
	return payload.size() / NAME_REQUEST_SIZE;
}

uint64_t ReadNameRequest( std::span<const uint8_t> payload, size_t nIndex )
{
	assert( nIndex < NameRequestCount( payload ) );
	return V_ReadLittleEndian64( payload.data() + nIndex * NAME_REQUEST_SIZE );
}

size_t WriteNameRequests( std::span<uint8_t> out, std::span<const uint64_t> ids )
{
	CByteWriter writer( out );
	for ( const uint64_t nId : ids )
		writer.U64LittleEndian( nId );
	return writer.Overflowed() ? 0 : writer.Size();
}
} // namespace wire
