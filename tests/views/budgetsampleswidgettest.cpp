#include "views/budgetsampleswidget.h"

#include <gtest/gtest.h>

#include <QSplitter>
#include <QTest>
#include <QWheelEvent>

#include "views/framedpanel.h"
#include "views/stripfixture.h"

namespace
{
class BudgetSamplesWidget : public testing::Test
{
protected:
	static constexpr int ANY_WIDTH = 900;

	BudgetSamplesWidget()
		: m_Owner( 64 )
	{
	}

	// A turn of the wheel over the bars, as the window system delivers it: it reaches the strip through its children.
	static void Turn( CStrip &strip, int nDelta )
	{
		const QPointF ptMouse( 50, 50 );
		QWheelEvent event( ptMouse, strip.Bars().mapToGlobal( ptMouse.toPoint() ), QPoint(), QPoint( 0, nDelta ),
			Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false );
		QSpontaneKeyEvent::setSpontaneous( &event ); // others, and what sendEvent sends, reach no parent
		qApp->notify( &strip.Bars(), &event );
	}

	static int ZoomAfter( CFakeBudgetViewOwner &owner, int nFrom, int nDelta )
	{
		owner.m_Settings.SetInt( "samples_scale", nFrom );
		CStrip strip( owner, QSize( ANY_WIDTH, 300 ) );
		Turn( strip, nDelta );
		return strip.Bars().ZoomStep();
	}

	CFakeBudgetViewOwner m_Owner;
};

class CPaintWatch : public QObject
{
public:
	explicit CPaintWatch( QWidget &widget ) { widget.installEventFilter( this ); }
	bool eventFilter( QObject *, QEvent *pEvent ) override
	{
		m_bRepainted = m_bRepainted || pEvent->type() == QEvent::Paint || pEvent->type() == QEvent::UpdateRequest;
		return false;
	}
	bool m_bRepainted = false;
};
} // namespace

TEST_F( BudgetSamplesWidget, HoldsNamesAndBarsInFramedPanelsSideBySide )
{
	CStrip strip( m_Owner, QSize( ANY_WIDTH, 300 ) );
	auto *pSplitter = strip.Widget().findChild<QSplitter *>();
	ASSERT_NE( pSplitter, nullptr );
	EXPECT_EQ( pSplitter->orientation(), Qt::Horizontal );
	EXPECT_EQ( pSplitter->handleWidth(), 4 );
	EXPECT_FALSE( pSplitter->childrenCollapsible() );
	ASSERT_EQ( pSplitter->count(), 2 );
	EXPECT_NE( dynamic_cast<CQFramedPanel *>( pSplitter->widget( 0 ) ), nullptr );
	EXPECT_NE( dynamic_cast<CQFramedPanel *>( pSplitter->widget( 1 ) ), nullptr );
	EXPECT_EQ( strip.Names().parentWidget(), pSplitter->widget( 0 ) );
	EXPECT_EQ( strip.Bars().parentWidget(), pSplitter->widget( 1 ) );
	EXPECT_EQ( strip.Names().minimumSize(), QSize( 100, 100 ) );
	EXPECT_EQ( pSplitter->geometry(), strip.Widget().rect() ); // no margins
}

TEST_F( BudgetSamplesWidget, GivesTheNamesAFifthOfTheWidth )
{
	CStrip strip( m_Owner, QSize( 1004, 300 ) ); // 4 of which are the handle
	auto *pSplitter = strip.Widget().findChild<QSplitter *>();
	EXPECT_EQ( pSplitter->sizes(), QList<int>( { 200, 800 } ) );
}

TEST_F( BudgetSamplesWidget, AsksForASizeThatGrowsWithTheUIScale )
{
	EXPECT_EQ( CQBudgetSamplesWidget( m_Owner, nullptr ).sizeHint(), QSize( 1200, 550 ) );
	m_Owner.m_Style.m_flUIScale = 1.5f;
	EXPECT_EQ( CQBudgetSamplesWidget( m_Owner, nullptr ).sizeHint(), QSize( 1800, 825 ) );
	m_Owner.m_Style.m_flUIScale = 1.001f;
	EXPECT_EQ( CQBudgetSamplesWidget( m_Owner, nullptr ).sizeHint(), QSize( 1201, 550 ) );
}

TEST_F( BudgetSamplesWidget, ZoomsInOnADeltaOfAtLeastOneAndOutOnAnyOther )
{
	EXPECT_EQ( ZoomAfter( m_Owner, 0, 120 ), 1 );
	EXPECT_EQ( ZoomAfter( m_Owner, 0, 1 ), 1 );
	EXPECT_EQ( ZoomAfter( m_Owner, 0, 0 ), -1 );
	EXPECT_EQ( ZoomAfter( m_Owner, 0, -1 ), -1 );
	EXPECT_EQ( ZoomAfter( m_Owner, 0, -120 ), -1 );
}

TEST_F( BudgetSamplesWidget, StopsZoomingAtItsBounds )
{
	EXPECT_EQ( ZoomAfter( m_Owner, 19, 120 ), 20 );
	EXPECT_EQ( ZoomAfter( m_Owner, 20, 120 ), 20 );
	EXPECT_EQ( ZoomAfter( m_Owner, 20, -120 ), 19 );
	EXPECT_EQ( ZoomAfter( m_Owner, -19, -120 ), -20 );
	EXPECT_EQ( ZoomAfter( m_Owner, -20, -120 ), -20 );
	EXPECT_EQ( ZoomAfter( m_Owner, -20, 0 ), -20 );
	EXPECT_EQ( ZoomAfter( m_Owner, -20, 120 ), -19 );
}

TEST_F( BudgetSamplesWidget, RepaintsAfterAZoomAndNotAtABound )
{
	for ( const int nFrom : { -20, 0, 20 } )
	{
		for ( const int nDelta : { -120, 0, 120 } )
		{
			m_Owner.m_Settings.SetInt( "samples_scale", nFrom );
			CStrip strip( m_Owner, QSize( ANY_WIDTH, 300 ) );
			CPaintWatch watch( strip.Bars() );
			Turn( strip, nDelta );
			QApplication::processEvents();
			const bool bAtBound = ( nFrom == -20 && nDelta < 1 ) || ( nFrom == 20 && nDelta >= 1 );
			EXPECT_EQ( watch.m_bRepainted, !bAtBound ) << "from " << nFrom << " by " << nDelta;
		}
	}
}

TEST_F( BudgetSamplesWidget, DrawsTheBarsAtTheNewZoom )
{
	CStrip strip( m_Owner, QSize( ANY_WIDTH, 300 ) );
	Turn( strip, -120 );
	ASSERT_EQ( strip.BarsPanel().m_nZoomStep, -1 );
	EXPECT_TRUE( SameDrawing( CPaintLog::OfWidget( strip.Bars() ), ExpectedBars( m_Owner, strip.BarsPanel() ) ) );
}

TEST_F( BudgetSamplesWidget, SavesTheZoomStep )
{
	m_Owner.m_Settings.SetInt( "samples_scale", -7 );
	CStrip strip( m_Owner, QSize( ANY_WIDTH, 300 ) );
	Turn( strip, 120 );
	KeyValues saved( "Saved" );
	strip.Widget().SaveSettings( saved );
	EXPECT_EQ( saved.GetInt( "samples_scale", 99 ), -6 );
	EXPECT_EQ( saved.GetCount(), 1 );
}

TEST_F( BudgetSamplesWidget, LeavesSpaceForTheScrollBar )
{
	CStrip strip( m_Owner, QSize( ANY_WIDTH, 300 ) );
	ASSERT_TRUE( strip.ScrollBar().isVisible() );
	const QRect bar = strip.ScrollBar().geometry();
	EXPECT_EQ( bar.right(), strip.Bars().width() - 1 );
	EXPECT_EQ( bar.height(), strip.Bars().height() );
	for ( const PaintOp &op : CPaintLog::OfWidget( strip.Bars() ) )
	{
		if ( op.m_BrushStyle == Qt::Dense4Pattern )
		{
			EXPECT_EQ( op.m_Rect.right(), bar.left() );
		}
	}
}
