#include <gtest/gtest.h>

#include <QTextDocument>
#include <initializer_list>

#include "miniprofiler/miniprofilershowntext.h"

namespace
{
QString FromCode( uint nCode )
{
	return QString::fromUcs4( &nCode, 1 );
}

// What a tool tip shows, which takes a text for markup when it looks like it.
QString Seen( const QString &toolTip )
{
	if ( !Qt::mightBeRichText( toolTip ) )
		return toolTip;
	QTextDocument document;
	document.setHtml( toolTip );
	return document.toPlainText();
}

TEST( MiniProfilerShownText, OrdinaryTextsAreShownAsTheyAre )
{
	for ( const QString &text : { QString(), QString( "World::Step<int &>( \"a\" ) && b" ),
			  QString::fromUtf8( "\xC3\xA4\xE4\xBD\xA0\xF0\x9F\x98\x80" ), QString( "<b>bold</b>" ) } )
		EXPECT_EQ( MiniProfilerShownText( text ), text );
}

TEST( MiniProfilerShownText, EveryControlCharacterIsSeenAndChangesNothing )
{
	const auto Replaced = []( uint nCode )
	{ return MiniProfilerShownText( "a" + FromCode( nCode ) + "b" ) == "a" + FromCode( 0xFFFD ) + "b"; };
	for ( uint nCode = 0; nCode < 0xA0; nCode++ )
		EXPECT_EQ( Replaced( nCode ), ( nCode < 0x20 && nCode != '\t' ) || nCode >= 0x7F ) << nCode;
	for ( const uint nCode : std::initializer_list<uint>{ 0x061C, 0x200E, 0x200F, 0x2028, 0x2029, 0x202A, 0x202B,
			  0x202C, 0x202D, 0x202E, 0x2066, 0x2067, 0x2068, 0x2069 } )
		EXPECT_TRUE( Replaced( nCode ) ) << nCode;
	for ( const uint nCode :
		std::initializer_list<uint>{ 0x061B, 0x200D, 0x2010, 0x2027, 0x202F, 0x2065, 0x206A, 0x1F600 } )
		EXPECT_FALSE( Replaced( nCode ) ) << nCode;
	EXPECT_EQ( MiniProfilerShownText( "a\tb" ), "a    b" );
}

TEST( MiniProfilerShownText, ALongTextIsCutWithAnEllipsis )
{
	const QString ellipsis = FromCode( 0x2026 );
	EXPECT_EQ( MiniProfilerShownText( "12345", 5 ), "12345" );
	EXPECT_EQ( MiniProfilerShownText( "123456", 5 ), "1234" + ellipsis );
	EXPECT_EQ( MiniProfilerShownText( QString( 1000000, 'x' ), 256 ), QString( 255, 'x' ) + ellipsis );
	EXPECT_EQ( MiniProfilerShownText( "1\n2345", 5 ), "1" + FromCode( 0xFFFD ) + "23" + ellipsis );
	EXPECT_EQ( MiniProfilerShownText( "1\t2", 5 ), "1   " + ellipsis ); // it has become longer
}

TEST( MiniProfilerShownText, ACutLeavesNoHalfOfACharacter )
{
	const QString face = FromCode( 0x1F600 ); // two units
	EXPECT_EQ( MiniProfilerShownText( "12" + face + face, 4 ), "12" + FromCode( 0x2026 ) );
	EXPECT_EQ( MiniProfilerShownText( "12" + face + "5", 5 ), "12" + face + "5" );
}

TEST( MiniProfilerToolTip, KeepsTheLinesOfADescription )
{
	EXPECT_EQ( MiniProfilerToolTip( "Physics\nCFoo::f\nC:\\Src\\x.cpp\n1\ndemo\n" ),
		"Physics\nCFoo::f\nC:\\Src\\x.cpp\n1\ndemo\n" );
	EXPECT_EQ( MiniProfilerToolTip( "" ), "" );
}

TEST( MiniProfilerToolTip, MarkupIsShownAndNotFollowed )
{
	for ( const QString text :
		{ "<b>bold</b>", "<img src=\"http://example.com/x.png\">", "a\n<table><tr><td>x</td></tr>\nb",
			"operator<< <int>", "&lt;b&gt; & &amp;", "<!DOCTYPE html>  two  blanks", "</p></span>after" } )
		EXPECT_EQ( Seen( MiniProfilerToolTip( text ) ), text ) << text.toStdString();
}

TEST( MiniProfilerToolTip, IsNoLongerThanAScreen )
{
	const QString wide = MiniProfilerToolTip( QString( 1000000, 'x' ) );
	EXPECT_EQ( wide.size(), 200 );
	const QStringList lines = MiniProfilerToolTip( QString( 1000000, '\n' ) ).split( '\n' );
	EXPECT_EQ( lines.size(), 40 );
	EXPECT_EQ( lines.last(), FromCode( 0x2026 ) );
	EXPECT_EQ( MiniProfilerToolTip( "a\rb" ), "a" + FromCode( 0xFFFD ) + "b" );
}
} // namespace
