#include <gmock/gmock.h>

#include <QPainter>
#include <QTreeWidget>
#include <algorithm>
#include <cmath>
#include <utility>

#include "miniprofiler/miniprofilerbardelegate.h"
#include "miniprofiler/miniprofilercelllayout.h"
#include "miniprofiler/miniprofilercellpainter.h"
#include "support/fakeclock.h"
#include "support/paintlog.h"

namespace
{
using testing::ElementsAre;
using testing::IsEmpty;

constexpr QRect CELL( 20, 40, 209, 18 ); // x 20..228, y 40..57

class MiniProfilerCell : public testing::Test
{
protected:
	MiniProfilerCell()
	{
		m_Record.SetName( "Step" );
		m_Record.m_Cur = { 0, 5, 50, 0, 10, 0 };
		m_Record.m_Ave = { 0, 4, 40, 0, 8, 0 };
		m_Record.m_StDev = { 0, 1, 10, 0, 2, 0 };
		m_Record.m_Peaks = { 0, 8, 80, 0, 16, 0 };
		m_Display.m_BarMaxima = { 0, 10, 100, 0, 20, 0 };
	}

	MiniProfilerCellLayout Layout(
		const CMiniProfilerRow &row, int nColumn = 0, bool bHovered = false, bool bSelected = false ) const
	{
		return LayoutMiniProfilerCell( row, { CELL, nColumn, bHovered, bSelected }, m_Display );
	}
	MiniProfilerCellLayout Layout( int nColumn = 0, bool bHovered = false, bool bSelected = false ) const
	{
		return Layout( m_Record, nColumn, bHovered, bSelected );
	}

	CQMiniProfilerRecord m_Record{ 1, 0 };
	CMiniProfilerGroup m_Group{ "Physics", nullptr, 0 };
	MiniProfilerDisplay m_Display;
};

QRect Span( int nLeft, int nTop, int nRight, int nBottom )
{
	return QRect( QPoint( nLeft, nTop ), QPoint( nRight, nBottom ) );
}

// The bar's area is x 21..220 (200 pixels for a maximum of 100) and y 41..56 when peaks are drawn.
TEST_F( MiniProfilerCell, ABarGoesFromTheLeftToTheCurrentValue )
{
	const auto layout = Layout();
	ASSERT_TRUE( layout.m_Bar );
	EXPECT_EQ( layout.m_Bar->m_Rect, Span( 21, 42, 21 + 100, 55 ) );
	EXPECT_EQ( layout.m_Bar->m_Fill, QColor( 255, 237, 168 ) );
	EXPECT_EQ( layout.m_Bar->m_Outline, QColor( 207, 182, 86 ) );
	EXPECT_EQ( layout.m_Bar->m_Band, Span( 21 + 80, 45, 21 + 100, 48 ) );
}

TEST_F( MiniProfilerCell, SigmasAreFourLinesRoundTheAverage )
{
	const auto layout = Layout();
	ASSERT_TRUE( layout.m_Sigma );
	EXPECT_THAT( layout.m_Sigma->m_Lines, ElementsAre( QLine( 101, 41, 101, 56 ), QLine( 81, 48, 121, 48 ),
											  QLine( 81, 43, 81, 54 ), QLine( 121, 43, 121, 54 ) ) );
	EXPECT_EQ( layout.m_Sigma->m_Colour, QColor( 171, 165, 207 ) );
	EXPECT_FALSE( layout.m_Sigma->m_bThick );
}

TEST_F( MiniProfilerCell, ThePeakIsATriangleThatPointsLeft )
{
	ASSERT_TRUE( Layout().m_Peak );
	EXPECT_THAT( *Layout().m_Peak, ElementsAre( QPoint( 181, 42 ), QPoint( 181, 55 ), QPoint( 176, 48 ) ) );
}

TEST_F( MiniProfilerCell, AFullBarLeavesRoomForThePeaks )
{
	m_Record.m_Cur[2] = m_Display.m_BarMaxima[2];
	EXPECT_EQ( Layout().m_Bar->m_Rect.right(), 21 + 200 );
	m_Display.m_bDrawPeaks = false;
	EXPECT_EQ( Layout().m_Bar->m_Rect.right(), 21 + 207 );
}

TEST_F( MiniProfilerCell, WithoutPeaksTheBarsReachFurther )
{
	m_Display.m_bDrawPeaks = false;
	const auto layout = Layout();
	EXPECT_FALSE( layout.m_Peak );
	EXPECT_EQ( layout.m_Bar->m_Rect.right(), 21 + 207 / 2 ); // 21..227
}

TEST_F( MiniProfilerCell, EveryBarModeShowsItsColumn )
{
	for ( const int nMode : { 1, 2, 4 } )
	{
		m_Display.m_nBarMode = nMode;
		EXPECT_EQ( Layout().m_Bar->m_Rect.right(), 121 ) << nMode; // all are half of their maximum
	}
	for ( const int nMode : { 0, 3, 5 } ) // none, and columns without a maximum
	{
		m_Display.m_nBarMode = nMode;
		const auto layout = Layout();
		EXPECT_FALSE( layout.m_Bar || layout.m_Sigma || layout.m_Peak ) << nMode;
		EXPECT_TRUE( layout.m_Name );
	}
}

TEST_F( MiniProfilerCell, EachPartCanBeSwitchedOff )
{
	for ( int i = 0; i < 16; i++ )
	{
		m_Display.m_bDrawBars = i & 1;
		m_Display.m_bDrawSigmas = i & 2;
		m_Display.m_bDrawPeaks = i & 4;
		m_Display.m_bTextVisible = i & 8;
		const auto layout = Layout();
		EXPECT_EQ( layout.m_Bar.has_value(), m_Display.m_bDrawBars );
		EXPECT_EQ( layout.m_Sigma.has_value(), m_Display.m_bDrawSigmas );
		EXPECT_EQ( layout.m_Peak.has_value(), m_Display.m_bDrawPeaks );
		EXPECT_EQ( layout.m_Name.has_value(), m_Display.m_bTextVisible );
		EXPECT_EQ( Layout( 2 ).m_Number.has_value(), m_Display.m_bTextVisible );
	}
}

TEST_F( MiniProfilerCell, HiddenTextHidesCountsAndAnnotationsToo )
{
	m_Display.m_bTextVisible = false;
	m_Record.SetFlag( MINIPROFILER_ROW_DUPLICATE );
	m_Record.SetDescription( "a\nb\nc\nd\nproject\n" );
	EXPECT_FALSE( Layout( m_Group ).m_SmallText );
	EXPECT_FALSE( Layout().m_SmallText );
}

TEST_F( MiniProfilerCell, OutsideTheNormalisedSelectionBarsArePale )
{
	m_Display.m_nNormalised = 2;
	EXPECT_EQ( Layout().m_Bar->m_Fill, QColor( 255, 248, 221 ) );
	EXPECT_FALSE( Layout().m_Bar->m_Outline );
	EXPECT_FALSE( Layout().m_Bar->m_Band );
	EXPECT_TRUE( Layout( 0, true, false ).m_Bar->m_Outline );
	EXPECT_TRUE( Layout( 0, false, true ).m_Bar->m_Band );
}

TEST_F( MiniProfilerCell, HoverAndSelectionAreHighlighted )
{
	EXPECT_FALSE( Layout().m_Highlight );
	const auto hovered = Layout( 0, true, false );
	EXPECT_EQ( hovered.m_Highlight->m_Rect, CELL.adjusted( 0, 1, 0, -1 ) );
	EXPECT_EQ( hovered.m_Highlight->m_Fill, QColor( 238, 237, 255 ) );
	EXPECT_EQ( hovered.m_Highlight->m_Outline, QColor( 194, 191, 230 ) );
	EXPECT_TRUE( hovered.m_Sigma->m_bThick );

	const auto selected = Layout( 3, false, true );
	EXPECT_EQ( selected.m_Highlight->m_Fill, QColor( 224, 222, 255 ) );
	EXPECT_FALSE( selected.m_Highlight->m_Outline );
	EXPECT_EQ( Layout( 0, false, true ).m_Sigma->m_Colour, QColor( 107, 98, 164 ) );

	const auto both = Layout( 0, true, true );
	EXPECT_EQ( both.m_Highlight->m_Fill, QColor( 224, 222, 255 ) );
	EXPECT_TRUE( both.m_Highlight->m_Outline );
}

TEST_F( MiniProfilerCell, BudgetColoursLieBehindRowsAndHighlightsShowThrough )
{
	m_Group.SetBudgetColour( Qt::green );
	m_Record.m_pGroup = &m_Group;
	EXPECT_FALSE( Layout().m_Background ); // only when asked for
	m_Display.m_bGroupColours = true;
	EXPECT_EQ( Layout( 1 ).m_Background, QColor( Qt::green ) );
	EXPECT_EQ( Layout( m_Group ).m_Background, QColor( Qt::green ) );
	EXPECT_EQ( Layout( 0, false, true ).m_Highlight->m_Style, Qt::Dense4Pattern );
	m_Record.SetBudgetColour( Qt::red ); // its own goes before its group's
	EXPECT_EQ( Layout().m_Background, QColor( Qt::red ) );
}

TEST_F( MiniProfilerCell, TextColoursTellIdleRowsAndPalettes )
{
	EXPECT_EQ( Layout().m_Name->m_Colour, QColor( Qt::black ) );
	m_Display.m_bDark = true;
	EXPECT_EQ( Layout().m_Name->m_Colour, QColor( Qt::white ) );
	m_Record.SetFlag( MINIPROFILER_ROW_IDLE );
	EXPECT_EQ( Layout().m_Name->m_Colour, QColor( Qt::lightGray ) );
	m_Display.m_bGroupColours = true;
	m_Record.SetBudgetColour( Qt::red );
	EXPECT_EQ( Layout().m_Name->m_Colour, QColor( Qt::darkGray ) ); // as on light: the colour lies behind
	m_Display.m_bNameTransparent = true;
	QColor expected( Qt::darkGray );
	expected.setAlpha( 128 );
	EXPECT_EQ( Layout().m_Name->m_Colour, expected );
}

TEST_F( MiniProfilerCell, NumbersAreFaintOrApproximateByColour )
{
	EXPECT_EQ( Layout( 2 ).m_Number->m_Colour, QColor( Qt::black ) );
	EXPECT_EQ( Layout( 2 ).m_Number->m_Text, "40.0" );
	EXPECT_EQ( Layout( 3 ).m_Number->m_Colour, QColor( 222, 222, 222 ) );
	m_Group.m_Ave = m_Record.m_Ave;
	EXPECT_EQ( Layout( m_Group, 2 ).m_Number->m_Colour, QColor( Qt::lightGray ) );
	EXPECT_EQ( Layout( m_Group, 2 ).m_Number->m_Text, "~40.0~" );
	m_Display.m_bDark = true;
	EXPECT_EQ( Layout( 3 ).m_Number->m_Colour, QColor( 222, 222, 222 ).darker( 150 ) );
}

TEST_F( MiniProfilerCell, TheDarkPaletteIsDarkerThanItsColoursAreGiven )
{
	m_Display.m_bDark = true;
	const auto layout = Layout( 0, true, false );
	EXPECT_EQ( layout.m_Highlight->m_Fill, QColor( 132, 152, 164 ).darker( 150 ) );
	EXPECT_EQ( layout.m_Highlight->m_Outline, QColor( 95, 108, 115 ).darker( 150 ) );
	EXPECT_EQ( layout.m_Bar->m_Fill, QColor( 184, 160, 94 ).darker( 150 ) );
	EXPECT_EQ( layout.m_Bar->m_Outline, QColor( 119, 95, 29 ).darker( 150 ) );
	EXPECT_EQ( layout.m_Sigma->m_Colour, QColor( 108, 111, 153 ).darker( 150 ) );
	EXPECT_EQ( Layout( 0, false, true ).m_Highlight->m_Fill, QColor( 109, 126, 137 ).darker( 150 ) );
	EXPECT_EQ( Layout( 0, false, true ).m_Sigma->m_Colour, QColor( 50, 54, 103 ).darker( 150 ) );
	const MiniProfilerPalette &palette = MiniProfilerPalette::For( true );
	EXPECT_EQ( palette.m_Band, QColor( 222, 201, 145 ).darker( 150 ) );
	EXPECT_EQ( palette.m_PaleBar, QColor( 255, 241, 203 ).darker( 150 ) );
	EXPECT_EQ( palette.m_PeakOutline, QColor( 149, 109, 60 ).darker( 150 ) );
	EXPECT_EQ( palette.m_PeakFill, QColor( 184, 144, 94 ).darker( 150 ) );
}

TEST( MiniProfilerPalette, HasGradientsWhoseInnerColoursFillTheCells )
{
	const auto Stops = []( const QColor &top, const QColor &bottom ) {
		return QGradientStops{ { 0.0, top }, { 1.0, bottom } };
	};
	const MiniProfilerPalette &light = MiniProfilerPalette::For( false );
	EXPECT_EQ( light.m_SelectedGradient.stops(), Stops( QColor( 242, 241, 255 ), QColor( 224, 222, 255 ) ) );
	EXPECT_EQ( light.m_HoverGradient.stops(), Stops( QColor( 238, 237, 255 ), QColor( 248, 248, 255 ) ) );
	EXPECT_EQ( light.m_SelectedFill, QColor( 224, 222, 255 ) );
	EXPECT_EQ( light.m_HoverFill, QColor( 238, 237, 255 ) );
	const MiniProfilerPalette &dark = MiniProfilerPalette::For( true );
	EXPECT_EQ( dark.m_SelectedGradient.stops(),
		Stops( QColor( 160, 190, 207 ).darker( 150 ), QColor( 109, 126, 137 ).darker( 150 ) ) );
	EXPECT_EQ( dark.m_HoverGradient.stops(),
		Stops( QColor( 132, 152, 164 ).darker( 150 ), QColor( 151, 195, 221 ).darker( 150 ) ) );
	for ( const QLinearGradient &gradient : { light.m_SelectedGradient, dark.m_HoverGradient } )
	{
		EXPECT_EQ( gradient.start(), QPointF( 0, 0 ) );
		EXPECT_EQ( gradient.finalStop(), QPointF( 0, 1 ) );
	}
}

TEST_F( MiniProfilerCell, AGroupsMembersAreCountedBesideItsName )
{
	m_Group.m_nMembers = 12;
	auto layout = Layout( m_Group );
	ASSERT_TRUE( layout.m_SmallText );
	EXPECT_EQ( layout.m_SmallText->m_Text, "12" );
	EXPECT_EQ( layout.m_SmallText->m_Colour, QColor( Qt::lightGray ) );
	EXPECT_EQ( layout.m_SmallText->m_Box, CELL.adjusted( 0, 0, -12, 0 ) );
	EXPECT_TRUE( layout.m_SmallText->m_Alignment & Qt::AlignRight );
	EXPECT_EQ( layout.m_Name->m_Box, CELL.adjusted( 0, 0, -28, 0 ) );

	for ( const Qt::Alignment alignment : { Qt::Alignment( Qt::AlignRight ), Qt::AlignHCenter | Qt::AlignVCenter } )
	{
		m_Display.m_Alignment = alignment;
		layout = Layout( m_Group );
		EXPECT_EQ( layout.m_SmallText->m_Box, CELL );
		EXPECT_TRUE( layout.m_SmallText->m_Alignment & Qt::AlignLeft );
		EXPECT_EQ( layout.m_Name->m_Box, CELL.adjusted( 20, 0, 0, 0 ) );
		EXPECT_EQ( layout.m_Name->m_Alignment, alignment );
	}
}

TEST_F( MiniProfilerCell, EqualNamesAreToldApartByProjectOrCaller )
{
	m_Record.SetDescription( "a\nb\nc\nd\ndemo\n" );
	EXPECT_FALSE( Layout().m_SmallText );
	m_Record.SetFlag( MINIPROFILER_ROW_DUPLICATE );
	EXPECT_EQ( Layout().m_SmallText->m_Text, "demo" );
	EXPECT_EQ( Layout().m_SmallText->m_Box, CELL.adjusted( 0, 0, -12, 0 ) );
	EXPECT_EQ( Layout().m_Name->m_Box, CELL.adjusted( 0, 0, -12 - 5 * 4, 0 ) );

	m_Record.SetFlag( MINIPROFILER_ROW_DISAMBIGUATE );
	EXPECT_FALSE( Layout().m_SmallText ); // no caller
	CQMiniProfilerRecord caller( 2, 1 );
	caller.SetName( "Caller" );
	m_Record.m_pCaller = &caller;
	EXPECT_EQ( Layout().m_SmallText->m_Text, "Caller" );
	m_Display.m_Alignment = Qt::AlignRight;
	EXPECT_EQ( Layout().m_SmallText->m_Box, CELL );
	EXPECT_EQ( Layout().m_Name->m_Box, CELL.adjusted( 5 * 6, 0, 0, 0 ) );
	EXPECT_EQ( Layout().m_Sigma->m_Colour, QColor( 107, 98, 164 ) ); // right alignment

	m_Record.SetFlag( MINIPROFILER_ROW_DISAMBIGUATE, false );
	m_Record.SetDescription( "a\nb\nc\nd\n" ); // four lines
	EXPECT_FALSE( Layout().m_SmallText );
}

TEST_F( MiniProfilerCell, AValueFarBeyondTheScaleStaysANumber )
{
	m_Record.m_Peaks[2] = 1e30f;
	m_Record.m_StDev[2] = 1e30f;
	const auto layout = Layout();
	EXPECT_GT( ( *layout.m_Peak )[0].x(), CELL.right() );
	EXPECT_LT( layout.m_Sigma->m_Lines[1].x1(), CELL.left() );
}

// -- Painting

class MiniProfilerPainting : public MiniProfilerCell
{
protected:
	std::vector<PaintOp> Paint( CMiniProfilerRow &row, int nColumn, bool bHovered, bool bSelected ) const
	{
		CPaintLog log( QSize( 400, 100 ) );
		{
			QPainter painter( &log );
			painter.setFont( m_Font );
			PaintMiniProfilerCell( painter, CELL, Layout( row, nColumn, bHovered, bSelected ),
				MiniProfilerPalette::For( m_Display.m_bDark ), row.LaidOutName( m_Font ), m_SmallFont );
		}
		return log.Ops();
	}

	QFont m_Font{ "Arial", 9 };
	QFont m_SmallFont{ "Arial", 6, QFont::Normal, true };
};

TEST_F( MiniProfilerPainting, DrawsBarBandSigmasPeakAndNameInThisOrder )
{
	const QColor barOutline( 207, 182, 86 ), sigma( 171, 165, 207 ), peak( 234, 127, 129 );
	const std::vector<QPointF> triangle{ { 181, 42 }, { 181, 55 }, { 176, 48 } };
	EXPECT_THAT( Paint( m_Record, 0, false, false ),
		ElementsAre( PaintOp::FillRect( QRectF( 22, 43, 99, 12 ), QColor( 255, 237, 168 ) ),
			PaintOp::FillRect( QRectF( 21, 42, 101, 1 ), barOutline ), // pixels 21..121, 42..55
			PaintOp::FillRect( QRectF( 21, 55, 101, 1 ), barOutline ),
			PaintOp::FillRect( QRectF( 21, 43, 1, 12 ), barOutline ),
			PaintOp::FillRect( QRectF( 121, 43, 1, 12 ), barOutline ),
			PaintOp::FillRect( QRectF( 101, 45, 21, 4 ), QColor( 255, 243, 196 ) ),
			PaintOp::Line( QLineF( 101, 41, 101, 56 ), QPen( sigma ) ),
			PaintOp::Line( QLineF( 81, 48, 121, 48 ), QPen( sigma ) ),
			PaintOp::Line( QLineF( 81, 43, 81, 54 ), QPen( sigma ) ),
			PaintOp::Line( QLineF( 121, 43, 121, 54 ), QPen( sigma ) ),
			PaintOp::FillPolygon( triangle, QColor( 253, 167, 169 ) ),
			PaintOp::OutlinePolygon( triangle, QPen( peak ) ),
			PaintOp::Text( CELL, Qt::AlignLeft, "Step", m_Font, Qt::black ) ) );
}

TEST_F( MiniProfilerPainting, HoveringThickensTheSigmas )
{
	const auto ops = Paint( m_Record, 0, true, false );
	EXPECT_EQ( ops[0], PaintOp::FillRect( QRectF( 21, 42, 207, 14 ), QColor( 238, 237, 255 ) ) );
	EXPECT_EQ( ops[1], PaintOp::FillRect( QRectF( 20, 41, 209, 1 ), QColor( 194, 191, 230 ) ) );
	const auto lines = std::ranges::count_if(
		ops, []( const PaintOp &op ) { return op.m_Kind == PaintOp::Kind::Line && op.m_flPenWidth == 3; } );
	EXPECT_EQ( lines, 4 );
}

TEST_F( MiniProfilerPainting, ASelectedNumberIsDrawnOverItsHighlight )
{
	EXPECT_THAT( Paint( m_Record, 2, false, true ),
		ElementsAre( PaintOp::FillRect( QRectF( 20, 41, 209, 16 ), QColor( 224, 222, 255 ) ),
			PaintOp::Text( CELL, Qt::AlignLeft, "40.0", m_Font, Qt::black ) ) );
}

TEST_F( MiniProfilerPainting, TextsFollowTheAlignment )
{
	for ( const Qt::Alignment alignment :
		{ Qt::Alignment( Qt::AlignLeft ), Qt::Alignment( Qt::AlignRight ), Qt::AlignHCenter | Qt::AlignVCenter } )
	{
		m_Display.m_Alignment = alignment;
		const int nFlags = static_cast<int>( alignment );
		EXPECT_EQ( Paint( m_Record, 1, false, false ).back(), PaintOp::Text( CELL, nFlags, "4", m_Font, Qt::black ) );
		const PaintOp name = Paint( m_Record, 0, false, false ).back();
		const PaintOp expected = PaintOp::Text( CELL, nFlags, "Step", m_Font, Qt::black );
		EXPECT_NEAR( name.m_Rect.x(), expected.m_Rect.x(), 1.0 ) << nFlags; // a laid-out text has its own fractions
		EXPECT_NEAR( name.m_Rect.y(), expected.m_Rect.y(), 1.0 ) << nFlags;
	}
}

TEST_F( MiniProfilerPainting, AColouredGroupWithItsCountInTheSmallFont )
{
	m_Display.m_bGroupColours = true;
	m_Group.SetBudgetColour( Qt::green );
	m_Group.m_nMembers = 3;
	m_Display.m_nBarMode = 0;
	const auto ops = Paint( m_Group, 0, false, false );
	ASSERT_EQ( ops.size(), 3u );
	EXPECT_EQ( ops[0], PaintOp::FillRect( CELL, Qt::green ) );
	EXPECT_EQ( ops[1].m_Text, "3" );
	EXPECT_EQ( ops[1].m_Font.pointSize(), 6 );
	EXPECT_TRUE( ops[1].m_Font.italic() );
	EXPECT_EQ( ops[2].m_Text, "Physics" );
	EXPECT_EQ( ops[2].m_Font.pointSize(), 9 );
}

TEST_F( MiniProfilerPainting, NothingIsDrawnOutsideTheCell )
{
	const QRectF cell( CELL );
	const auto IsInside = [cell]( const PaintOp &op )
	{
		if ( op.m_Clip && cell.contains( *op.m_Clip ) )
			return true;
		return ( op.m_Rect.isNull() || cell.contains( op.m_Rect ) ) &&
			   std::ranges::all_of( op.m_Points, [cell]( const QPointF &point ) { return cell.contains( point ); } );
	};
	for ( const PaintOp &op : Paint( m_Record, 0, true, false ) ) // where everything fits
		EXPECT_TRUE( IsInside( op ) ) << op;

	m_Record.SetName( QString( 200, 'W' ) );
	for ( MiniProfilerArray *pArray : { &m_Record.m_Cur, &m_Record.m_StDev, &m_Record.m_Peaks } )
	{
		const float flBefore = std::exchange( ( *pArray )[2], 1e20f );
		for ( const PaintOp &op : Paint( m_Record, 0, true, false ) )
			EXPECT_TRUE( IsInside( op ) ) << op;
		( *pArray )[2] = flBefore;
	}
	m_Record.m_Ave[4] = 1e30f;
	for ( const Qt::Alignment alignment : { Qt::Alignment( Qt::AlignLeft ), Qt::Alignment( Qt::AlignRight ) } )
	{
		m_Display.m_Alignment = alignment;
		EXPECT_TRUE( IsInside( Paint( m_Record, 4, false, false ).back() ) );
	}
}

TEST_F( MiniProfilerPainting, ANameIsInItsPlaceTheFirstTimeAndInAnotherFont )
{
	m_Display.m_Alignment = Qt::AlignRight;
	const auto first = Paint( m_Record, 0, false, false );
	EXPECT_TRUE( SameDrawing( Paint( m_Record, 0, false, false ), first ) );
	m_Font.setPointSize( 15 );
	const auto larger = Paint( m_Record, 0, false, false );
	EXPECT_LT( larger.back().m_Rect.x(), first.back().m_Rect.x() );
	EXPECT_TRUE( SameDrawing( Paint( m_Record, 0, false, false ), larger ) );
}

// -- Scale

TEST( MiniProfilerBarScale, FallsByEToTheMinusEightPerSecond )
{
	CFakeClock clock;
	CMiniProfilerBarScale scale;
	scale.Decay();
	CQMiniProfilerRecord record( 1, 0 );
	record.m_Ave = { 0, 100, 0, 0, 0, 0 };
	record.m_StDev = { 0, 20, 0, 0, 0, 0 };
	record.m_Peaks = { 0, 110, 50, 0, 0, 0 };
	scale.Include( record );
	EXPECT_THAT( scale.Maxima(), ElementsAre( 0, 120, 50, 0, 0, 0 ) );
	clock.Advance( 1.0 );
	scale.Decay();
	EXPECT_FLOAT_EQ( scale.Maxima()[1], static_cast<float>( 120 * std::exp( -8.0 ) ) );
	scale.Include( record );
	EXPECT_EQ( scale.Maxima()[1], 120.0f );
}

TEST( MiniProfilerBarScale, ATooLargeMaximumResetsAll )
{
	CFakeClock clock;
	CMiniProfilerBarScale scale;
	scale.Decay();
	CQMiniProfilerRecord record( 1, 0 );
	record.m_Peaks = { 0, 5, 1e10f, 0, 0, 0 };
	scale.Include( record );
	scale.Decay();
	EXPECT_THAT( scale.Maxima(), testing::Each( 0.0f ) );
}

// -- Delegate

TEST( MiniProfilerBarDelegate, StartsWithItsDefaultsAndFollowsItsSlots )
{
	CQMiniProfilerBarDelegate delegate( false, nullptr );
	const MiniProfilerDisplay &display = delegate.Display();
	EXPECT_EQ( display.m_nBarMode, 2 );
	EXPECT_EQ( display.m_Alignment, Qt::AlignLeft );
	EXPECT_TRUE( display.m_bDrawBars && display.m_bDrawSigmas && display.m_bDrawPeaks && display.m_bTextVisible );
	EXPECT_FALSE( display.m_bNameTransparent || display.m_bGroupColours || display.m_bDark );
	EXPECT_TRUE( display.m_Numbers.m_bAve );
	EXPECT_FALSE( display.m_Numbers.m_bCur || display.m_Numbers.m_bStDev || display.m_Numbers.m_bPeaks );

	const std::pair<const char *, int> modes[] = { { "OnBarNone", 0 }, { "OnBarCalls", 1 }, { "OnBarIncFrame", 2 },
		{ "OnBarExcFrame", 3 }, { "OnBarIncCall", 4 }, { "OnBarExcCall", 5 } };
	for ( const auto &[pSlot, nMode] : modes )
	{
		ASSERT_TRUE( QMetaObject::invokeMethod( &delegate, pSlot ) );
		EXPECT_EQ( display.m_nBarMode, nMode );
	}
	delegate.OnRightAlign();
	EXPECT_EQ( display.m_Alignment, Qt::AlignRight );
	delegate.OnCenterAlign();
	EXPECT_EQ( display.m_Alignment, Qt::AlignHCenter | Qt::AlignVCenter );
	delegate.OnLeftAlign();
	EXPECT_EQ( display.m_Alignment, Qt::AlignLeft );
	delegate.OnTextTransparent( true );
	EXPECT_TRUE( display.m_bNameTransparent );
	delegate.OnTextOpaque();
	EXPECT_FALSE( display.m_bNameTransparent );
	delegate.OnHideText( true );
	EXPECT_FALSE( display.m_bTextVisible );
	delegate.OnDrawBars( false );
	delegate.OnDrawSigma( false );
	delegate.OnDrawPeaks( false );
	EXPECT_FALSE( display.m_bDrawBars || display.m_bDrawSigmas || display.m_bDrawPeaks );
	delegate.OnDrawGroupBackgroundColor( true );
	EXPECT_TRUE( display.m_bGroupColours );
}
} // namespace
