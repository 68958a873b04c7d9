// Numbers with a fixed count of decimals, as printf writes them with "%*.*f" but several times faster: every repaint
// shows hundreds.
#pragma once

#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

// A float has 24 significant bits, so a product with 1,000 is exact in double precision, and rounding it to the nearest
// integer, ties to even, is what printf does with the exact value. flValue must be finite, not negative and below 1e12;
// nDecimals is 1..3.
inline void AppendDecimals( std::string &text, float flValue, int nWidth, int nDecimals )
{
	const int64_t nUnit = nDecimals == 3 ? 1000 : nDecimals == 2 ? 100 : 10;
	const int64_t nScaled = std::llrint( double{ flValue } * static_cast<double>( nUnit ) );
	char digits[32];
	char *pEnd = std::to_chars( digits, digits + sizeof( digits ), nScaled / nUnit ).ptr;
	*pEnd++ = '.';
	for ( int64_t nDivisor = nUnit / 10; nDivisor > 0; nDivisor /= 10 )
		*pEnd++ = static_cast<char>( '0' + nScaled / nDivisor % 10 );
	for ( auto nLength = pEnd - digits; nLength < nWidth; nLength++ )
		text += ' ';
	text.append( digits, pEnd );
}
