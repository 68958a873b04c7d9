#include "tools/convert/text.h"

#include <algorithm>
#include <cstdint>

namespace convert
{
struct Character
{
	uint32_t m_nCode = 0;
	size_t m_nLength = 0; // bytes; 0 when there is no valid sequence
};

static uint32_t ByteAt( std::string_view text, size_t nIndex )
{
	return static_cast<uint8_t>( text[nIndex] );
}

// The character that text, which is not empty, begins with.
static Character FirstCharacter( std::string_view text )
{
	const uint32_t nLead = ByteAt( text, 0 );
	if ( nLead < 0x80 )
		return { nLead, 1 };
	const size_t nLength = nLead >= 0xF0 ? 4 : nLead >= 0xE0 ? 3 : 2;
	if ( nLead < 0xC2 || nLead > 0xF4 || text.size() < nLength )
		return {};
	uint32_t nCode = nLead & ( 0x7Fu >> nLength );
	for ( size_t i = 1; i < nLength; i++ )
	{
		if ( ( ByteAt( text, i ) & 0xC0 ) != 0x80 )
			return {};
		nCode = nCode << 6 | ( ByteAt( text, i ) & 0x3F );
	}
	constexpr uint32_t SMALLEST[] = { 0, 0, 0x80, 0x800, 0x10000 };
	const bool bSurrogate = nCode >= 0xD800 && nCode <= 0xDFFF;
	if ( nCode < SMALLEST[nLength] || nCode > 0x10FFFF || bSurrogate )
		return {};
	return { nCode, nLength };
}

static void AppendLatin1Byte( std::string &utf8, uint32_t nByte )
{
	if ( nByte < 0x80 )
	{
		utf8 += static_cast<char>( nByte );
		return;
	}
	utf8 += static_cast<char>( 0xC0 | nByte >> 6 );
	utf8 += static_cast<char>( 0x80 | ( nByte & 0x3F ) );
}

bool IsUtf8( std::string_view text )
{
	while ( !text.empty() )
	{
		const size_t nLength = FirstCharacter( text ).m_nLength;
		if ( nLength == 0 )
			return false;
		text.remove_prefix( nLength );
	}
	return true;
}

std::string ToUtf8( std::string_view text )
{
	std::string result;
	while ( !text.empty() )
	{
		const size_t nLength = FirstCharacter( text ).m_nLength;
		if ( nLength == 0 )
			AppendLatin1Byte( result, ByteAt( text, 0 ) );
		else
			result.append( text.substr( 0, nLength ) );
		text.remove_prefix( std::max<size_t>( nLength, 1 ) );
	}
	return result;
}

std::string_view CutUtf8( std::string_view text, size_t nBytes )
{
	if ( text.size() <= nBytes )
		return text;
	while ( nBytes > 0 && ( ByteAt( text, nBytes ) & 0xC0 ) == 0x80 )
		nBytes--;
	return text.substr( 0, nBytes );
}

std::string ToLatin1( std::string_view utf8, bool &bReplaced )
{
	const auto isPlain = []( char c ) { return static_cast<signed char>( c ) > 0; }; // most names are ASCII as a whole
	if ( std::all_of( utf8.begin(), utf8.end(), isPlain ) )
		return std::string( utf8 );
	std::string result;
	while ( !utf8.empty() )
	{
		const Character character = FirstCharacter( utf8 );
		const bool bHeld = character.m_nCode > 0 && character.m_nCode < 0x100;
		bReplaced = bReplaced || !bHeld;
		result += bHeld ? static_cast<char>( character.m_nCode ) : '?';
		utf8.remove_prefix( std::max<size_t>( character.m_nLength, 1 ) );
	}
	return result;
}

std::string FromLatin1( std::string_view text )
{
	std::string result;
	for ( size_t i = 0; i < text.size(); i++ )
		AppendLatin1Byte( result, ByteAt( text, i ) );
	return result;
}
} // namespace convert
