#include "views/historycolumns.h"

#include <gtest/gtest.h>

#include <QFontMetrics>
#include <limits>

namespace
{
constexpr uint32_t LARGEST_COUNT = std::numeric_limits<uint32_t>::max(); // one more sample wraps the counter

HistoryColumns Columns( int nVisible, uint32_t nSampleCount )
{
	HistoryColumns columns;
	columns.m_Measures.m_nLabelWidth = 50;
	columns.m_nVisible = nVisible;
	columns.m_nSampleCount = nSampleCount;
	return columns;
}

HistoryColumns ScrolledColumns( int nVisible, uint32_t nSampleCount, uint32_t nFirst )
{
	HistoryColumns columns = Columns( nVisible, nSampleCount );
	columns.m_bScrolled = true;
	columns.m_nFirstSample = nFirst;
	return columns;
}
} // namespace

TEST( HistoryMeasures, ColumnsAreWiderAboveScaleOne )
{
	for ( const float flScale : { 0.5f, 1.0f } )
	{
		const HistoryMeasures measures = HistoryMeasures::Make( BudgetViewStyle::Make( true, flScale ) );
		EXPECT_EQ( measures.m_nBarWidth, 2 );
		EXPECT_EQ( measures.Pitch(), 6 );
	}
	for ( const float flScale : { 1.01f, 2.0f } )
	{
		const HistoryMeasures measures = HistoryMeasures::Make( BudgetViewStyle::Make( true, flScale ) );
		EXPECT_EQ( measures.m_nBarWidth, 4 );
		EXPECT_EQ( measures.Pitch(), 8 );
	}
}

TEST( HistoryMeasures, LabelMarginHoldsTheWidestUsualLabel )
{
	const BudgetViewStyle style = BudgetViewStyle::Make( false, 1.0f );
	EXPECT_EQ( HistoryMeasures::Make( style ).m_nLabelWidth,
		QFontMetrics( style.m_RowFont ).horizontalAdvance( "00.00 fps" ) );
}

TEST( HistoryColumns, AsManyAreVisibleAsFitLeftOfTheLabels )
{
	HistoryMeasures measures;
	measures.m_nLabelWidth = 50;
	EXPECT_EQ( HistoryVisibleColumns( measures, 50 + 6 * 10 ), 10 );
	EXPECT_EQ( HistoryVisibleColumns( measures, 50 + 6 * 10 + 5 ), 10 );
	EXPECT_EQ( HistoryVisibleColumns( measures, 50 + 6 * 11 ), 11 );
	EXPECT_EQ( HistoryVisibleColumns( measures, 50 ), 0 );
	EXPECT_EQ( HistoryVisibleColumns( measures, 10 ), 0 );
	measures.m_nBarWidth = 4;
	EXPECT_EQ( HistoryVisibleColumns( measures, 50 + 8 * 10 + 7 ), 10 );
}

TEST( HistoryColumns, StandOneUnderTheOtherFromTheRightMargin )
{
	const HistoryColumns columns = Columns( 10, 100 );
	const int nWidth = 200;
	EXPECT_EQ( columns.RightEdge( nWidth, 0 ), 200 - 50 - 1 );
	EXPECT_EQ( columns.RightEdge( nWidth, 3 ), 200 - 50 - 1 - 3 * 6 );
	EXPECT_EQ( columns.Centre( nWidth, 0 ), 200 - 3 - 50 - 1 );
	EXPECT_EQ( columns.Centre( nWidth, 9 ), 200 - 3 - 50 - 1 - 9 * 6 );
}

TEST( HistoryColumns, ShowTheNewestSampleUnlessScrolled )
{
	EXPECT_EQ( Columns( 10, 0 ).NewestShown(), 0 );
	EXPECT_EQ( Columns( 10, 1 ).NewestShown(), 0 );
	EXPECT_EQ( Columns( 10, 100 ).NewestShown(), 99 );
	EXPECT_EQ( ScrolledColumns( 10, 100, 90 ).NewestShown(), 99 );
	EXPECT_EQ( ScrolledColumns( 10, 100, 0 ).NewestShown(), 9 );
	EXPECT_EQ( ScrolledColumns( 0, 100, 0 ).NewestShown(), 0 );
}

TEST( HistoryColumns, NeverShowASampleThatWasNotTaken )
{
	// A view that became wider before its scroll bar was updated.
	EXPECT_EQ( ScrolledColumns( 20, 100, 90 ).NewestShown(), 99 );
}

TEST( HistoryColumns, AreFilledAsFarAsThereAreSamples )
{
	EXPECT_EQ( Columns( 10, 0 ).Filled(), 0 );
	EXPECT_EQ( Columns( 10, 3 ).Filled(), 3 );
	EXPECT_EQ( Columns( 10, 10 ).Filled(), 10 );
	EXPECT_EQ( Columns( 10, 1000 ).Filled(), 10 );
	EXPECT_EQ( ScrolledColumns( 10, 100, 0 ).Filled(), 10 );
}

TEST( HistoryColumns, FindTheColumnOfASampleOnScreenOnly )
{
	const HistoryColumns columns = ScrolledColumns( 10, 100, 40 );
	EXPECT_EQ( columns.ColumnOf( 49 ), 0 );
	EXPECT_EQ( columns.ColumnOf( 40 ), 9 );
	EXPECT_EQ( columns.ColumnOf( 39 ), std::nullopt );
	EXPECT_EQ( columns.ColumnOf( 50 ), std::nullopt );
	EXPECT_EQ( Columns( 10, 0 ).ColumnOf( 0 ), std::nullopt );
}

// What a press at x selects, by the rule: columns count from x = 0, and are clamped to the visible ones.
static int64_t ExpectedPick( int x, int nPitch, int nVisible, int64_t nCount, int64_t nFirst )
{
	int nColumn = x < 0 ? 0 : x / nPitch;
	if ( nColumn > nVisible - 1 )
		nColumn = nVisible - 1;
	if ( nVisible > nCount )
		return nCount - nVisible + nColumn < 0 ? 0 : nCount - nVisible + nColumn;
	return nColumn + nFirst;
}

TEST( HistoryColumns, PickTheSampleUnderEveryColumnEdge )
{
	for ( const int nBarWidth : { 2, 4 } )
	{
		for ( const uint32_t nCount : { 1u, 4u, 9u, 10u, 11u, 500u } )
		{
			for ( const uint32_t nFirst : { 0u, 1u, nCount > 10 ? nCount - 10 : 0 } )
			{
				HistoryColumns columns = Columns( 10, nCount );
				columns.m_Measures.m_nBarWidth = nBarWidth;
				columns.m_bScrolled = nCount > 10;
				columns.m_nFirstSample = nFirst;
				const int nPitch = nBarWidth + 4;
				for ( int nColumn = -2; nColumn <= 12; nColumn++ )
				{
					for ( const int x : { nColumn * nPitch - 1, nColumn * nPitch, nColumn * nPitch + 1 } )
					{
						const int64_t nExpected =
							ExpectedPick( x, nPitch, 10, nCount, columns.m_bScrolled ? nFirst : 0 );
						EXPECT_EQ( columns.Pick( x ), nExpected )
							<< "x " << x << ", " << nCount << " samples from " << nFirst << ", pitch " << nPitch;
					}
				}
			}
		}
	}
}

TEST( HistoryColumns, PickSampleZeroLeftOfTheOldestOne )
{
	const HistoryColumns columns = Columns( 10, 3 ); // the samples stand in the rightmost three columns
	EXPECT_EQ( columns.Pick( 0 ), 0u );
	EXPECT_EQ( columns.Pick( 7 * 6 - 1 ), 0u );
	EXPECT_EQ( columns.Pick( 8 * 6 ), 1u );
	EXPECT_EQ( columns.Pick( 9 * 6 ), 2u );
	EXPECT_EQ( columns.Pick( 10000 ), 2u );
}

TEST( HistoryColumns, PickAValidSampleWithoutRoomForColumns )
{
	EXPECT_EQ( ScrolledColumns( 0, 100, 100 ).Pick( 0 ), 99u );
	EXPECT_EQ( ScrolledColumns( 0, 100, 100 ).Pick( 1000 ), 99u );
	EXPECT_EQ( Columns( 0, 0 ).Pick( 5 ), 0u );
}

TEST( HistoryColumns, FindNoSampleBesideTheColumns )
{
	const HistoryColumns columns = Columns( 10, 3 );
	EXPECT_EQ( columns.SampleUnder( -1 ), std::nullopt );
	EXPECT_EQ( columns.SampleUnder( 7 * 6 - 1 ), std::nullopt );
	EXPECT_EQ( columns.SampleUnder( 7 * 6 ), 0u );
	EXPECT_EQ( columns.SampleUnder( 10 * 6 - 1 ), 2u );
	EXPECT_EQ( columns.SampleUnder( 10 * 6 ), std::nullopt );
	EXPECT_EQ( Columns( 10, 0 ).SampleUnder( 30 ), std::nullopt );
	EXPECT_EQ( ScrolledColumns( 10, 100, 40 ).SampleUnder( 0 ), 40u );
}

TEST( HistoryScrollRange, IsShownForMoreSamplesThanColumnsWhileTheCursorIsInForce )
{
	EXPECT_FALSE( HistoryScrollRange::Make( 100, 10, false ).m_bShown );
	EXPECT_FALSE( HistoryScrollRange::Make( 9, 10, true ).m_bShown );
	EXPECT_FALSE( HistoryScrollRange::Make( 10, 10, true ).m_bShown );

	const HistoryScrollRange range = HistoryScrollRange::Make( 11, 10, true );
	EXPECT_TRUE( range.m_bShown );
	EXPECT_EQ( range.m_nMaximum, 1 );
	EXPECT_EQ( HistoryScrollRange::Make( 5000, 10, true ).m_nMaximum, 4990 );
	EXPECT_EQ( HistoryScrollRange::Make( 5000, 10, true ).m_nBase, 0u );
}

TEST( HistoryScrollRange, OffersTheNewestEndWhenAnIntIsTooSmall )
{
	constexpr int INT_END = std::numeric_limits<int>::max();
	const uint32_t nJustFits = static_cast<uint32_t>( INT_END ) + 10;
	EXPECT_EQ( HistoryScrollRange::Make( nJustFits, 10, true ).m_nMaximum, INT_END );
	EXPECT_EQ( HistoryScrollRange::Make( nJustFits, 10, true ).m_nBase, 0u );

	const HistoryScrollRange range = HistoryScrollRange::Make( LARGEST_COUNT, 10, true );
	EXPECT_EQ( range.m_nMaximum, INT_END );
	EXPECT_EQ( uint64_t{ range.m_nBase } + static_cast<uint64_t>( range.m_nMaximum ) + 10, LARGEST_COUNT );
}

TEST( HistoryColumns, StayValidAtTheCountersLastStepAndAtItsWrap )
{
	const HistoryScrollRange range = HistoryScrollRange::Make( LARGEST_COUNT, 10, true );
	const uint32_t nNewestFirst = range.m_nBase + static_cast<uint32_t>( range.m_nMaximum );
	const HistoryColumns last = ScrolledColumns( 10, LARGEST_COUNT, nNewestFirst );
	EXPECT_EQ( last.NewestShown(), int64_t{ LARGEST_COUNT } - 1 );
	EXPECT_EQ( last.Pick( 9 * 6 ), LARGEST_COUNT - 1 );
	EXPECT_EQ( last.Pick( 0 ), LARGEST_COUNT - 10 );

	const uint32_t nWrapped = LARGEST_COUNT + 1; // 0: no samples again
	EXPECT_FALSE( HistoryScrollRange::Make( nWrapped, 10, true ).m_bShown );
	EXPECT_EQ( Columns( 10, nWrapped ).Filled(), 0 );
	EXPECT_EQ( Columns( 10, nWrapped ).Pick( 30 ), 0u );
}
