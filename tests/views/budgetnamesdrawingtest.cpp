#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTest>

#include "keel0/platform.h"
#include "views/budgetnameswidget.h"
#include "views/budgetsampleswidget.h"
#include "views/expectedpainting.h"
#include "views/stripfixture.h"

using testing::ElementsAre;

namespace
{
std::vector<std::string> g_Copied;

class BudgetNames : public testing::Test
{
protected:
	BudgetNames()
	{
		g_Copied.clear();
		Plat_SetClipboardSink( []( const char *pText ) { g_Copied.push_back( pText ); } );
	}
	~BudgetNames() override { Plat_SetClipboardSink( nullptr ); }

	static std::vector<PaintOp> Drawn( CStrip &strip ) { return CPaintLog::OfWidget( strip.Names() ); }
};
} // namespace

TEST_F( BudgetNames, AreDrawnAsTheRulesSayForAnyNumberOfBudgetsAndStyle )
{
	for ( const int nBudgets : { 0, 1, 2, 12, 64 } )
	{
		for ( const bool bDark : { false, true } )
		{
			SCOPED_TRACE( testing::Message() << nBudgets << " budgets, dark " << bDark );
			CFakeBudgetViewOwner owner( nBudgets, bDark );
			CStrip strip( owner, QSize( 900, 400 ) );
			EXPECT_TRUE( SameDrawing( Drawn( strip ), ExpectedNames( owner, strip.NamesPanel() ) ) );
		}
	}
}

TEST_F( BudgetNames, ShowTheHeaderWithoutAnyBudget )
{
	CFakeBudgetViewOwner owner( 0 );
	CStrip strip( owner, QSize( 900, 400 ) );
	const int H = owner.m_Style.m_nRowHeight;
	const int nWidth = strip.Names().width();
	const QRect header( 0, 0, nWidth - 1, H );
	EXPECT_THAT( Drawn( strip ),
		ElementsAre( PaintOp::OutlineRect( header, QPen( Qt::black ) ),
			PaintOp::Text( header, Qt::AlignCenter, "Budget Nodes", owner.m_Style.m_RowFont, Qt::black ) ) );
}

TEST_F( BudgetNames, OutlineTheFirstRowInTheTextColourAndAllLaterOnesInBlack )
{
	CFakeBudgetViewOwner owner( 4, true );
	CStrip strip( owner, QSize( 900, 400 ) );
	std::vector<QColor> outlines;
	for ( const PaintOp &op : Drawn( strip ) )
	{
		if ( op.m_Kind == PaintOp::Kind::OutlineRect )
			outlines.push_back( op.m_Colour );
	}
	const QColor text = Qt::lightGray;
	EXPECT_THAT( outlines, ElementsAre( text, text, Qt::black, Qt::black, Qt::black ) ); // the header's first
}

TEST_F( BudgetNames, LeaveTheBoxOfABudgetWithoutANameEmpty )
{
	CFakeBudgetViewOwner owner( 2 );
	owner.m_Categories[0].m_Name = static_cast<const char *>( nullptr );
	CStrip strip( owner, QSize( 900, 400 ) );
	CPaintLog log( strip.Names().size() );
	strip.Names().render( &log, QPoint(), QRegion(), QWidget::RenderFlags() );
	EXPECT_THAT( log.Texts(), ElementsAre( "Budget Nodes", "Totals" ) );
	EXPECT_EQ( log.OfKind( PaintOp::Kind::FillRect ).size(), 2u );
}

TEST_F( BudgetNames, AreCutOffAtTheirBoxAndKeptOnOneLine )
{
	CFakeBudgetViewOwner owner( 2 );
	owner.m_Categories[0].m_Name = "A name\nthat is far too long for a column of this width, whatever the font may be";
	CStrip strip( owner, QSize( 500, 400 ) );
	const std::vector<PaintOp> drawn = Drawn( strip );
	const auto text =
		std::ranges::find_if( drawn, []( const PaintOp &op ) { return op.m_Text.startsWith( "A name" ); } );
	ASSERT_NE( text, drawn.end() );
	EXPECT_EQ( text->m_Text.count( '\n' ), 0 );
	ASSERT_TRUE( text->m_Clip );
	EXPECT_LE( text->m_Clip->right(), strip.Names().width() );
}

TEST_F( BudgetNames, ShowWhatNoNameShouldHoldAsItIs )
{
	CFakeBudgetViewOwner owner( 3 );
	owner.m_Categories[0].m_Name = "&Save <b>&amp;</b>";
	owner.m_Categories[1].m_Name = "one\ntwo\x1B[31m";
	CStrip strip( owner, QSize( 1900, 400 ) );
	CPaintLog log( strip.Names().size() );
	strip.Names().render( &log, QPoint(), QRegion(), QWidget::RenderFlags() );
	EXPECT_THAT( log.Texts(),
		ElementsAre( "Budget Nodes", "&Save <b>&amp;</b>", QString::fromUtf8( "one\uFFFDtwo\uFFFD[31m" ), "Totals" ) );
}

TEST_F( BudgetNames, TakeNoMoreToPaintHoweverLongTheyAre )
{
	CFakeBudgetViewOwner owner( 2 );
	owner.m_Categories[0].m_Name.Set( std::string( 10'000'000, 'W' ).c_str() );
	CStrip strip( owner, QSize( 900, 400 ) );
	int nCharacters = 0;
	for ( const PaintOp &op : Drawn( strip ) )
		nCharacters += op.m_Text.size();
	EXPECT_LE( nCharacters, 12 + 128 + 6 ); // "Budget Nodes", the limit, "Totals"
	QImage picture( strip.Names().size(), QImage::Format_ARGB32_Premultiplied );
	strip.Names().render( &picture );
}

TEST_F( BudgetNames, AreCopiedOnOneLineWithoutControlCharacters )
{
	CFakeBudgetViewOwner owner( 2 );
	owner.m_Categories[0].m_Name = "rm -rf\r\n\x1B]0;";
	CStrip strip( owner, QSize( 900, 400 ) );
	QTest::mouseDClick( &strip.Names(), Qt::LeftButton, Qt::NoModifier, QPoint( 20, owner.m_Style.m_nRowHeight + 2 ) );
	ASSERT_EQ( g_Copied.size(), 1u );
	EXPECT_EQ( g_Copied[0].substr( 0, 19 ), "rm -rf\uFFFD\uFFFD\uFFFD]0;:" );
}

TEST_F( BudgetNames, ScrollWithTheBars )
{
	CFakeBudgetViewOwner owner( 64 );
	CStrip strip( owner, QSize( 900, 300 ) );
	ASSERT_TRUE( strip.ScrollBar().isVisible() );
	strip.ScrollBar().setValue( 7 );
	EXPECT_TRUE( SameDrawing( Drawn( strip ), ExpectedNames( owner, strip.NamesPanel() ) ) );
	EXPECT_EQ( strip.NamesPanel().m_nFirstRow, 7 );
	EXPECT_EQ( Drawn( strip )[4].m_Text, "Budget 7" );
}

TEST_F( BudgetNames, DrawNoRowsAfterTheListBecameShorterThanTheScrollPosition )
{
	CFakeBudgetViewOwner owner( 64 );
	CStrip strip( owner, QSize( 900, 300 ) );
	strip.ScrollBar().setValue( strip.ScrollBar().maximum() );
	owner.SetBudgets( 5 );
	EXPECT_EQ( Drawn( strip ).size(), 2u ); // the header and its label
}

TEST_F( BudgetNames, CopyABudgetsStatisticsOnADoubleClick )
{
	CFakeBudgetViewOwner owner( 3 );
	owner.m_Data.m_nSampleCount = 2;
	owner.SetValue( 1, 0, 1000 );
	owner.SetValue( 1, 1, 3000 );
	owner.SetPeak( 1, 3500 );
	CStrip strip( owner, QSize( 900, 400 ) );
	const int H = owner.m_Style.m_nRowHeight;
	QTest::mouseDClick( &strip.Names(), Qt::LeftButton, Qt::NoModifier, QPoint( 20, 2 * H + H / 2 ) );
	EXPECT_THAT( g_Copied, ElementsAre( "Budget 1: avg 2.00 stddev 1.414 [1.000->3.000] peak 3.50" ) );
}

TEST_F( BudgetNames, CopyTheBudgetThatIsScrolledUnderTheMouse )
{
	CFakeBudgetViewOwner owner( 64 );
	CStrip strip( owner, QSize( 900, 300 ) );
	strip.ScrollBar().setValue( 5 );
	QTest::mouseDClick( &strip.Names(), Qt::LeftButton, Qt::NoModifier, QPoint( 20, owner.m_Style.m_nRowHeight ) );
	ASSERT_EQ( g_Copied.size(), 1u );
	EXPECT_EQ( g_Copied[0].substr( 0, 9 ), "Budget 5:" );
}

TEST_F( BudgetNames, CopyNothingFromTheHeaderFromBelowTheLastRowOrWithAnotherButton )
{
	CFakeBudgetViewOwner owner( 3 );
	CStrip strip( owner, QSize( 900, 400 ) );
	const int H = owner.m_Style.m_nRowHeight;
	QTest::mouseDClick( &strip.Names(), Qt::LeftButton, Qt::NoModifier, QPoint( 20, H - 1 ) );
	QTest::mouseDClick( &strip.Names(), Qt::LeftButton, Qt::NoModifier, QPoint( 20, 4 * H ) );
	QTest::mouseDClick( &strip.Names(), Qt::RightButton, Qt::NoModifier, QPoint( 20, H ) );
	EXPECT_THAT( g_Copied, ElementsAre() );
}
