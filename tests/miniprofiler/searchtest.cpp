#include <gmock/gmock.h>

#include <deque>

#include "miniprofiler/miniprofilersearch.h"

namespace
{
using testing::ElementsAre;
using testing::IsEmpty;

bool Matches( const char *pTyped, const char *pText )
{
	return MiniProfilerPattern( pTyped ).Matches( pText );
}

TEST( MiniProfilerPattern, BlanksAndStarsStandForAnything )
{
	EXPECT_TRUE( Matches( "w st", "World::Step" ) );
	EXPECT_TRUE( Matches( "w*st", "World::Step" ) );
	EXPECT_TRUE( Matches( " *  step ", "World::Step" ) );
	EXPECT_FALSE( Matches( "st w", "World::Step" ) );
	for ( const char *pText : { "", "anything" } )
		EXPECT_TRUE( Matches( "   ", pText ) );
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
