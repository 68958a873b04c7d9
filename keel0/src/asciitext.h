// Names are compared without regard to the case of ASCII letters; all other bytes count as they are.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

inline char LowerCase( char c )
{
	return c >= 'A' && c <= 'Z' ? static_cast<char>( c - 'A' + 'a' ) : c;
}

inline bool EqualIgnoringCase( std::string_view a, std::string_view b )
{
	return std::equal( a.begin(), a.end(), b.begin(), b.end(),
		[]( char first, char second ) { return LowerCase( first ) == LowerCase( second ); } );
}

inline std::string LowerCase( std::string text )
{
	for ( char &c : text )
		c = LowerCase( c );
	return text;
}
