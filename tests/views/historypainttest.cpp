// What both views of the history draw, operation by operation. The expectations are computed column by column from the
// rules; the order of operations that cannot touch each other is free.
#include <gtest/gtest.h>

#include <QPainter>
#include <algorithm>
#include <random>

#include "support/paintlog.h"
#include "views/fakehistoryowner.h"
#include "views/framerate.h"
#include "views/historypainter.h"

namespace
{
struct Case
{
	int m_nZoomStep;
	float m_flUIScale;
	bool m_bScrolled;
	bool m_bCursor;
	bool m_bFlag; // frame-rate units for the bars, averages for the graph
	bool m_bThresholds = true;
};

void PrintTo( const Case &test, std::ostream *pStream )
{
	*pStream << "zoom " << test.m_nZoomStep << ", scale " << test.m_flUIScale
			 << ( test.m_bScrolled ? ", scrolled" : "" ) << ( test.m_bCursor ? ", cursor" : "" )
			 << ( test.m_bFlag ? ", flag" : "" ) << ( test.m_bThresholds ? ", thresholds" : "" );
}

std::vector<Case> AllCases( bool bWithThresholds )
{
	std::vector<Case> cases;
	for ( const int nZoomStep : { -5, -4, 0, 5 } )
	{
		for ( const float flScale : { 1.0f, 1.5f } )
		{
			for ( int nFlags = 0; nFlags < ( bWithThresholds ? 16 : 8 ); nFlags++ )
				cases.push_back( { nZoomStep, flScale, ( nFlags & 1 ) != 0, ( nFlags & 2 ) != 0, ( nFlags & 4 ) != 0,
					( nFlags & 8 ) != 0 } );
		}
	}
	return cases;
}

constexpr int WIDTH = 331;
constexpr int HEIGHT = 140;
constexpr int SAMPLES = 300;
constexpr int LABEL_WIDTH = 61;

int PixelsPerStep( int nZoomStep )
{
	return 30 + 27 * ( nZoomStep + 5 );
}

// The samples of a case and where they stand.
struct Setting
{
	explicit Setting( const Case &test )
		: m_Owner( 4, test.m_flUIScale )
		, m_nBarWidth( test.m_flUIScale > 1.0f ? 4 : 2 )
		, m_nPitch( m_nBarWidth + 4 )
		, m_nVisible( ( WIDTH - LABEL_WIDTH ) / m_nPitch )
		, m_nNewest( test.m_bScrolled ? 17 - 1 + m_nVisible : SAMPLES - 1 )
	{
		m_View.m_Size = QSize( WIDTH, HEIGHT );
		m_View.m_nZoomStep = test.m_nZoomStep;
		m_View.m_Columns.m_Measures.m_nLabelWidth = LABEL_WIDTH;
		m_View.m_Columns.m_Measures.m_nBarWidth = m_nBarWidth;
		m_View.m_Columns.m_nVisible = m_nVisible;
		m_View.m_Columns.m_nSampleCount = SAMPLES;
		m_View.m_Columns.m_bScrolled = test.m_bScrolled;
		m_View.m_Columns.m_nFirstSample = 17;
		if ( test.m_bCursor )
			m_View.m_Cursor = static_cast<uint32_t>( m_nNewest - 5 );
	}

	QPen CursorPen() const { return QPen( m_Owner.m_Style.m_Colours.m_Cursor, 2, Qt::DotLine ); }

	CFakeHistoryOwner m_Owner;
	HistoryView m_View;
	int m_nBarWidth;
	int m_nPitch;
	int m_nVisible;
	int64_t m_nNewest;
};

std::vector<PaintOp> ExpectedAxis( const Case &test, const BudgetViewStyle &style, const char *pFormat, bool bRate )
{
	std::vector<PaintOp> ops;
	const int nStep = PixelsPerStep( test.m_nZoomStep );
	for ( int i = 0; i < HEIGHT / nStep + 2; i++ )
	{
		const int y = HEIGHT - i * nStep;
		ops.push_back( PaintOp::Line( QLineF( 0, y, WIDTH, y ), QPen( style.m_Colours.m_Grid ) ) );
		for ( int j = 1; j <= 4 && test.m_nZoomStep > -5; j++ )
		{
			const int yMinor = y + j * ( nStep / 5 );
			ops.push_back( PaintOp::Line(
				QLineF( 0, yMinor, WIDTH, yMinor ), QPen( style.m_Colours.m_SubGrid, 1, Qt::DashDotLine ) ) );
		}
		if ( i == 0 )
			continue;
		const QString text = bRate ? QString::asprintf( pFormat, 60.0 / i )
								   : QString::asprintf( pFormat, i * ( strcmp( pFormat, "%d ms" ) == 0 ? 5 : 50 ) );
		const QRect box( QPoint( 0, y - style.m_nRowHeight ), QPoint( WIDTH - 1, y - 1 ) );
		ops.push_back(
			PaintOp::Text( box, Qt::AlignRight | Qt::AlignVCenter, text, style.m_RowFont, style.m_Colours.m_Text ) );
	}
	return ops;
}

// In an order that does not depend on who drew what first.
std::vector<std::string> Sorted( const std::vector<PaintOp> &ops )
{
	std::vector<std::string> texts;
	for ( const PaintOp &op : ops )
		texts.push_back( testing::PrintToString( op ) );
	std::sort( texts.begin(), texts.end() );
	return texts;
}

class HistoryBarsPaint : public testing::TestWithParam<Case>
{
};
class FPSGraphPaint : public testing::TestWithParam<Case>
{
};
} // namespace

TEST_P( HistoryBarsPaint, DrawsTheAxisInItsUnit )
{
	const Setting setting( GetParam() );
	HistoryAxisLayout layout;
	LayoutHistoryAxis( layout, setting.m_View.m_Size, GetParam().m_nZoomStep,
		GetParam().m_bFlag ? HistoryAxisUnit::FramesPerSecondOfTime : HistoryAxisUnit::Milliseconds,
		setting.m_Owner.m_Style.m_nRowHeight );
	CPaintLog log( setting.m_View.m_Size );
	{
		QPainter painter( &log );
		PaintHistoryAxis( painter, layout, setting.m_Owner.m_Style );
	}
	EXPECT_EQ( Sorted( log.Ops() ), Sorted( ExpectedAxis( GetParam(), setting.m_Owner.m_Style,
										GetParam().m_bFlag ? "%.2f fps" : "%d ms", GetParam().m_bFlag ) ) );
}

TEST_P( HistoryBarsPaint, StacksTheBudgetsOfEverySampleFromTheBottom )
{
	Setting setting( GetParam() );
	setting.m_Owner.m_Data.m_bFPSUnits = GetParam().m_bFlag;
	std::mt19937 random( 3 );
	// Whole tenths of a millisecond and a bit, so that no length lies near a whole number of pixels.
	std::uniform_int_distribution<uint32_t> tenths( 0, 60 );
	for ( int i = 0; i < SAMPLES; i++ )
		setting.m_Owner.AddSample(
			{ tenths( random ) * 100 + 7, 0, tenths( random ) * 100 + 7, tenths( random ) * 100 + 7 } );

	std::vector<PaintOp> expected;
	const uint64_t nStep = static_cast<uint64_t>( PixelsPerStep( GetParam().m_nZoomStep ) );
	int x = WIDTH - LABEL_WIDTH - 1;
	int64_t nSample = setting.m_nNewest;
	for ( int nColumn = 0; nColumn < setting.m_nVisible && x >= 0 && nSample >= 0; nColumn++ )
	{
		int nBottom = HEIGHT;
		for ( size_t nBudget = 0; nBudget < 4; nBudget++ )
		{
			const uint64_t nValue = setting.m_Owner.GetViewData().Value( nBudget, static_cast<uint32_t>( nSample ) );
			const uint64_t nLength = GetParam().m_bFlag ? nValue * nStep * 6 / 100000 : nValue * nStep / 5000;
			const int nShown = static_cast<int>( std::min<uint64_t>( nLength, HEIGHT ) );
			if ( nShown == 0 )
				continue;
			const int nTop = nBottom - nShown;
			const QRect rect( QPoint( x - 2 - setting.m_nBarWidth, nTop ), QPoint( x - 2 - 1, nBottom ) );
			if ( nBottom >= 0 ) // above the view nothing shows
				expected.push_back( PaintOp::FillRect( rect, setting.m_Owner.m_Categories[nBudget].m_Colour ) );
			nBottom = nTop;
		}
		x -= setting.m_nPitch;
		nSample--;
	}

	HistoryBarsLayout layout;
	LayoutHistoryBars( layout, setting.m_Owner.GetViewData(), setting.m_View, setting.m_View.m_Columns.AllFilled() );
	CPaintLog log( setting.m_View.m_Size );
	{
		QPainter painter( &log );
		PaintHistoryBars( painter, layout );
	}
	// Columns stand apart; within a column the order counts, because a bar covers a row of the one below it.
	std::vector<PaintOp> drawn = log.Ops();
	std::stable_sort(
		drawn.begin(), drawn.end(), []( const PaintOp &a, const PaintOp &b ) { return a.m_Rect.x() > b.m_Rect.x(); } );
	EXPECT_EQ( drawn, expected );
}

TEST_P( HistoryBarsPaint, FramesTheSelectedColumn )
{
	const Setting setting( GetParam() );
	const std::optional<QRect> frame = HistoryBarsCursor( setting.m_View );
	ASSERT_EQ( frame.has_value(), GetParam().m_bCursor );
	if ( !frame )
		return;
	CPaintLog log( setting.m_View.m_Size );
	{
		QPainter painter( &log );
		PaintHistoryCursor( painter, *frame, setting.m_Owner.m_Style );
	}
	const int x = WIDTH - LABEL_WIDTH - 1 - 5 * setting.m_nPitch;
	const QRect expected( QPoint( x - 4 - setting.m_nBarWidth, 0 ), QPoint( x - 1, HEIGHT - 2 ) );
	EXPECT_EQ( log.Ops(), std::vector{ PaintOp::OutlineRect( expected, setting.CursorPen() ) } );
}

TEST_P( FPSGraphPaint, DrawsTheAxisInFramesPerSecondAlways )
{
	const Setting setting( GetParam() );
	HistoryAxisLayout layout;
	LayoutHistoryAxis( layout, setting.m_View.m_Size, GetParam().m_nZoomStep, HistoryAxisUnit::FramesPerSecond,
		setting.m_Owner.m_Style.m_nRowHeight );
	CPaintLog log( setting.m_View.m_Size );
	{
		QPainter painter( &log );
		PaintHistoryAxis( painter, layout, setting.m_Owner.m_Style );
	}
	EXPECT_EQ( Sorted( log.Ops() ), Sorted( ExpectedAxis( GetParam(), setting.m_Owner.m_Style, "%d fps", false ) ) );
}

TEST_P( FPSGraphPaint, DrawsBothMarkersTheLowerOneFirst )
{
	const Setting setting( GetParam() );
	FPSMarkers markers;
	markers.m_flLower = 10.0f;
	markers.m_flUpper = 30.0f;
	CPaintLog log( setting.m_View.m_Size );
	{
		QPainter painter( &log );
		PaintFPSMarkers( painter, LayoutFPSMarkers( markers, setting.m_View.m_Size, GetParam().m_nZoomStep ),
			setting.m_Owner.m_Style );
	}
	std::vector<PaintOp> expected;
	const std::pair<int, QColor> inOrder[] = { { 10, QColor( 255, 0, 0 ) }, { 30, QColor( 0, 255, 0 ) } };
	for ( const auto &[nRate, colour] : inOrder )
	{
		// Single precision decides here: at zoom 0 the 99 pixels of rate 30 come out as a little more.
		const float flPixelsPerFrame = static_cast<float>( GetParam().m_nZoomStep + 5 ) * 0.54f + 0.6f;
		const int y = static_cast<int>( float{ HEIGHT } - flPixelsPerFrame * static_cast<float>( nRate ) );
		const QRect left( QPoint( 0, y - 8 ), QPoint( 15, y + 7 ) );
		const QRect right( QPoint( WIDTH - 1 - 15, y - 8 ), QPoint( WIDTH - 1, y + 7 ) );
		const QFont &font = setting.m_Owner.m_Style.m_CaptionFont;
		expected.push_back( PaintOp::Line( QLineF( 0, y, WIDTH - 1, y ), QPen( colour ) ) );
		expected.push_back( PaintOp::FillRect( left, colour ) );
		expected.push_back( PaintOp::FillRect( right, colour ) );
		expected.push_back( PaintOp::OutlineRect( left, QPen( Qt::black ) ) );
		expected.push_back( PaintOp::OutlineRect( right, QPen( Qt::black ) ) );
		const qreal flAscent = QFontMetricsF( font ).ascent();
		const QRectF textBox( 16, y - 8 - flAscent, 100, QFontMetricsF( font ).descent() + flAscent );
		expected.push_back(
			PaintOp::Text( textBox, Qt::AlignLeft, QString::asprintf( "%d fps", nRate ), font, colour ) );
	}
	EXPECT_EQ( log.Ops(), expected );
}

namespace
{
// A frame rate, how high it stands and its colour, by the rules and in double precision.
struct ExpectedRate
{
	double m_flRate;
	int m_nY;
	QRgb m_Colour;
};

constexpr double LOWER = 30.0;
constexpr double UPPER = 60.0;
const QColor CYAN( 0, 255, 255 );

QRgb ExpectedColour( double flRate, bool bThresholds )
{
	if ( !bThresholds )
		return CYAN.rgb();
	const double flMiddle = ( LOWER + UPPER ) / 2;
	if ( flRate <= LOWER )
		return qRgb( 255, 0, 0 );
	if ( flRate <= flMiddle )
		return qRgb( 255, static_cast<int>( 255 * ( flRate - LOWER ) / ( flMiddle - LOWER ) ), 0 );
	if ( flRate <= UPPER )
		return qRgb( static_cast<int>( 255 - 255 * ( flRate - flMiddle ) / ( UPPER - flMiddle ) ), 255, 0 );
	return qRgb( 0, 255, 0 );
}

PaintOp ExpectedSegment(
	QPoint ptOlder, const ExpectedRate &older, QPoint ptNewer, const ExpectedRate &newer, bool bThresholds )
{
	const QLine line( ptOlder, ptNewer );
	const QRgb middle = ExpectedColour( ( older.m_flRate + newer.m_flRate ) / 2, bThresholds );
	if ( older.m_Colour == middle && middle == newer.m_Colour ) // then a gradient is that colour all over
		return PaintOp::Line( line, QPen( QColor( middle ), 1 ) );
	QLinearGradient gradient( ptOlder, ptNewer );
	gradient.setStops(
		{ { 0.0, QColor( older.m_Colour ) }, { 0.5, QColor( middle ) }, { 1.0, QColor( newer.m_Colour ) } } );
	return PaintOp::Line( line, QPen( QBrush( gradient ), 1 ) );
}
} // namespace

TEST_P( FPSGraphPaint, JoinsThePointsOfAllSamples )
{
	Setting setting( GetParam() );
	const bool bThresholds = GetParam().m_bThresholds;
	setting.m_Owner.m_Data.m_bFPSAverages = GetParam().m_bFlag;
	setting.m_Owner.m_Data.m_bShowThresholds = bThresholds;
	std::mt19937 random( 5 );
	// Rates on both sides of both markers, and some frames without time.
	std::uniform_int_distribution<uint32_t> micros( 9000, 60000 );
	for ( uint32_t i = 0; i < SAMPLES; i++ )
	{
		const uint32_t nMicroseconds = i % 41 == 7 ? 0 : micros( random );
		setting.m_Owner.AddSample( { nMicroseconds }, i % 37 == 5 ? 0.0f : static_cast<float>( i % 90 ) + 0.3f );
	}
	const auto RateOf = [&]( int64_t nSample )
	{
		const auto nSlot = static_cast<uint32_t>( nSample );
		const uint32_t nTotal = setting.m_Owner.GetViewData().Value( 4, nSlot );
		const double flMeasured = nTotal == 0 ? 0.0 : 1e6 / nTotal;
		const double flRate = GetParam().m_bFlag ? double{ setting.m_Owner.m_FrameRates[nSlot] } : flMeasured;
		const int nLength = static_cast<int>( flRate * PixelsPerStep( GetParam().m_nZoomStep ) / 50 );
		return ExpectedRate{ flRate, HEIGHT - nLength, ExpectedColour( flRate, bThresholds ) };
	};

	std::vector<PaintOp> segments;
	std::vector<PaintOp> points;
	int x = WIDTH - setting.m_nPitch / 2 - LABEL_WIDTH - 1;
	int64_t nSample = setting.m_nNewest;
	for ( int nColumn = 0; nColumn < setting.m_nVisible && x >= 0 && nSample >= 0; nColumn++ )
	{
		const ExpectedRate newer = RateOf( nSample );
		const ExpectedRate older = RateOf( std::max<int64_t>( 0, nSample - 1 ) );
		segments.push_back( ExpectedSegment(
			QPoint( x - setting.m_nPitch, older.m_nY ), older, QPoint( x, newer.m_nY ), newer, bThresholds ) );
		const int nHalf = setting.m_nBarWidth / 2;
		points.push_back(
			PaintOp::FillRect( QRect( x - nHalf, newer.m_nY - nHalf, setting.m_nBarWidth, setting.m_nBarWidth ),
				QColor( newer.m_Colour ) ) );
		x -= setting.m_nPitch;
		nSample--;
	}

	FPSCurveLayout layout;
	LayoutFPSCurve(
		layout, setting.m_Owner.GetViewData(), setting.m_View, FPSMarkers(), setting.m_View.m_Columns.AllFilled() );
	CPaintLog log( setting.m_View.m_Size );
	{
		QPainter painter( &log );
		PaintFPSCurve( painter, layout );
	}
	EXPECT_EQ( log.OfKind( PaintOp::Kind::Line ), segments );
	EXPECT_EQ( log.OfKind( PaintOp::Kind::FillRect ), points );
	EXPECT_EQ( log.Ops().size(), segments.size() + points.size() );
	EXPECT_EQ( log.Ops().back().m_Kind, PaintOp::Kind::FillRect ); // the points lie over the curve
}

TEST_P( FPSGraphPaint, FramesTheSelectedColumn )
{
	const Setting setting( GetParam() );
	const std::optional<QRect> frame = FPSGraphCursor( setting.m_View );
	ASSERT_EQ( frame.has_value(), GetParam().m_bCursor );
	if ( !frame )
		return;
	const int nHalf = setting.m_nPitch / 2;
	const int x = WIDTH - nHalf - LABEL_WIDTH - 1 - 5 * setting.m_nPitch;
	EXPECT_EQ( *frame, QRect( QPoint( x - nHalf, 0 ), QPoint( x - nHalf + setting.m_nPitch - 1, HEIGHT - 2 ) ) );
}

INSTANTIATE_TEST_SUITE_P( Everywhere, HistoryBarsPaint, testing::ValuesIn( AllCases( false ) ) );
INSTANTIATE_TEST_SUITE_P( Everywhere, FPSGraphPaint, testing::ValuesIn( AllCases( true ) ) );

namespace
{
const Case PLAIN{ 0, 1.0f, false, false, false };

HistoryBarsLayout LayoutAllBars( const Setting &setting )
{
	HistoryBarsLayout layout;
	LayoutHistoryBars( layout, setting.m_Owner.GetViewData(), setting.m_View, setting.m_View.m_Columns.AllFilled() );
	return layout;
}

FPSCurveLayout LayoutWholeCurve( const Setting &setting )
{
	FPSCurveLayout layout;
	LayoutFPSCurve(
		layout, setting.m_Owner.GetViewData(), setting.m_View, FPSMarkers(), setting.m_View.m_Columns.AllFilled() );
	return layout;
}
} // namespace

TEST( HistoryBarsLayout, LeavesTheFrameTotalOut )
{
	Setting setting( PLAIN );
	setting.m_View.m_Columns.m_nSampleCount = 1;
	setting.m_Owner.AddSample( { 1000, 1000, 1000, 1000 } );
	const HistoryBarsLayout layout = LayoutAllBars( setting );
	EXPECT_EQ( layout.m_Bars.size(), 4u );
	for ( const HistoryBarsLayout::Budget &budget : layout.m_Budgets )
		EXPECT_NE( budget.m_Colour, QColor( 255, 255, 255 ) );
}

TEST( HistoryBarsLayout, ABarIsNeverHigherThanTheView )
{
	Setting setting( PLAIN );
	setting.m_View.m_Columns.m_nSampleCount = 1;
	setting.m_Owner.AddSample( { 0xffffffffu, 1000 } );
	const HistoryBarsLayout layout = LayoutAllBars( setting );
	ASSERT_EQ( layout.m_Bars.size(), 2u ); // the second one's lowest row still shows in the view's top row
	EXPECT_EQ( layout.m_Bars[0].top(), 0 );
	EXPECT_EQ( layout.m_Bars[0].bottom(), HEIGHT );
	EXPECT_EQ( layout.m_Bars[1].bottom(), 0 );
}

TEST( HistoryBarsLayout, IsEmptyWithoutSamplesOrBudgets )
{
	Setting setting( PLAIN );
	setting.m_View.m_Columns.m_nSampleCount = 0;
	EXPECT_TRUE( LayoutAllBars( setting ).m_Bars.empty() );
	setting.m_Owner.SetBudgets( 0 );
	setting.m_View.m_Columns.m_nSampleCount = 5;
	EXPECT_TRUE( LayoutAllBars( setting ).m_Bars.empty() );
}

TEST( FPSCurveLayout, TheOldestSamplesSegmentIsFlat )
{
	Setting setting( PLAIN );
	setting.m_View.m_Columns.m_nSampleCount = 2;
	setting.m_Owner.AddSample( { 20000 } );
	setting.m_Owner.AddSample( { 40000 } );
	const FPSCurveLayout layout = LayoutWholeCurve( setting );
	ASSERT_EQ( layout.m_Segments.size(), 2u );
	EXPECT_NE( layout.m_Segments[0].m_Line.dy(), 0 );
	EXPECT_EQ( layout.m_Segments[1].m_Line.dy(), 0 );
	EXPECT_EQ( layout.m_Segments[1].m_Line.dx(), 6 );
}

TEST( FPSCurveLayout, AFrameWithoutTimeStandsAtTheBottom )
{
	Setting setting( PLAIN );
	setting.m_View.m_Columns.m_nSampleCount = 1;
	setting.m_Owner.AddSample( {} );
	EXPECT_EQ( LayoutWholeCurve( setting ).m_Segments[0].m_Line.y2(), HEIGHT );
}

TEST( FPSCurveLayout, ANegativeAverageStandsAtTheBottomToo )
{
	Setting setting( PLAIN );
	setting.m_Owner.m_Data.m_bFPSAverages = true;
	setting.m_View.m_Columns.m_nSampleCount = 1;
	setting.m_Owner.AddSample( { 1000 }, -3e38f );
	EXPECT_EQ( LayoutWholeCurve( setting ).m_Segments[0].m_Line.y2(), HEIGHT );
}

TEST( FPSCurveLayout, APartOfTheColumnsBringsThePointThatItStartsFrom )
{
	Setting setting( PLAIN );
	for ( uint32_t i = 0; i < SAMPLES; i++ )
		setting.m_Owner.AddSample( { 10000 + i * 50 } );
	const FPSCurveLayout whole = LayoutWholeCurve( setting );
	FPSCurveLayout part;
	LayoutFPSCurve( part, setting.m_Owner.GetViewData(), setting.m_View, FPSMarkers(), { 2, 5 } );
	ASSERT_EQ( part.m_Segments.size(), 3u );
	ASSERT_EQ( part.m_Points.size(), 4u );
	for ( size_t i = 0; i < 3; i++ )
		EXPECT_EQ( part.m_Segments[i].m_Line, whole.m_Segments[i + 2].m_Line );
	for ( size_t i = 0; i < 4; i++ )
		EXPECT_EQ( part.m_Points[i].m_Square, whole.m_Points[i + 2].m_Square );
}

TEST( FPSMarkerLayout, TheUpperMarkerIsRedOnlyWhenBothStandAtTheEnd )
{
	FPSMarkers markers;
	markers.m_flLower = 299.0f;
	markers.m_flUpper = 300.0f;
	EXPECT_EQ( LayoutFPSMarkers( markers, QSize( 400, 300 ), 0 )[1].m_Colour, qRgb( 0, 255, 0 ) );
	markers.m_flLower = 300.0f;
	EXPECT_EQ( LayoutFPSMarkers( markers, QSize( 400, 300 ), 0 )[1].m_Colour, qRgb( 255, 0, 0 ) );
	EXPECT_EQ( LayoutFPSMarkers( markers, QSize( 400, 300 ), 0 )[0].m_Colour, qRgb( 255, 0, 0 ) );
}
