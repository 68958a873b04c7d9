#include "text.h"

namespace showbudget
{
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

void CopyLine( char *pOut, size_t nOutSize, std::string_view text )
{
	text = CutAtCharacter( text, nOutSize - 1 );
	for ( const char c : text )
		*pOut++ = static_cast<unsigned char>( c ) < 0x20 || c == 0x7F ? ' ' : c;
	*pOut = 0;
}
} // namespace showbudget
