#include "views/historyscale.h"

#include <gtest/gtest.h>

#include <limits>

#include "keel0/keyvalues.h"

TEST( HistoryScale, EveryZoomStepAddsTwentySevenPixelsToTheGridStep )
{
	for ( int nZoomStep = -5; nZoomStep <= 5; nZoomStep++ )
	{
		EXPECT_EQ( HistoryPixelsPerStep( nZoomStep ), 30 + 27 * ( nZoomStep + 5 ) ) << nZoomStep;
		EXPECT_NEAR( HistoryZoomFactor( nZoomStep ), 0.3 + 0.27 * ( nZoomStep + 5 ), 1e-6 ) << nZoomStep;
	}
}

TEST( HistoryScale, WheelStepsStopAtTheBounds )
{
	EXPECT_EQ( HistoryZoomAfterWheel( 0, 120 ), 1 );
	EXPECT_EQ( HistoryZoomAfterWheel( 0, 1 ), 1 );
	EXPECT_EQ( HistoryZoomAfterWheel( 5, 120 ), 5 );
	EXPECT_EQ( HistoryZoomAfterWheel( 0, -120 ), -1 );
	EXPECT_EQ( HistoryZoomAfterWheel( 0, 0 ), -1 ); // a sideways turn counts as down, on purpose
	EXPECT_EQ( HistoryZoomAfterWheel( -5, -120 ), -5 );
}

TEST( HistoryScale, SavedZoomIsClamped )
{
	KeyValues settings( "settings" );
	EXPECT_EQ( LoadHistoryZoom( nullptr, "zoom" ), 0 );
	EXPECT_EQ( LoadHistoryZoom( &settings, "zoom" ), 0 );
	const int expectations[][2] = { { -5, -5 }, { -6, -5 }, { 5, 5 }, { 6, 5 }, { 3, 3 },
		{ std::numeric_limits<int>::min(), -5 }, { std::numeric_limits<int>::max(), 5 } };
	for ( const auto &[nSaved, nExpected] : expectations )
	{
		settings.SetInt( "zoom", nSaved );
		EXPECT_EQ( LoadHistoryZoom( &settings, "zoom" ), nExpected ) << nSaved;
	}
}

TEST( HistoryScale, PixelsAreTruncatedTowardZeroForAnyInput )
{
	EXPECT_EQ( TruncateToPixels( 1.99f ), 1 );
	EXPECT_EQ( TruncateToPixels( -1.99f ), -1 );
	EXPECT_EQ( TruncateToPixels( std::numeric_limits<float>::quiet_NaN() ), 0 );
	EXPECT_GT( TruncateToPixels( std::numeric_limits<float>::infinity() ), 1000000 );
	EXPECT_LT( TruncateToPixels( -std::numeric_limits<float>::infinity() ), -1000000 );
	EXPECT_EQ( TruncateToPixels( std::numeric_limits<float>::max() ),
		TruncateToPixels( std::numeric_limits<float>::infinity() ) );
}

namespace
{
HistoryAxisLayout Axis( QSize size, int nZoomStep, HistoryAxisUnit unit )
{
	HistoryAxisLayout layout;
	LayoutHistoryAxis( layout, size, nZoomStep, unit, 20 );
	return layout;
}
} // namespace

TEST( HistoryAxis, HasALineAtTheBottomAndOnePerStepUpToBeyondTheTop )
{
	const HistoryAxisLayout axis = Axis( QSize( 400, 330 ), 0, HistoryAxisUnit::Milliseconds ); // 165 pixels a step
	const std::vector<QLine> expected = {
		{ 0, 330, 400, 330 }, { 0, 165, 400, 165 }, { 0, 0, 400, 0 }, { 0, -165, 400, -165 } };
	EXPECT_EQ( axis.m_Grid, expected );
}

TEST( HistoryAxis, HasFourMinorLinesBelowEachLineUnlessZoomedOut )
{
	const HistoryAxisLayout axis = Axis( QSize( 400, 100 ), 0, HistoryAxisUnit::Milliseconds );
	std::vector<QLine> expected;
	for ( const int y : { 100, 100 - 165 } )
	{
		for ( const int nBelow : { 33, 66, 99, 132 } )
			expected.emplace_back( 0, y + nBelow, 400, y + nBelow );
	}
	EXPECT_EQ( axis.m_SubGrid, expected );
	EXPECT_FALSE( Axis( QSize( 400, 100 ), -4, HistoryAxisUnit::Milliseconds ).m_SubGrid.empty() );
	EXPECT_TRUE( Axis( QSize( 400, 100 ), -5, HistoryAxisUnit::Milliseconds ).m_SubGrid.empty() );
}

TEST( HistoryAxis, LabelsStandOnTheirLinesAtTheRightMargin )
{
	const HistoryAxisLayout axis = Axis( QSize( 400, 60 ), -5, HistoryAxisUnit::Milliseconds ); // 30 pixels a step
	ASSERT_EQ( axis.m_Labels.size(), 3u );
	EXPECT_EQ( axis.m_Labels[0].m_Box, QRect( QPoint( 0, 30 - 20 ), QPoint( 399, 29 ) ) );
	EXPECT_EQ( axis.m_Labels[1].m_Box, QRect( QPoint( 0, 0 - 20 ), QPoint( 399, -1 ) ) );
}

TEST( HistoryAxis, LabelsCountInTheUnitOfTheView )
{
	const auto Texts = []( HistoryAxisUnit unit )
	{
		std::vector<QString> texts;
		for ( const HistoryAxisLayout::Label &label : Axis( QSize( 400, 100 ), -5, unit ).m_Labels )
			texts.push_back( label.m_Text );
		return texts;
	};
	EXPECT_EQ( Texts( HistoryAxisUnit::Milliseconds ), ( std::vector<QString>{ "5 ms", "10 ms", "15 ms", "20 ms" } ) );
	EXPECT_EQ( Texts( HistoryAxisUnit::FramesPerSecondOfTime ),
		( std::vector<QString>{ "60.00 fps", "30.00 fps", "20.00 fps", "15.00 fps" } ) );
	EXPECT_EQ( Texts( HistoryAxisUnit::FramesPerSecond ),
		( std::vector<QString>{ "50 fps", "100 fps", "150 fps", "200 fps" } ) );
}

TEST( HistoryAxis, BuffersDoNotKeepAnEarlierLayout )
{
	HistoryAxisLayout layout;
	LayoutHistoryAxis( layout, QSize( 400, 900 ), 5, HistoryAxisUnit::Milliseconds, 20 );
	LayoutHistoryAxis( layout, QSize( 400, 60 ), -5, HistoryAxisUnit::Milliseconds, 20 );
	EXPECT_EQ( layout.m_Grid.size(), 4u );
	EXPECT_TRUE( layout.m_SubGrid.empty() );
	EXPECT_EQ( layout.m_Labels.size(), 3u );
}
