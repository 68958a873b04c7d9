// Writes the bytes of a recording (.kesto).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "wire/recordingtokens.h"

namespace wire
{
// Appends to a buffer that its owner empties whenever it likes. What is written in which order is up to the caller:
// header, then per frame BeginFrame, the definitions of new nodes, strings, BeginTimings, an entry for each node that
// is reachable from the root, EndFrame.
class CRecordingWriter
{
public:
	void Header( int32_t nRootNode )
	{
		Put( RECORDING_VERSION, 4 );
		Put( static_cast<uint32_t>( nRootNode ), 4 );
	}
	void BeginFrame( uint32_t nHeader = 0 )
	{
		Token( RecordingToken::Frame );
		Put( nHeader, 4 );
	}
	// Texts are 8-bit. They end at their first NUL and after RECORDING_MAX_TEXT bytes.
	void Node( int32_t nParent, std::string_view name, uint32_t nValue, int32_t nNode )
	{
		Token( RecordingToken::Node );
		Put( static_cast<uint32_t>( nParent ), 4 );
		Text( name );
		Put( nValue, 4 );
		Put( static_cast<uint32_t>( nNode ), 4 );
	}
	void String( std::string_view text, uint32_t nValue )
	{
		Token( RecordingToken::String );
		Text( text );
		Put( nValue, 4 );
	}
	void BeginTimings() { Token( RecordingToken::Timings ); }
	void Entry( uint16_t nCalls, uint32_t nTimeUnits ) // of RECORDING_TIME_UNIT microseconds
	{
		Put( nCalls < RECORDING_LONG_CALLS ? nCalls : RECORDING_LONG_CALLS, 1 );
		if ( nCalls >= RECORDING_LONG_CALLS )
			Put( nCalls, 2 );
		Put( nTimeUnits < RECORDING_LONG_TIME ? nTimeUnits : RECORDING_LONG_TIME, 2 );
		if ( nTimeUnits >= RECORDING_LONG_TIME )
			Put( nTimeUnits, 4 );
	}
	void EndFrame() { Token( RecordingToken::EndOfFrame ); }

	std::string m_Bytes;

private:
	void Token( RecordingToken token ) { Put( static_cast<uint8_t>( token ), 1 ); }
	void Put( uint32_t nValue, int nBytes )
	{
		char bytes[4];
		for ( int i = 0; i < nBytes; i++ )
			bytes[i] = static_cast<char>( nValue >> ( 8 * i ) );
		m_Bytes.append( bytes, static_cast<size_t>( nBytes ) );
	}
	void Text( std::string_view text )
	{
		text = text.substr( 0, text.find( '\0' ) ).substr( 0, RECORDING_MAX_TEXT );
		m_Bytes.append( text ).push_back( '\0' );
	}
};
} // namespace wire
