// Formatting into a fixed buffer, and readers for numbers in a given byte order.
#pragma once

#include <bit>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "keel0/api.h"

// Formats into pBuffer, which is always terminated when nSize > 0. Returns the number of bytes written without the
// terminator (at most nSize - 1: a longer text is cut), or -1 when the format cannot be printed.
KEEL0_API int V_vsnprintf( char *pBuffer, size_t nSize, const char *pFormat, va_list arguments ) KEEL0_PRINTF( 3, 0 );
KEEL0_API int V_snprintf( char *pBuffer, size_t nSize, const char *pFormat, ... ) KEEL0_PRINTF( 3, 4 );

// Readers of numbers at any address. The caller has checked that the bytes are there.
inline uint16_t V_ReadBigEndian16( const uint8_t *p )
{
	return static_cast<uint16_t>( p[0] << 8 | p[1] );
}

inline uint32_t V_ReadBigEndian32( const uint8_t *p )
{
	uint32_t nValue;
	std::memcpy( &nValue, p, sizeof( nValue ) );
	return std::endian::native == std::endian::little ? __builtin_bswap32( nValue ) : nValue;
}

inline uint64_t V_ReadBigEndian64( const uint8_t *p )
{
	return uint64_t{ V_ReadBigEndian32( p ) } << 32 | V_ReadBigEndian32( p + 4 );
}

inline float V_ReadBigEndianFloat( const uint8_t *p )
{
	return std::bit_cast<float>( V_ReadBigEndian32( p ) );
}

inline uint32_t V_ReadLittleEndian32( const uint8_t *p )
{
	uint32_t nValue;
	std::memcpy( &nValue, p, sizeof( nValue ) );
	return std::endian::native == std::endian::little ? nValue : __builtin_bswap32( nValue );
}

inline uint64_t V_ReadLittleEndian64( const uint8_t *p )
{
	return uint64_t{ V_ReadLittleEndian32( p + 4 ) } << 32 | V_ReadLittleEndian32( p );
}
