#include "wire/plaintext.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace
{
using wire::ToPlainLine;

// Written out by the rule of UTF-8, also for what is no character.
std::string Utf8( uint32_t nCode )
{
	const auto next = [nCode]( int nShift ) { return static_cast<char>( 0x80 | ( nCode >> nShift & 0x3F ) ); };
	if ( nCode < 0x80 )
		return { static_cast<char>( nCode ) };
	if ( nCode < 0x800 )
		return { static_cast<char>( 0xC0 | nCode >> 6 ), next( 0 ) };
	if ( nCode < 0x10000 )
		return { static_cast<char>( 0xE0 | nCode >> 12 ), next( 6 ), next( 0 ) };
	return { static_cast<char>( 0xF0 | nCode >> 18 ), next( 12 ), next( 6 ), next( 0 ) };
}

bool IsObeyed( uint32_t nCode )
{
	return nCode < 0x20 || ( nCode >= 0x7F && nCode < 0xA0 ) || nCode == 0x061C || nCode == 0x200E || nCode == 0x200F ||
		   ( nCode >= 0x2028 && nCode <= 0x202E ) || ( nCode >= 0x2066 && nCode <= 0x2069 );
}
} // namespace

TEST( PlainLine, KeepsEveryCharacterButThoseThatAreObeyed )
{
	for ( uint32_t nCode = 0; nCode <= 0x10FFFF; nCode++ )
	{
		if ( nCode >= 0xD800 && nCode <= 0xDFFF )
			continue;
		const std::string text = Utf8( nCode );
		ASSERT_EQ( ToPlainLine( "a" + text + "b" ), "a" + ( IsObeyed( nCode ) ? "?" : text ) + "b" ) << nCode;
	}
}

TEST( PlainLine, ShowsBytesThatAreNotUtf8OneByOne )
{
	EXPECT_EQ( ToPlainLine( "a\x9B[2J" ), "a?[2J" ) << "an escape sequence of 8-bit terminals";
	EXPECT_EQ( ToPlainLine( "\xFF\xFE\xC0\xC1\xF5" ), "?????" );
	EXPECT_EQ( ToPlainLine( "\xE2\x80" ), "??" ) << "cut inside a character";
	EXPECT_EQ( ToPlainLine( "\xE2\x80z" ), "??z" );
	EXPECT_EQ( ToPlainLine( "\xED\xA0\x80" ), "???" ) << "half of a surrogate pair";
	EXPECT_EQ( ToPlainLine( "\xF4\x90\x80\x80" ), "????" ) << "behind the last character";
}

// A lenient reader would find a control character in them.
TEST( PlainLine, TakesNoCharacterInMoreBytesThanItNeeds )
{
	EXPECT_EQ( ToPlainLine( "\xC0\x9B" ), "??" );
	EXPECT_EQ( ToPlainLine( "\xE0\x82\x9B" ), "???" );
	EXPECT_EQ( ToPlainLine( "\xF0\x80\x82\x9B" ), "????" );
}

TEST( PlainLine, OfNothingIsNothing )
{
	EXPECT_EQ( ToPlainLine( "" ), "" );
}
