#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "miniprofiler/miniprofilerrow.h"

namespace
{
CQMiniProfilerRecord MakeRecord()
{
	return CQMiniProfilerRecord( 1, 0 );
}

TEST( MiniProfilerRow, ANewRecordHasNothingButItsKind )
{
	const CQMiniProfilerRecord record( 0x1234, 7 );
	EXPECT_TRUE( record.HasFlag( MINIPROFILER_ROW_RECORD ) );
	for ( const auto flag : { MINIPROFILER_ROW_GROUP, MINIPROFILER_ROW_IDLE, MINIPROFILER_ROW_DUPLICATE,
			  MINIPROFILER_ROW_DISAMBIGUATE, MINIPROFILER_ROW_COLOURED } )
		EXPECT_FALSE( record.HasFlag( flag ) );
	EXPECT_EQ( record.Id(), 0x1234u );
	EXPECT_EQ( record.LineCount(), 0u );
	EXPECT_EQ( record.m_pGroup, nullptr );
	EXPECT_THAT( record.m_Ave, testing::Each( 0.0f ) );
}

TEST( MiniProfilerRow, ANewGroupIsWhiteAndNamed )
{
	CMiniProfilerGroup group( "Physics", nullptr, 3 );
	EXPECT_TRUE( group.HasFlag( MINIPROFILER_ROW_GROUP ) );
	EXPECT_EQ( group.m_Colour, QColor( Qt::white ) );
	EXPECT_EQ( group.Name(), "Physics" );
	EXPECT_EQ( group.LaidOutName( QFont() ).text(), "Physics" );
	EXPECT_EQ( group.m_nIndex, 3 );
	EXPECT_EQ( group.m_nMembers, 0 );
}

TEST( MiniProfilerRow, ANameThatLooksLikeMarkupIsShownAsItIs )
{
	auto record = MakeRecord();
	record.SetName( "<b>operator<</b>" );
	EXPECT_EQ( record.LaidOutName( QFont() ).text(), "<b>operator<</b>" );
	EXPECT_EQ( record.LaidOutName( QFont() ).textFormat(), Qt::PlainText );
}

TEST( MiniProfilerRow, ADescriptionIsCutAtItsLineFeeds )
{
	auto record = MakeRecord();
	record.SetDescription( "Physics\nWorld::Step\nC:\\Src\\World.CPP\n120\nengine\n" );
	ASSERT_EQ( record.LineCount(), 5u );
	EXPECT_EQ( record.Line( 0 ), "Physics" );
	EXPECT_EQ( record.Line( 1 ), "World::Step" );
	EXPECT_EQ( record.Line( 2 ), "c:/src/world.cpp" );
	EXPECT_EQ( record.Line( 3 ), "120" );
	EXPECT_EQ( record.Line( 4 ), "engine" );
	EXPECT_EQ( record.Description(), "Physics\nWorld::Step\nC:\\Src\\World.CPP\n120\nengine\n" );
}

TEST( MiniProfilerRow, TextBehindTheLastLineFeedIsNoLine )
{
	auto record = MakeRecord();
	record.SetDescription( "Physics\nStep\nC:\\A" );
	EXPECT_EQ( record.LineCount(), 2u );
	EXPECT_EQ( record.Line( 2 ), "" );
	record.SetDescription( "no line at all" );
	EXPECT_EQ( record.LineCount(), 0u );
}

TEST( MiniProfilerRow, LinesThatMeanNothingAreStillLines )
{
	auto record = MakeRecord();
	std::vector<std::string> seen;
	const auto Collect = [&seen]( std::string_view line )
	{
		seen.emplace_back( line );
		return line == "stop";
	};
	EXPECT_FALSE( record.HasLine( Collect ) );
	record.SetDescription( "A\nB\nC:\\D\n\nE\nsixth\n\nno line" );
	EXPECT_EQ( record.LineCount(), 7u );
	EXPECT_FALSE( record.HasLine( Collect ) );
	EXPECT_THAT( seen, testing::ElementsAre( "A", "B", "c:/d", "", "E", "sixth", "" ) );
	seen.clear();
	record.SetDescription( "first\nstop\nthird\n" );
	EXPECT_TRUE( record.HasLine( Collect ) );
	EXPECT_THAT( seen, testing::ElementsAre( "first", "stop" ) );
	record.SetDescription( "" );
	EXPECT_EQ( record.LineCount(), 0u );
	EXPECT_EQ( record.Description(), "" );
	EXPECT_EQ( record.DescriptionSize(), 0u );
}

TEST( MiniProfilerRow, OnlyAsciiLettersOfTheSourceFileAreLowered )
{
	auto record = MakeRecord();
	record.SetDescription( "A\nB\nSRC\\\xC3\x84rger.Cpp\n" ); // an upper-case umlaut
	EXPECT_EQ( record.Line( 0 ), "A" );
	EXPECT_EQ( record.Line( 2 ), "src/\xC3\x84rger.cpp" );
}

TEST( MiniProfilerRow, MergingAddsUpAndCombinesDeviationsInQuadrature )
{
	CMiniProfilerGroup group( "G", nullptr, 0 );
	auto first = MakeRecord();
	first.m_Ave = { 0, 1, 2, 3, 4, 5 };
	first.m_Cur = { 0, 10, 20, 30, 40, 50 };
	first.m_Peaks = { 0, 100, 200, 300, 400, 500 };
	first.m_StDev = { 0, 3, 3, 3, 3, 5 };
	auto second = MakeRecord();
	second.m_Ave = { 0, 1, 1, 1, 1, 1 };
	second.m_Cur = { 0, 2, 2, 2, 2, 2 };
	second.m_Peaks = { 0, 3, 3, 3, 3, 3 };
	second.m_StDev = { 0, 4, 4, 4, 4, 12 };
	group.Merge( first );
	group.Merge( second );
	EXPECT_THAT( group.m_Ave, testing::ElementsAre( 0, 2, 3, 4, 5, 6 ) );
	EXPECT_THAT( group.m_Cur, testing::ElementsAre( 0, 12, 22, 32, 42, 52 ) );
	EXPECT_THAT( group.m_Peaks, testing::ElementsAre( 0, 103, 203, 303, 403, 503 ) );
	EXPECT_THAT( group.m_StDev, testing::ElementsAre( 0, 5, 5, 5, 5, 13 ) );
	EXPECT_EQ( group.m_nMembers, 2 );

	group.ResetStatistics();
	EXPECT_THAT( group.m_StDev, testing::Each( 0.0f ) );
	EXPECT_EQ( group.m_nMembers, 0 );
}
} // namespace
