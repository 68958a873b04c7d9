// What is worked out of a recording without a screen: rows, bars, scale, slow frames.
#include <gmock/gmock.h>

#include "recordings/childtimes.h"
#include "recordings/flamelayout.h"
#include "recordings/flamescale.h"
#include "recordings/framefinder.h"
#include "recordings/noderows.h"
#include "tests/recordings/recordingcorpus.h"
#include "tests/recordings/recordingreaders.h"
#include "tests/recordings/recordingwriter.h"

using testing::ElementsAre;

namespace
{
struct PlainRow
{
	int m_nNode, m_nParentRow, m_nDepth, m_nFirstLeaf;
	friend bool operator==( const PlainRow &, const PlainRow & ) = default;
	friend void PrintTo( const PlainRow &row, std::ostream *pStream )
	{
		*pStream << "{" << row.m_nNode << " below row " << row.m_nParentRow << ", depth " << row.m_nDepth << ", leaf "
				 << row.m_nFirstLeaf << "}";
	}
};

std::vector<PlainRow> RowsOf( const NodeRows &rows )
{
	std::vector<PlainRow> result;
	for ( int32_t i = 0; i < rows.Count(); i++ )
		result.push_back( { rows[i].m_nNode, rows[i].m_nParentRow, rows[i].m_nDepth, rows[i].m_nFirstLeaf } );
	return result;
}

// 0 has 1 and 2; 1 has 3 and 4; 2 has 5. Chains are in the reverse order: 0, 2, 5, 1, 4, 3.
CRecordingWriter SixNodes()
{
	return CRecordingWriter()
		.Header()
		.BeginFrame()
		.Node( 0, "one", 1 )
		.Node( 0, "two", 2 )
		.Node( 1, "three", 3 )
		.Node( 1, "four", 4 )
		.Node( 2, "five", 5 );
}

TEST( NodeRows, ListNodesDepthFirstInTheOrderOfTheirChains )
{
	const NodeRows rows( *Parse( SixNodes().EndFrame() ) );
	EXPECT_THAT( RowsOf( rows ), ElementsAre( PlainRow{ 0, -1, 0, 0 }, PlainRow{ 2, 0, 1, 0 }, PlainRow{ 5, 1, 2, 0 },
									 PlainRow{ 1, 0, 1, 1 }, PlainRow{ 4, 3, 2, 1 }, PlainRow{ 3, 3, 2, 2 } ) );
	EXPECT_EQ( rows.RowOf( 4 ), 4 );
	EXPECT_EQ( rows.RowOf( 6 ), -1 );
	EXPECT_EQ( rows.RowOf( -1 ), -1 );
	EXPECT_EQ( rows.GetLeftOutCount(), 0 );
}

TEST( NodeRows, ANodeThatIsItsOwnAncestorIsNotDescendedIntoAgain )
{
	const NodeRows self( *Parse( CRecordingWriter().Header().BeginFrame().Node( 0, "self", 0 ).EndFrame() ) );
	EXPECT_THAT( RowsOf( self ), ElementsAre( PlainRow{ 0, -1, 0, 0 }, PlainRow{ 0, 0, 1, 0 } ) );
	// 1 moves below its grandchild 3: 0, 1, 2, 3, 1.
	const NodeRows moved( *Parse( CRecordingWriter()
									  .Header()
									  .BeginFrame()
									  .Node( 0, "a", 1 )
									  .Node( 1, "b", 2 )
									  .Node( 2, "c", 3 )
									  .Node( 3, "a", 1 )
									  .EndFrame() ) );
	EXPECT_THAT( RowsOf( moved ), ElementsAre( PlainRow{ 0, -1, 0, 0 }, PlainRow{ 1, 0, 1, 0 }, PlainRow{ 2, 1, 2, 0 },
									  PlainRow{ 3, 2, 3, 0 }, PlainRow{ 1, 3, 4, 0 } ) );
}

TEST( NodeRows, ANodeThatIsReachedTwiceHasTwoRows )
{
	const NodeRows rows( *Parse( SixNodes().Node( 2, "three", 3 ).EndFrame() ) );
	EXPECT_THAT( RowsOf( rows ),
		ElementsAre( PlainRow{ 0, -1, 0, 0 }, PlainRow{ 2, 0, 1, 0 }, PlainRow{ 3, 1, 2, 0 }, PlainRow{ 5, 1, 2, 1 },
			PlainRow{ 1, 0, 1, 2 }, PlainRow{ 4, 4, 2, 2 }, PlainRow{ 3, 4, 2, 3 }, PlainRow{ 5, 4, 2, 4 } ) );
	EXPECT_EQ( rows[rows.RowOf( 3 )].m_nNode, 3 );
	EXPECT_EQ( rows[rows[rows.RowOf( 3 )].m_nEarlierRowOfNode].m_nNode, 3 );
	EXPECT_EQ( rows[rows[rows.RowOf( 3 )].m_nEarlierRowOfNode].m_nEarlierRowOfNode, -1 );
}

TEST( NodeRows, LevelsAreLimitedAndWhatIsLeftOutIsCounted )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int32_t i = 1; i <= 5000; i++ )
		writer.Node( i - 1, "", i );
	const NodeRows rows( *Parse( writer.EndFrame() ) );
	EXPECT_EQ( rows.Count(), 1 + 4096 );
	EXPECT_EQ( rows[rows.Count() - 1].m_nDepth, 4096 );
	EXPECT_EQ( rows.GetLeftOutCount(), 5000 - 4096 );
}

// Each of many nodes at the deepest level has the same long chain of children.
TEST( NodeRows, AChainThatIsLeftOutAtManyPlacesIsWalkedOnce )
{
	constexpr int32_t LEVELS = 4096;
	constexpr int32_t PARENTS = 200000;
	constexpr int32_t CHILDREN = 200000;
	constexpr int32_t FIRST_PARENT = LEVELS;
	constexpr int32_t SHARED = FIRST_PARENT + PARENTS;
	constexpr int32_t LAST_PARENT = SHARED + 1;
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int32_t i = 1; i < LEVELS; i++ )
		writer.Node( i - 1, "", i );
	for ( int32_t i = 0; i < PARENTS; i++ )
		writer.Node( LEVELS - 1, "", FIRST_PARENT + i ).Node( FIRST_PARENT + i, "", SHARED );
	for ( int32_t i = 0; i < CHILDREN; i++ )
		writer.Node( LAST_PARENT, "", LAST_PARENT + 1 + i );
	writer.Node( LAST_PARENT, "", SHARED ); // so all chains that begin with it go on
	const CRefPtr<CKestoFile> pFile = Parse( writer.EndFrame() );
	const NodeRows rows( *pFile );
	EXPECT_EQ( rows.Count(), LEVELS + PARENTS );
	EXPECT_EQ( rows.GetLeftOutCount(), 1 + CHILDREN );

	CChildTimes childTimes( *pFile, *pFile->GetFrame( 0 ) );
	for ( int32_t i = 0; i < rows.Count(); i++ )
		ASSERT_EQ( childTimes.Of( rows[i].m_nNode ), 0 );
}

TEST( ChildTimes, AreWhatExclusiveTimesLack )
{
	for ( const CorpusRecording &recording : MakeRecordingCorpus() )
	{
		CKestoMemoryReader reader( recording.m_Bytes );
		const CRefPtr<CKestoFile> pFile = ParseRecording( reader );
		for ( int i = 0; i < std::min( pFile->GetFrameCount(), 5 ); i++ )
		{
			CKestoFile::CTickTimings &frame = *pFile->GetFrame( i );
			CChildTimes childTimes( *pFile, frame );
			for ( int32_t nNode = -1; nNode <= std::min( pFile->GetNodeCount(), 5000 ); nNode++ )
			{
				const auto nOwn = static_cast<int32_t>(
					frame.PeekEntry( nNode ).m_nTime - static_cast<uint32_t>( childTimes.Of( nNode ) ) );
				ASSERT_EQ( nOwn, pFile->GetExclusiveTime( frame, nNode ) ) << recording.m_Name << ", node " << nNode;
			}
		}
	}
}

TEST( NodeRows, RowsAreLimitedAndWhatIsLeftOutIsCounted )
{
	const CRefPtr<CKestoFile> pFile = Parse( SixNodes().EndFrame() );
	for ( int nRows = 1; nRows <= 6; nRows++ )
	{
		const NodeRows rows( *pFile, { 4096, nRows } );
		EXPECT_EQ( rows.Count(), nRows );
		EXPECT_EQ( rows.GetLeftOutCount(), 6 - nRows );
	}
}

TEST( NodeRows, AMillionRowsAreShown )
{
	constexpr int32_t NODES = 1048576;
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int32_t i = 1; i < NODES; i++ )
		writer.Node( i / 2, "", i );
	const NodeRows rows( *Parse( writer.EndFrame() ) );
	EXPECT_EQ( rows.Count(), 1000000 );
	EXPECT_EQ( rows.GetLeftOutCount(), NODES - 1000000 );
}

// Each node hangs below both nodes of the level above, so that there are 2^60 ways to the last level.
TEST( NodeRows, ChainsThatMultiplyEndAtTheLimit )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int32_t nLevel = 0; nLevel < 60; nLevel++ )
		for ( const int32_t nChild : { 2 * nLevel + 1, 2 * nLevel + 2 } )
			writer.Node( std::max( 2 * nLevel - 1, 0 ), "", nChild ).Node( 2 * nLevel, "", nChild );
	const NodeRows rows( *Parse( writer.EndFrame() ), { 4096, 10000 } );
	EXPECT_LE( rows.Count(), 10000 );
	EXPECT_LE( rows.GetLeftOutCount(), 121 );
}

TEST( FlameLayout, BarsAreAsWideAsTheirTimeAndAtLeastAsTheirChildren )
{
	// In the order 0, 2, 5, 1, 4, 3.
	const CRefPtr<CKestoFile> pFile = Parse( SixNodes()
												 .BeginTimings()
												 .Entry( 1, 100 )
												 .Entry( 1, 10 )
												 .Entry( 1, 30 ) // wider than its parent
												 .Entry( 1, 60 )
												 .Entry( 1, 25 )
												 .Entry( 1, 5 )
												 .EndFrame() );
	std::vector<FlameBar> bars;
	LayoutFlameGraph( bars, NodeRows( *pFile ), *pFile->GetFrame( 0 ) );
	EXPECT_THAT( bars, ElementsAre( FlameBar{ 0, 400 }, FlameBar{ 0, 120 }, FlameBar{ 0, 120 }, FlameBar{ 120, 240 },
						   FlameBar{ 120, 100 }, FlameBar{ 220, 20 } ) );
}

TEST( FlameLayout, ANegativeTimeIsNarrowerThanNoChildren )
{
	const CRefPtr<CKestoFile> pFile =
		Parse( CRecordingWriter().Header().BeginFrame().BeginTimings().Entry( 1, 0x3FFFFFFF ).EndFrame() );
	std::vector<FlameBar> bars;
	LayoutFlameGraph( bars, NodeRows( *pFile ), *pFile->GetFrame( 0 ) );
	EXPECT_THAT( bars, ElementsAre( FlameBar{ 0, 0 } ) );
}

TEST( FlameLayout, ColoursAreACheckerboardOfDepthAndLeaf )
{
	const auto colour = []( int nDepth, int nLeaf )
	{
		return FlameColourIndex(
			{ .m_nNode = 1, .m_nParentRow = 0, .m_nDepth = nDepth, .m_nFirstLeaf = nLeaf, .m_nEarlierRowOfNode = -1 } );
	};
	EXPECT_EQ( colour( 2, 4 ), 0 );
	EXPECT_EQ( colour( 2, 5 ), 1 );
	EXPECT_EQ( colour( 1, 4 ), 2 );
	EXPECT_EQ( colour( 1, 5 ), 3 );
	EXPECT_EQ( colour( 0, 0 ), 0 );
}

TEST( FlameScale, ASixtiethOfASecondShows17MillisecondsAndBudgetsFrom32 )
{
	FlameScale scale;
	scale.SetFrameTime( 16666 );
	EXPECT_EQ( scale.GetMilliseconds(), 17 );
	EXPECT_EQ( scale.GetExponent(), 5 );
	EXPECT_FLOAT_EQ( FlameScale::BudgetOf( 5 ), 31250.0f );
	FlameScale unset;
	unset.SetDefault();
	EXPECT_EQ( unset.GetMilliseconds(), 17 );
	EXPECT_EQ( unset.GetExponent(), 5 );
}

TEST( FlameScale, NeverShrinksByASingleMillisecond )
{
	FlameScale scale;
	scale.SetFrameTime( 20000 );
	EXPECT_EQ( scale.GetMilliseconds(), 20 );
	scale.SetFrameTime( 19000 );
	EXPECT_EQ( scale.GetMilliseconds(), 20 );
	scale.SetFrameTime( 18000 );
	EXPECT_EQ( scale.GetMilliseconds(), 18 );
	scale.SetFrameTime( 19000 );
	EXPECT_EQ( scale.GetMilliseconds(), 19 ) << "but grows by one";
}

TEST( FlameScale, RoundsUpFromAQuarterOfAMillisecond )
{
	FlameScale scale;
	scale.SetFrameTime( 5249 );
	EXPECT_EQ( scale.GetMilliseconds(), 5 );
	scale.SetFrameTime( 5250 );
	EXPECT_EQ( scale.GetMilliseconds(), 6 );
	scale.SetFrameTime( 1 );
	EXPECT_EQ( scale.GetMilliseconds(), 1 );
	scale.SetFrameTime( 2147483647 );
	EXPECT_EQ( scale.GetMilliseconds(), 2147484 );
	EXPECT_EQ( scale.GetExponent(), 0 ) << "one frame in half an hour counts as one per second";
}

TEST( FlameScale, BudgetsNeverMoveUpByASinglePowerOfTwo )
{
	FlameScale scale;             // exponent 1
	scale.SetFrameTime( 200000 ); // 5 fps: 2
	EXPECT_EQ( scale.GetExponent(), 1 );
	scale.SetFrameTime( 100000 ); // 10 fps: 3
	EXPECT_EQ( scale.GetExponent(), 3 );
	scale.SetFrameTime( 200000 );
	EXPECT_EQ( scale.GetExponent(), 2 ) << "but down";
}

TEST( FlameScale, AFrameWithoutTimeShowsOneMillisecondAndKeepsTheExponent )
{
	for ( const int32_t nTime : { 0, -1, -2147483647 - 1 } )
	{
		FlameScale scale;
		scale.SetFrameTime( 2000 );
		ASSERT_EQ( scale.GetExponent(), 8 );
		scale.SetFrameTime( nTime );
		EXPECT_EQ( scale.GetMilliseconds(), 1 );
		EXPECT_EQ( scale.GetExponent(), 8 );
	}
}

CRefPtr<CKestoFile> FramesOf( const std::vector<uint32_t> &times )
{
	CRecordingWriter writer = CRecordingWriter().Header();
	for ( const uint32_t nTime : times )
		writer.BeginFrame().BeginTimings().Entry( 1, nTime ).EndFrame();
	return Parse( writer );
}

TEST( FrameFinder, SlowFramesTakeMoreThanTwiceTheMedian )
{
	const FrameFinder finder( *FramesOf( { 10, 21, 10, 20, 10, 50, 9 } ) );
	EXPECT_EQ( finder.GetMedian(), 40.0 );
	EXPECT_EQ( finder.FindNextSlow( -1 ), 1 );
	EXPECT_EQ( finder.FindNextSlow( 1 ), 5 ) << "exactly twice is not slow";
	EXPECT_EQ( finder.FindNextSlow( 5 ), -1 );
	EXPECT_EQ( finder.FindPreviousSlow( 5 ), 1 );
	EXPECT_EQ( finder.FindPreviousSlow( 1 ), -1 );
	EXPECT_EQ( finder.FindSlowest(), 5 );
}

TEST( FrameFinder, TheMedianOfAnEvenNumberIsBetweenTheMiddleTwo )
{
	EXPECT_EQ( FrameFinder( *FramesOf( { 4, 1, 3, 2 } ) ).GetMedian(), 4 * 2.5 );
	EXPECT_EQ( FrameFinder( *FramesOf( {} ) ).GetMedian(), 0.0 );
	EXPECT_EQ( FrameFinder( *FramesOf( {} ) ).FindSlowest(), -1 );
	EXPECT_EQ( FrameFinder( *FramesOf( { 7, 7 } ) ).FindSlowest(), 0 );
}
} // namespace
