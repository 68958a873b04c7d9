#include "tools/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

static void AppendUtf8( std::string &text, unsigned char nCodePoint )
{
	if ( nCodePoint < 0x80 )
	{
		text += static_cast<char>( nCodePoint );
		return;
	}
	text += static_cast<char>( 0xC0 | nCodePoint >> 6 );
	text += static_cast<char>( 0x80 | ( nCodePoint & 0x3F ) );
}

std::string Latin1ToUtf8( std::string_view latin1 )
{
	std::string text;
	text.reserve( latin1.size() );
	for ( const char c : latin1 )
		AppendUtf8( text, static_cast<unsigned char>( c ) );
	return text;
}

std::optional<std::string> Utf8ToLatin1( std::string_view utf8 )
{
	std::string text;
	for ( size_t i = 0; i < utf8.size(); i++ )
	{
		const auto nLead = static_cast<unsigned char>( utf8[i] );
		if ( nLead < 0x80 )
		{
			text += utf8[i];
			continue;
		}
		// The characters from 0x80 to 0xFF are those of two bytes that begin with 0xC2 or 0xC3.
		const auto nNext = static_cast<unsigned char>( i + 1 < utf8.size() ? utf8[i + 1] : 0 );
		if ( ( nLead != 0xC2 && nLead != 0xC3 ) || ( nNext & 0xC0 ) != 0x80 )
			return std::nullopt;
		text += static_cast<char>( ( nLead & 3 ) << 6 | ( nNext & 0x3F ) );
		i++;
	}
	return text;
}

std::string NameForTable( std::string_view latin1 )
{
	std::string text;
	for ( const char c : latin1 )
	{
		const auto nByte = static_cast<unsigned char>( c );
		const bool bControl = nByte < 0x20 || ( nByte >= 0x7F && nByte < 0xA0 );
		AppendUtf8( text, bControl ? '?' : nByte );
	}
	return text;
}

static bool IsContinuation( char c )
{
	return ( static_cast<unsigned char>( c ) & 0xC0 ) == 0x80;
}

size_t CountCharacters( std::string_view utf8 )
{
	return utf8.size() - static_cast<size_t>( std::count_if( utf8.begin(), utf8.end(), IsContinuation ) );
}

// Where the character begins that has so many before it.
static size_t OffsetOfCharacter( std::string_view utf8, size_t nCharacter )
{
	size_t i = 0;
	for ( ; i < utf8.size(); i++ )
		if ( !IsContinuation( utf8[i] ) && nCharacter-- == 0 )
			break;
	return i;
}

std::string ShortenMiddle( std::string_view utf8, size_t nCharacters )
{
	constexpr std::string_view MARK = "...";
	const size_t nCount = CountCharacters( utf8 );
	if ( nCount <= nCharacters )
		return std::string( utf8 );
	const size_t nFirst = ( nCharacters - MARK.size() ) / 2;
	const size_t nLast = nCharacters - MARK.size() - nFirst;
	std::string text( utf8.substr( 0, OffsetOfCharacter( utf8, nFirst ) ) );
	return text.append( MARK ).append( utf8.substr( OffsetOfCharacter( utf8, nCount - nLast ) ) );
}

std::string FormatFixed( double flValue, int nDecimals )
{
	std::array<char, 400> digits; // the largest double has 309 in front of its point
	const int nLength = std::snprintf( digits.data(), digits.size(), "%.*f", nDecimals, flValue );
	const std::string_view text( digits.data(), static_cast<size_t>( nLength ) );
	const bool bMinusZero = text.starts_with( '-' ) && text.find_first_not_of( "-0." ) == std::string_view::npos;
	return std::string( bMinusZero ? text.substr( 1 ) : text );
}

std::string FormatMilliseconds( double flMicroseconds )
{
	return FormatFixed( flMicroseconds / 1000.0, 3 );
}

std::optional<double> ReadAmount( std::string_view text )
{
	double flValue = 0.0;
	const auto [pEnd, error] = std::from_chars( text.data(), text.data() + text.size(), flValue );
	if ( error != std::errc() || pEnd != text.data() + text.size() || !std::isfinite( flValue ) || flValue < 0.0 )
		return std::nullopt;
	return flValue;
}
