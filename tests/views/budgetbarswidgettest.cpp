#include "views/budgetbarswidget.h"

#include <gtest/gtest.h>

#include <QMetaMethod>
#include <QTest>

#include "support/paintcounter.h"
#include "views/stripfixture.h"

namespace
{
int LoadedZoomStep( int nSetting )
{
	CFakeBudgetViewOwner owner( 3 );
	owner.m_Settings.SetInt( "samples_scale", nSetting );
	CStrip strip( owner, QSize( 900, 300 ) );
	return strip.Bars().ZoomStep();
}
} // namespace

TEST( BudgetBarsWidget, LoadsTheZoomStepWithinItsBounds )
{
	EXPECT_EQ( LoadedZoomStep( 7 ), 7 );
	EXPECT_EQ( LoadedZoomStep( -20 ), -20 );
	EXPECT_EQ( LoadedZoomStep( 20 ), 20 );
	EXPECT_EQ( LoadedZoomStep( -21 ), -20 );
	EXPECT_EQ( LoadedZoomStep( 1000 ), 20 );
}

TEST( BudgetBarsWidget, StartsAtZoomStepZeroWithoutASettingAndWithoutSettings )
{
	CFakeBudgetViewOwner owner( 3 );
	EXPECT_EQ( CStrip( owner, QSize( 900, 300 ) ).Bars().ZoomStep(), 0 );
	owner.m_bHasSettings = false;
	EXPECT_EQ( CStrip( owner, QSize( 900, 300 ) ).Bars().ZoomStep(), 0 );
}

TEST( BudgetBarsWidget, IsAtLeast100PixelsWideAndHigh )
{
	CFakeBudgetViewOwner owner( 3 );
	CStrip strip( owner, QSize( 900, 300 ) );
	EXPECT_EQ( strip.Bars().minimumSize(), QSize( 100, 100 ) );
}

TEST( BudgetBarsWidget, HasOneSlot )
{
	const QMetaObject &meta = CQBudgetBarsWidget::staticMetaObject;
	ASSERT_EQ( meta.methodCount() - meta.methodOffset(), 1 );
	EXPECT_EQ( meta.method( meta.methodOffset() ).methodSignature(), "OnValueChanged()" );
	EXPECT_EQ( meta.method( meta.methodOffset() ).methodType(), QMetaMethod::Slot );
}

TEST( BudgetBarsWidget, ShowsTheScrollBarExactlyWhenTheRowsDoNotFit )
{
	for ( const int nBudgets : { 0, 1, 5, 10, 11, 64 } )
	{
		CFakeBudgetViewOwner owner( nBudgets );
		CStrip strip( owner, QSize( 900, 600 ) );
		const int H = owner.m_Style.m_nRowHeight;
		const int nOther = 600 - strip.Bars().height();        // frames and margins
		strip.Widget().resize( 900, nOther + 11 * H + H - 1 ); // ten rows and the header
		QApplication::processEvents();
		EXPECT_EQ( strip.ScrollBar().isVisible(), nBudgets > 10 ) << nBudgets << " budgets";
		if ( nBudgets > 10 )
		{
			EXPECT_EQ( strip.ScrollBar().minimum(), 0 );
			EXPECT_EQ( strip.ScrollBar().maximum(), nBudgets - 10 );
			EXPECT_EQ( strip.ScrollBar().pageStep(), 10 );
		}
	}
}

TEST( BudgetBarsWidget, KeepsTheScrollPositionOverAResizeAndHidesTheBarWhenAllFits )
{
	CFakeBudgetViewOwner owner( 30 );
	CStrip strip( owner, QSize( 900, 300 ) );
	strip.ScrollBar().setValue( 3 );
	strip.Widget().resize( 900, 320 );
	QApplication::processEvents();
	EXPECT_EQ( strip.ScrollBar().value(), 3 );
	strip.Widget().resize( 900, 1000 );
	QApplication::processEvents();
	EXPECT_FALSE( strip.ScrollBar().isVisible() );
	EXPECT_EQ( strip.Widget().FirstRow(), 0 ); // whatever the hidden bar's value is
}

TEST( BudgetBarsWidget, ChangesTheScrollBarOnAResizeOnly )
{
	CFakeBudgetViewOwner owner( 2 );
	CStrip strip( owner, QSize( 900, 300 ) );
	owner.SetBudgets( 64 );
	strip.Widget().update();
	QApplication::processEvents();
	EXPECT_FALSE( strip.ScrollBar().isVisible() );
	strip.Widget().resize( 900, 301 );
	QApplication::processEvents();
	EXPECT_TRUE( strip.ScrollBar().isVisible() );
}

TEST( BudgetBarsWidget, RepaintsNamesAndBarsWhenItsScrollBarMoves )
{
	CFakeBudgetViewOwner owner( 64 );
	CStrip strip( owner, QSize( 900, 300 ) );
	CPaintCounter names( strip.Names() );
	CPaintCounter bars( strip.Bars() );
	strip.ScrollBar().setValue( 4 );
	QApplication::processEvents();
	EXPECT_EQ( names.m_nCount, 1 );
	EXPECT_EQ( bars.m_nCount, 1 );
	EXPECT_EQ( strip.Widget().FirstRow(), 4 );
}

TEST( BudgetBarsWidget, LeavesItsKeysToTheWindow )
{
	CFakeBudgetViewOwner owner( 64 );
	CStrip strip( owner, QSize( 900, 300 ) );
	EXPECT_TRUE( strip.Bars().focusPolicy() & Qt::ClickFocus );
	EXPECT_TRUE( strip.Names().focusPolicy() & Qt::ClickFocus );
	for ( QWidget *pWidget : { static_cast<QWidget *>( &strip.Bars() ), static_cast<QWidget *>( &strip.Names() ) } )
	{
		QKeyEvent event( QEvent::KeyPress, Qt::Key_Left, Qt::NoModifier );
		QApplication::sendEvent( pWidget, &event );
		EXPECT_FALSE( event.isAccepted() );
	}
}
