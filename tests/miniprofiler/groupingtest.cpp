#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "miniprofiler/miniprofilergrouping.h"

namespace
{
using Groups = std::vector<std::pair<std::string, std::string>>; // key, name

Groups Split( std::string_view path )
{
	Groups groups;
	SplitMiniProfilerPath(
		path, [&]( std::string_view key, std::string_view name ) { groups.emplace_back( key, name ); } );
	return groups;
}

TEST( MiniProfilerPath, ComponentsAfterTheFirstBeginWithTheirSeparator )
{
	EXPECT_EQ( Split( "a/b/c" ), ( Groups{ { "a", "a" }, { "a/b", "/b" }, { "a/b/c", "/c" } } ) );
	EXPECT_EQ( Split( "one" ), ( Groups{ { "one", "one" } } ) );
}

TEST( MiniProfilerPath, TwoColonsAreOneSeparator )
{
	EXPECT_EQ( Split( "CFoo::Bar" ), ( Groups{ { "CFoo", "CFoo" }, { "CFoo::Bar", "::Bar" } } ) );
	EXPECT_EQ( Split( "a:b" ), ( Groups{ { "a", "a" }, { "a:b", ":b" } } ) );
}

TEST( MiniProfilerPath, BackslashesSeparateToo )
{
	EXPECT_EQ(
		Split( "src\\x\\y.cpp" ), ( Groups{ { "src", "src" }, { "src\\x", "\\x" }, { "src\\x\\y.cpp", "\\y.cpp" } } ) );
}

TEST( MiniProfilerPath, ADriveIsAComponentOfItsOwn )
{
	EXPECT_EQ( Split( "c:/a" ), ( Groups{ { "c", "c" }, { "c:", ":" }, { "c:/a", "/a" } } ) );
}

TEST( MiniProfilerPath, AnEmptyPathHasNoGroups )
{
	EXPECT_TRUE( Split( "" ).empty() );
}

TEST( MiniProfilerPath, ALeadingSeparatorEndsAnEmptyComponent )
{
	EXPECT_EQ( Split( "/usr/a" ), ( Groups{ { "", "" }, { "/usr", "/usr" }, { "/usr/a", "/a" } } ) );
	EXPECT_EQ( Split( "::Free" ), ( Groups{ { "", "" }, { "::Free", "::Free" } } ) );
}

TEST( MiniProfilerPath, ATrailingSeparatorIsAComponent )
{
	EXPECT_EQ( Split( "a/" ), ( Groups{ { "a", "a" }, { "a/", "/" } } ) );
}

TEST( MiniProfilerPath, TheLastOfManyLevelsIsTheRestOfThePath )
{
	const auto Path = []( int nLevels )
	{
		std::string path = "a";
		for ( int i = 1; i < nLevels; i++ )
			path += "/b";
		return path;
	};
	EXPECT_EQ( Split( Path( 64 ) ).size(), 64u );
	EXPECT_EQ( Split( Path( 64 ) ).back(), std::make_pair( Path( 64 ), std::string( "/b" ) ) );
	EXPECT_EQ( Split( Path( 66 ) ).size(), 64u );
	EXPECT_EQ( Split( Path( 66 ) ).back(), std::make_pair( Path( 66 ), std::string( "/b/b/b" ) ) );
	EXPECT_EQ( Split( std::string( 1000000, ':' ) ).size(), 64u );
}

TEST( MiniProfilerGroupKey, IsTheBeginningOfItsTextAndNothingElse )
{
	const MiniProfilerGroupKey key{ "a/b/c", 3 };
	EXPECT_EQ( key.View().toString(), "a/b" );
	for ( const MiniProfilerGroupKey &same : { MiniProfilerGroupKey{ "a/b", 3 }, MiniProfilerGroupKey{ "a/bcd", 3 } } )
	{
		EXPECT_TRUE( key == same );
		EXPECT_EQ( qHash( key, 7 ), qHash( same, 7 ) );
	}
	EXPECT_FALSE( key == ( MiniProfilerGroupKey{ "a/b/c", 5 } ) );
	EXPECT_FALSE( key == ( MiniProfilerGroupKey{ "a/x/c", 3 } ) );
	EXPECT_TRUE( ( MiniProfilerGroupKey{ "x", 0 } ) == MiniProfilerGroupKey() );
}

TEST( MiniProfilerPath, TheCommonPrefixIsCutOff )
{
	EXPECT_EQ( WithoutCommonPrefix( "c:/src/a.cpp", "c:/src/" ), "a.cpp" );
	EXPECT_EQ( WithoutCommonPrefix( "c:/src/a.cpp", "c:/src/a.cpp" ), "" );
	EXPECT_EQ( WithoutCommonPrefix( "d:/x", "c:/src/" ), "d:/x" );
	EXPECT_EQ( WithoutCommonPrefix( "c:/other", "c:/src/" ), "other" ); // a prefix that has shrunk since
	EXPECT_EQ( WithoutCommonPrefix( "", "c:/src/" ), "" );
}

TEST( MiniProfilerPath, ACommonPrefixDoesNotCutACharacter )
{
	// The two letters differ in their second byte.
	EXPECT_EQ( CommonPrefixLength( "ab\xC3\xA4", "ab\xC3\xB6" ), 2u );
	EXPECT_EQ( CommonPrefixLength( "ab\xC3\xA4x", "ab\xC3\xA4y" ), 4u );
}

TEST( MiniProfilerModes, UnknownNumbersCountAsNone )
{
	for ( const int nValue : { -1, 0, 1, 2, 8, 100 } )
		EXPECT_EQ( MiniProfilerGroupModeOf( nValue ), MiniProfilerGroupMode::None ) << nValue;
	for ( const int nValue : { 3, 4, 5, 6, 7 } )
		EXPECT_EQ( static_cast<int>( MiniProfilerGroupModeOf( nValue ) ), nValue );
	for ( const int nValue : { -1, 0, 3, 7, 8 } )
		EXPECT_EQ( MiniProfilerLeafModeOf( nValue ), MiniProfilerLeafMode::None ) << nValue;
	EXPECT_EQ( MiniProfilerLeafModeOf( 1 ), MiniProfilerLeafMode::StaticTree );
	EXPECT_EQ( MiniProfilerLeafModeOf( 2 ), MiniProfilerLeafMode::DynamicTree );
}

class MiniProfilerPlacement : public testing::Test
{
protected:
	CMiniProfilerGroup m_Group{ "G", nullptr, 0 };
	CMiniProfilerGroup m_OtherGroup{ "H", nullptr, 1 };
	CQMiniProfilerRecord m_Record{ 1, 0 };
	CQMiniProfilerRecord m_Parent{ 2, 1 };
	CQMiniProfilerRecord m_Caller{ 3, 2 };
};

TEST_F( MiniProfilerPlacement, FollowsTheMode )
{
	m_Record.m_pStaticParent = &m_Parent;
	m_Record.m_pCaller = &m_Caller;
	EXPECT_EQ( MiniProfilerPlacementTarget( m_Record, MiniProfilerLeafMode::None ), nullptr );
	EXPECT_EQ( MiniProfilerPlacementTarget( m_Record, MiniProfilerLeafMode::StaticTree ), &m_Parent );
	EXPECT_EQ( MiniProfilerPlacementTarget( m_Record, MiniProfilerLeafMode::DynamicTree ), &m_Caller );
	m_Record.m_pGroup = &m_Group;
	EXPECT_EQ( MiniProfilerPlacementTarget( m_Record, MiniProfilerLeafMode::None ), &m_Group );
}

TEST_F( MiniProfilerPlacement, AParentInAnotherGroupIsIgnored )
{
	m_Record.m_pCaller = &m_Caller;
	m_Record.m_pGroup = &m_Group;
	m_Caller.m_pGroup = &m_OtherGroup;
	EXPECT_EQ( MiniProfilerPlacementTarget( m_Record, MiniProfilerLeafMode::DynamicTree ), &m_Group );
	m_Caller.m_pGroup = &m_Group;
	EXPECT_EQ( MiniProfilerPlacementTarget( m_Record, MiniProfilerLeafMode::DynamicTree ), &m_Caller );
}

TEST_F( MiniProfilerPlacement, ARecordThatCallsItselfStaysInItsGroup )
{
	m_Record.m_pCaller = &m_Record;
	m_Record.m_pGroup = &m_Group;
	EXPECT_EQ( MiniProfilerPlacementTarget( m_Record, MiniProfilerLeafMode::DynamicTree ), &m_Group );
}

TEST_F( MiniProfilerPlacement, ARecordIsNotPlacedBelowWhatHangsBelowIt )
{
	m_Parent.m_pTreeParent = &m_Record;
	m_Caller.m_pTreeParent = &m_Parent;
	m_Record.m_pCaller = &m_Caller;
	EXPECT_EQ( MiniProfilerPlacementTarget( m_Record, MiniProfilerLeafMode::DynamicTree ), nullptr );
}

TEST_F( MiniProfilerPlacement, ARecordIsNotPlacedBelowTooManyOthers )
{
	std::vector<std::unique_ptr<CQMiniProfilerRecord>> branch; // from the top
	for ( uint32_t i = 0; i < 256; i++ )
	{
		branch.push_back( std::make_unique<CQMiniProfilerRecord>( 100 + i, i ) );
		branch.back()->m_pGroup = &m_Group;
		branch.back()->m_pTreeParent = i == 0 ? static_cast<CMiniProfilerRow *>( &m_Group ) : branch[i - 1].get();
	}
	m_Record.m_pGroup = &m_Group;
	m_Record.m_pStaticParent = branch[254].get();
	EXPECT_EQ( MiniProfilerPlacementTarget( m_Record, MiniProfilerLeafMode::StaticTree ), branch[254].get() );
	m_Record.m_pStaticParent = branch[255].get();
	EXPECT_EQ( MiniProfilerPlacementTarget( m_Record, MiniProfilerLeafMode::StaticTree ), &m_Group );
}
} // namespace
