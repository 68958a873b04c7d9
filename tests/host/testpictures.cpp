// Recordings that the console opens by itself, and the pictures that it writes.
#include <QComboBox>
#include <QDockWidget>
#include <QFileInfo>
#include <QImage>
#include <QSignalSpy>
#include <QTreeWidget>

#include "keel0/memalloc.h"
#include "miniprofilerpicture.h"
#include "recordingconnection.h"
#include "support/countingallocator.h"
#include "tesselhostfixture.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace
{
TEST_F( TesselHost, WritesAPictureOfTheBudgetWindowSomeTimeAfterTheConnect )
{
	m_Options.m_Connect = { m_Peer.Address() };
	m_Options.m_ScreenshotFile = m_Folder.filePath( "budget.png" );
	m_Options.m_flScreenshotAfter = 0.05;
	m_Options.m_ScreenshotSize = QSize( 640, 480 );
	Start();
	QSignalSpy finished( m_pHost.get(), &CTesselHost::Finished );
	ASSERT_TRUE( WaitFor( [&]() { return finished.count() > 0; } ) );
	EXPECT_EQ( finished[0][0].toInt(), 0 );
	const QWidget *pWindow = FindWindow( "Show Budget - first" );
	ASSERT_NE( pWindow, nullptr );
	EXPECT_EQ( pWindow->size(), QSize( 640, 480 ) * static_cast<double>( m_pHost->GetUIScale() ) );
	EXPECT_EQ( QImage( m_Options.m_ScreenshotFile ).size(), pWindow->size() * pWindow->devicePixelRatioF() );
}

TEST_F( TesselHost, WritesAPictureOfTheConsoleWithoutAnyConnection )
{
	m_Options.m_ScreenshotFile = m_Folder.filePath( "console.png" );
	m_Options.m_ScreenshotSubject = ScreenshotSubject::Console;
	m_Options.m_flScreenshotAfter = 0.0;
	Start();
	QSignalSpy finished( m_pHost.get(), &CTesselHost::Finished );
	ASSERT_TRUE( WaitFor( [&]() { return finished.count() > 0; } ) );
	EXPECT_EQ( finished[0][0].toInt(), 0 );
	EXPECT_EQ(
		QImage( m_Options.m_ScreenshotFile ).size(), m_pHost->Window().size() * m_pHost->Window().devicePixelRatioF() );
}

TEST_F( TesselHost, OpensEachRecordingInAWindowOfItsOwnWithoutAnEngine )
{
	m_Options.m_Recordings = QStringList( { "/somewhere/first.kesto", "/elsewhere/first.kesto" } );
	m_Options.m_Frame = 7;
	Start();
	m_pRecord->m_Calls.clear();
	RunEventTurns();
	EXPECT_THAT( m_pRecord->m_Calls,
		ElementsAre( "Open", "OpenRecording /somewhere/first.kesto", "Open", "OpenRecording /elsewhere/first.kesto",
			"ShowRecordedFrame 7", "ShowRecordedFrame 7" ) );
	EXPECT_NE( FindWindow( "Show Budget - first.kesto" ), nullptr );
	EXPECT_EQ( m_pHost->GetCurrentConnection(), nullptr ) << "a recording is no engine to send commands to";
	EXPECT_EQ( m_pHost->Connections().Count(), 0 );
	m_pRecord->m_Calls.clear();
	m_pHost->ShutDown();
	EXPECT_THAT( m_pRecord->m_Calls, ElementsAre( "SaveSettings", "ConnectionEnded first.kesto",
										 "ConnectionEnded first.kesto", "ShutDown", "Disconnect" ) );
}

TEST_F( TesselHost, ARecordingsConnectionIsNeverUpAndTakesNoChunk )
{
	const CRecordingConnection connection( "/somewhere/gr\u00fcn.kesto" );
	EXPECT_STREQ( connection.GetName(), "gr\xc3\xbcn.kesto" );
	EXPECT_EQ( connection.GetState(), 0 );
	EXPECT_STREQ( CRecordingConnection( "/somewhere/a\nb\x1b.kesto" ).GetName(), "a\uFFFDb\uFFFD.kesto" );
	CCountingAllocator allocator;
	auto *pBuffer = static_cast<uint8_t *>( g_pMemAlloc->Alloc( 3 ) );
	EXPECT_FALSE( const_cast<CRecordingConnection &>( connection ).SendChunk( 1, 2, 3, pBuffer ) );
	EXPECT_EQ( allocator.Live(), 0u ) << "the buffer was taken over all the same";
}

TEST_F( TesselHost, WritesAPictureOfTheRecordingThatIsOpen )
{
	m_Options.m_Recordings = QStringList( { "/somewhere/demo.kesto" } );
	m_Options.m_Frame = CommandLineOptions::SLOWEST_FRAME;
	m_Options.m_ScreenshotFile = m_Folder.filePath( "player.png" );
	m_Options.m_ScreenshotSubject = ScreenshotSubject::Player;
	m_Options.m_flScreenshotAfter = 0.0;
	m_Options.m_ScreenshotSize = QSize( 640, 480 );
	Start();
	QSignalSpy finished( m_pHost.get(), &CTesselHost::Finished );
	ASSERT_TRUE( WaitFor( [&]() { return finished.count() > 0; } ) );
	EXPECT_EQ( finished[0][0].toInt(), 0 );
	EXPECT_EQ( m_pRecord->m_Calls.back(), "ShowSlowestRecordedFrame" );
	const QWidget *pWindow = FindWindow( "Show Budget - demo.kesto" );
	ASSERT_NE( pWindow, nullptr );
	EXPECT_EQ( QImage( m_Options.m_ScreenshotFile ).size(), pWindow->size() * pWindow->devicePixelRatioF() );
}

TEST_F( TesselHost, EndsWithoutAPictureWhenTheRecordingIsNotTaken )
{
	m_Options.m_Recordings = QStringList( { "/somewhere/damaged.kesto" } );
	m_Options.m_ScreenshotFile = m_Folder.filePath( "player.png" );
	m_Options.m_ScreenshotSubject = ScreenshotSubject::Player;
	m_pRecord->m_bTakesRecordings = false;
	Start();
	QSignalSpy finished( m_pHost.get(), &CTesselHost::Finished );
	ASSERT_TRUE( WaitFor( [&]() { return finished.count() > 0; } ) );
	EXPECT_EQ( finished[0][0].toInt(), 1 );
	EXPECT_THAT( ConsoleText().toStdString(), HasSubstr( "/somewhere/damaged.kesto is not opened" ) );
}

// Else a file could be called so that the console seems to say something.
TEST_F( TesselHost, TellsOfAFileInOneLineWhateverItIsCalled )
{
	m_Options.m_Recordings = QStringList( { "/somewhere/a\nall is well\u202E.kesto" } );
	m_pRecord->m_bTakesRecordings = false;
	Start();
	ASSERT_TRUE( WaitFor( [this]() { return ConsoleText().contains( "is not opened" ); } ) );
	EXPECT_THAT( ConsoleText().toStdString(), HasSubstr( "/somewhere/a\uFFFDall is well\uFFFD.kesto is not opened" ) );
}

TEST_F( TesselHost, GoesOnWithADamagedRecordingWhenNobodyIsThereToBeAsked )
{
	m_Options.m_Recordings = QStringList( { "/somewhere/damaged.kesto" } );
	m_Options.m_ScreenshotFile = m_Folder.filePath( "player.png" );
	m_Options.m_ScreenshotSubject = ScreenshotSubject::Player;
	m_Options.m_flScreenshotAfter = 0.0;
	m_pRecord->m_bAsksAboutDamage = true;
	m_pRecord->m_bOffersToGoOn = true;
	testing::internal::CaptureStderr();
	Start();
	QSignalSpy finished( m_pHost.get(), &CTesselHost::Finished );
	const bool bFinished = WaitFor( [&]() { return finished.count() > 0; } );
	EXPECT_EQ( testing::internal::GetCapturedStderr(), "tessel: File Error: Truncated file; Timings truncated\n" );
	ASSERT_TRUE( bFinished );
	EXPECT_EQ( finished[0][0].toInt(), 0 );
	EXPECT_FALSE( QImage( m_Options.m_ScreenshotFile ).isNull() );
}

TEST_F( TesselHost, EndsWithoutAPictureWhenNothingIsLeftOfTheRecording )
{
	m_Options.m_Recordings = QStringList( { "/somewhere/damaged.kesto" } );
	m_Options.m_ScreenshotFile = m_Folder.filePath( "player.png" );
	m_Options.m_ScreenshotSubject = ScreenshotSubject::Player;
	m_pRecord->m_bAsksAboutDamage = true;
	testing::internal::CaptureStderr();
	Start();
	QSignalSpy finished( m_pHost.get(), &CTesselHost::Finished );
	const bool bFinished = WaitFor( [&]() { return finished.count() > 0; } );
	EXPECT_EQ( testing::internal::GetCapturedStderr(), "tessel: File Error: Truncated file; Timings truncated\n"
													   "tessel: /somewhere/damaged.kesto is not opened\n" );
	ASSERT_TRUE( bFinished );
	EXPECT_EQ( finished[0][0].toInt(), 1 );
	EXPECT_FALSE( QFileInfo::exists( m_Options.m_ScreenshotFile ) );
}

TEST_F( TesselHost, RefusesARecordingWithoutTheSubToolThatShowsIt )
{
	m_Options.m_Recordings = QStringList( { "/somewhere/demo.kesto" } );
	m_Options.m_Plugins.clear();
	CTesselHost host( m_Options );
	QString error;
	EXPECT_FALSE( host.Start( error ) );
	EXPECT_EQ( error, "there is no sub-tool \"Show Budget\" (loaded: none)" );
}

TEST( Screenshot, FailsWithALineWhenNothingConnectsInTime )
{
	CScreenshot screenshot( "/tmp/never.png", 0.0, QSize( 300, 200 ), []() -> QWidget * { return nullptr; } );
	QSignalSpy failed( &screenshot, &CScreenshot::Failed );
	screenshot.Wait( 10 );
	ASSERT_TRUE( WaitFor( [&]() { return failed.count() > 0; } ) );
	EXPECT_EQ( failed[0][0].toString(), "no picture: nothing was connected within 0.01 s" );
}

TEST( Screenshot, FailsWithALineWhenThereIsNoWindowOrNoPlaceToWriteTo )
{
	QWidget window;
	QWidget *pWindow = nullptr;
	for ( const char *pComplaint : { "the window was not opened", "cannot write /no/such/folder/a.png" } )
	{
		CScreenshot screenshot( "/no/such/folder/a.png", 0.0, QSize( 300, 200 ), [&]() { return pWindow; } );
		QSignalSpy failed( &screenshot, &CScreenshot::Failed );
		screenshot.Begin();
		ASSERT_TRUE( WaitFor( [&]() { return failed.count() > 0; } ) );
		EXPECT_THAT( failed[0][0].toString().toStdString(), HasSubstr( pComplaint ) );
		pWindow = &window;
	}
}

TEST( Screenshot, OfTheMiniProfilerShowsItOpenAndGrouped )
{
	QMainWindow window;
	EXPECT_EQ( ArrangeMiniProfiler( window ), nullptr );
	auto *pDock = new QDockWidget( "MiniProfiler History", &window );
	auto *pTree = new QTreeWidget;
	auto *pGroups = new QComboBox( pTree );
	pGroups->addItems( { "No Group Hierarchy", "Group by Budget" } );
	auto *pGroup = new QTreeWidgetItem( pTree, { "Physics" } );
	new QTreeWidgetItem( pGroup, { "Step" } );
	pDock->setWidget( pTree );
	window.addDockWidget( Qt::BottomDockWidgetArea, pDock );
	pDock->hide();
	window.show();

	EXPECT_EQ( ArrangeMiniProfiler( window ), pDock );
	EXPECT_TRUE( pDock->isVisible() && pDock->isFloating() );
	EXPECT_EQ( pGroups->currentText(), "Group by Budget" );
	EXPECT_TRUE( pGroup->isExpanded() );
	EXPECT_EQ( ArrangeMiniProfiler( window ), pDock );
	EXPECT_TRUE( pDock->isVisible() );
}
} // namespace
