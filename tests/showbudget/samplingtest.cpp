// Sampling: starting, stopping, and what the connection, the user and the window system do to it.
#include <gmock/gmock.h>

#include <QApplication>
#include <QtTest>

#include "miniprofiler/miniprofilerwidget.h"
#include "showbudget/windowfixture.h"
#include "support/paintcounter.h"
#include "views/budgethistorywidget.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
class SamplingTest : public WindowTest
{
protected:
	void ExpectActions( bool bStartEnabled, bool bStopEnabled ) const
	{
		EXPECT_EQ( Action( "Start Sampling" )->isEnabled(), bStartEnabled );
		EXPECT_EQ( Action( "Stop Sampling" )->isEnabled(), bStopEnabled );
	}

	const CQBudgetHistoryWidget &History() const { return *m_pWindow->findChild<CQBudgetHistoryWidget *>(); }
	std::string State() const { return StatusTexts().front(); }
};
} // namespace

TEST_F( SamplingTest, ANewWindowOfAConnectedEngineIsStoppedAndMayStart )
{
	MakeWindow();
	EXPECT_FALSE( m_pWindow->IsRunning() );
	EXPECT_THAT( StatusTexts(), ElementsAre( "Stopped.", "No Samples.", "FPS:", "Frame:" ) );
	ExpectActions( true, false );
	EXPECT_THAT( m_Connection.TakeSent(), ElementsAre( MiniProfilerChunk( false ) ) );
}

TEST_F( SamplingTest, ANewWindowOfAnUnconnectedEngineMayDoNothing )
{
	m_Connection.m_nState = 1;
	MakeWindow();
	ExpectActions( false, false );
	EXPECT_THAT( m_Connection.TakeSent(), ElementsAre( StopChunk() ) );
}

TEST_F( SamplingTest, StartingSendsAndSwitches )
{
	MakeWindow();
	m_Connection.TakeSent();
	m_pWindow->StartSampling();
	EXPECT_TRUE( m_pWindow->IsRunning() );
	EXPECT_TRUE( m_pWindow->GetViewData().m_bLive );
	EXPECT_FALSE( History().IsCursorMode() );
	EXPECT_EQ( State(), "Running." );
	ExpectActions( false, true );
	EXPECT_THAT( m_Connection.TakeSent(), ElementsAre( StartChunk() ) );
}

// The bars show the newest sample from then on, also while the engine sends none.
TEST_F( SamplingTest, StartingRepaintsWhatShowedTheCursorsSample )
{
	MakeRunningWindow().show();
	SendSample( { 10000, 0 } );
	m_pWindow->StopSampling();
	QApplication::processEvents();
	CPaintCounter paints( *m_pWindow->centralWidget() );
	m_pWindow->StartSampling();
	QApplication::processEvents();
	EXPECT_GE( paints.m_nCount, 1 );
}

TEST_F( SamplingTest, StartingTwiceSendsOnce )
{
	MakeRunningWindow().StartSampling();
	EXPECT_THAT( m_Connection.TakeSent(), IsEmpty() );
}

TEST_F( SamplingTest, StartingDoesNothingWhileNotConnected )
{
	for ( const int nState : { 0, 1, 2, 4 } )
	{
		m_Connection.m_nState = nState;
		MakeWindow();
		m_Connection.TakeSent();
		m_pWindow->StartSampling();
		EXPECT_FALSE( m_pWindow->IsRunning() );
		EXPECT_THAT( m_Connection.TakeSent(), IsEmpty() );
	}
}

TEST_F( SamplingTest, AFailedSendLeavesTheWindowStopped )
{
	MakeWindow();
	m_Connection.TakeSent();
	m_Connection.m_bSends = false;
	m_pWindow->StartSampling();
	EXPECT_FALSE( m_pWindow->IsRunning() );
	EXPECT_EQ( State(), "Stopped." );
	ExpectActions( true, false );
	EXPECT_THAT( m_Connection.TakeSent(), ElementsAre( StartChunk() ) );
}

TEST_F( SamplingTest, StoppingSendsAndPutsTheCursorOnTheNewestSample )
{
	MakeRunningWindow();
	SendSample( { 10000, 0 } );
	SendSample( { 15000, 5000 } );
	m_pWindow->StopSampling();
	EXPECT_FALSE( m_pWindow->IsRunning() );
	EXPECT_FALSE( m_pWindow->GetViewData().m_bLive );
	EXPECT_TRUE( History().IsCursorMode() );
	EXPECT_EQ( m_pWindow->GetViewData().m_nCursor, 1u );
	EXPECT_THAT( StatusTexts(), ElementsAre( "Stopped.", "Samples: 2", "FPS: 50.00", "Frame: 20.00" ) );
	ExpectActions( true, false );
	EXPECT_THAT( m_Connection.TakeSent(), ElementsAre( StopChunk() ) );
}

TEST_F( SamplingTest, SamplesSurviveStoppingAndStartingAgain )
{
	MakeRunningWindow();
	SendSample( { 10000, 0 } );
	m_pWindow->StopSampling();
	m_pWindow->StartSampling();
	EXPECT_EQ( m_pWindow->Samples().SampleCount(), 1u );
	SendSample( { 5000, 0 } );
	EXPECT_THAT( StatusTexts(), ElementsAre( "Running.", "Samples: 2", "FPS: 200.00", "Frame: 5.00" ) );
}

TEST_F( SamplingTest, StoppingAStoppedWindowSendsNothingWhileConnected )
{
	MakeWindow();
	m_Connection.TakeSent();
	m_pWindow->StopSampling();
	EXPECT_THAT( m_Connection.TakeSent(), IsEmpty() );
}

TEST_F( SamplingTest, StoppingAStoppedWindowStillSendsWhileNotConnected )
{
	MakeWindow();
	m_Connection.TakeSent();
	m_Connection.m_nState = 0;
	m_pWindow->StopSampling();
	EXPECT_THAT( m_Connection.TakeSent(), ElementsAre( StopChunk() ) );
}

TEST_F( SamplingTest, TogglingStartsAndStops )
{
	MakeWindow().ToggleSampling();
	EXPECT_TRUE( m_pWindow->IsRunning() );
	m_pWindow->ToggleSampling();
	EXPECT_FALSE( m_pWindow->IsRunning() );
}

TEST_F( SamplingTest, LosingTheConnectionStops )
{
	MakeRunningWindow();
	m_Connection.m_nState = 0;
	m_pWindow->OnConnectionStateChanged();
	EXPECT_FALSE( m_pWindow->IsRunning() );
	EXPECT_EQ( State(), "Stopped." );
	ExpectActions( false, false );
	EXPECT_THAT( m_Connection.TakeSent(), ElementsAre( StopChunk() ) );
}

TEST_F( SamplingTest, AConnectionThatComesBackMayStartAgain )
{
	MakeRunningWindow();
	m_Connection.m_nState = 0;
	m_pWindow->OnConnectionStateChanged();
	m_Connection.TakeSent();
	m_Connection.m_nState = 3;
	m_pWindow->OnConnectionStateChanged();
	ExpectActions( true, false );
	EXPECT_FALSE( m_pWindow->IsRunning() );
	EXPECT_THAT( m_Connection.TakeSent(), ElementsAre( MiniProfilerChunk( false ) ) );
}

TEST_F( SamplingTest, AStateChangeWhileRunningAndConnectedKeepsRunning )
{
	MakeRunningWindow();
	m_pWindow->OnConnectionStateChanged();
	EXPECT_TRUE( m_pWindow->IsRunning() );
	ExpectActions( false, true );
}

TEST_F( SamplingTest, ShowingStartsHidingDoesNotStopAndShowingAgainStartsAgain )
{
	MakeWindow().show();
	EXPECT_TRUE( m_pWindow->IsRunning() );
	m_pWindow->hide();
	EXPECT_TRUE( m_pWindow->IsRunning() );
	m_pWindow->StopSampling();
	m_Connection.TakeSent();
	m_pWindow->show();
	EXPECT_TRUE( m_pWindow->IsRunning() );
	EXPECT_THAT( m_Connection.TakeSent( CHUNK_KSTO ), ElementsAre( StartChunk() ) );
}

TEST_F( SamplingTest, AWindowThatComesBackFromItsIconStaysStopped )
{
	MakeWindow().show();
	m_pWindow->StopSampling();
	QShowEvent event;
	QSpontaneKeyEvent::setSpontaneous( &event );
	qApp->notify( m_pWindow.get(), &event ); // sendEvent would take it for our own
	EXPECT_FALSE( m_pWindow->IsRunning() );
}

TEST_F( SamplingTest, ClosingStopsSavesAndClosesTheDocks )
{
	MakeRunningWindow().show();
	Action( "Kesto Player" )->trigger();
	EXPECT_TRUE( Dock( "Kesto Player" )->isVisible() );
	Action( "FPS Units" )->setChecked( true );
	m_Connection.TakeSent();
	EXPECT_TRUE( m_pWindow->close() );
	EXPECT_FALSE( m_pWindow->IsRunning() );
	EXPECT_EQ( State(), "Stopped." );
	EXPECT_THAT( m_Connection.TakeSent( CHUNK_KSTO ), ElementsAre( StopChunk() ) );
	EXPECT_STREQ( m_pSettings->GetString( "fps_labels" ), "1" );
	for ( const QDockWidget *pDock : m_pWindow->findChildren<QDockWidget *>() )
		EXPECT_TRUE( pDock->isHidden() ) << pDock->windowTitle().toStdString();
}

TEST_F( SamplingTest, AReopenedWindowHasItsDocksBack )
{
	MakeWindow().show();
	Action( "Microprofiler" )->trigger();
	m_pWindow->close();
	EXPECT_FALSE( Action( "Microprofiler" )->isChecked() );
	m_Connection.TakeSent();
	m_pWindow->show();
	EXPECT_TRUE( Dock( "Budget History" )->isVisible() );
	EXPECT_TRUE( Dock( "MiniProfiler History" )->isVisible() );
	EXPECT_TRUE( Action( "Microprofiler" )->isChecked() );
	EXPECT_THAT( m_Connection.TakeSent( CHUNK_KMPC ), ElementsAre( MiniProfilerChunk( true ) ) );
}

TEST_F( SamplingTest, ClosingAFloatingDockedWindowLeavesNothingOnScreen )
{
	MakeWindow().show();
	Dock( "Budget History" )->setFloating( true );
	m_pWindow->close();
	for ( const QWidget *pWidget : QApplication::topLevelWidgets() )
		EXPECT_FALSE( pWidget->isVisible() ) << pWidget->metaObject()->className();
}

TEST_F( SamplingTest, AFloatingHistoryIsRepaintedWithSamplesAndOptions )
{
	MakeRunningWindow().show();
	Dock( "Budget History" )->setFloating( true );
	QApplication::processEvents();
	CPaintCounter paints( *Dock( "Budget History" ) );
	SendSample( { 10000, 1 } );
	QApplication::processEvents();
	EXPECT_GE( paints.m_nCount, 1 );
	for ( const char *pOption : { "FPS Units", "Show Budget Averages", "FPS Thresholds", "FPS Averages" } )
	{
		paints.m_nCount = 0;
		Action( pOption )->trigger();
		QApplication::processEvents();
		EXPECT_GE( paints.m_nCount, 1 ) << pOption;
	}
}

TEST_F( SamplingTest, ClearingForgetsTheSamplesAndTheTexts )
{
	MakeRunningWindow();
	SendSample( { 10000, 1 } );
	SendSample( { 10000, 1 } );
	Action( "Clear Samples" )->trigger();
	EXPECT_EQ( m_pWindow->Samples().SampleCount(), 0u );
	EXPECT_THAT( StatusTexts(), ElementsAre( "Running.", "No Samples.", "FPS:", "Frame:" ) );
	SendSample( { 3000, 0 } );
	EXPECT_EQ( m_pWindow->Samples().SampleCount(), 1u );
	EXPECT_EQ( m_pWindow->GetViewData().Peak( 0 ), 3000u );
}

TEST_F( SamplingTest, ClearingWhileStoppedPutsTheCursorToTheStart )
{
	MakeRunningWindow();
	SendSample( { 10000, 1 } );
	SendSample( { 10000, 1 } );
	m_pWindow->StopSampling();
	ASSERT_EQ( m_pWindow->GetViewData().m_nCursor, 1u );
	Action( "Clear Samples" )->trigger();
	EXPECT_EQ( m_pWindow->GetViewData().m_nCursor, 0u );
	EXPECT_THAT( StatusTexts(), ElementsAre( "Stopped.", "No Samples.", "FPS:", "Frame:" ) );
}

TEST_F( SamplingTest, TickSamplingShowsTheFrameBeforeTheOneStillFilling )
{
	MakeRunningWindow();
	SendSample( { 10000, 0 } );
	SendSample( { 20000, 0 } );
	Action( "Tick Sampling" )->setChecked( true );
	EXPECT_THAT( StatusTexts(), ElementsAre( "Running.", "Samples: 2", "FPS: 100.00", "Frame: 10.00" ) );
	Action( "Tick Sampling" )->setChecked( false );
	EXPECT_THAT( StatusTexts(), ElementsAre( "Running.", "Samples: 2", "FPS: 50.00", "Frame: 20.00" ) );
}

TEST_F( SamplingTest, FPSAveragesShowsTheEnginesOwnRate )
{
	MakeRunningWindow();
	SendSample( { 10000, 0 }, 33.25f );
	Action( "FPS Averages" )->setChecked( true );
	EXPECT_THAT( StatusTexts(), ElementsAre( "Running.", "Samples: 1", "FPS: 33.25", "Frame: 10.00" ) );
	Action( "FPS Averages" )->setChecked( false );
	EXPECT_THAT( StatusTexts(), ElementsAre( "Running.", "Samples: 1", "FPS: 100.00", "Frame: 10.00" ) );
}

TEST_F( SamplingTest, TheMiniProfilerIsWantedWhileItsDockShowsAndItIsNotPaused )
{
	MakeWindow().show();
	m_Connection.TakeSent();
	Action( "Microprofiler" )->trigger();
	EXPECT_TRUE( Dock( "MiniProfiler History" )->isVisible() );
	EXPECT_THAT( m_Connection.TakeSent(), ElementsAre( MiniProfilerChunk( true ) ) );

	auto *pMiniProfiler = m_pWindow->findChild<CQMiniProfilerWidget *>();
	pMiniProfiler->SetPaused( true );
	EXPECT_THAT( m_Connection.TakeSent(), ElementsAre( MiniProfilerChunk( false ) ) );
	pMiniProfiler->SetPaused( true );
	EXPECT_THAT( m_Connection.TakeSent(), IsEmpty() ) << "nothing changed";
	pMiniProfiler->SetPaused( false );
	EXPECT_THAT( m_Connection.TakeSent(), ElementsAre( MiniProfilerChunk( true ) ) );

	Action( "Microprofiler" )->trigger();
	EXPECT_FALSE( Dock( "MiniProfiler History" )->isVisible() );
	EXPECT_THAT( m_Connection.TakeSent(), ElementsAre( MiniProfilerChunk( false ) ) );
}

TEST_F( SamplingTest, ClosingTheMiniProfilersDockUnchecksItsAction )
{
	MakeWindow().show();
	Action( "Microprofiler" )->trigger();
	m_Connection.TakeSent();
	Dock( "MiniProfiler History" )->close();
	EXPECT_FALSE( Action( "Microprofiler" )->isChecked() );
	EXPECT_THAT( m_Connection.TakeSent(), ElementsAre( MiniProfilerChunk( false ) ) );
}

TEST_F( SamplingTest, TheMiniProfilerSendsNothingWhileNotConnected )
{
	MakeWindow().show();
	m_Connection.m_nState = 0;
	m_Connection.TakeSent();
	Action( "Microprofiler" )->trigger();
	EXPECT_TRUE( Dock( "MiniProfiler History" )->isVisible() );
	EXPECT_THAT( m_Connection.TakeSent(), IsEmpty() );
}

TEST_F( SamplingTest, ManySamplesBetweenTwoTurnsOfTheEventLoopPaintOnce )
{
	MakeRunningWindow().show();
	QApplication::processEvents();
	CPaintCounter paints( *m_pWindow->centralWidget() );
	for ( int i = 0; i < 1000; i++ )
		SendSample( { 10000, 1 } );
	EXPECT_EQ( paints.m_nCount, 0 );
	QApplication::processEvents();
	EXPECT_GE( paints.m_nCount, 1 );
	EXPECT_LE( paints.m_nCount, 3 ) << "one more where the samples label grew, one where the screen refreshes again";
}

TEST_F( SamplingTest, AWindowWhoseConnectionEndedTouchesItNoMore )
{
	MakeRunningWindow().show();
	SendSample( { 10000, 1 } );
	m_Connection.m_nState = 0;
	m_pWindow->OnConnectionEnded();
	m_Connection.End();
	m_pWindow->OnConnectionEnded();
	m_pWindow->StartSampling();
	m_pWindow->StopSampling();
	m_pWindow->OnConnectionStateChanged();
	Action( "Microprofiler" )->trigger();
	m_pWindow->close();
	m_pWindow->show();
	QApplication::processEvents();
	EXPECT_FALSE( m_pWindow->IsRunning() );
	m_pWindow.reset();
}
