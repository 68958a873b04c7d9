#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFontMetrics>
#include <algorithm>
#include <limits>

#include "views/budgetstatisticslayout.h"
#include "views/stripfixture.h"

using testing::ElementsAre;

namespace
{
std::vector<PaintOp> OfColour( const std::vector<PaintOp> &ops, PaintOp::Kind kind, const QColor &colour )
{
	std::vector<PaintOp> found;
	std::ranges::copy_if( ops, std::back_inserter( found ),
		[&]( const PaintOp &op ) { return op.m_Kind == kind && op.m_Colour == colour; } );
	return found;
}

std::vector<QString> Captions( CStrip &strip )
{
	std::vector<QString> captions;
	for ( const PaintOp &op : CPaintLog::OfWidget( strip.Bars() ) )
	{
		if ( op.m_Text.startsWith( "avg" ) )
			captions.push_back( op.m_Text );
	}
	return captions;
}

const QColor YELLOW( 255, 255, 0 );
} // namespace

TEST( BudgetStatisticsDrawing, ShowsZerosAndNoWhiskersForOneSample )
{
	CFakeBudgetViewOwner owner( 2, true );
	owner.m_Data.m_nSampleCount = 1;
	owner.SetValue( 0, 0, 3000 );
	CStrip strip( owner, QSize( 1200, 350 ) );
	const QString zeros = "avg  0.00 stddev  0.000 [ 0.000-> 0.000]";
	EXPECT_THAT( Captions( strip ), ElementsAre( zeros, zeros ) );
	EXPECT_THAT( OfColour( CPaintLog::OfWidget( strip.Bars() ), PaintOp::Kind::Line, YELLOW ), ElementsAre() );
}

TEST( BudgetStatisticsDrawing, ShowsCaptionsOfZerosBeforeTheFirstSample )
{
	CFakeBudgetViewOwner owner( 3 );
	CStrip strip( owner, QSize( 1200, 350 ) );
	EXPECT_EQ( Captions( strip ).size(), 3u );
}

TEST( BudgetStatisticsDrawing, DrawsAWhiskerAroundTheMean )
{
	CFakeBudgetViewOwner owner( 2, true );
	owner.m_Data.m_nSampleCount = 2;
	owner.SetValue( 0, 0, 1004 );
	owner.SetValue( 0, 1, 3004 ); // mean 2004, deviation 1414.2; 0.125 pixels per microsecond
	CStrip strip( owner, QSize( 1200, 350 ) );
	const int y = owner.m_Style.m_nRowHeight + owner.m_Style.m_nRowHeight / 2;
	const auto line = []( int x1, int y1, int x2, int y2 )
	{ return PaintOp::Line( QLineF( x1, y1, x2, y2 ), YELLOW ); };
	EXPECT_THAT( OfColour( CPaintLog::OfWidget( strip.Bars() ), PaintOp::Kind::Line, YELLOW ),
		ElementsAre( line( 73, y, 427, y ), line( 73, y - 3, 73, y + 3 ), line( 250, y - 3, 250, y + 3 ),
			line( 427, y - 3, 427, y + 3 ) ) );
}

TEST( BudgetStatisticsDrawing, LetsAWhiskerBeginOutsideAndEndsItAtTheUsableWidth )
{
	CFakeBudgetViewOwner owner( 1, true );
	owner.m_Data.m_nSampleCount = 32;
	owner.SetValue( 0, 31, 32'000'000 ); // one large value among zeros: the deviation exceeds the mean
	CStrip strip( owner, QSize( 1200, 350 ) );
	const auto lines = OfColour( CPaintLog::OfWidget( strip.Bars() ), PaintOp::Kind::Line, YELLOW );
	ASSERT_EQ( lines.size(), 4u );
	EXPECT_LT( lines[0].m_Points[0].x(), -100'000 );
	EXPECT_EQ( lines[0].m_Points[1].x(), strip.Bars().width() );
	EXPECT_EQ( lines[3].m_Points[0].x(), strip.Bars().width() );
}

TEST( BudgetStatisticsDrawing, TruncatesAWhiskersEndsTowardZeroOnBothSides )
{
	CFakeBudgetViewOwner owner( 1 );
	owner.m_Data.m_nSampleCount = 2;
	owner.SetValue( 0, 1, 10 ); // mean 5, deviation 7.07: ends at -0.26 and 1.51 pixels
	const BudgetBarsView view{ QSize( 1000, 300 ), 0, 0, 0, 100 };
	const BudgetStatisticsLayout layout = LayoutBudgetStatistics( owner.GetViewData(), owner.m_Style, view );
	ASSERT_EQ( layout.m_Whiskers.size(), 1u );
	EXPECT_EQ( layout.m_Whiskers[0].m_nLow, 0 );
	EXPECT_EQ( layout.m_Whiskers[0].m_nHigh, 1 );
}

TEST( BudgetStatisticsDrawing, HoldsTheWidestWhiskerThereIs )
{
	CFakeBudgetViewOwner owner( 1 );
	owner.m_Data.m_nSampleCount = 3;
	owner.m_Data.m_bTickSampling = true;
	const uint32_t nLargest = std::numeric_limits<uint32_t>::max();
	owner.SetValue( 0, 1, nLargest );
	owner.SetValue( 0, 0, nLargest );
	owner.SetValue( 0, 4095, 0 ); // in the squares only: mean and deviation are both the largest value
	const BudgetBarsView view{ QSize( 1000, 300 ), 0, 0, 20, 100 };
	const BudgetStatisticsLayout layout = LayoutBudgetStatistics( owner.GetViewData(), owner.m_Style, view );
	ASSERT_EQ( layout.m_Whiskers.size(), 1u );
	EXPECT_EQ( layout.m_Whiskers[0].m_nLow, 0 );
	EXPECT_EQ( layout.m_Whiskers[0].m_nHigh, 1000 );
}

TEST( BudgetStatisticsDrawing, PutsEveryCaptionAtTheRightEdgeOfItsRow )
{
	CFakeBudgetViewOwner owner( 3 );
	CStrip strip( owner, QSize( 1200, 350 ) );
	const int nWidth =
		QFontMetrics( owner.m_Style.m_CaptionFont ).horizontalAdvance( " avg  0.00 stddev  0.000 [ 0.000-> 0.000]" );
	const int H = owner.m_Style.m_nRowHeight;
	std::vector<QRectF> boxes;
	for ( const PaintOp &op : CPaintLog::OfWidget( strip.Bars() ) )
	{
		if ( op.m_BrushStyle == Qt::Dense4Pattern )
			boxes.push_back( op.m_Rect );
	}
	const int x = strip.Bars().width() - nWidth;
	EXPECT_THAT(
		boxes, ElementsAre( QRectF( x, H, nWidth, H ), QRectF( x, 2 * H, nWidth, H ), QRectF( x, 3 * H, nWidth, H ) ) );
}

TEST( BudgetStatisticsDrawing, LeavesABlanksWidthOfPatternLeftOfTheText )
{
	const CFakeBudgetViewOwner owner( 1 );
	const QFontMetrics metrics( owner.m_Style.m_CaptionFont );
	const int nDrawn = metrics.horizontalAdvance( BudgetStatisticsText( {} ) );
	EXPECT_NEAR( MeasureBudgetCaption( owner.m_Style.m_CaptionFont ), nDrawn + metrics.horizontalAdvance( ' ' ), 1 );
}

TEST( BudgetStatisticsDrawing, DisappearsWithShowAveragesAndNothingElseDoes )
{
	CFakeBudgetViewOwner owner( 5, true );
	std::mt19937 random( 1 );
	owner.FillRings( random, 8000 );
	owner.m_Data.m_nSampleCount = 100;
	CStrip strip( owner, QSize( 1200, 350 ) );
	const std::vector<PaintOp> with = CPaintLog::OfWidget( strip.Bars() );
	owner.m_Data.m_bShowAverages = false;
	const std::vector<PaintOp> without = CPaintLog::OfWidget( strip.Bars() );
	ASSERT_EQ( with.size(), without.size() + 5 * 4 + 5 * 2 ); // four lines and two operations of a caption per budget
	EXPECT_TRUE( std::equal( without.begin(), without.end(), with.begin() ) );
}
