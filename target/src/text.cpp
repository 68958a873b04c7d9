#include "text.h"

#include <algorithm>

namespace showbudget
{
namespace
{
char BlankForControl( char c )
{
	return static_cast<unsigned char>( c ) < 0x20 || c == 0x7F ? ' ' : c;
}

unsigned ByteAt( std::string_view text, size_t nIndex )
{
	return static_cast<unsigned char>( text[nIndex] );
}

// Bytes of the character that the text begins with; 1 also where that is not UTF-8.
size_t CharacterLength( std::string_view text )
{
	const unsigned nLead = ByteAt( text, 0 );
	const size_t nLength = nLead < 0xC2 || nLead > 0xF4 ? 1 : nLead < 0xE0 ? 2 : nLead < 0xF0 ? 3 : 4;
	if ( nLength > text.size() )
		return 1;
	for ( size_t i = 1; i < nLength; i++ )
	{
		if ( ( ByteAt( text, i ) & 0xC0 ) != 0x80 )
			return 1;
	}
	return nLength;
}
} // namespace

std::string_view CutAtCharacter( std::string_view text, size_t nRoom )
{
	if ( text.size() <= nRoom )
		return text;
	while ( nRoom > 0 && ( static_cast<unsigned char>( text[nRoom] ) & 0xC0 ) == 0x80 )
		nRoom--;
	return text.substr( 0, nRoom );
}

std::string_view TextOrEmpty( const char *pText )
{
	return pText ? std::string_view( pText ) : std::string_view();
}

std::string ToLatin1( std::string_view utf8 )
{
	constexpr unsigned LAST_LEAD = 0xC3; // of two bytes that are below 256
	std::string latin1;
	while ( !utf8.empty() )
	{
		const size_t nLength = CharacterLength( utf8 );
		if ( nLength == 1 )
			latin1 += utf8[0];
		else if ( ByteAt( utf8, 0 ) <= LAST_LEAD )
			latin1 += static_cast<char>( ( ByteAt( utf8, 0 ) & 3 ) << 6 | ( ByteAt( utf8, 1 ) & 0x3F ) );
		else
			latin1 += '?';
		utf8.remove_prefix( nLength );
	}
	return latin1;
}

void CopyLine( char *pOut, size_t nOutSize, std::string_view text )
{
	text = CutAtCharacter( text, nOutSize - 1 );
	*std::transform( text.begin(), text.end(), pOut, BlankForControl ) = 0;
}
} // namespace showbudget
