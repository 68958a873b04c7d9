#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "support/randomseed.h"
#include "views/budgetscale.h"
#include "views/stripfixture.h"

using testing::ElementsAre;

namespace
{
std::vector<PaintOp> Drawn( CStrip &strip )
{
	return CPaintLog::OfWidget( strip.Bars() );
}

std::vector<QString> TextsOf( const std::vector<PaintOp> &ops, const QFont &font )
{
	std::vector<QString> texts;
	for ( const PaintOp &op : ops )
	{
		if ( op.m_Kind == PaintOp::Kind::Text && op.m_Font.family() == font.family() )
			texts.push_back( op.m_Text );
	}
	return texts;
}

std::vector<PaintOp> OfKind( const std::vector<PaintOp> &ops, PaintOp::Kind kind )
{
	std::vector<PaintOp> found;
	std::ranges::copy_if( ops, std::back_inserter( found ), [&]( const PaintOp &op ) { return op.m_Kind == kind; } );
	return found;
}

size_t CountDashDotLines( const std::vector<PaintOp> &ops )
{
	return static_cast<size_t>( std::ranges::count( ops, Qt::DashDotLine, &PaintOp::m_PenStyle ) );
}

// Two budgets and the total; averages off, so that nothing but axis and bars is drawn.
class CBarsOwner : public CFakeBudgetViewOwner
{
public:
	CBarsOwner( int nZoomStep, bool bFPSUnits )
		: CFakeBudgetViewOwner( 3 )
	{
		m_Settings.SetInt( "samples_scale", nZoomStep );
		m_Data.m_bFPSUnits = bFPSUnits;
		m_Data.m_bShowAverages = false;
	}
};
} // namespace

// Every combination of what the drawing depends on, against the rules written down a second time.
TEST( BudgetBars, AreDrawnAsTheRulesSay )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	for ( const int nZoomStep : { -20, -1, 0, 20 } )
	{
		for ( const int nBudgets : { 0, 1, 64 } )
		{
			for ( const uint32_t nSamples : { 0u, 1u, 2u, 20u, 32u, 33u, 4096u, 4097u, 5000u } )
			{
				CFakeBudgetViewOwner owner( nBudgets, random() % 2 == 0 );
				owner.m_Settings.SetInt( "samples_scale", nZoomStep );
				owner.FillRings( random, nSamples == 33 ? std::numeric_limits<uint32_t>::max() : 30'000 );
				owner.m_Data.m_nSampleCount = nSamples;
				owner.m_Data.m_nCursor = nSamples == 0 ? 0 : static_cast<uint32_t>( random() ) % nSamples;
				CStrip strip( owner, QSize( 1200, 350 ) );
				ASSERT_EQ( strip.ScrollBar().isVisible(), nBudgets == 64 );
				strip.ScrollBar().setValue( static_cast<int>( random() % 40 ) );
				for ( unsigned nFlags = 0; nFlags < 16; nFlags++ )
				{
					owner.m_Data.m_bFPSUnits = nFlags & 1;
					owner.m_Data.m_bTickSampling = nFlags & 2;
					owner.m_Data.m_bLive = nFlags & 4;
					owner.m_Data.m_bShowAverages = nFlags & 8;
					ASSERT_TRUE( SameDrawing( Drawn( strip ), ExpectedBars( owner, strip.BarsPanel() ) ) )
						<< "zoom " << nZoomStep << ", budgets " << nBudgets << ", samples " << nSamples << ", flags "
						<< nFlags << ", cursor " << owner.m_Data.m_nCursor;
				}
			}
		}
	}
}

TEST( BudgetBars, ShowHeaderAndAxisButNoBarsWithoutSamples )
{
	CBarsOwner owner( 0, false );
	owner.SetPeak( 0, 5000 );
	CStrip strip( owner, QSize( 1200, 350 ) );
	const std::vector<PaintOp> ops = Drawn( strip );
	EXPECT_EQ( ops[0].m_Kind, PaintOp::Kind::OutlineRect );
	EXPECT_THAT( TextsOf( ops, owner.m_Style.m_RowFont ), ElementsAre( "5 ms" ) );
	EXPECT_TRUE( OfKind( ops, PaintOp::Kind::FillRect ).empty() );
	EXPECT_TRUE( OfKind( ops, PaintOp::Kind::FillPolygon ).empty() );
}

TEST( BudgetBars, CarryBareNumbersAndNoMinorLinesWhenZoomedOutFully )
{
	CBarsOwner owner( -20, false );
	CStrip strip( owner, QSize( 600, 350 ) );
	const std::vector<PaintOp> ops = Drawn( strip );
	const std::vector<QString> labels = TextsOf( ops, owner.m_Style.m_RowFont );
	ASSERT_GE( labels.size(), 3u );
	EXPECT_THAT( std::vector( labels.begin(), labels.begin() + 3 ), ElementsAre( "5", "10", "15" ) );
	EXPECT_EQ( CountDashDotLines( ops ), 0u );
}

TEST( BudgetBars, ShowFourMinorLinesInEveryIntervalAtAnyOtherZoom )
{
	for ( const int nZoomStep : { -19, -1, 0, 20 } )
	{
		CBarsOwner owner( nZoomStep, false );
		CStrip strip( owner, QSize( 1200, 350 ) );
		const int nPixels = BudgetBarsPixelsPerStep( nZoomStep );
		const size_t nIntervals = static_cast<size_t>( strip.Bars().width() / nPixels + 1 );
		EXPECT_EQ( CountDashDotLines( Drawn( strip ) ), 4 * nIntervals ) << "zoom " << nZoomStep;
	}
}

TEST( BudgetBars, LabelFramesPerSecondAndTheMillisecond )
{
	CBarsOwner owner( -10, true );
	CStrip strip( owner, QSize( 1600, 350 ) );
	const std::vector<PaintOp> ops = Drawn( strip );
	EXPECT_THAT(
		TextsOf( ops, owner.m_Style.m_RowFont ), ElementsAre( "60.00 fps", "30.00 fps", "20.00 fps", "1000 fps" ) );
	// Zoom step -10: (10 × 0.14375 + 0.25) × 200 = 337.5 pixels, of which 0.06 are 20.22.
	const int H = owner.m_Style.m_nRowHeight;
	EXPECT_THAT( ops, testing::Contains( PaintOp::Line(
						  QLineF( 20, H, 20, H + strip.Bars().height() ), QPen( owner.m_Style.m_Colours.m_Grid ) ) ) );
}

TEST( BudgetBars, LeaveTheMillisecondOutWhereItDoesNotFit )
{
	CBarsOwner owner( 20, true ); // the millisecond is at 72
	owner.SetBudgets( 40 );
	for ( const int nWidth : { 71, 72 } )
	{
		const BudgetBarsView view{ QSize( nWidth + 16, 300 ), 16, 0, 20, 0 };
		const BudgetAxisLayout axis = LayoutBudgetAxis( owner.GetViewData(), owner.m_Style, view );
		EXPECT_EQ( axis.m_Millisecond.has_value(), nWidth >= 72 ) << nWidth;
	}
}

TEST( BudgetBars, KeepOneStepOfTheAxisInANegativeWidth )
{
	const CBarsOwner owner( -20, false );
	const auto steps = [&]( int nWidth )
	{
		const BudgetBarsView view{ QSize( nWidth, 300 ), 0, 0, -20, 0 };
		return LayoutBudgetAxis( owner.GetViewData(), owner.m_Style, view ).m_Steps.size();
	};
	EXPECT_EQ( steps( 0 ), 1u );
	EXPECT_EQ( steps( -49 ), 1u );
	EXPECT_EQ( steps( -50 ), 0u ); // -1 + 1
	EXPECT_EQ( steps( -100 ), 1u );
}

TEST( BudgetBars, PrintAPeakFromAHundredthOfAMillisecondOn )
{
	CBarsOwner owner( 0, false );
	owner.m_Data.m_nSampleCount = 1;
	owner.SetPeak( 0, 9 );
	owner.SetPeak( 1, 10 );
	CStrip strip( owner, QSize( 1200, 350 ) );
	EXPECT_THAT( TextsOf( Drawn( strip ), owner.m_Style.m_RowFont ), ElementsAre( "5 ms", "  0.01" ) );
}

TEST( BudgetBars, DrawNoDiamondForAPeakOfZeroPixels )
{
	CBarsOwner owner( 0, false );
	owner.m_Data.m_nSampleCount = 1;
	owner.SetPeak( 1, 7 ); // 0.875 pixels
	owner.SetPeak( 2, 8 ); // 1 pixel
	CStrip strip( owner, QSize( 1200, 350 ) );
	EXPECT_EQ( OfKind( Drawn( strip ), PaintOp::Kind::FillPolygon ).size(), 1u );
}

TEST( BudgetBars, OutlineADiamondWithWhateverPenTheDrawingBeforeItLeft )
{
	CFakeBudgetViewOwner owner( 4, true );
	owner.m_Data.m_bShowAverages = false;
	owner.m_Data.m_nSampleCount = 1;
	owner.SetPeak( 0, 3000 ); // no bar: the axis' last pen, that of the minor lines
	owner.SetPeak( 1, 3000 ); // no bar: the pen of the peak value above
	owner.SetValue( 2, 0, 1000 );
	owner.SetPeak( 2, 3000 ); // a bar: its outline's
	owner.SetPeak( 3, 9 );    // no bar; the value above has the text colour
	CStrip strip( owner, QSize( 1200, 350 ) );
	const std::vector<PaintOp> outlines = OfKind( Drawn( strip ), PaintOp::Kind::OutlinePolygon );
	ASSERT_EQ( outlines.size(), 4u );
	const QColor text = Qt::lightGray;
	EXPECT_EQ( outlines[0].m_PenStyle, Qt::DashDotLine );
	EXPECT_EQ( outlines[0].m_Colour, text );
	EXPECT_EQ( outlines[1].m_PenStyle, Qt::SolidLine );
	EXPECT_EQ( outlines[1].m_Colour, text );
	EXPECT_EQ( outlines[2].m_Colour, QColor( Qt::black ) );
	EXPECT_EQ( outlines[3].m_Colour, text );
}

TEST( BudgetBars, ClampHugeValuesToTheUsableWidth )
{
	CFakeBudgetViewOwner owner( 64 );
	owner.m_Data.m_bShowAverages = false;
	owner.m_Data.m_nSampleCount = 1;
	owner.m_Settings.SetInt( "samples_scale", 20 );
	owner.SetValue( 0, 0, std::numeric_limits<uint32_t>::max() );
	owner.SetPeak( 0, std::numeric_limits<uint32_t>::max() );
	CStrip strip( owner, QSize( 1200, 350 ) );
	const int nWidth = strip.Bars().width() - strip.ScrollBar().width();
	const std::vector<PaintOp> ops = Drawn( strip );
	const auto fills = OfKind( ops, PaintOp::Kind::FillRect );
	ASSERT_EQ( fills.size(), 1u );
	EXPECT_EQ( fills[0].m_Rect.width(), nWidth );
	EXPECT_EQ( OfKind( ops, PaintOp::Kind::Polyline )[0].m_Points[0].x(), nWidth );
}

TEST( BudgetBars, ReadSlotZeroWhenTickSamplingHasOneSample )
{
	CBarsOwner owner( 0, false );
	owner.m_Data.m_bTickSampling = true;
	owner.m_Data.m_nSampleCount = 1;
	owner.SetValue( 0, 0, 1004 );    // 125.5 pixels
	owner.SetValue( 0, 4095, 4000 ); // where -1 would be
	CStrip strip( owner, QSize( 1200, 350 ) );
	const auto fills = OfKind( Drawn( strip ), PaintOp::Kind::FillRect );
	ASSERT_EQ( fills.size(), 1u );
	EXPECT_EQ( fills[0].m_Rect.width(), 125 );
}

TEST( BudgetBars, ShowTheSampleUnderTheHistoryCursorWhileNotLive )
{
	CBarsOwner owner( 0, false );
	owner.m_Data.m_nSampleCount = 5000;
	owner.SetValue( 0, 4999, 1004 ); // 125.5 pixels
	owner.SetValue( 0, 4500, 2004 ); // 250.5 pixels, in slot 404
	owner.m_Data.m_nCursor = 4500;
	CStrip strip( owner, QSize( 1200, 350 ) );
	EXPECT_EQ( OfKind( Drawn( strip ), PaintOp::Kind::FillRect )[0].m_Rect.width(), 125 );
	owner.m_Data.m_bLive = false;
	EXPECT_EQ( OfKind( Drawn( strip ), PaintOp::Kind::FillRect )[0].m_Rect.width(), 250 );
}
