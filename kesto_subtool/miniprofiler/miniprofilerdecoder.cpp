#include "miniprofiler/miniprofilerdecoder.h"

#include <algorithm>
#include <optional>

#include "keel0/logging.h"
#include "keel0/strtools.h"

namespace
{
// A sub-record's data. Offsets count from the start of the payload and are checked against m_nEnd or the payload's size
// before anything is read there.
struct Subrecord
{
	std::span<const uint8_t> m_Payload;
	size_t m_nData;
	size_t m_nEnd; // m_nData <= m_nEnd <= m_Payload.size()

	const uint8_t *At( size_t nOffset ) const { return m_Payload.data() + nOffset; }
};

// Problems of one chunk, which can have millions: the first are told one by one, the others by their number.
class CChunkProblems
{
public:
	CChunkProblems() = default;
	~CChunkProblems()
	{
		if ( m_nCount > MAX_TOLD )
			Warning( "%u more problems in the same KESTO_MINIPROFILERS chunk\n", m_nCount - MAX_TOLD );
	}
	CChunkProblems( const CChunkProblems & ) = delete;
	CChunkProblems &operator=( const CChunkProblems & ) = delete;

	void Tell( const char *pText )
	{
		if ( m_nCount++ < MAX_TOLD )
			Warning( "%s\n", pText );
	}

private:
	static constexpr unsigned int MAX_TOLD = 16;
	unsigned int m_nCount = 0;
};

bool HasSampleMark( const uint8_t *pData )
{
	return V_ReadLittleEndian32( pData ) == MINIPROFILER_SAMPLE_MARK &&
		   V_ReadLittleEndian32( pData + 4 ) == MINIPROFILER_SAMPLE_VERSION && V_ReadLittleEndian64( pData + 8 ) == 0;
}

void ReadEntry( const uint8_t *pEntry, bool bSamples, IMiniProfilerSink &sink )
{
	const uint64_t nId = V_ReadLittleEndian64( pEntry + 4 );
	if ( nId == 0 )
		return;
	const uint64_t nCallerId = V_ReadLittleEndian64( pEntry + 12 );
	if ( bSamples )
	{
		const MiniProfilerSample sample{ V_ReadLittleEndian64( pEntry + 20 ), V_ReadLittleEndian64( pEntry + 28 ) };
		sink.AddEntry( nId, nCallerId, &sample );
	}
	else
		sink.AddEntry( nId, nCallerId, nullptr );
}

// The last entry may reach past the end of its sub-record: it is read whole as long as it lies inside the payload.
void DecodeData( const Subrecord &subrecord, bool bFirstOfChunk, IMiniProfilerSink &sink, CChunkProblems &problems )
{
	sink.BeginData( bFirstOfChunk );
	size_t nPosition = subrecord.m_nData + MINIPROFILER_DATA_HEADER_SIZE;
	if ( nPosition <= subrecord.m_nEnd )
	{
		const uint8_t *pData = subrecord.At( subrecord.m_nData );
		const bool bSamples = HasSampleMark( pData );
		sink.SetCounts( V_ReadLittleEndian32( pData + 16 ), V_ReadLittleEndian32( pData + 20 ) );
		while ( nPosition < subrecord.m_nEnd && subrecord.m_Payload.size() - nPosition >= MINIPROFILER_ENTRY_SIZE )
		{
			ReadEntry( subrecord.At( nPosition ), bSamples, sink );
			nPosition += MINIPROFILER_ENTRY_SIZE;
		}
	}
	if ( nPosition != subrecord.m_nEnd )
		problems.Tell( "Misaligned Miniprofiler data stream" );
}

// The zero-terminated text at nPosition, which moves behind the terminator; none without one before the end.
std::optional<std::string_view> ReadText( const Subrecord &subrecord, size_t &nPosition )
{
	if ( nPosition >= subrecord.m_nEnd )
		return std::nullopt;
	const uint8_t *pStart = subrecord.At( nPosition );
	const uint8_t *pLimit = subrecord.At( subrecord.m_nEnd );
	const uint8_t *pEnd = std::find( pStart, pLimit, uint8_t{ 0 } );
	if ( pEnd == pLimit )
		return std::nullopt;
	const auto nLength = static_cast<size_t>( pEnd - pStart );
	nPosition += nLength + 1;
	return std::string_view( reinterpret_cast<const char *>( pStart ), nLength );
}

// False when a text has no end.
bool DecodeName( const Subrecord &subrecord, size_t &nPosition, IMiniProfilerSink &sink )
{
	constexpr size_t IDS_SIZE = 16;
	const size_t nIds = nPosition;
	nPosition += IDS_SIZE;
	const auto name = ReadText( subrecord, nPosition );
	const auto description = name ? ReadText( subrecord, nPosition ) : std::nullopt;
	if ( !description )
		return false;
	const uint64_t nId = V_ReadLittleEndian64( subrecord.At( nIds ) );
	if ( nId != 0 )
		sink.AddName( nId, V_ReadLittleEndian64( subrecord.At( nIds + 8 ) ), *name, *description );
	return true;
}

void DecodeNames( const Subrecord &subrecord, IMiniProfilerSink &sink, CChunkProblems &problems )
{
	size_t nPosition = subrecord.m_nData + MINIPROFILER_NAMES_HEADER_SIZE;
	if ( nPosition > subrecord.m_nEnd )
	{
		problems.Tell( "Misaligned Miniprofiler name data stream" );
		return;
	}
	const uint8_t *pData = subrecord.At( subrecord.m_nData );
	if ( const uint64_t nFrequency = V_ReadLittleEndian64( pData ) )
		sink.SetTickFrequency( nFrequency );
	const auto nCount = static_cast<int32_t>( V_ReadLittleEndian32( pData + 8 ) );
	for ( int32_t i = 0; i < nCount && nPosition < subrecord.m_nEnd; i++ )
	{
		if ( !DecodeName( subrecord, nPosition, sink ) )
		{
			problems.Tell( "no end of string in Miniprofiler name data stream" );
			return;
		}
	}
	sink.SetNamesSent( nCount );
	if ( nPosition != subrecord.m_nEnd )
		problems.Tell( "Misaligned Miniprofiler name data stream" );
}

// The lengths are told as the engine would count them: 32 bits that wrap when an end lies before its start.
void WarnMalformed( uint32_t nKind, const Subrecord &subrecord )
{
	Warning( "Malformed KESTO_MINIPROFILERS chunk %d, length %u over expected length <= %u\n",
		static_cast<int>( nKind ), static_cast<unsigned>( subrecord.m_nEnd - subrecord.m_nData ),
		static_cast<unsigned>( subrecord.m_Payload.size() - subrecord.m_nData ) );
}
} // namespace

bool DecodeMiniProfilerChunk( std::span<const uint8_t> payload, IMiniProfilerSink &sink )
{
	if ( payload.size() < MINIPROFILER_SERVICE_TIME_SIZE )
	{
		Warning( "KESTO_MINIPROFILERS chunk of %u bytes is too short for its service time\n",
			static_cast<unsigned>( payload.size() ) );
		return false;
	}

	CChunkProblems problems;
	bool bData = false;
	size_t nPosition = MINIPROFILER_SERVICE_TIME_SIZE;
	while ( payload.size() - nPosition >= MINIPROFILER_SUBRECORD_HEADER_SIZE )
	{
		const uint32_t nKind = V_ReadLittleEndian32( payload.data() + nPosition );
		const Subrecord subrecord{ payload, nPosition + MINIPROFILER_SUBRECORD_HEADER_SIZE,
			V_ReadLittleEndian32( payload.data() + nPosition + 4 ) };
		// An end before the data would send the loop back or round and round.
		if ( subrecord.m_nEnd > payload.size() || subrecord.m_nEnd < subrecord.m_nData )
		{
			WarnMalformed( nKind, subrecord );
			break;
		}
		if ( nKind == static_cast<uint32_t>( MiniProfilerSubrecord::Data ) && !sink.IsPaused() )
		{
			DecodeData( subrecord, !bData, sink, problems );
			bData = true;
		}
		else if ( nKind == static_cast<uint32_t>( MiniProfilerSubrecord::Names ) )
			DecodeNames( subrecord, sink, problems );
		nPosition = subrecord.m_nEnd;
	}
	sink.EndChunk( V_ReadLittleEndian64( payload.data() ), static_cast<uint32_t>( payload.size() ) );
	return bData;
}
