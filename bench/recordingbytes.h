// Large recordings for the benchmarks.
#pragma once

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "wire/recordingtokens.h"

inline constexpr int32_t NODES = 5000;

class CGrowingBytes
{
public:
	void Put( uint64_t nValue, size_t nBytes )
	{
		for ( size_t i = 0; i < nBytes; i++ )
			m_Bytes.push_back( static_cast<uint8_t>( nValue >> ( 8 * i ) ) );
	}
	void Token( wire::RecordingToken token ) { Put( static_cast<uint8_t>( token ), 1 ); }

	std::vector<uint8_t> m_Bytes;
};

// 5,000 nodes, four below each; one entry in 64 is a long one.
inline std::vector<uint8_t> MakeRecording( size_t nSize )
{
	CGrowingBytes bytes;
	bytes.m_Bytes.reserve( nSize + 4 * wire::RECORDING_MAX_ENTRY_SIZE * NODES );
	bytes.Put( wire::RECORDING_VERSION, 4 );
	bytes.Put( 0, 4 );
	for ( uint32_t nFrame = 0; bytes.m_Bytes.size() < nSize; nFrame++ )
	{
		bytes.Token( wire::RecordingToken::Frame );
		bytes.Put( nFrame, 4 );
		for ( uint32_t i = 1; nFrame == 0 && i < NODES; i++ )
		{
			bytes.Token( wire::RecordingToken::Node );
			bytes.Put( ( i - 1 ) / 4, 4 );
			bytes.Put( 'n', 2 );
			bytes.Put( i, 4 );
			bytes.Put( i, 4 );
		}
		bytes.Token( wire::RecordingToken::Timings );
		for ( uint32_t i = 0; i < NODES; i++ )
		{
			const uint32_t nMixed = ( i + nFrame ) * 2654435761u >> 16;
			const bool bLong = nMixed % 64 == 0;
			bytes.Put( 1 + nMixed % 200, 1 );
			bytes.Put( bLong ? wire::RECORDING_LONG_TIME : nMixed % 60000, 2 );
			if ( bLong )
				bytes.Put( 70000 + nMixed, 4 );
		}
		bytes.Token( wire::RecordingToken::EndOfFrame );
	}
	return std::move( bytes.m_Bytes );
}

// Made once for each size.
inline const std::vector<uint8_t> &Recording( int64_t nMegabytes )
{
	static std::map<int64_t, std::vector<uint8_t>> s_Recordings;
	std::vector<uint8_t> &bytes = s_Recordings[nMegabytes];
	if ( bytes.empty() )
		bytes = MakeRecording( static_cast<size_t>( nMegabytes ) << 20 );
	return bytes;
}
