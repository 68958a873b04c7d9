#include <gmock/gmock.h>

#include <cmath>
#include <cstdio>

#include "miniprofiler/miniprofilermodel.h"
#include "miniprofiler/miniprofilertexts.h"

namespace
{
const QString PLUS_MINUS = QString::fromUtf8( "\xC2\xB1" );
const QString MICRO = QString::fromUtf8( "\xCE\xBCs" );

MiniProfilerNumbers Numbers( bool bCur, bool bAve, bool bStDev, bool bPeaks, size_t nUnit = 8, double flFactor = 1.0 )
{
	MiniProfilerNumbers numbers;
	numbers.m_Unit = MiniProfilerUnits()[nUnit];
	numbers.m_flFactor = flFactor;
	numbers.m_bCur = bCur;
	numbers.m_bAve = bAve;
	numbers.m_bStDev = bStDev;
	numbers.m_bPeaks = bPeaks;
	return numbers;
}

QString Printed( int nDecimals, double flValue )
{
	char text[64];
	std::snprintf( text, sizeof( text ), "%.*f", nDecimals, flValue );
	return text;
}

TEST( MiniProfilerUnits, AreTheNineInTheirOrder )
{
	struct Unit
	{
		QString m_Label, m_Unit, m_Format;
		uint32_t m_nScale;
		float m_flThreshold;
	};
	const Unit expected[] = { { "ms #", "ms", "%.0f", 1000, 0.5f }, { "ms #.#", "ms", "%.1f", 1000, 0.05f },
		{ "ms #.##", "ms", "%.2f", 1000, 0.005f }, { "ms #.###", "ms", "%.3f", 1000, 0.0005f },
		{ MICRO + " #", MICRO, "%.0f", 1000000, 0.5f }, { MICRO + " #.#", MICRO, "%.1f", 1000000, 0.05f },
		{ MICRO + " #.##", MICRO, "%.2f", 1000000, 0.005f }, { MICRO + " #.###", MICRO, "%.3f", 1000000, 0.0005f },
		{ "Ticks", "ticks", "%.0f", 0, 0.5f } };
	ASSERT_EQ( MiniProfilerUnits().size(), std::size( expected ) );
	for ( size_t i = 0; i < std::size( expected ); i++ )
	{
		const MiniProfilerUnit &unit = MiniProfilerUnits()[i];
		EXPECT_EQ( unit.m_Label, expected[i].m_Label );
		EXPECT_EQ( unit.m_Unit, expected[i].m_Unit );
		EXPECT_EQ( unit.m_Format, expected[i].m_Format );
		EXPECT_EQ( unit.m_nScale, expected[i].m_nScale );
		EXPECT_EQ( unit.m_flThreshold, expected[i].m_flThreshold );
	}
}

TEST( MiniProfilerUnits, TheFactorConvertsTicks )
{
	EXPECT_DOUBLE_EQ( MiniProfilerUnits()[0].Factor( 2000000 ), 1000.0 / 2000000.0 );
	EXPECT_DOUBLE_EQ( MiniProfilerUnits()[5].Factor( 2000000 ), 0.5 );
	EXPECT_DOUBLE_EQ( MiniProfilerUnits()[8].Factor( 2000000 ), 1.0 );
}

// All sixteen combinations of the four check boxes, against the rule in other words: parts that are joined.
TEST( MiniProfilerTexts, CallsInEveryCombination )
{
	const MiniProfilerValues values{ 12.0f, 11.5f, 0.25f, 14.0f };
	for ( int i = 0; i < 16; i++ )
	{
		const bool bCur = i & 1, bAve = i & 2, bStDev = i & 4, bPeaks = i & 8;
		QString expected;
		if ( bCur && bAve )
			expected = "12 [11.5]";
		else if ( bCur )
			expected = "12";
		else if ( bAve )
			expected = "11.5";
		if ( bStDev )
			expected += " " + PLUS_MINUS + " 0.2"; // one decimal, also for a whole number
		if ( bPeaks )
			expected += expected.isEmpty() ? "14" : " -> 14";
		EXPECT_EQ( MiniProfilerCallText( values, Numbers( bCur, bAve, bStDev, bPeaks ) ), expected ) << i;
	}
	EXPECT_EQ(
		MiniProfilerCallText( { 0, 0, 3.0f, 0 }, Numbers( false, false, true, false ) ), " " + PLUS_MINUS + " 3.0" );
}

TEST( MiniProfilerTexts, TimesInEveryCombinationAndUnit )
{
	const MiniProfilerValues values{ 1000.0f, 900.0f, 80.0f, 1500.0f };
	constexpr uint64_t FREQUENCY = 3000000;
	for ( size_t nUnit = 0; nUnit < 9; nUnit++ )
	{
		const MiniProfilerUnit &unit = MiniProfilerUnits()[nUnit];
		const auto Time = [&]( double flTicks )
		{
			const double flFactor = unit.m_nScale == 0 ? 1.0 : unit.m_nScale / static_cast<double>( FREQUENCY );
			const int nDecimals = unit.m_nScale == 0 ? 0 : static_cast<int>( nUnit % 4 );
			return Printed( nDecimals, flTicks * flFactor );
		};
		for ( int i = 0; i < 16; i++ )
		{
			const bool bCur = i & 1, bAve = i & 2, bStDev = i & 4, bPeaks = i & 8;
			QString expected = bCur && bAve ? Time( 1000 ) + " [" + Time( 900 ) + "]"
							   : bCur       ? Time( 1000 )
							   : bAve       ? Time( 900 )
											: QString();
			if ( bStDev )
				expected += " +- " + Time( 80 );
			if ( bPeaks )
				expected += ( expected.isEmpty() ? "" : " -> " ) + Time( 1500 );
			const auto numbers = Numbers( bCur, bAve, bStDev, bPeaks, nUnit, unit.Factor( FREQUENCY ) );
			EXPECT_EQ( MiniProfilerTimeText( values, numbers ), expected ) << unit.m_Label.toStdString() << " " << i;
		}
	}
}

TEST( MiniProfilerTexts, TheSortArrayIsTheFirstShown )
{
	EXPECT_EQ( Numbers( true, true, true, true ).SortArray(), MiniProfilerSortArray::Cur );
	EXPECT_EQ( Numbers( false, true, true, true ).SortArray(), MiniProfilerSortArray::Ave );
	EXPECT_EQ( Numbers( false, false, true, true ).SortArray(), MiniProfilerSortArray::StDev );
	EXPECT_EQ( Numbers( false, false, false, true ).SortArray(), MiniProfilerSortArray::Peaks );
	EXPECT_EQ( Numbers( false, false, false, false ).SortArray(), MiniProfilerSortArray::Peaks );
}

MiniProfilerEmphasis CallEmphasis( const MiniProfilerValues &values, const MiniProfilerNumbers &numbers )
{
	CQMiniProfilerRecord record( 1, 0 );
	record.m_Cur[1] = values.m_flCur;
	record.m_Ave[1] = values.m_flAve;
	record.m_StDev[1] = values.m_flStDev;
	record.m_Peaks[1] = values.m_flPeak;
	return MiniProfilerNumberText( record, 1, numbers ).m_Emphasis;
}

TEST( MiniProfilerTexts, CallsAreFaintWhenEveryShownStatisticIsSmall )
{
	const auto all = Numbers( true, true, true, true );
	EXPECT_EQ( CallEmphasis( { 0.5f, 0.5f, 0.049f, 0.49f }, all ), MiniProfilerEmphasis::Faint );
	EXPECT_EQ( CallEmphasis( { 0.51f, 0.5f, 0.0f, 0.0f }, all ), MiniProfilerEmphasis::Normal );
	EXPECT_EQ( CallEmphasis( { 0.5f, 0.51f, 0.0f, 0.0f }, all ), MiniProfilerEmphasis::Normal );
	EXPECT_EQ( CallEmphasis( { 0.5f, 0.5f, 0.05f, 0.0f }, all ), MiniProfilerEmphasis::Normal );
	EXPECT_EQ( CallEmphasis( { 0.5f, 0.5f, 0.0f, 0.5f }, all ), MiniProfilerEmphasis::Normal );
	// What is not shown does not count.
	EXPECT_EQ(
		CallEmphasis( { 9.0f, 0.5f, 9.0f, 9.0f }, Numbers( false, true, false, false ) ), MiniProfilerEmphasis::Faint );
}

TEST( MiniProfilerTexts, TimesAreFaintBelowHalfOfTheLastDigit )
{
	CQMiniProfilerRecord record( 1, 0 );
	const auto numbers = Numbers( false, true, false, false, 5, 1.0 ); // one decimal
	record.m_Ave[2] = 0.049f;
	EXPECT_EQ( MiniProfilerNumberText( record, 2, numbers ).m_Emphasis, MiniProfilerEmphasis::Faint );
	record.m_Ave[2] = 0.051f;
	EXPECT_EQ( MiniProfilerNumberText( record, 2, numbers ).m_Emphasis, MiniProfilerEmphasis::Normal );
	record.m_Ave[2] = 0.0f;
	record.m_Peaks[2] = 1.0f;
	EXPECT_EQ( MiniProfilerNumberText( record, 2, numbers ).m_Emphasis, MiniProfilerEmphasis::Faint );
	EXPECT_EQ( MiniProfilerNumberText( record, 2, Numbers( false, true, false, true, 5, 1.0 ) ).m_Emphasis,
		MiniProfilerEmphasis::Normal );
}

TEST( MiniProfilerTexts, AGroupsInclusiveTimesAreApproximateUnlessTheyEqualTheExclusiveOnes )
{
	CMiniProfilerGroup group( "G", nullptr, 0 );
	group.m_Ave = { 0, 7, 100, 0, 50, 0 };
	const auto numbers = Numbers( false, true, false, false );
	EXPECT_EQ( MiniProfilerNumberText( group, 2, numbers ).m_Text, "~100~" );
	EXPECT_EQ( MiniProfilerNumberText( group, 2, numbers ).m_Emphasis, MiniProfilerEmphasis::Approximate );
	EXPECT_EQ( MiniProfilerNumberText( group, 4, numbers ).m_Text, "~50~" );
	EXPECT_EQ( MiniProfilerNumberText( group, 1, numbers ).m_Text, "7" );
	EXPECT_EQ( MiniProfilerNumberText( group, 3, numbers ).m_Text, "0" );
	group.m_Ave = { 0, 7, 100, 100, 50, 50 };
	EXPECT_EQ( MiniProfilerNumberText( group, 2, numbers ).m_Text, "100" );
	EXPECT_EQ( MiniProfilerNumberText( group, 4, numbers ).m_Emphasis, MiniProfilerEmphasis::Normal );
	CQMiniProfilerRecord record( 1, 0 );
	record.m_Ave = { 0, 7, 100, 0, 50, 0 };
	EXPECT_EQ( MiniProfilerNumberText( record, 2, numbers ).m_Text, "100" );
}

TEST( MiniProfilerTexts, HeaderLabelsNameUnitAndInterval )
{
	EXPECT_EQ( MiniProfilerHeaderLabels( "ms", "tick" ),
		( QStringList{ "Name", "Calls per tick", "ms/tick, Inclusive", "ms/tick, Exclusive", "ms/call, Inclusive",
			"ms/call, Exclusive" } ) );
}

TEST( MiniProfilerTexts, ARowIsCopiedAsItIsShown )
{
	CMiniProfilerGroup group( "G", nullptr, 0 );
	group.m_Ave = { 0, 7, 100, 0, 50, 0 };
	EXPECT_EQ( MiniProfilerRowText( group, Numbers( false, true, false, false ) ), "G\t7\t~100~\t0\t~50~\t0" );
}

TEST( MiniProfilerTexts, TheSummaryTellsExclusiveTimeAndCalls )
{
	CMiniProfilerGroup group( "", nullptr, 0 );
	group.m_Ave = { 0, 2.5f, 100, 8, 0, 0 };
	EXPECT_EQ( MiniProfilerSummaryText( group, Numbers( false, true, false, false, 1, 0.5 ), "frame" ),
		"4.0ms/frame, 2.5 calls" );
}

class MiniProfilerOverheadTexts : public testing::Test
{
protected:
	MiniProfilerOverhead Overhead( size_t nIgnored = 0 ) const
	{
		return { m_History, { 3, 70, 12, 2200 }, 5.0f, 40, 60, nIgnored };
	}
	CMiniProfilerCostHistory m_History;
};

TEST_F( MiniProfilerOverheadTexts, ShowsCostsCountersAndTheToolsOwnTimes )
{
	m_History.Push( 10 );
	m_History.Push( 30 );
	EXPECT_EQ( MiniProfilerOverheadText( Overhead(), Numbers( true, true, false, false, 4, 2.0 ) ),
		"MiniProfiler net engine service: 60 [40]" + MICRO + "\n3/70 profilers, 2200 bytes\nKesto 10" + MICRO +
			", data view 80" + MICRO + ", paint 120" + MICRO );
	// The deviation has the separator of calls here; peaks are not shown.
	EXPECT_TRUE( MiniProfilerOverheadText( Overhead(), Numbers( false, true, true, true ) )
					 .startsWith( "MiniProfiler net engine service: 20 " + PLUS_MINUS + " 10ticks\n" ) );
}

// The lower bound stays at the largest number, on purpose.
TEST_F( MiniProfilerOverheadTexts, TheToolTipHasAMaximumOfAllButTheNewestAndALowerBoundThatStaysUp )
{
	m_History.Push( 10 );
	m_History.Push( 30 );
	m_History.Push( 500 );
	const QString expected = "Overhead: 18446744073709551616ticks to 30ticks\n3 profilers transmitted from game, 70 "
							 "profilers total registered/scanned in game, 12 profiler names sent, total packet size "
							 "2200 bytes";
	EXPECT_EQ( MiniProfilerOverheadToolTip( Overhead(), Numbers( false, true, false, false ) ), expected );
	EXPECT_EQ( MiniProfilerOverheadToolTip( Overhead( 4 ), Numbers( false, true, false, false ) ),
		expected + "\n4 further profilers ignored: at most 131072 are kept" );
}

TEST_F( MiniProfilerOverheadTexts, OneCostHasNoMaximum )
{
	m_History.Push( 10 );
	EXPECT_TRUE( MiniProfilerOverheadToolTip( Overhead(), Numbers( false, true, false, false ) )
					 .startsWith( "Overhead: 18446744073709551616ticks to 0ticks\n" ) );
}
} // namespace
