// Shortens texts without leaving half a character behind.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace wire
{
// The longest front of the text that has at most nMaxBytes bytes and does not end inside a UTF-8 sequence. A text that
// is not UTF-8 is cut close to the limit: a sequence has at most three continuation bytes.
inline std::string_view CutText( std::string_view text, size_t nMaxBytes )
{
	if ( text.size() <= nMaxBytes )
		return text;
	constexpr size_t MOST_CONTINUATION_BYTES = 3;
	const auto isContinuation = [text]( size_t i ) { return ( static_cast<unsigned char>( text[i] ) & 0xC0 ) == 0x80; };
	size_t nEnd = nMaxBytes;
	while ( nEnd > 0 && nMaxBytes - nEnd < MOST_CONTINUATION_BYTES && isContinuation( nEnd ) )
		nEnd--;
	return text.substr( 0, isContinuation( nEnd ) ? nMaxBytes : nEnd );
}

inline std::string_view UpToTerminator( std::string_view text )
{
	return text.substr( 0, text.find( '\0' ) );
}

inline std::string_view AsText( const uint8_t *pBytes, size_t nCount )
{
	return { reinterpret_cast<const char *>( pBytes ), nCount };
}
} // namespace wire
