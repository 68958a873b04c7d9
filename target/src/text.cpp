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

std::string OneLine( std::string_view text )
{
	std::string line( text );
	std::transform( text.begin(), text.end(), line.begin(), BlankForControl );
	return line;
}

void CopyLine( char *pOut, size_t nOutSize, std::string_view text )
{
	text = CutAtCharacter( text, nOutSize - 1 );
	*std::transform( text.begin(), text.end(), pOut, BlankForControl ) = 0;
}
} // namespace showbudget
