// Writes the bytes of recordings for tests, right ones and wrong ones alike.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Appends exactly what it is told to; nothing is checked. Every operation returns the writer, for chaining.
class CRecordingWriter
{
public:
	CRecordingWriter &U8( unsigned nValue ) { return Put( nValue, 1 ); }
	CRecordingWriter &U16( unsigned nValue ) { return Put( nValue, 2 ); }
	CRecordingWriter &U32( uint32_t nValue ) { return Put( nValue, 4 ); }
	CRecordingWriter &Text( const std::string &text ) // with its terminator
	{
		m_Bytes.insert( m_Bytes.end(), text.begin(), text.end() );
		return U8( 0 );
	}

	CRecordingWriter &Header( int32_t nRootNode = 0, uint32_t nVersion = 1 )
	{
		return U32( nVersion ).U32( static_cast<uint32_t>( nRootNode ) );
	}
	CRecordingWriter &BeginFrame( uint32_t nHeader = 0xABCDEF01 ) { return U8( 0 ).U32( nHeader ); }
	CRecordingWriter &EndFrame() { return U8( 4 ); }
	CRecordingWriter &Node( int32_t nParent, const std::string &name, int32_t nNode, uint32_t nValue = 0 )
	{
		U8( 1 ).U32( static_cast<uint32_t>( nParent ) ).Text( name );
		return U32( nValue ).U32( static_cast<uint32_t>( nNode ) );
	}
	CRecordingWriter &String( const std::string &text, uint32_t nValue ) { return U8( 2 ).Text( text ).U32( nValue ); }
	CRecordingWriter &BeginTimings() { return U8( 3 ); }

	// In the shortest form; the time in units of 4 microseconds.
	CRecordingWriter &Entry( unsigned nCalls, uint32_t nTime )
	{
		if ( nCalls < 255 )
			U8( nCalls );
		else
			U8( 255 ).U16( nCalls );
		return nTime < 65535 ? U16( nTime ) : U16( 65535 ).U32( nTime );
	}
	CRecordingWriter &Append( const CRecordingWriter &other )
	{
		m_Bytes.insert( m_Bytes.end(), other.m_Bytes.begin(), other.m_Bytes.end() );
		return *this;
	}

	std::vector<uint8_t> m_Bytes;

private:
	CRecordingWriter &Put( uint32_t nValue, int nBytes )
	{
		for ( int i = 0; i < nBytes; i++ )
			m_Bytes.push_back( static_cast<uint8_t>( nValue >> ( 8 * i ) ) );
		return *this;
	}
};
