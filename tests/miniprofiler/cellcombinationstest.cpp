// The name cell of a record in every combination of bar mode, alignment, display options, hover, selection,
// normalisation and style, against the rules once more in plain words.
#include <gtest/gtest.h>

#include <QPainter>

#include "miniprofiler/miniprofilercelllayout.h"
#include "miniprofiler/miniprofilercellpainter.h"
#include "support/paintlog.h"

namespace
{
constexpr QRect COMBINED_CELL( 20, 40, 209, 18 ); // x 20..228, y 40..57

// Multiples of it divide without a remainder worth a pixel at either width of the bar's area: 200 with peaks, 207
// without.
constexpr float MAXIMUM = 200.0f * 207.0f;
constexpr int CURRENT = 50, AVERAGE = 40, DEVIATION = 10, PEAK = 80; // per cent of it

struct Colours
{
	QColor m_HoverFill, m_SelectedFill, m_HoverOutline, m_BarOutline, m_BarFill, m_Band, m_Pale, m_Sigma, m_StrongSigma,
		m_PeakOutline, m_PeakFill;
};

Colours LightColours()
{
	return { { 238, 237, 255 }, { 224, 222, 255 }, { 194, 191, 230 }, { 207, 182, 86 }, { 255, 237, 168 },
		{ 255, 243, 196 }, { 255, 248, 221 }, { 171, 165, 207 }, { 107, 98, 164 }, { 234, 127, 129 },
		{ 253, 167, 169 } };
}

Colours DarkColours()
{
	const auto Dark = []( int nRed, int nGreen, int nBlue ) { return QColor( nRed, nGreen, nBlue ).darker( 150 ); };
	return { Dark( 132, 152, 164 ), Dark( 109, 126, 137 ), Dark( 95, 108, 115 ), Dark( 119, 95, 29 ),
		Dark( 184, 160, 94 ), Dark( 222, 201, 145 ), Dark( 255, 241, 203 ), Dark( 108, 111, 153 ), Dark( 50, 54, 103 ),
		Dark( 149, 109, 60 ), Dark( 184, 144, 94 ) };
}

struct Combination
{
	MiniProfilerDisplay m_Display;
	bool m_bHovered = false;
	bool m_bSelected = false;
	bool m_bColoured = false; // the record has a budget's colour
};

class CExpectation
{
public:
	explicit CExpectation( const Combination &combination )
		: m_Combination( combination )
		, m_Display( combination.m_Display )
		, m_Colours( m_Display.m_bDark ? DarkColours() : LightColours() )
	{
		Background();
		if ( m_Display.m_nBarMode != 0 )
		{
			if ( m_Display.m_bDrawBars )
				Bar();
			if ( m_Display.m_bDrawSigmas )
				Sigmas();
			if ( m_Display.m_bDrawPeaks )
				Peak();
		}
	}

	std::vector<PaintOp> m_Ops; // but for the name

	QColor NameColour() const
	{
		QColor colour = m_Display.m_bDark && !ShowsColour() ? Qt::white : Qt::black;
		if ( m_Display.m_bNameTransparent )
			colour.setAlpha( 128 );
		return colour;
	}

private:
	bool ShowsColour() const { return m_Combination.m_bColoured && m_Display.m_bGroupColours; }

	void Background()
	{
		if ( ShowsColour() )
			m_Ops.push_back( PaintOp::FillRect( COMBINED_CELL, Qt::green ) );
		const QColor fill = m_Combination.m_bSelected ? m_Colours.m_SelectedFill : m_Colours.m_HoverFill;
		const Qt::BrushStyle style = ShowsColour() ? Qt::Dense4Pattern : Qt::SolidPattern;
		if ( m_Combination.m_bHovered )
		{
			m_Ops.push_back( PaintOp::FillRect( QRectF( 21, 42, 207, 14 ), fill, style ) );
			Frame( 20, 41, 228, 56, m_Colours.m_HoverOutline );
		}
		else if ( m_Combination.m_bSelected )
			m_Ops.push_back( PaintOp::FillRect( QRectF( 20, 41, 209, 16 ), fill, style ) );
	}

	// The outermost pixels of a rectangle, edges included: top, bottom, left, right.
	void Frame( int nLeft, int nTop, int nRight, int nBottom, const QColor &colour )
	{
		for ( const QRectF &edge :
			{ QRectF( nLeft, nTop, nRight - nLeft + 1, 1 ), QRectF( nLeft, nBottom, nRight - nLeft + 1, 1 ),
				QRectF( nLeft, nTop + 1, 1, nBottom - nTop - 1 ), QRectF( nRight, nTop + 1, 1, nBottom - nTop - 1 ) } )
			m_Ops.push_back( PaintOp::FillRect( edge, colour ) );
	}

	int X( int nPercent ) const { return 21 + ( m_Display.m_bDrawPeaks ? 200 : 207 ) * nPercent / 100; }

	void Bar()
	{
		const int nRight = X( CURRENT );
		if ( m_Display.m_nNormalised > 0 && !m_Combination.m_bHovered && !m_Combination.m_bSelected )
		{
			m_Ops.push_back( PaintOp::FillRect( QRectF( 21, 42, nRight - 20, 14 ), m_Colours.m_Pale ) );
			return;
		}
		m_Ops.push_back( PaintOp::FillRect( QRectF( 22, 43, nRight - 22, 12 ), m_Colours.m_BarFill ) );
		Frame( 21, 42, nRight, 55, m_Colours.m_BarOutline );
		m_Ops.push_back(
			PaintOp::FillRect( QRectF( X( AVERAGE ), 45, X( CURRENT ) - X( AVERAGE ) + 1, 4 ), m_Colours.m_Band ) );
	}

	void Sigmas()
	{
		const bool bStrong = m_Combination.m_bSelected || m_Display.m_Alignment == Qt::AlignRight;
		QPen pen( bStrong ? m_Colours.m_StrongSigma : m_Colours.m_Sigma );
		if ( m_Combination.m_bHovered )
			pen.setWidth( 3 );
		const int nLow = X( AVERAGE - DEVIATION ), nHigh = X( AVERAGE + DEVIATION );
		m_Ops.push_back( PaintOp::Line( QLineF( X( AVERAGE ), 41, X( AVERAGE ), 56 ), pen ) );
		m_Ops.push_back( PaintOp::Line( QLineF( nLow, 48, nHigh, 48 ), pen ) );
		m_Ops.push_back( PaintOp::Line( QLineF( nLow, 43, nLow, 54 ), pen ) );
		m_Ops.push_back( PaintOp::Line( QLineF( nHigh, 43, nHigh, 54 ), pen ) );
	}

	void Peak()
	{
		const std::vector<QPointF> triangle{
			QPointF( X( PEAK ), 42 ), QPointF( X( PEAK ), 55 ), QPointF( X( PEAK ) - 5, 48 ) };
		m_Ops.push_back( PaintOp::FillPolygon( triangle, m_Colours.m_PeakFill ) );
		m_Ops.push_back( PaintOp::OutlinePolygon( triangle, QPen( m_Colours.m_PeakOutline ) ) );
	}

	const Combination &m_Combination;
	const MiniProfilerDisplay &m_Display;
	const Colours m_Colours;
};

Combination CombinationOf( unsigned int nBits, int nBarMode, Qt::Alignment alignment )
{
	const auto Bit = [nBits]( unsigned int nBit ) { return ( nBits >> nBit & 1 ) != 0; };
	Combination combination;
	MiniProfilerDisplay &display = combination.m_Display;
	display.m_nBarMode = nBarMode;
	display.m_Alignment = alignment;
	display.m_BarMaxima.fill( MAXIMUM );
	display.m_bDrawBars = Bit( 0 );
	display.m_bDrawSigmas = Bit( 1 );
	display.m_bDrawPeaks = Bit( 2 );
	display.m_bTextVisible = Bit( 3 );
	display.m_bNameTransparent = Bit( 4 );
	display.m_bGroupColours = Bit( 5 );
	display.m_nNormalised = Bit( 6 ) ? 2 : 0;
	display.m_bDark = Bit( 7 );
	combination.m_bHovered = Bit( 8 );
	combination.m_bSelected = Bit( 9 );
	combination.m_bColoured = Bit( 10 );
	return combination;
}

class MiniProfilerCellCombinations : public testing::TestWithParam<int>
{
protected:
	// A record whose column has the values, and all others have none.
	static void SetValues( CQMiniProfilerRecord &record, size_t nColumn )
	{
		record.m_Cur[nColumn] = MAXIMUM * CURRENT / 100;
		record.m_Ave[nColumn] = MAXIMUM * AVERAGE / 100;
		record.m_StDev[nColumn] = MAXIMUM * DEVIATION / 100;
		record.m_Peaks[nColumn] = MAXIMUM * PEAK / 100;
	}

	std::vector<PaintOp> Paint( CQMiniProfilerRecord &record, const Combination &combination ) const
	{
		CPaintLog log( QSize( 400, 100 ) );
		QPainter painter( &log );
		painter.setFont( m_Font );
		const auto layout = LayoutMiniProfilerCell(
			record, { COMBINED_CELL, 0, combination.m_bHovered, combination.m_bSelected }, combination.m_Display );
		PaintMiniProfilerCell( painter, COMBINED_CELL, layout,
			MiniProfilerPalette::For( combination.m_Display.m_bDark ), record.LaidOutName( m_Font ), m_Font );
		painter.end();
		return log.Ops();
	}

	void Check( CQMiniProfilerRecord &record, const Combination &combination ) const
	{
		const CExpectation expected( combination );
		std::vector<PaintOp> ops = Paint( record, combination );
		if ( combination.m_Display.m_bTextVisible )
		{
			ASSERT_FALSE( ops.empty() );
			EXPECT_EQ( ops.back().m_Text, "Step" );
			EXPECT_EQ( ops.back().m_Colour, expected.NameColour() );
			ops.pop_back();
		}
		ASSERT_TRUE( SameDrawing( ops, expected.m_Ops ) );
	}

	QFont m_Font{ "Arial", 9 };
};

TEST_P( MiniProfilerCellCombinations, AreDrawnByTheRules )
{
	constexpr unsigned int BITS = 11;
	const int nBarMode = GetParam();
	for ( const Qt::Alignment alignment :
		{ Qt::Alignment( Qt::AlignLeft ), Qt::Alignment( Qt::AlignRight ), Qt::AlignHCenter | Qt::AlignVCenter } )
		for ( unsigned int nBits = 0; nBits < 1u << BITS; nBits++ )
		{
			const Combination combination = CombinationOf( nBits, nBarMode, alignment );
			CQMiniProfilerRecord record( 1, 0 );
			record.SetName( "Step" );
			SetValues( record, static_cast<size_t>( nBarMode ) );
			if ( combination.m_bColoured )
				record.SetBudgetColour( Qt::green );
			SCOPED_TRACE( testing::Message() << "bits " << nBits << ", alignment " << static_cast<int>( alignment ) );
			Check( record, combination );
			if ( HasFailure() )
				return;
		}
}

INSTANTIATE_TEST_SUITE_P( OfEveryBarMode, MiniProfilerCellCombinations, testing::Range( 0, 6 ) );
} // namespace
