#include <gtest/gtest.h>

#include "support/randomseed.h"
#include "text/wildcardpattern.h"

namespace
{
bool Matches( const char *pPattern, const char *pText )
{
	return CWildcardPattern( pPattern ).Matches( pText );
}

TEST( WildcardPattern, MatchesAnywhereWithoutRegardToCase )
{
	EXPECT_TRUE( Matches( "step", "World::Step()" ) );
	EXPECT_TRUE( Matches( "WORLD", "World::Step()" ) );
	EXPECT_TRUE( Matches( "()", "World::Step()" ) );
	EXPECT_FALSE( Matches( "steps", "World::Step()" ) );
}

TEST( WildcardPattern, StarsStandForAnything )
{
	EXPECT_TRUE( Matches( "w*st", "World::Step" ) );
	EXPECT_TRUE( Matches( "**step*", "World::Step" ) );
	EXPECT_FALSE( Matches( "st*w", "World::Step" ) );
	EXPECT_FALSE( Matches( "step*step", "World::Step" ) ) << "one after the other";
	EXPECT_TRUE( Matches( "aab*b", "aaabab" ) );
	for ( const char *pText : { "", "anything" } )
		for ( const char *pPattern : { "", "*", "***" } )
			EXPECT_TRUE( Matches( pPattern, pText ) );
	EXPECT_FALSE( Matches( "a b", "a-b" ) ) << "a blank is itself";
}

TEST( WildcardPattern, QuestionMarksAndBracketsStandForOneCharacter )
{
	EXPECT_TRUE( Matches( "s?ep", "Step" ) );
	EXPECT_FALSE( Matches( "s??ep", "Step" ) );
	EXPECT_TRUE( Matches( "level[0-9]", "Level7" ) );
	EXPECT_FALSE( Matches( "level[0-9]", "LevelX" ) );
	EXPECT_TRUE( Matches( "a[*]b", "a*b" ) ); // a star between brackets is itself
	EXPECT_FALSE( Matches( "a[*]b", "axb" ) );
	EXPECT_FALSE( Matches( "[", "[" ) ); // no pattern at all
}

// One expression for the whole pattern says the same, only slower.
TEST( WildcardPattern, AgreesWithOneWildcardExpression )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	const auto Text = [&]( const char *pAlphabet, size_t nLetters, size_t nMaxLength )
	{
		QString text;
		for ( size_t i = random() % ( nMaxLength + 1 ); i > 0; i-- )
			text += QLatin1Char( pAlphabet[random() % nLetters] );
		return text;
	};
	int nMatches = 0;
	for ( int i = 0; i < 20000; i++ )
	{
		const QString typed = Text( "abB?*", 5, 6 ) + ( random() % 8 == 0 ? "[a*]" : "" ) + Text( "ab*", 3, 3 );
		const QString name = Text( "abAB*", 5, 10 );
		const QRegExp whole( typed, Qt::CaseInsensitive, QRegExp::Wildcard );
		const bool bExpected = whole.indexIn( name ) >= 0;
		ASSERT_EQ( CWildcardPattern( typed ).Matches( name ), bExpected )
			<< typed.toStdString() << " in " << name.toStdString();
		nMatches += bExpected;
	}
	EXPECT_GT( nMatches, 1000 );
	EXPECT_LT( nMatches, 19000 );
}

// This would take hours if every way to share the text among the wildcards were tried.
TEST( WildcardPattern, AMillionCharactersAreNoTrouble )
{
	const QString name( 1000000, 'a' );
	EXPECT_FALSE( CWildcardPattern( "a*a*b*c" ).Matches( name ) );
	EXPECT_TRUE( CWildcardPattern( "a*a*a*c" ).Matches( name + 'c' ) );
}
} // namespace
