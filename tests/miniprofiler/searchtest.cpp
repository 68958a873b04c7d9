#include <gmock/gmock.h>

#include <deque>

#include "miniprofiler/miniprofilersearch.h"
#include "support/randomseed.h"

namespace
{
using testing::ElementsAre;
using testing::IsEmpty;

bool Matches( const char *pPattern, const char *pText )
{
	return CMiniProfilerPattern( pPattern ).Matches( pText );
}

TEST( MiniProfilerPattern, MatchesAnywhereWithoutRegardToCase )
{
	EXPECT_TRUE( Matches( "step", "World::Step()" ) );
	EXPECT_TRUE( Matches( "WORLD", "World::Step()" ) );
	EXPECT_TRUE( Matches( "()", "World::Step()" ) );
	EXPECT_FALSE( Matches( "steps", "World::Step()" ) );
}

TEST( MiniProfilerPattern, BlanksAndStarsStandForAnything )
{
	EXPECT_TRUE( Matches( "w st", "World::Step" ) );
	EXPECT_TRUE( Matches( "w*st", "World::Step" ) );
	EXPECT_TRUE( Matches( " *  step ", "World::Step" ) );
	EXPECT_FALSE( Matches( "st w", "World::Step" ) );
	EXPECT_FALSE( Matches( "step step", "World::Step" ) ); // one after the other
	EXPECT_TRUE( Matches( "aab b", "aaabab" ) );
	for ( const char *pText : { "", "anything" } )
		EXPECT_TRUE( Matches( "   ", pText ) );
}

TEST( MiniProfilerPattern, QuestionMarksAndBracketsStandForOneCharacter )
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
TEST( MiniProfilerPattern, AgreesWithOneWildcardExpression )
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
		const QString typed = Text( "abB? *", 6, 6 ) + ( random() % 8 == 0 ? "[a*]" : "" ) + Text( "ab *", 4, 3 );
		const QString name = Text( "abAB*", 5, 10 );
		const QRegExp whole( QString( typed ).replace( ' ', '*' ), Qt::CaseInsensitive, QRegExp::Wildcard );
		const bool bExpected = whole.indexIn( name ) >= 0;
		ASSERT_EQ( CMiniProfilerPattern( typed ).Matches( name ), bExpected )
			<< typed.toStdString() << " in " << name.toStdString();
		nMatches += bExpected;
	}
	EXPECT_GT( nMatches, 1000 );
	EXPECT_LT( nMatches, 19000 );
}

// This would take hours if every way to share the text among the wildcards were tried.
TEST( MiniProfilerPattern, AMillionCharactersAreNoTrouble )
{
	const QString name( 1000000, 'a' );
	EXPECT_FALSE( CMiniProfilerPattern( "a*a b*c" ).Matches( name ) );
	EXPECT_TRUE( CMiniProfilerPattern( "a*a a*c" ).Matches( name + 'c' ) );
}

class MiniProfilerSearch : public testing::Test
{
protected:
	CQMiniProfilerRecord &Add( const char *pName, const char *pDescription = "" )
	{
		m_Records.emplace_back( m_Records.size() + 1, 0u );
		m_Records.back().SetName( pName );
		m_Records.back().SetDescription( pDescription );
		m_Rows.push_back( &m_Records.back() );
		return m_Records.back();
	}
	std::vector<CMiniProfilerRow *> Find( const char *pText ) const { return FindMiniProfilerRows( m_Rows, pText ); }

	std::deque<CQMiniProfilerRecord> m_Records;
	CMiniProfilerGroup m_Group{ "Physics", nullptr, 0 };
	std::vector<CMiniProfilerRow *> m_Rows{ &m_Group };
};

TEST_F( MiniProfilerSearch, FindsGroupsAndRecordsByName )
{
	CQMiniProfilerRecord &record = Add( "physics step" );
	Add( "draw", "Physics\nf\n" );
	EXPECT_THAT( Find( "phys" ), ElementsAre( &m_Group, &record ) );
}

TEST_F( MiniProfilerSearch, FallsBackToAnyLineOfADescription )
{
	CQMiniProfilerRecord &first = Add( "a", "Budget\nfunction\nfile\nline\nproject\n" );
	Add( "b", "Budget\nother\nfile\n" );
	EXPECT_THAT( Find( "project" ), ElementsAre( &first ) );
	EXPECT_THAT( Find( "function" ), ElementsAre( &first ) );
	EXPECT_EQ( Find( "fil" ).size(), 2u );
	EXPECT_THAT( Find( "function file" ), IsEmpty() ); // one line must match
}
} // namespace
