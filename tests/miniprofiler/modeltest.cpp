#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <set>

#include "miniprofiler/miniprofilermodel.h"
#include "support/logguard.h"
#include "support/randomseed.h"

namespace
{
using testing::ElementsAre;
using testing::IsEmpty;

class MiniProfilerModel : public testing::Test
{
protected:
	CQMiniProfilerRecord &Name( uint64_t nId, std::string_view name, std::string_view description = "" )
	{
		CQMiniProfilerRecord &record = *m_Model.FindOrCreateRecord( nId, false );
		m_Model.SetRecordName( record, name, description );
		return record;
	}
	// A description with all five lines.
	static std::string Lines( const std::string &budget, const std::string &function, const std::string &file,
		const std::string &project = "engine" )
	{
		return budget + "\n" + function + "\n" + file + "\n1\n" + project + "\n";
	}
	QStringList GroupNames() const
	{
		QStringList names;
		for ( const auto &pGroup : m_Model.Groups() )
			names << pGroup->Name();
		return names;
	}
	void Group( MiniProfilerGroupMode mode ) { m_Model.SetHierarchy( mode, MiniProfilerLeafMode::None ); }

	CMiniProfilerModel m_Model{ 1000000 };
};

TEST_F( MiniProfilerModel, IdZeroHasNoRecord )
{
	EXPECT_EQ( m_Model.FindOrCreateRecord( 0, true ), nullptr );
	EXPECT_THAT( m_Model.Records(), IsEmpty() );
	EXPECT_EQ( m_Model.CostRecord().Id(), 0u );
	EXPECT_EQ( m_Model.CostRecord().Name(), "Kesto cost" );
	EXPECT_THAT( m_Model.Records(), IsEmpty() );
}

TEST_F( MiniProfilerModel, ANewIdIsWantedOnceAndFoundAgain )
{
	CQMiniProfilerRecord *pFirst = m_Model.FindOrCreateRecord( 8, true );
	EXPECT_EQ( m_Model.FindOrCreateRecord( 8, true ), pFirst );
	EXPECT_EQ( m_Model.History().Count( pFirst->HistoryIndex() ), 1u ); // the second time advances nothing
	CQMiniProfilerRecord *pSecond = m_Model.FindOrCreateRecord( 16, false );
	EXPECT_EQ( m_Model.History().Count( pSecond->HistoryIndex() ), 0u );
	EXPECT_THAT( m_Model.TakeWantedIds(), ElementsAre( 8u, 16u ) );
	EXPECT_THAT( m_Model.TakeWantedIds(), IsEmpty() );
}

TEST_F( MiniProfilerModel, TwoRecordsOfOneNameAreBothFlagged )
{
	CQMiniProfilerRecord &first = Name( 1, "Update" );
	CQMiniProfilerRecord &other = Name( 2, "Draw" );
	EXPECT_FALSE( first.HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
	CQMiniProfilerRecord &second = Name( 3, "Update" );
	EXPECT_TRUE( first.HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
	EXPECT_TRUE( second.HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
	EXPECT_FALSE( other.HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
}

TEST_F( MiniProfilerModel, ARecordNamedAgainIsNoDuplicateOfItself )
{
	CQMiniProfilerRecord &record = Name( 1, "Update" );
	Name( 1, "Update" );
	EXPECT_FALSE( record.HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
	EXPECT_TRUE( Name( 2, "Update" ).HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
	EXPECT_TRUE( record.HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
}

TEST_F( MiniProfilerModel, ARecordThatIsRenamedIsNoDuplicateOfItsOldName )
{
	CQMiniProfilerRecord &renamed = Name( 1, "Update" );
	Name( 1, "Draw" );
	EXPECT_FALSE( Name( 2, "Update" ).HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
	EXPECT_FALSE( renamed.HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
	EXPECT_TRUE( Name( 3, "Draw" ).HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
	EXPECT_TRUE( renamed.HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
}

TEST_F( MiniProfilerModel, ANameStaysTakenWhileAnyRecordHasIt )
{
	Name( 1, "" ); // an empty name is one, too
	Name( 2, "" );
	CQMiniProfilerRecord &first = Name( 3, "Update" );
	Name( 4, "Update" );
	Name( 3, "Draw" );
	EXPECT_TRUE( Name( 5, "Update" ).HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
	first.SetFlag( MINIPROFILER_ROW_DUPLICATE, false );
	Name( 4, "a" );
	Name( 5, "b" );
	EXPECT_FALSE( Name( 6, "Update" ).HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
	EXPECT_FALSE( first.HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
	EXPECT_TRUE( Name( 2, "" ).HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
}

TEST_F( MiniProfilerModel, ColoursOfVeryManyBudgetsAreNotKept )
{
	for ( int i = 0; i < 65536; i++ )
		m_Model.SetBudgetColour( QString::number( i ), Qt::red );
	m_Model.SetBudgetColour( "one more", Qt::red );
	m_Model.SetBudgetColour( "7", Qt::blue );
	EXPECT_FALSE( m_Model.BudgetColour( "one more" ).isValid() );
	EXPECT_EQ( m_Model.BudgetColour( "7" ), QColor( Qt::blue ) );
	EXPECT_EQ( m_Model.BudgetColour( "65535" ), QColor( Qt::red ) );
}

TEST_F( MiniProfilerModel, ARecordTakesTheColourOfItsBudget )
{
	m_Model.SetBudgetColour( "Physics", Qt::red );
	CQMiniProfilerRecord &record = Name( 1, "Step", Lines( "Physics", "f", "x" ) );
	EXPECT_TRUE( record.HasFlag( MINIPROFILER_ROW_COLOURED ) );
	EXPECT_EQ( record.m_Colour, QColor( Qt::red ) );
	EXPECT_FALSE( Name( 2, "Other", Lines( "Audio", "f", "x" ) ).HasFlag( MINIPROFILER_ROW_COLOURED ) );
	m_Model.SetBudgetColour( "Physics", Qt::blue );
	EXPECT_EQ( m_Model.BudgetColour( "Physics" ), QColor( Qt::blue ) );
}

TEST_F( MiniProfilerModel, TheCommonPrefixShrinksWithEverySourceFile )
{
	Name( 1, "a", Lines( "B", "f", "C:\\Src\\Engine\\A.cpp" ) );
	EXPECT_EQ( m_Model.CommonPrefix(), "c:/src/engine/a.cpp" );
	Name( 2, "b", Lines( "B", "f", "C:\\Src\\Engine\\B.cpp" ) );
	EXPECT_EQ( m_Model.CommonPrefix(), "c:/src/engine/" );
	Name( 3, "c", "B\nf\n" );              // two lines
	Name( 4, "d", Lines( "B", "f", "" ) ); // an empty one
	EXPECT_EQ( m_Model.CommonPrefix(), "c:/src/engine/" );
	Name( 5, "e", Lines( "B", "f", "c:/src/tool.cpp" ) );
	EXPECT_EQ( m_Model.CommonPrefix(), "c:/src/" );
}

TEST_F( MiniProfilerModel, TheCommonPrefixBeginsAnewWhenNothingIsLeftOfIt )
{
	Name( 1, "a", Lines( "B", "f", "c:/a.cpp" ) );
	Name( 2, "b", Lines( "B", "f", "/home/b.cpp" ) );
	EXPECT_EQ( m_Model.CommonPrefix(), "" );
	Name( 3, "c", Lines( "B", "f", "/home/c.cpp" ) );
	EXPECT_EQ( m_Model.CommonPrefix(), "/home/c.cpp" );
}

TEST_F( MiniProfilerModel, GroupsByBudget )
{
	Name( 1, "a", Lines( "Physics", "f", "x" ) );
	Name( 2, "b", Lines( "Audio", "f", "x" ) );
	Name( 3, "c", Lines( "Physics", "f", "x" ) );
	Name( 4, "d", Lines( "", "f", "x" ) );
	CQMiniProfilerRecord &bare = Name( 5, "e" );
	Group( MiniProfilerGroupMode::Budget );
	EXPECT_EQ( GroupNames(), ( QStringList{ "Physics", "Audio" } ) );
	EXPECT_EQ( m_Model.Records()[0]->m_pGroup, m_Model.FindGroup( "Physics" ) );
	EXPECT_EQ( m_Model.Records()[2]->m_pTreeParent, m_Model.FindGroup( "Physics" ) );
	EXPECT_EQ( m_Model.Records()[3]->m_pGroup, nullptr ); // an empty line gives no group
	EXPECT_EQ( bare.m_pGroup, nullptr );                  // nor does a missing one
}

TEST_F( MiniProfilerModel, GroupsByFunctionShareTheirClass )
{
	Name( 1, "a", Lines( "B", "CFoo::Bar", "x" ) );
	Name( 2, "b", Lines( "B", "CFoo::Baz", "x" ) );
	Group( MiniProfilerGroupMode::Function );
	EXPECT_EQ( GroupNames(), ( QStringList{ "CFoo", "::Bar", "::Baz" } ) );
	const CMiniProfilerGroup *pClass = m_Model.FindGroup( "CFoo" );
	EXPECT_EQ( pClass->Parent(), nullptr );
	EXPECT_EQ( m_Model.FindGroup( "CFoo::Bar" )->Parent(), pClass );
	EXPECT_EQ( m_Model.FindGroup( "CFoo::Baz" )->m_pTreeParent, pClass );
	EXPECT_EQ( m_Model.Records()[1]->m_pGroup, m_Model.FindGroup( "CFoo::Baz" ) );
}

TEST_F( MiniProfilerModel, GroupsByFileWithoutTheCommonPrefix )
{
	Name( 1, "a", Lines( "B", "f", "/Src/Engine/A.cpp" ) );
	Name( 2, "b", Lines( "B", "f", "/Src/Game/B.cpp" ) );
	Group( MiniProfilerGroupMode::File );
	EXPECT_EQ( GroupNames(), ( QStringList{ "engine", "/a.cpp", "game", "/b.cpp" } ) );
}

TEST_F( MiniProfilerModel, GroupsByProject )
{
	Name( 1, "a", Lines( "B", "f", "x", "demo/engine" ) );
	Name( 2, "b", "B\nf\nx\n" ); // no such line
	Group( MiniProfilerGroupMode::Project );
	EXPECT_EQ( GroupNames(), ( QStringList{ "demo", "/engine" } ) );
	EXPECT_EQ( m_Model.Records()[1]->m_pGroup, nullptr );
}

TEST_F( MiniProfilerModel, FileGroupsCanLieBelowTheirBudget )
{
	Name( 1, "a", Lines( "Physics", "f", "r/x/a" ) );
	Name( 2, "b", Lines( "Audio", "f", "r/y/b" ) );
	Name( 3, "c", Lines( "Audio", "f", "" ) );
	Group( MiniProfilerGroupMode::BudgetAndFile );
	EXPECT_EQ( m_Model.FindGroup( "x" )->Parent(), m_Model.FindGroup( "Physics" ) );
	EXPECT_EQ( m_Model.FindGroup( "y/b" )->Parent(), m_Model.FindGroup( "y" ) );
	EXPECT_EQ( m_Model.Records()[2]->m_pGroup, nullptr ); // no file: no group, not the budget's

	// A group is where it was first needed, also for files of another budget.
	Name( 4, "d", Lines( "Audio", "f", "r/x/d" ) );
	m_Model.RebuildHierarchy();
	EXPECT_EQ( m_Model.FindGroup( "x" )->Parent(), m_Model.FindGroup( "Physics" ) );
	EXPECT_EQ( m_Model.FindGroup( "x/d" )->Parent(), m_Model.FindGroup( "x" ) );
}

TEST_F( MiniProfilerModel, AGroupNamedLikeABudgetTakesItsColour )
{
	m_Model.SetBudgetColour( "Physics", Qt::green );
	Name( 1, "a", Lines( "Physics", "f", "x" ) );
	Group( MiniProfilerGroupMode::Budget );
	const CMiniProfilerGroup *pGroup = m_Model.FindGroup( "Physics" );
	EXPECT_TRUE( pGroup->HasFlag( MINIPROFILER_ROW_COLOURED ) );
	EXPECT_EQ( pGroup->m_Colour, QColor( Qt::green ) );
}

TEST_F( MiniProfilerModel, SwitchingTheModeRemovesGroupsNobodyNeeds )
{
	Name( 1, "a", Lines( "Physics", "CFoo::Bar", "x" ) );
	Name( 2, "b", Lines( "CFoo", "CFoo::Bar", "x" ) );
	Group( MiniProfilerGroupMode::Budget );
	Group( MiniProfilerGroupMode::Function );
	EXPECT_EQ( m_Model.FindGroup( "Physics" ), nullptr );
	EXPECT_EQ( GroupNames(), ( QStringList{ "CFoo", "::Bar" } ) ); // the key "CFoo" is used again
	for ( size_t i = 0; i < m_Model.Groups().size(); i++ )
		EXPECT_EQ( m_Model.Groups()[i]->m_nIndex, static_cast<int32_t>( i ) );
	Group( MiniProfilerGroupMode::None );
	EXPECT_THAT( m_Model.Groups(), IsEmpty() );
	EXPECT_EQ( m_Model.FindGroup( "CFoo" ), nullptr );
	EXPECT_EQ( m_Model.Records()[0]->m_pTreeParent, nullptr );
}

TEST_F( MiniProfilerModel, GroupsSumTheirMembersFromTheInnermostOut )
{
	m_Model.BeginData( true );
	const MiniProfilerSample first{ 100, 1 }, second{ 200, 4 };
	m_Model.AddEntry( 1, 0, &first );
	m_Model.AddEntry( 2, 0, &second );
	Name( 1, "a", Lines( "B", "CFoo::Bar", "x" ) );
	Name( 2, "b", Lines( "B", "CFoo::Baz", "x" ) );
	Group( MiniProfilerGroupMode::Function );
	m_Model.ComputeStatistics( true );
	const CMiniProfilerGroup &group = *m_Model.FindGroup( "CFoo" );
	EXPECT_EQ( group.m_nMembers, 2 );
	EXPECT_THAT( group.m_Cur, ElementsAre( 0, 5, 300, 0, 150, 0 ) );
	m_Model.ComputeStatistics( true ); // sums begin anew every time
	EXPECT_EQ( group.m_Cur[MINIPROFILER_CALLS], 5.0f );
	EXPECT_EQ( m_Model.FindGroup( "CFoo::Bar" )->m_nMembers, 1 );
}

TEST_F( MiniProfilerModel, BeyondTheLastGroupRecordsAreFiledUnderTheInnermostThereIs )
{
	constexpr size_t LEVELS = 64;
	constexpr size_t RECORDS = 200;
	std::string inner;
	for ( size_t i = 1; i < LEVELS; i++ )
		inner += "::x";
	size_t nBytes = 0;
	const auto Add = [&]( uint64_t nId, const std::string &function ) -> CQMiniProfilerRecord &
	{
		const std::string description = Lines( "B", function, "x" );
		nBytes += description.size();
		return Name( nId, "a", description );
	};
	for ( size_t i = 0; i < RECORDS; i++ )
		Add( i + 1, "C" + std::to_string( i ) + inner );
	CQMiniProfilerRecord &deep = Add( 1000000, "C0::x::y" );
	CExpectWarnings warnings;
	Group( MiniProfilerGroupMode::Function );
	const size_t nMax = 8192 + nBytes / 40;
	ASSERT_LT( nMax, RECORDS * LEVELS );
	EXPECT_EQ( m_Model.Groups().size(), nMax );
	EXPECT_EQ( m_Model.Records()[RECORDS - 1]->m_pGroup, nullptr );
	EXPECT_EQ( deep.m_pGroup, m_Model.FindGroup( "C0::x" ) );
	EXPECT_EQ( warnings.Take().size(), 1u );

	// More is known of a record, and there is room for more groups.
	Name( 1, "a", Lines( "B", "C0", std::string( 400, 'x' ) ) );
	m_Model.RebuildHierarchy();
	EXPECT_GT( m_Model.Groups().size(), nMax );
	EXPECT_THAT( warnings.Take(), IsEmpty() );

	Group( MiniProfilerGroupMode::Budget ); // makes room
	EXPECT_EQ( GroupNames(), QStringList{ "B" } );
	EXPECT_THAT( warnings.Take(), IsEmpty() );
}

// The levels of records above each other that TakeChanges leaves.
class MiniProfilerBranches
	: public MiniProfilerModel
	, public testing::WithParamInterface<bool>
{
};

TEST_P( MiniProfilerBranches, AreCutWhereTheyGetTooLong )
{
	constexpr uint64_t RECORDS = 100000;
	for ( uint64_t nId = 1; nId < RECORDS; nId++ )
		GetParam() ? m_Model.AddEntry( nId, nId + 1, nullptr ) : m_Model.AddEntry( nId + 1, nId, nullptr );
	m_Model.SetHierarchy( MiniProfilerGroupMode::None, MiniProfilerLeafMode::DynamicTree );
	m_Model.TakeChanges();
	size_t nTops = 0, nDeepest = 0;
	for ( const auto &pRecord : m_Model.Records() )
	{
		size_t nLevels = 0;
		for ( const CMiniProfilerRow *pRow = pRecord.get(); pRow; pRow = pRow->m_pTreeParent )
			ASSERT_LE( ++nLevels, 256u );
		nTops += !pRecord->m_pTreeParent;
		nDeepest = std::max( nDeepest, nLevels );
	}
	EXPECT_EQ( nDeepest, 256u );
	EXPECT_EQ( nTops, ( RECORDS + 255 ) / 256 ); // and nowhere else
}

INSTANTIATE_TEST_SUITE_P( UpAndDown, MiniProfilerBranches, testing::Bool() );

TEST_F( MiniProfilerModel, RebuildingFollowsNewCallersButKeepsEmptyGroups )
{
	CQMiniProfilerRecord &record = Name( 1, "a", Lines( "B", "f", "x" ) );
	CQMiniProfilerRecord &caller = Name( 2, "b", Lines( "B", "f", "x" ) );
	m_Model.SetHierarchy( MiniProfilerGroupMode::Budget, MiniProfilerLeafMode::DynamicTree );
	EXPECT_EQ( record.m_pTreeParent, m_Model.FindGroup( "B" ) );
	m_Model.AddEntry( 1, 2, nullptr );
	EXPECT_EQ( record.m_pTreeParent, m_Model.FindGroup( "B" ) );
	m_Model.RebuildHierarchy();
	EXPECT_EQ( record.m_pTreeParent, &caller );
	Name( 1, "a", Lines( "C", "f", "x" ) );
	Name( 2, "b", Lines( "C", "f", "x" ) );
	m_Model.RebuildHierarchy();
	EXPECT_NE( m_Model.FindGroup( "B" ), nullptr );
	EXPECT_EQ( record.m_pTreeParent, &caller );
}

TEST_F( MiniProfilerModel, ClearForgetsEverythingButColoursCostsAndTheFrequency )
{
	m_Model.SetBudgetColour( "Physics", Qt::red );
	m_Model.SetTickFrequency( 5 );
	m_Model.BeginData( true );
	m_Model.AddEntry( 1, 2, nullptr );
	m_Model.EndChunk( 99, 10 );
	Name( 1, "a", Lines( "Physics", "f", "x" ) );
	Group( MiniProfilerGroupMode::Budget );
	m_Model.Clear();
	EXPECT_THAT( m_Model.Records(), IsEmpty() );
	EXPECT_THAT( m_Model.Groups(), IsEmpty() );
	EXPECT_THAT( m_Model.TakeWantedIds(), IsEmpty() );
	EXPECT_THAT( m_Model.TakeChanges(), IsEmpty() );
	EXPECT_EQ( m_Model.CommonPrefix(), "" );
	EXPECT_EQ( m_Model.History().RecordCount(), 0u );
	EXPECT_EQ( m_Model.CostHistory().At( 0 ), 99u );
	EXPECT_EQ( m_Model.TickFrequency(), 5u );
	EXPECT_EQ( m_Model.BudgetColour( "Physics" ), QColor( Qt::red ) );

	// The mode stays too, so what comes next is filed as before.
	Name( 1, "a", Lines( "Physics", "f", "x" ) );
	EXPECT_FALSE( m_Model.Records()[0]->HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
	EXPECT_EQ( GroupNames(), QStringList{ "Physics" } );
}

TEST_F( MiniProfilerModel, IdsBeyondTheLimitAreIgnoredWithOneWarning )
{
	CExpectWarnings warnings;
	for ( uint64_t nId = 1; nId <= CMiniProfilerModel::MAX_RECORDS; nId++ )
		ASSERT_NE( m_Model.FindOrCreateRecord( nId, false ), nullptr );
	EXPECT_THAT( warnings.Take(), IsEmpty() );
	EXPECT_EQ( m_Model.FindOrCreateRecord( 1000000, true ), nullptr );
	EXPECT_EQ( m_Model.FindOrCreateRecord( 1000001, true ), nullptr );
	EXPECT_EQ( m_Model.FindOrCreateRecord( 1000000, true ), nullptr ); // counted once
	m_Model.AddEntry( 5, 1000002, nullptr );
	EXPECT_EQ( m_Model.Records()[4]->m_pCaller, nullptr );
	EXPECT_EQ( m_Model.IgnoredIds(), 3u );
	EXPECT_EQ( warnings.Take().size(), 1u );
	EXPECT_NE( m_Model.FindOrCreateRecord( 1, false ), nullptr );
	EXPECT_EQ( m_Model.TakeWantedIds().size(), CMiniProfilerModel::MAX_RECORDS );

	m_Model.Clear();
	EXPECT_EQ( m_Model.IgnoredIds(), 0u );
	EXPECT_NE( m_Model.FindOrCreateRecord( 1000000, true ), nullptr );
}

TEST_F( MiniProfilerModel, ChangesNameParentsBeforeTheirChildren )
{
	CQMiniProfilerRecord &record = Name( 1, "a", Lines( "B", "x::y", "f" ) );
	EXPECT_THAT( m_Model.TakeChanges(), ElementsAre( &record ) );
	record.m_nChanges = 0;
	Group( MiniProfilerGroupMode::Function );
	const auto changes = m_Model.TakeChanges();
	EXPECT_THAT( changes, ElementsAre( m_Model.Groups()[0].get(), m_Model.Groups()[1].get(), &record ) );
	EXPECT_TRUE( record.m_nChanges & MINIPROFILER_ROW_MOVED );
	EXPECT_FALSE( record.m_nChanges & MINIPROFILER_ROW_RENAMED );
}

// The dumb model of places: maps by id, and the rule once more in its own words.
TEST_F( MiniProfilerModel, PlacesRecordsAsAPlainModelDoesUnderRandomParentsAndLoops )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	constexpr uint64_t RECORDS = 40;
	const auto AnyId = [&] { return random() % RECORDS + 1; };

	std::map<uint64_t, uint64_t> staticParents, callers, parents; // 0 is none; of places: the group
	std::map<uint64_t, std::string> budgets;
	for ( uint64_t nId = 1; nId <= RECORDS; nId++ )
	{
		budgets[nId] = "Budget" + std::to_string( random() % 3 );
		Name( nId, "r" + std::to_string( nId ), budgets[nId] + "\n" );
	}
	for ( int nRound = 0; nRound < 60; nRound++ )
	{
		for ( int i = 0; i < 10; i++ )
		{
			const uint64_t nId = AnyId(), nParent = AnyId();
			if ( random() % 2 == 0 )
			{
				callers[nId] = nParent;
				m_Model.AddEntry( nId, nParent, nullptr );
			}
			else
			{
				staticParents[nId] = nParent;
				m_Model.FindOrCreateRecord( nId, false )->m_pStaticParent =
					m_Model.FindOrCreateRecord( nParent, false );
			}
		}
		const bool bGrouped = random() % 2 == 0;
		const int nLeafMode = static_cast<int>( random() % 3 );
		m_Model.SetHierarchy( bGrouped ? MiniProfilerGroupMode::Budget : MiniProfilerGroupMode::None,
			MiniProfilerLeafModeOf( nLeafMode ) );
		for ( uint64_t nId = 1; nId <= RECORDS; nId++ )
		{
			uint64_t nTarget = nLeafMode == 1 ? staticParents[nId] : nLeafMode == 2 ? callers[nId] : 0;
			if ( nTarget && bGrouped && budgets[nTarget] != budgets[nId] )
				nTarget = 0;
			for ( uint64_t nUp = nTarget; nUp; nUp = parents[nUp] )
				if ( nUp == nId )
				{
					nTarget = 0;
					break;
				}
			parents[nId] = nTarget;
		}
		for ( uint64_t nId = 1; nId <= RECORDS; nId++ )
		{
			const CMiniProfilerRow *pParent = m_Model.FindOrCreateRecord( nId, false )->m_pTreeParent;
			if ( parents[nId] )
				ASSERT_EQ( pParent, m_Model.FindOrCreateRecord( parents[nId], false ) ) << nId;
			else if ( bGrouped )
				ASSERT_EQ( pParent, m_Model.FindGroup( QString::fromStdString( budgets[nId] ) ) ) << nId;
			else
				ASSERT_EQ( pParent, nullptr ) << nId;
		}
	}
}
} // namespace
