// How often a window paints while an engine sends.
#include <QApplication>
#include <QElapsedTimer>
#include <QScreen>
#include <QTest>
#include <limits>

#include "showbudget/repaintpacer.h"
#include "showbudget/windowfixture.h"
#include "support/paintcounter.h"
#include "support/watchdog.h"
#include "views/budgetbarswidget.h"
#include "views/budgethistorybarswidget.h"
#include "views/fpsgraphwidget.h"

namespace
{
class PaintRate : public WindowTest
{
protected:
	PaintRate()
	{
		MakeRunningWindow().show();
		SendSample( { 8000, 4000 } );
		QApplication::processEvents();
		m_Elapsed.start();
	}

	// Each sample comes in a turn of its own, as from a socket that becomes readable for each.
	void SendSampleInATurn( uint32_t nTime )
	{
		SendSample( { nTime % 16000, 4000 } );
		QApplication::processEvents();
	}

	// How often the screen can have shown something new since the beginning: once at each end, too.
	qint64 ScreenRefreshes() const
	{
		const double flInterval = 1000 / m_pWindow->screen()->refreshRate();
		return static_cast<qint64>( static_cast<double>( m_Elapsed.elapsed() ) / flInterval ) + 2;
	}

	template <typename T>
	T &View() const
	{
		return *m_pWindow->findChild<T *>();
	}

	const CWatchdog m_Watchdog{ "painting while samples arrive" };
	QElapsedTimer m_Elapsed;
};
} // namespace

TEST_F( PaintRate, AThousandSamplesInTurnsOfTheirOwnPaintAtTheScreensRate )
{
	CPaintCounter bars( View<CQBudgetBarsWidget>() );
	CPaintCounter history( View<CQBudgetHistoryBarsWidget>() );
	CPaintCounter graph( View<CQFPSGraphWidget>() );
	CPaintCounter window( *m_pWindow );
	CPaintCounter statusBar( *m_pWindow->statusBar() );
	for ( uint32_t i = 0; i < 1000; i++ )
		SendSampleInATurn( i );
	EXPECT_EQ( m_pWindow->Samples().SampleCount(), 1001u ) << "no sample waits for a repaint";
	for ( const CPaintCounter *pCounter : { &bars, &history, &graph } )
	{
		EXPECT_GE( pCounter->m_nCount, 1 );
		EXPECT_LE( pCounter->m_nCount, ScreenRefreshes() );
	}
	constexpr qint64 GROWTHS = 3; // the number of samples gets wider at 10, 100 and 1,000
	EXPECT_LE( window.m_nCount, ScreenRefreshes() + GROWTHS );
	EXPECT_LE( statusBar.m_nCount, ScreenRefreshes() + GROWTHS );
}

TEST_F( PaintRate, SamplesWithoutEndDoNotKeepTheWindowFromPainting )
{
	CPaintCounter bars( View<CQBudgetBarsWidget>() );
	uint32_t nTime = 0;
	while ( bars.m_nCount < 20 ) // or the watchdog ends it
		SendSampleInATurn( nTime++ );
	EXPECT_LE( bars.m_nCount, ScreenRefreshes() );
}

TEST_F( PaintRate, TheLastSampleIsPaintedToo )
{
	CPaintCounter bars( View<CQBudgetBarsWidget>() );
	SendSampleInATurn( 1000 ); // opens an interval
	SendSample( { 2000, 4000 } );
	bars.m_nCount = 0;
	EXPECT_TRUE( QTest::qWaitFor( [&] { return bars.m_nCount > 0; } ) );
}

TEST_F( PaintRate, AHiddenWindowPaintsNothingAndShowsAllWhenItComesBack )
{
	CPaintCounter bars( View<CQBudgetBarsWidget>() );
	m_pWindow->hide();
	bars.m_nCount = 0;
	for ( uint32_t i = 0; i < 100; i++ )
		SendSampleInATurn( i );
	EXPECT_EQ( bars.m_nCount, 0 );
	EXPECT_EQ( m_pWindow->Samples().SampleCount(), 101u ) << "hiding does not stop the engine";
	m_pWindow->show();
	EXPECT_TRUE( QTest::qWaitFor( [&] { return bars.m_nCount > 0; } ) );
	bars.m_nCount = 0;
	SendSample( { 2000, 4000 } );
	EXPECT_TRUE( QTest::qWaitFor( [&] { return bars.m_nCount > 0; } ) );
}

TEST( RepaintPacer, RepaintsAtOnceAndThenOncePerRefreshWhateverTheRate )
{
	const double flNaN = std::numeric_limits<double>::quiet_NaN();
	for ( const double flRate : { 60.0, 144.0, 59.94, 0.0, -60.0, 1e9, flNaN } )
	{
		SCOPED_TRACE( flRate );
		int nRepaints = 0;
		CRepaintPacer pacer( [&] { nRepaints++; } );
		for ( int i = 0; i < 100; i++ )
			pacer.Request( flRate );
		EXPECT_EQ( nRepaints, 1 );
		EXPECT_TRUE( QTest::qWaitFor( [&] { return nRepaints == 2; } ) );
	}
}
