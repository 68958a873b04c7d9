#include "wire/plaintext.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace wire
{
namespace
{
struct Range
{
	uint32_t m_nFirst;
	uint32_t m_nLast;
};

constexpr std::array NOT_PLAIN = {
	Range{ 0x00, 0x1F }, Range{ 0x7F, 0x9F }, // some terminals take U+009B for the begin of an escape sequence
	Range{ 0x061C, 0x061C },                  // a mark of direction, like the next two
	Range{ 0x200E, 0x200F },
	Range{ 0x2028, 0x202E }, // separators of lines and paragraphs, embeddings and overrides of direction
	Range{ 0x2066, 0x2069 }, // isolates
};

bool IsPlain( uint32_t nCode )
{
	return std::ranges::none_of(
		NOT_PLAIN, [nCode]( const Range &range ) { return nCode >= range.m_nFirst && nCode <= range.m_nLast; } );
}

uint32_t ByteAt( std::string_view text, size_t nIndex )
{
	return static_cast<unsigned char>( text[nIndex] );
}

// Bytes of the sequence that begins with nLead; 0 when none does.
size_t SequenceLength( uint32_t nLead )
{
	if ( nLead < 0xC2 || nLead > 0xF4 )
		return nLead < 0x80 ? 1 : 0;
	return nLead < 0xE0 ? 2 : nLead < 0xF0 ? 3 : 4;
}

// Whether a character is written in so many bytes and no fewer, and is one at all.
bool IsWellFormed( uint32_t nCode, size_t nLength )
{
	constexpr std::array<uint32_t, 5> SMALLEST = { 0, 0, 0x80, 0x800, 0x10000 };
	const bool bSurrogate = nCode >= 0xD800 && nCode <= 0xDFFF;
	return nCode >= SMALLEST[nLength] && nCode <= 0x10FFFF && !bSurrogate;
}
} // namespace

FrontCharacter ReadFrontCharacter( std::string_view utf8 )
{
	constexpr FrontCharacter NO_UTF8 = { 1, false };
	const uint32_t nLead = ByteAt( utf8, 0 );
	const size_t nLength = SequenceLength( nLead );
	if ( nLength == 0 || nLength > utf8.size() )
		return NO_UTF8;
	uint32_t nCode = nLength == 1 ? nLead : nLead & ( 0x7Fu >> nLength );
	for ( size_t i = 1; i < nLength; i++ )
	{
		if ( ( ByteAt( utf8, i ) & 0xC0 ) != 0x80 )
			return NO_UTF8;
		nCode = nCode << 6 | ( ByteAt( utf8, i ) & 0x3F );
	}
	return IsWellFormed( nCode, nLength ) ? FrontCharacter{ nLength, IsPlain( nCode ) } : NO_UTF8;
}

std::string ToPlainLine( std::string_view utf8 )
{
	std::string line;
	line.reserve( utf8.size() );
	while ( !utf8.empty() )
	{
		const FrontCharacter front = ReadFrontCharacter( utf8 );
		if ( front.m_bPlain )
			line += utf8.substr( 0, front.m_nLength );
		else
			line += '?';
		utf8.remove_prefix( front.m_nLength );
	}
	return line;
}
} // namespace wire
