#include <gtest/gtest.h>

#include <initializer_list>

#include "text/showntext.h"

namespace
{
QString FromCode( uint nCode )
{
	return QString::fromUcs4( &nCode, 1 );
}

TEST( ShownText, OrdinaryTextsAreShownAsTheyAre )
{
	for ( const QString &text : { QString(), QString( "World::Step<int &>( \"a\" ) && b" ),
			  QString::fromUtf8( "\xC3\xA4\xE4\xBD\xA0\xF0\x9F\x98\x80" ), QString( "<b>bold</b>" ) } )
		EXPECT_EQ( ShownText( text ), text );
}

TEST( ShownText, EveryControlCharacterIsSeenAndChangesNothing )
{
	const auto Replaced = []( uint nCode )
	{ return ShownText( "a" + FromCode( nCode ) + "b" ) == "a" + FromCode( 0xFFFD ) + "b"; };
	for ( uint nCode = 0; nCode < 0xA0; nCode++ )
		EXPECT_EQ( Replaced( nCode ), ( nCode < 0x20 && nCode != '\t' ) || nCode >= 0x7F ) << nCode;
	for ( const uint nCode : std::initializer_list<uint>{ 0x061C, 0x200E, 0x200F, 0x2028, 0x2029, 0x202A, 0x202B,
			  0x202C, 0x202D, 0x202E, 0x2066, 0x2067, 0x2068, 0x2069, 0x00AD, 0x200B, 0x2060 } )
		EXPECT_TRUE( Replaced( nCode ) ) << nCode;
	for ( const uint nCode :
		std::initializer_list<uint>{ 0x061B, 0x200C, 0x200D, 0x2010, 0x2027, 0x202F, 0x2065, 0x1F600 } )
		EXPECT_FALSE( Replaced( nCode ) ) << nCode;
	EXPECT_EQ( ShownText( "a\tb" ), "a    b" );
}

TEST( ShownText, ALongTextIsCutWithAnEllipsis )
{
	const QString ellipsis = FromCode( 0x2026 );
	EXPECT_EQ( ShownText( "12345", 5 ), "12345" );
	EXPECT_EQ( ShownText( "123456", 5 ), "1234" + ellipsis );
	EXPECT_EQ( ShownText( QString( 1000000, 'x' ), 256 ), QString( 255, 'x' ) + ellipsis );
	EXPECT_EQ( ShownText( "1\n2345", 5 ), "1" + FromCode( 0xFFFD ) + "23" + ellipsis );
	EXPECT_EQ( ShownText( "1\t2", 5 ), "1   " + ellipsis ); // it has become longer
}

TEST( ShownText, ACutLeavesNoHalfOfACharacter )
{
	const QString face = FromCode( 0x1F600 ); // two units
	EXPECT_EQ( ShownText( "12" + face + face, 4 ), "12" + FromCode( 0x2026 ) );
	EXPECT_EQ( ShownText( "12" + face + "5", 5 ), "12" + face + "5" );
}
} // namespace
