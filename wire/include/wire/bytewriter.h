// Writes numbers and texts into memory of a fixed size.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace wire
{
// Never writes past the end: what does not fit is left out whole, and Overflowed() stays true from then on.
class CByteWriter
{
public:
	explicit CByteWriter( std::span<uint8_t> memory )
		: m_Memory( memory )
	{
	}

	void U8( uint8_t nValue ) { PutBigEndian( nValue, 1 ); }
	void U16BigEndian( uint16_t nValue ) { PutBigEndian( nValue, 2 ); }
	void U32BigEndian( uint32_t nValue ) { PutBigEndian( nValue, 4 ); }
	void U64BigEndian( uint64_t nValue ) { PutBigEndian( nValue, 8 ); }
	void FloatBigEndian( float flValue ) { U32BigEndian( std::bit_cast<uint32_t>( flValue ) ); }
	void U32LittleEndian( uint32_t nValue ) { PutLittleEndian( nValue, 4 ); }
	void U64LittleEndian( uint64_t nValue ) { PutLittleEndian( nValue, 8 ); }
	void Zeros( size_t nCount )
	{
		if ( uint8_t *p = Reserve( nCount ) )
			std::memset( p, 0, nCount );
	}
	void Text( std::string_view text ) // without a terminator
	{
		if ( uint8_t *p = Reserve( text.size() ); p && !text.empty() )
			std::memcpy( p, text.data(), text.size() );
	}

	size_t Size() const { return m_nSize; } // bytes written
	bool Overflowed() const { return m_bOverflowed; }

private:
	uint8_t *Reserve( size_t nCount )
	{
		if ( m_bOverflowed || nCount > m_Memory.size() - m_nSize )
		{
			m_bOverflowed = true;
			return nullptr;
		}
		uint8_t *p = m_Memory.data() + m_nSize;
		m_nSize += nCount;
		return p;
	}
	void PutBigEndian( uint64_t nValue, size_t nBytes )
	{
		if ( uint8_t *p = Reserve( nBytes ) )
			for ( size_t i = 0; i < nBytes; i++ )
				p[i] = static_cast<uint8_t>( nValue >> ( 8 * ( nBytes - 1 - i ) ) );
	}
	void PutLittleEndian( uint64_t nValue, size_t nBytes )
	{
		if ( uint8_t *p = Reserve( nBytes ) )
			for ( size_t i = 0; i < nBytes; i++ )
				p[i] = static_cast<uint8_t>( nValue >> ( 8 * i ) );
	}

	std::span<uint8_t> m_Memory;
	size_t m_nSize = 0;
	bool m_bOverflowed = false;
};
} // namespace wire
