#include "views/budgetname.h"

#include <gtest/gtest.h>

#include "support/randomseed.h"

namespace
{
QString Text( std::string_view name )
{
	return BudgetNameText( { CUtlString( name ), Qt::red } );
}

QString Utf16( std::u16string_view text )
{
	return QString::fromUtf16( text.data(), static_cast<int>( text.size() ) );
}
} // namespace

TEST( BudgetName, OrdinaryNamesStayAsTheyAre )
{
	for ( const char *pName : { "", "Render", "AI & path finding", "<b>bold</b>", "&File", "Größe", "日本語", "😀 gpu",
			  "שלום", "a  b", "नमस्ते", "👩‍💻" } )
		EXPECT_EQ( Text( pName ), QString::fromUtf8( pName ) );
}

TEST( BudgetName, ControlCharactersAreShownInsteadOfObeyed )
{
	for ( int n = 0; n < 0x20; n++ )
		EXPECT_EQ(
			Text( std::string( "a" ) + static_cast<char>( n ) + "b" ), Utf16( n == '\t' ? u"a    b" : u"a\uFFFDb" ) )
			<< n;
	for ( const char *pControl : { "\x7F", "\xC2\x80", "\xC2\x85", "\xC2\x9C", "\xC2\x9F" } ) // DEL and C1
		EXPECT_EQ( Text( std::string( "a" ) + pControl + "b" ), Utf16( u"a\uFFFDb" ) );
}

TEST( BudgetName, WhatTurnsTheDirectionOrEndsALineIsShown )
{
	for ( const char16_t c : { u'\u061C', u'\u200E', u'\u200F', u'\u202A', u'\u202B', u'\u202C', u'\u202D', u'\u202E',
			  u'\u2028', u'\u2029', u'\u2066', u'\u2067', u'\u2068', u'\u2069' } )
	{
		const QString name = QStringLiteral( "a" ) + QChar( c ) + QStringLiteral( "b" );
		EXPECT_EQ( Text( name.toStdString() ), Utf16( u"a\uFFFDb" ) ) << std::hex << unsigned{ c };
	}
}

TEST( BudgetName, BytesThatAreNoUtf8AreShownOneByOne )
{
	EXPECT_EQ( Text( "a\xFF\xFE"
					 "b" ),
		Utf16( u"a\uFFFD\uFFFDb" ) );
	EXPECT_EQ( Text( "a\xED\xA0\x80" ).at( 1 ), QChar( QChar::ReplacementCharacter ) ) << "half a surrogate pair";
	EXPECT_EQ( Text( "abc\xE2\x82" ).left( 3 ), "abc" ) << "cut inside a character";
}

TEST( BudgetName, LongNamesEndInAnEllipsis )
{
	const QString longest( 128, 'x' );
	EXPECT_EQ( Text( longest.toStdString() ), longest );
	EXPECT_EQ( Text( longest.toStdString() + "x" ), QString( 127, 'x' ) + QChar( 0x2026 ) );
	EXPECT_EQ( Text( std::string( 100'000'000, 'x' ) ), QString( 127, 'x' ) + QChar( 0x2026 ) );
	// A character outside the basic plane takes two units and is not cut in half.
	QString faces;
	for ( int i = 0; i < 200; i++ )
		faces += QString::fromUtf8( "😀" );
	EXPECT_EQ( Text( faces.toStdString() ), faces.left( 126 ) + QChar( 0x2026 ) );
}

TEST( BudgetName, AnyBytesGiveALineOfPlainTextWithinTheLimit )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	for ( int i = 0; i < 20000; i++ )
	{
		std::string bytes( random() % 600, '\0' );
		for ( char &c : bytes )
			c = static_cast<char>( random() % 4 ? random() : 0xE2808E >> ( 8 * ( random() % 3 ) ) );
		const QString text = Text( bytes );
		ASSERT_LE( text.size(), 128 );
		for ( const QChar c : text )
		{
			ASSERT_FALSE( c.unicode() < 0x20 || c.unicode() == 0x200E || c.unicode() == 0x2028 );
			ASSERT_NE( c.direction(), QChar::DirRLO );
		}
		ASSERT_TRUE( text.isValidUtf16() );
	}
}
