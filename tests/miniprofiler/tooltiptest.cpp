#include <gtest/gtest.h>

#include <QTextDocument>

#include "miniprofiler/miniprofilertooltip.h"

namespace
{
// What a tool tip shows, which takes a text for markup when it looks like it.
QString Seen( const QString &toolTip )
{
	if ( !Qt::mightBeRichText( toolTip ) )
		return toolTip;
	QTextDocument document;
	document.setHtml( toolTip );
	return document.toPlainText();
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
	EXPECT_EQ( lines.last(), QChar( 0x2026 ) );
	EXPECT_EQ( MiniProfilerToolTip( "a\rb" ), QStringLiteral( "a\uFFFDb" ) );
}
} // namespace
