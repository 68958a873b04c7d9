// Recordings in the window: opened by the host, and kept apart from live layouts. What may happen meanwhile is tested
// in tests/events.
#include <QFileDialog>
#include <QTemporaryDir>

#include "recordings/kestoplayerwidget.h"
#include "showbudget/windowfixture.h"
#include "support/eventturns.h"
#include "tests/recordings/recordingfiles.h"
#include "views/budgetsampleswidget.h"

namespace
{
class RecordingWindowTest : public WindowTest
{
protected:
	RecordingWindowTest() { m_Whole = WriteRecording( m_Folder, "whole.kesto", RecordingOf( 3, 3 ) ); }

	bool OpenByName( const QString &path )
	{
		bool bTaken = false;
		EXPECT_TRUE( QMetaObject::invokeMethod(
			m_pWindow.get(), "OpenRecording", Q_RETURN_ARG( bool, bTaken ), Q_ARG( QString, path ) ) );
		return bTaken;
	}

	CQKestoPlayerWidget &Player() const { return *m_pWindow->findChild<CQKestoPlayerWidget *>(); }
	bool AreLiveViewsVisible() const
	{
		return m_pWindow->centralWidget()->isVisible() && Dock( "Budget History" )->isVisible();
	}

	QTemporaryDir m_Folder;
	QString m_Whole;
};

TEST_F( RecordingWindowTest, AHostOpensARecordingAndAFrameByName )
{
	MakeWindow().show();
	EXPECT_FALSE( Dock( "Kesto Player" )->isVisible() );
	EXPECT_TRUE( OpenByName( m_Whole ) );
	EXPECT_TRUE( Dock( "Kesto Player" )->isVisible() );
	EXPECT_EQ( Player().GetRecording()->GetFrameCount(), 3 );
	EXPECT_TRUE( QMetaObject::invokeMethod( m_pWindow.get(), "ShowRecordedFrame", Q_ARG( int, 2 ) ) );
	EXPECT_EQ( Player().GetCurrentTick(), 2 );
	EXPECT_TRUE( QMetaObject::invokeMethod( m_pWindow.get(), "ShowSlowestRecordedFrame" ) );
	EXPECT_EQ( Player().GetCurrentTick(), 1 ) << "the first of two that take equally long";
}

TEST_F( RecordingWindowTest, ARecordingHasTheWindowToItselfUntilThereIsAnEngine )
{
	m_Connection.m_nState = 0;
	MakeWindow().show();
	EXPECT_TRUE( AreLiveViewsVisible() );
	OpenByName( m_Whole );
	EXPECT_FALSE( m_pWindow->centralWidget()->isVisible() );
	EXPECT_FALSE( Dock( "Budget History" )->isVisible() );
	m_pWindow->SaveSettings();
	EXPECT_STREQ( m_pSettings->GetString( "windowState" ), "" ) << "live windows are not to look like this";
	EXPECT_STREQ( m_pSettings->GetString( "geometry" ), "" );

	m_Connection.m_nState = CFakeConnection::CONNECTED;
	m_pWindow->OnConnectionStateChanged();
	EXPECT_TRUE( AreLiveViewsVisible() );
	m_pWindow->SaveSettings();
	EXPECT_STRNE( m_pSettings->GetString( "windowState" ), "" );
}

TEST_F( RecordingWindowTest, BesideALiveEngineARecordingChangesNothingElse )
{
	MakeRunningWindow().show();
	OpenByName( m_Whole );
	EXPECT_TRUE( AreLiveViewsVisible() );
	EXPECT_TRUE( m_pWindow->IsRunning() );
}

TEST_F( RecordingWindowTest, TheFolderOfTheLastRecordingIsKeptForTheNextWindow )
{
	MakeWindow().show();
	OpenByName( m_Whole );
	m_pWindow->SaveSettings();
	EXPECT_EQ( QString( m_pSettings->GetString( "recording_directory" ) ), m_Folder.path() );

	MakeWindow().show();
	QString folder;
	const CEventTurns turns(
		[&folder]( int )
		{
			if ( auto *pDialog = qobject_cast<QFileDialog *>( QApplication::activeModalWidget() ) )
			{
				folder = pDialog->directory().path();
				pDialog->reject();
			}
		} );
	Player().OnOpenFile();
	EXPECT_EQ( folder, m_Folder.path() );
}
} // namespace
