// Recordings in the window: opened by the host, kept apart from live layouts, and while the connection does what it
// does.
#include <QPointer>
#include <QTemporaryDir>
#include <QToolBar>
#include <QTreeWidget>

#include "recordings/kestoplayerwidget.h"
#include "showbudget/windowfixture.h"
#include "support/eventturns.h"
#include "tests/recordings/recordingfiles.h"
#include "tests/recordings/useranswers.h"
#include "views/budgetsampleswidget.h"

namespace
{
class RecordingWindowTest : public WindowTest
{
protected:
	RecordingWindowTest()
	{
		m_Whole = WriteRecording( m_Folder, "whole.kesto", RecordingOf( 3, 3 ) );
		m_Damaged = WriteRecording( m_Folder, "damaged.kesto", RecordingOf( 250, 1000 ).U8( 9 ) );
	}

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
	QString m_Whole, m_Damaged;
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

struct WindowDisturbance
{
	const char *m_pName;
	void ( *m_pAct )( CFakeConnection &connection, std::unique_ptr<CQBudgetWidget> &pWindow );
};

const WindowDisturbance DISTURBANCES[] = {
	{ "TheConnectionEnds",
		[]( CFakeConnection &connection, std::unique_ptr<CQBudgetWidget> &pWindow )
		{
			pWindow->OnConnectionEnded();
			connection.End();
			EXPECT_FALSE( pWindow->IsBusy() ) << "the sub-tool deletes the window at once";
			pWindow.reset();
		} },
	{ "TheConnectionIsLostAndMadeAgain",
		[]( CFakeConnection &connection, std::unique_ptr<CQBudgetWidget> &pWindow )
		{
			for ( const int nState : { 1, CFakeConnection::CONNECTED } )
			{
				connection.m_nState = nState;
				pWindow->OnConnectionStateChanged();
			}
		} },
	{ "ChunksArrive",
		[]( CFakeConnection &connection, std::unique_ptr<CQBudgetWidget> & )
		{
			connection.Deliver( CHUNK_PCAT, CategoriesPayload( { { "Physics", 1, 2, 3 } } ) );
			for ( uint32_t i = 0; i < 50; i++ )
				connection.Deliver( CHUNK_PCPU, SamplePayload( { i }, 60.0f, 1 ) );
		} },
	{ "TheWindowIsClosed", []( CFakeConnection &, std::unique_ptr<CQBudgetWidget> &pWindow ) { pWindow->close(); } },
};

class RecordingWindowDisturbed
	: public RecordingWindowTest
	, public testing::WithParamInterface<WindowDisturbance>
{
protected:
	// Runs the operation with the disturbance in a turn; false when it ended before.
	template <typename Operation>
	bool Run( int nDisturbedTurn, Operation operation )
	{
		m_Connection = CFakeConnection();
		MakeRunningWindow().show();
		OpenByName( m_Whole );
		bool bDisturbed = false;
		const CEventTurns turns(
			[&]( int nTurn )
			{
				if ( nTurn == nDisturbedTurn && m_pWindow )
				{
					bDisturbed = true;
					GetParam().m_pAct( m_Connection, m_pWindow );
				}
				else if ( nTurn > 6 )
					AnswerWhatWaits( m_Whole );
			} );
		operation();
		if ( m_pWindow )
		{
			EXPECT_TRUE( OpenByName( m_Whole ) );
		}
		return bDisturbed;
	}

	template <typename Operation>
	void RunInEachTurn( Operation operation )
	{
		int nTurn = 0;
		while ( Run( nTurn, operation ) )
		{
			nTurn++;
			ASSERT_LT( nTurn, 60 ) << "the operation does not end";
		}
		EXPECT_GE( nTurn, 5 ) << "the operation runs events for some time";
	}
};

TEST_P( RecordingWindowDisturbed, OpeningADamagedFileEndsWithoutHarm )
{
	RunInEachTurn( [this] { m_pWindow->OpenRecording( m_Damaged ); } );
}

TEST_P( RecordingWindowDisturbed, AskingForAFileEndsWithoutHarm )
{
	RunInEachTurn( [this] { Player().OnOpenFile(); } );
}

TEST_P( RecordingWindowDisturbed, AMenuOfTheTreeEndsWithoutHarm )
{
	RunInEachTurn(
		[this]
		{
			auto &tree = *Player().findChild<QTreeWidget *>();
			const QPoint pt = tree.visualItemRect( tree.topLevelItem( 0 ) ).center();
			QContextMenuEvent event( QContextMenuEvent::Mouse, pt, tree.viewport()->mapToGlobal( pt ) );
			QCoreApplication::sendEvent( tree.viewport(), &event );
		} );
}

INSTANTIATE_TEST_SUITE_P(, RecordingWindowDisturbed, testing::ValuesIn( DISTURBANCES ),
	[]( const auto &parameter ) { return parameter.param.m_pName; } );
} // namespace
