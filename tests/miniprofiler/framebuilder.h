// Writes 'PMPF' payloads for tests, right or wrong ones.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

class CFrameBuilder
{
public:
	explicit CFrameBuilder( uint64_t nServiceTicks = 0 ) { U64( nServiceTicks ); }

	CFrameBuilder &U32( uint32_t nValue ) { return Number( nValue, 4 ); }
	CFrameBuilder &U64( uint64_t nValue ) { return Number( nValue, 8 ); }
	CFrameBuilder &Text( std::string_view text ) // with its terminator
	{
		m_Bytes.insert( m_Bytes.end(), text.begin(), text.end() );
		m_Bytes.push_back( 0 );
		return *this;
	}

	CFrameBuilder &Begin( uint32_t nKind )
	{
		m_nSubrecord = m_Bytes.size();
		return U32( nKind ).U32( 0 );
	}
	// Writes the end offset; nShift bytes off where it really is.
	CFrameBuilder &End( int nShift = 0 )
	{
		const auto nEnd = static_cast<uint32_t>( static_cast<int64_t>( m_Bytes.size() ) + nShift );
		for ( size_t i = 0; i < 4; i++ )
			m_Bytes[m_nSubrecord + 4 + i] = static_cast<uint8_t>( nEnd >> ( 8 * i ) );
		return *this;
	}

	// Data blocks; with bMark the entries' samples count.
	CFrameBuilder &BeginData( bool bMark, uint32_t nRegistered = 0, uint32_t nTransmitted = 0 )
	{
		Begin( 0 );
		if ( bMark )
			U32( 0x4B4D5331 ).U32( 1 ).U64( 0 );
		else
			U64( 0 ).U64( 0 );
		return U32( nRegistered ).U32( nTransmitted );
	}
	CFrameBuilder &Entry( uint64_t nId, uint64_t nCaller = 0, uint64_t nTicks = 0, uint64_t nCalls = 0 )
	{
		return U32( 0xABABABAB ).U64( nId ).U64( nCaller ).U64( nTicks ).U64( nCalls );
	}

	CFrameBuilder &BeginNames( uint64_t nFrequency, int32_t nCount )
	{
		return Begin( 1 ).U64( nFrequency ).U32( static_cast<uint32_t>( nCount ) );
	}
	CFrameBuilder &Name( uint64_t nId, uint64_t nParent, std::string_view name, std::string_view description )
	{
		return U64( nId ).U64( nParent ).Text( name ).Text( description );
	}

	std::span<const uint8_t> Payload() const { return m_Bytes; }

private:
	CFrameBuilder &Number( uint64_t nValue, size_t nBytes )
	{
		for ( size_t i = 0; i < nBytes; i++ )
			m_Bytes.push_back( static_cast<uint8_t>( nValue >> ( 8 * i ) ) );
		return *this;
	}

	std::vector<uint8_t> m_Bytes;
	size_t m_nSubrecord = 0;
};
