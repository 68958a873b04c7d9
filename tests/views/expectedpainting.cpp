#include "views/expectedpainting.h"

#include <QFontMetrics>
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>

namespace
{
constexpr int ONE_LINE_LEFT = Qt::AlignLeft | Qt::AlignVCenter;

QRectF Corners( int nLeft, int nTop, int nRight, int nBottom )
{
	return QRectF( nLeft, nTop, nRight - nLeft + 1, nBottom - nTop + 1 );
}

// The slot that bars and statistics show.
int SelectedSlot( const BudgetViewData &data )
{
	int64_t nSample = data.m_nSampleCount == 0 ? 0
					  : data.m_bLive           ? int64_t{ data.m_nSampleCount } - 1 - ( data.m_bTickSampling ? 1 : 0 )
											   : int64_t{ data.m_nCursor };
	return static_cast<int>( std::max<int64_t>( nSample % 4096, 0 ) );
}

class CExpectedBars
{
public:
	CExpectedBars( const CFakeBudgetViewOwner &owner, const ExpectedPanel &panel )
		: m_Panel( panel )
		, m_Data( owner.GetViewData() )
		, m_Style( owner.m_Style )
		, H( QFontMetrics( m_Style.m_RowFont ).height() + 2 )
		, W( panel.m_nWidth - panel.m_nScrollBarWidth )
		, P( static_cast<int>( ( static_cast<float>( panel.m_nZoomStep + 20 ) * 0.14375f + 0.25f ) * 200.0f ) )
		, m_flFactor( m_Data.m_bFPSUnits ? 0.00006f : 0.0002f )
	{
		const int nRows = ( panel.m_nHeight - H ) / H;
		for ( int r = panel.m_nFirstRow;
			  r < panel.m_nFirstRow + nRows && r < static_cast<int>( m_Data.m_Categories.size() ); r++ )
			m_Visible.push_back( r );
	}

	std::vector<PaintOp> Run()
	{
		Axis();
		if ( m_Data.m_nSampleCount > 0 )
			Bars();
		if ( m_Data.m_bShowAverages )
			Statistics();
		return m_Ops;
	}

private:
	void Line( int x1, int y1, int x2, int y2 ) { m_Ops.push_back( PaintOp::Line( QLineF( x1, y1, x2, y2 ), m_Pen ) ); }
	void Text( const QRectF &box, int nFlags, const QString &text, const QFont &font )
	{
		m_Ops.push_back( PaintOp::Text( box, nFlags, text, font, m_Pen.color() ) );
	}

	// By the C library, whose rounding of ties counts.
	template <typename... Numbers>
	static QString Print( const char *pFormat, Numbers... numbers )
	{
		char text[256];
		std::snprintf( text, sizeof( text ), pFormat, numbers... );
		return text;
	}

	QString Label( double flNumber, const char *pNumberFormat )
	{
		QString label = Print( pNumberFormat, flNumber );
		if ( m_Panel.m_nZoomStep > -20 )
			label += m_Data.m_bFPSUnits ? " fps" : " ms";
		return label;
	}

	void Axis()
	{
		m_Pen = QPen( Qt::black );
		m_Ops.push_back( PaintOp::OutlineRect( Corners( 0, 0, W - 2, H - 1 ), m_Pen ) );
		for ( int i = 0; i < W / P + 1; i++ )
		{
			const int x = i * P;
			if ( i > 0 )
			{
				m_Pen = QPen( m_Style.m_Colours.m_Text );
				Text( Corners( x - 40, 0, x + 40, H ), Qt::AlignCenter,
					m_Data.m_bFPSUnits ? Label( 60.0 / i, "%.2f" ) : Label( 5.0 * i, "%.0f" ), m_Style.m_RowFont );
				m_Pen = QPen( m_Style.m_Colours.m_Grid );
				Line( x, H, x, H + m_Panel.m_nHeight );
			}
			if ( m_Panel.m_nZoomStep > -20 )
			{
				m_Pen = QPen( m_Style.m_Colours.m_SubGrid, 1, Qt::DashDotLine );
				for ( int j = 1; j <= 4; j++ )
					Line( x + j * ( P / 5 ), H, x + j * ( P / 5 ), H + m_Panel.m_nHeight );
			}
		}
		const int x1000 = static_cast<int>( static_cast<float>( P ) * 0.06f );
		if ( m_Data.m_bFPSUnits && x1000 <= W )
		{
			m_Pen = QPen( m_Style.m_Colours.m_Grid );
			Line( x1000, H, x1000, H + m_Panel.m_nHeight );
			m_Pen = QPen( m_Style.m_Colours.m_Text );
			Text( Corners( x1000 - 40, 0, x1000 + 40, H ), Qt::AlignCenter, Label( 1000, "%.0f" ), m_Style.m_RowFont );
		}
	}

	int Pixels( uint32_t nValue ) const
	{
		const float flSteps = static_cast<float>( nValue ) * m_flFactor;
		return std::min( static_cast<int>( flSteps * static_cast<float>( P ) ), W );
	}

	void Bars()
	{
		int nTop = H + 2;
		for ( const int r : m_Visible )
		{
			const auto nBudget = static_cast<size_t>( r );
			const QColor colour = m_Data.m_Categories[nBudget].m_Colour;
			const uint32_t *pBlock = m_Data.m_Blocks.data() + nBudget * BUDGET_BLOCK_STRIDE;
			const int nBottom = nTop + H - 5;

			const int L = Pixels( pBlock[SelectedSlot( m_Data )] );
			if ( L > 0 )
			{
				m_Pen = QPen( Qt::black );
				m_Ops.push_back( PaintOp::FillRect( Corners( 0, nTop, L - 1, nBottom ), colour ) );
				m_Ops.push_back( PaintOp::OutlineRect( Corners( 0, nTop, L - 1, nBottom ), m_Pen ) );
			}

			const int p = std::max( Pixels( pBlock[4096] ), 0 );
			if ( p > 0 )
			{
				const int c = nTop + ( nBottom - nTop + 1 ) / 2;
				const int d = H / 3;
				const std::vector<QPointF> diamond = {
					QPointF( p, c - d ), QPointF( p + d, c ), QPointF( p, c + d ), QPointF( p - d, c ) };
				m_Ops.push_back( PaintOp::FillPolygon( diamond, colour ) );
				m_Ops.push_back( PaintOp::OutlinePolygon( diamond, m_Pen ) );
				m_Pen = QPen( Qt::black );
				m_Ops.push_back( PaintOp::Polyline( diamond, m_Pen ) );
			}
			if ( pBlock[4096] >= 10 )
			{
				m_Pen = QPen( m_Style.m_Colours.m_Text );
				Text( Corners( p, nTop, W - 1, nBottom ), ONE_LINE_LEFT,
					Print( "  %.2f", static_cast<double>( static_cast<float>( pBlock[4096] ) * 0.001f ) ),
					m_Style.m_RowFont );
			}
			nTop += H;
		}
	}

	struct Record
	{
		float m_flMean = 0;
		float m_flDeviation = 0;
		uint32_t m_nMinimum = 0;
		uint32_t m_nMaximum = 0;
	};

	// By lists: the 32 values backwards from the slot, the last of which "Tick Sampling" leaves out of everything but
	// the squares.
	Record Summarise( int nBudget ) const
	{
		std::vector<uint32_t> all;
		for ( uint32_t i = 0; i < std::min( m_Data.m_nSampleCount, 32u ); i++ )
		{
			const int nSlot = SelectedSlot( m_Data ) - static_cast<int>( i );
			all.push_back( m_Data.m_Blocks[static_cast<size_t>(
				nBudget * static_cast<int>( BUDGET_BLOCK_STRIDE ) + ( nSlot < 0 ? nSlot + 4096 : nSlot ) )] );
		}
		std::vector<uint32_t> counted = all;
		if ( m_Data.m_bTickSampling && !counted.empty() )
			counted.pop_back();
		if ( counted.size() < 2 )
			return {};
		double flMean = 0;
		for ( const uint32_t nValue : counted )
			flMean += nValue;
		flMean /= static_cast<double>( counted.size() );
		double flSquares = 0;
		for ( const uint32_t nValue : all )
			flSquares += std::pow( nValue - flMean, 2 );
		return { static_cast<float>( flMean ),
			static_cast<float>( std::sqrt( flSquares / static_cast<double>( counted.size() - 1 ) ) ),
			*std::ranges::min_element( counted ), *std::ranges::max_element( counted ) };
	}

	void Statistics()
	{
		const auto x = [this]( float flValue )
		{
			const float flSteps = flValue * m_flFactor;
			return static_cast<int>( std::min( std::trunc( P * static_cast<double>( flSteps ) ), double( W ) ) );
		};
		m_Pen = QPen( m_Style.m_Colours.m_Statistics );
		int y = H + H / 2;
		for ( const int r : m_Visible )
		{
			const Record record = Summarise( r );
			if ( record.m_flMean * m_flFactor != 0.0f )
			{
				const int nLow = x( record.m_flMean - record.m_flDeviation );
				const int nHigh = x( record.m_flMean + record.m_flDeviation );
				Line( nLow, y, nHigh, y );
				for ( const int nTick : { nLow, x( record.m_flMean ), nHigh } )
					Line( nTick, y - 3, nTick, y + 3 );
			}
			y += H;
		}

		const int nCaptionWidth =
			QFontMetrics( m_Style.m_CaptionFont ).horizontalAdvance( " avg  0.00 stddev  0.000 [ 0.000-> 0.000]" );
		m_Pen = QPen( Qt::black );
		int nTop = H;
		for ( const int r : m_Visible )
		{
			const Record record = Summarise( r );
			const QRectF box = Corners( W - nCaptionWidth, nTop, W - 1, nTop + H - 1 );
			m_Ops.push_back(
				PaintOp::FillRect( box, m_Data.m_Categories[static_cast<size_t>( r )].m_Colour, Qt::Dense4Pattern ) );
			const auto milliseconds = []( float flValue ) { return static_cast<double>( flValue * 0.001f ); };
			Text( box, Qt::AlignRight | Qt::AlignVCenter,
				Print( "avg %5.2f stddev %6.3f [%6.3f->%6.3f]", milliseconds( record.m_flMean ),
					milliseconds( record.m_flDeviation ), milliseconds( static_cast<float>( record.m_nMinimum ) ),
					milliseconds( static_cast<float>( record.m_nMaximum ) ) ),
				m_Style.m_CaptionFont );
			nTop += H;
		}
	}

	const ExpectedPanel m_Panel;
	const BudgetViewData m_Data;
	const BudgetViewStyle &m_Style;
	const int H; // row height
	const int W; // usable width
	const int P; // pixels per grid step
	const float m_flFactor;
	std::vector<int> m_Visible;
	QPen m_Pen;
	std::vector<PaintOp> m_Ops;
};
} // namespace

std::vector<PaintOp> ExpectedNames( const CFakeBudgetViewOwner &owner, const ExpectedPanel &panel )
{
	const BudgetViewStyle &style = owner.m_Style;
	const int H = QFontMetrics( style.m_RowFont ).height() + 2;
	std::vector<PaintOp> ops;
	QPen pen( style.m_Colours.m_Text );
	ops.push_back( PaintOp::OutlineRect( Corners( 0, 0, panel.m_nWidth - 2, H - 1 ), pen ) );
	ops.push_back( PaintOp::Text(
		Corners( 0, 0, panel.m_nWidth - 2, H - 1 ), Qt::AlignCenter, "Budget Nodes", style.m_RowFont, pen.color() ) );
	const int nRows = ( panel.m_nHeight - H ) / H;
	for ( int k = 0; k < nRows && panel.m_nFirstRow + k < static_cast<int>( owner.m_Categories.size() ); k++ )
	{
		const BudgetCategory &category = owner.m_Categories[static_cast<size_t>( panel.m_nFirstRow + k )];
		const QRectF box = Corners( 0, H + 2 + k * H, panel.m_nWidth - 2, H + 2 + k * H + H - 4 - 1 );
		ops.push_back( PaintOp::FillRect( box, category.m_Colour ) );
		ops.push_back( PaintOp::OutlineRect( box, pen ) );
		pen = QPen( Qt::black );
		if ( !category.m_Name.IsEmpty() )
			ops.push_back( PaintOp::Text(
				box, ONE_LINE_LEFT, QString::fromUtf8( category.m_Name.Get() ), style.m_RowFont, Qt::black ) );
	}
	return ops;
}

std::vector<PaintOp> ExpectedBars( const CFakeBudgetViewOwner &owner, const ExpectedPanel &panel )
{
	return CExpectedBars( owner, panel ).Run();
}
