// The small things that every command prints with.
#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "keel0/platform.h"
#include "tools/engineaddress.h"
#include "tools/errorline.h"
#include "tools/jsonwriter.h"
#include "tools/limits.h"
#include "tools/progress.h"
#include "tools/text.h"

namespace
{
double g_flNow = 1.0;

// The clock says what the test says.
class Progress : public testing::Test
{
protected:
	void SetUp() override
	{
		g_flNow = 1.0;
		Plat_SetFloatTimeSource( [] { return g_flNow; } );
	}
	void TearDown() override { Plat_SetFloatTimeSource( nullptr ); }

	std::string TakeText() { return std::exchange( m_Text, std::ostringstream() ).str(); }

	std::ostringstream m_Text;
};
} // namespace

TEST( ErrorLine, NamesFileAndOffset )
{
	EXPECT_EQ( FormatErrorLine( "a.kesto", 12, "Truncated file" ), "kesto: a.kesto: offset 12: Truncated file" );
	EXPECT_EQ( FormatErrorLine( "a.kesto", {}, "gone" ), "kesto: a.kesto: gone" );
	EXPECT_EQ( FormatErrorLine( {}, {}, "what" ), "kesto: what" );
}

TEST( ErrorLine, IsOneLineWhateverIsInIt )
{
	EXPECT_EQ( FormatErrorLine( "a\nb\x1B", {}, "one\ntwo\r\x7F" ), "kesto: a; b?: one; two??" );
}

TEST( ErrorLine, ShowsNoCharacterThatControlsTheTerminal )
{
	// An 8-bit escape (U+009B), a character that turns the direction of what follows it (U+202E), and that escape as a
	// byte of its own, which a file's name may have.
	EXPECT_EQ( FormatErrorLine( "a\xC2\x9B"
								"31m",
				   {},
				   "\xE2\x80\xAE"
				   "txt\x9B[2J" ),
		"kesto: a?31m: ?txt?[2J" );
}

TEST( Texts, AreShortenedInTheirMiddleByCharacters )
{
	EXPECT_EQ( ShortenMiddle( "0123456789", 10 ), "0123456789" );
	EXPECT_EQ( ShortenMiddle( "0123456789a", 10 ), "012...789a" );
	EXPECT_EQ(
		ShortenMiddle( "\xC3\xA9\xC3\xA9\xC3\xA9xxxxx\xC3\xB1\xC3\xB1", 7 ), "\xC3\xA9\xC3\xA9...\xC3\xB1\xC3\xB1" );
	EXPECT_EQ( CountCharacters( "\xC3\xA9x\xE2\x82\xAC" ), 3u );
}

TEST( Texts, Latin1AndUtf8AreTurnedIntoEachOther )
{
	std::string latin1;
	for ( int i = 1; i < 256; i++ )
		latin1 += static_cast<char>( i );
	EXPECT_EQ( Utf8ToLatin1( Latin1ToUtf8( latin1 ) ), latin1 );
	EXPECT_EQ( Latin1ToUtf8( "\xE9" ), "\xC3\xA9" );
	EXPECT_EQ( Latin1ToUtf8( "\x80" ), "\xC2\x80" );
}

TEST( Texts, WhatIsNotUtf8OrBeyondLatin1IsRefused )
{
	for ( const char *pText : { "\xE9", "\xC3", "\xC3x", "\xE2\x82\xAC", "\xC4\x80", "\x80" } )
		EXPECT_EQ( Utf8ToLatin1( pText ), std::nullopt ) << pText;
}

TEST( Texts, WhatRoundsToZeroHasNoSign )
{
	EXPECT_EQ( FormatFixed( -0.0004, 3 ), "0.000" );
	EXPECT_EQ( FormatFixed( -0.0006, 3 ), "-0.001" );
	EXPECT_EQ( FormatFixed( -0.0, 0 ), "0" );
	EXPECT_EQ( FormatMilliseconds( 16667.0 ), "16.667" );
}

TEST( Texts, AnAmountIsAWholeDecimalNumber )
{
	EXPECT_EQ( ReadAmount( "16.6" ), 16.6 );
	EXPECT_EQ( ReadAmount( "0" ), 0.0 );
	EXPECT_EQ( ReadAmount( "1e2" ), 100.0 );
	for ( const char *pText : { "", "x", "1x", "-1", "nan", "inf", " 1", "1 ", "+1", "1e999" } )
		EXPECT_EQ( ReadAmount( pText ), std::nullopt ) << pText;
}

TEST( TimeLimits, AreANameAndMilliseconds )
{
	const std::optional<TimeLimit> limit = ReadTimeLimit( " a<=b <= 2.50 " );
	ASSERT_TRUE( limit );
	EXPECT_EQ( limit->m_Name, "a<=b" );
	EXPECT_EQ( limit->m_flMilliseconds, 2.5 );
	EXPECT_EQ( limit->m_Text, "2.50" );
	EXPECT_EQ( ReadTimeLimit( "<=3" )->m_Name, "" );
	for ( const char *pText : { "", "a", "a<2", "a<=", "a<=x", "a=<2" } )
		EXPECT_FALSE( ReadTimeLimit( pText ) ) << pText;
}

TEST( EngineAddresses, AreAHostAndPerhapsAPort )
{
	const auto expect = []( const char *pText, const char *pHost, uint16_t nPort )
	{
		const std::optional<EngineAddress> address = ReadEngineAddress( pText );
		ASSERT_TRUE( address ) << pText;
		EXPECT_EQ( address->m_Host, pHost ) << pText;
		EXPECT_EQ( address->m_nPort, nPort ) << pText;
	};
	expect( "engine.local", "engine.local", 27190 );
	expect( "127.0.0.1:80", "127.0.0.1", 80 );
	expect( "::1", "::1", 27190 );
	expect( "[::1]", "::1", 27190 );
	expect( "[fe80::2]:65535", "fe80::2", 65535 );
	for ( const char *pText :
		{ "", ":80", "a:", "a:0", "a:65536", "a:x", "a:8 ", "[]", "[]:80", "[::1", "[::1]80", "[::1]:" } )
		EXPECT_FALSE( ReadEngineAddress( pText ) ) << pText;
}

TEST( JsonWriter, PutsCommasBetweenValues )
{
	std::string text;
	CJsonWriter json( text );
	json.BeginObject();
	json.Key( "a" ).BeginArray();
	json.BeginArray();
	json.EndArray();
	json.Integer( uint64_t{ 18446744073709551615u } );
	json.Bool( true );
	json.Null();
	json.EndArray();
	json.Key( "b" ).Integer( int64_t{ -5 } );
	json.EndObject();
	EXPECT_EQ( text, "{\"a\":[[],18446744073709551615,true,null],\"b\":-5}" );
}

TEST( JsonWriter, NumbersReadBackAsTheyWere )
{
	std::string text;
	CJsonWriter json( text );
	json.BeginArray();
	for ( const double flNumber : { 0.1, 1.0 / 3.0, 4000.0, -2.5e-300 } )
		json.Number( flNumber );
	json.Number( std::numeric_limits<double>::infinity() );
	json.Number( std::numeric_limits<double>::quiet_NaN() );
	json.EndArray();
	EXPECT_EQ( text, "[0.1,0.3333333333333333,4000,-2.5e-300,null,null]" );
}

TEST_F( Progress, ShowsNothingOfShortWork )
{
	{
		CProgress progress( &m_Text, "Work", 200 );
		g_flNow += 0.49;
		progress.Show( 100 );
	}
	EXPECT_EQ( TakeText(), "" );
}

TEST_F( Progress, ShowsPercentAtMostTenTimesASecondAndClearsTheLine )
{
	{
		CProgress progress( &m_Text, "Work", 200 );
		g_flNow += 0.51;
		progress.Show( 1 );
		EXPECT_EQ( TakeText(), "\rWork 0%" );
		g_flNow += 0.09;
		progress.Show( 50 );
		EXPECT_EQ( TakeText(), "" );
		g_flNow += 0.02;
		progress.Show( 200 );
		EXPECT_EQ( TakeText(), "\rWork 100%" );
		g_flNow += 0.2;
		progress.Show( 100 );
		EXPECT_EQ( TakeText(), "\rWork 50% " );
	}
	EXPECT_EQ( TakeText(), "\r         \r" );
}

TEST_F( Progress, WithoutATotalShowsTheLabelAlone )
{
	CProgress progress( &m_Text, "Work", 0 );
	g_flNow += 1.0;
	progress.Show( 1 );
	EXPECT_EQ( TakeText(), "\rWork" );
}

TEST_F( Progress, ALongOrWildLabelStaysOnItsLine )
{
	CProgress progress( &m_Text, "Reading /" + std::string( 200, 'x' ) + "/\x1B]0;title\x07.kesto", 200 );
	g_flNow += 1.0;
	progress.Show( 100 );
	const std::string text = TakeText();
	EXPECT_LT( text.size(), 80u );
	EXPECT_TRUE( text.starts_with( "\rReading /xxx" ) ) << text;
	EXPECT_TRUE( text.ends_with( "/?]0;title?.kesto 50%" ) ) << text;
}

TEST_F( Progress, WithoutATerminalDoesNothing )
{
	CProgress progress( nullptr, "Work", 200 );
	g_flNow += 1.0;
	progress.Show( 1 );
	EXPECT_EQ( TakeText(), "" );
}
