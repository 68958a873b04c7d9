// Whatever of the player runs events, and what may happen in any turn of them.
#include <gtest/gtest.h>

#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QPointer>
#include <QTest>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>
#include <QUrl>

#include "recordings/flamegraphrowitem.h"
#include "recordings/flamegraphwidget.h"
#include "recordings/kestoplayerwidget.h"
#include "support/eventturns.h"
#include "tests/recordings/recordingfiles.h"
#include "tests/recordings/recordingreaders.h"
#include "tests/recordings/useranswers.h"

namespace
{
struct Scene
{
	QPointer<QWidget> m_pWindow;
	QPointer<CQKestoPlayerWidget> m_pPlayer;
	QString m_Whole, m_Damaged; // paths
	CRefPtr<CKestoFile> m_pOther;
};

struct Operation
{
	const char *m_pName;
	void ( *m_pRun )( const Scene &scene );
};

// With a recording of which the first frame is shown; to be closed by the user.
void OpenMenu( QWidget &viewport, QPoint pt )
{
	QContextMenuEvent event( QContextMenuEvent::Mouse, pt, viewport.mapToGlobal( pt ) );
	QCoreApplication::sendEvent( &viewport, &event );
}

const Operation OPERATIONS[] = {
	{ "OpeningADamagedFile", []( const Scene &scene ) { scene.m_pPlayer->OpenRecording( scene.m_Damaged ); } },
	{ "ClickingOpen",
		[]( const Scene &scene )
		{
			auto *pToolBar = scene.m_pPlayer->findChild<QToolBar *>();
			QTest::mouseClick( pToolBar->widgetForAction( pToolBar->actions().first() ), Qt::LeftButton );
		} },
	{ "DroppingAFile",
		[]( const Scene &scene )
		{
			QMimeData data;
			data.setUrls( { QUrl::fromLocalFile( scene.m_Damaged ) } );
			QDragEnterEvent enter( QPoint( 5, 5 ), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier );
			QCoreApplication::sendEvent( scene.m_pPlayer, &enter );
			QDropEvent drop( QPointF( 5, 5 ), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier );
			QCoreApplication::sendEvent( scene.m_pPlayer, &drop );
			QCoreApplication::processEvents();
		} },
	{ "TheMenuOfTheTree",
		[]( const Scene &scene )
		{
			auto &tree = *scene.m_pPlayer->findChild<QTreeWidget *>();
			OpenMenu( *tree.viewport(), tree.visualItemRect( tree.topLevelItem( 1 ) ).center() );
		} },
	{ "TheMenuOfTheFlameGraph",
		[]( const Scene &scene )
		{
			auto &flames = *scene.m_pPlayer->findChild<CQFlamegraphWidget *>();
			OpenMenu( *flames.viewport(), flames.mapFromScene( flames.GetRowItems()[0]->boundingRect().center() ) );
		} },
};

struct Disturbance
{
	const char *m_pName;
	void ( *m_pAct )( Scene &scene, const Operation &operation );
};

const Disturbance DISTURBANCES[] = {
	{ "TheWindowIsDeleted", []( Scene &scene, const Operation & ) { delete scene.m_pWindow; } },
	{ "ThePlayerIsDeleted", []( Scene &scene, const Operation & ) { delete scene.m_pPlayer; } },
	{ "TheWindowIsClosed", []( Scene &scene, const Operation & ) { scene.m_pWindow->close(); } },
	{ "ItIsStartedAgain",
		[]( Scene &scene, const Operation &operation )
		{
			QMetaObject::invokeMethod(
				scene.m_pPlayer, [&scene, &operation] { operation.m_pRun( scene ); }, Qt::QueuedConnection );
		} },
	{ "AnotherRecordingIsShown",
		[]( Scene &scene, const Operation & ) { scene.m_pPlayer->SetRecording( scene.m_pOther.Get() ); } },
};

using DisturbedParameter = std::tuple<Operation, Disturbance>;

class Disturbed : public testing::TestWithParam<DisturbedParameter>
{
protected:
	static constexpr int FIRST_ANSWER = 8; // turn from which on the user answers

	Disturbed()
	{
		m_Whole = WriteRecording( m_Folder, "whole.kesto", RecordingOf( 3, 3 ) );
		m_Damaged = WriteRecording( m_Folder, "damaged.kesto", RecordingOf( 250, 1000 ).U8( 9 ) );
	}

	// Runs the operation on a new player that shows a recording. False when it ended before the turn.
	bool Run( int nDisturbedTurn )
	{
		const auto &operation = std::get<0>( GetParam() );
		const auto &disturbance = std::get<1>( GetParam() );
		Scene scene{ new QWidget, nullptr, m_Whole, m_Damaged, Parse( RecordingOf( 2, 2 ) ) };
		scene.m_pPlayer = new CQKestoPlayerWidget( scene.m_pWindow );
		scene.m_pPlayer->resize( 900, 500 );
		scene.m_pWindow->show();
		scene.m_pPlayer->SetRecording( Parse( RecordingOf( 3, 3 ) ).Get() );
		scene.m_pPlayer->OnSetTick( 1 );
		bool bDisturbed = false;
		{
			const CEventTurns turns(
				[&]( int nTurn )
				{
					if ( nTurn == nDisturbedTurn && scene.m_pPlayer )
					{
						bDisturbed = true;
						disturbance.m_pAct( scene, operation );
					}
					else if ( nTurn >= FIRST_ANSWER )
						AnswerWhatWaits( m_Whole );
				} );
			operation.m_pRun( scene );
		}
		if ( scene.m_pPlayer )
			CheckUsable( *scene.m_pPlayer );
		delete scene.m_pWindow;
		return bDisturbed;
	}

	// Nothing was left behind that stands in the way of the next opening.
	void CheckUsable( CQKestoPlayerWidget &player )
	{
		QCoreApplication::processEvents();
		EXPECT_TRUE( player.OpenRecording( m_Whole ) );
		EXPECT_EQ( player.GetRecording()->GetFrameCount(), 3 );
		EXPECT_EQ( player.findChild<QDialog *>(), nullptr );
		EXPECT_EQ( player.findChild<QMenu *>( QString(), Qt::FindDirectChildrenOnly ), nullptr );
	}

	QTemporaryDir m_Folder;
	QString m_Whole, m_Damaged;
};

TEST_P( Disturbed, InEachTurnItEndsWithoutHarm )
{
	int nTurn = 0;
	while ( Run( nTurn ) )
	{
		nTurn++;
		ASSERT_LT( nTurn, 60 ) << "the operation does not end";
	}
	EXPECT_GE( nTurn, 5 ) << "the operation runs events for some time";
}

INSTANTIATE_TEST_SUITE_P(, Disturbed,
	testing::Combine( testing::ValuesIn( OPERATIONS ), testing::ValuesIn( DISTURBANCES ) ),
	[]( const auto &parameter )
	{
		return std::string( std::get<Operation>( parameter.param ).m_pName ) + "While" +
			   std::get<Disturbance>( parameter.param ).m_pName;
	} );

// What runs while a file is decoded or asked for refuses another one.
TEST( DisturbedPlayer, ASecondOpeningIsRefusedWhileOneRuns )
{
	QTemporaryDir folder;
	const QString whole = WriteRecording( folder, "whole.kesto", RecordingOf( 3, 3 ) );
	const QString damaged = WriteRecording( folder, "damaged.kesto", RecordingOf( 250, 1000 ).U8( 9 ) );
	CQKestoPlayerWidget player( nullptr );
	player.show();
	int nRefused = 0;
	const CEventTurns turns(
		[&]( int nTurn )
		{
			EXPECT_FALSE( player.OnOpenFile() );
			EXPECT_FALSE( player.OpenRecording( whole ) );
			EXPECT_EQ( player.GetRecording(), nullptr );
			nRefused++;
			if ( nTurn > 6 )
				AnswerWhatWaits( whole );
		} );
	EXPECT_TRUE( player.OpenRecording( damaged ) );
	EXPECT_GT( nRefused, 6 );
	EXPECT_EQ( player.GetRecording()->GetFrameCount(), 250 );
}

TEST( DisturbedPlayer, AMenuOfAnotherRecordingShowsNothing )
{
	CQKestoPlayerWidget player( nullptr );
	const auto show = [&]
	{
		const CRecordingWriter writer = RecordingOf( 3, 3 );
		CKestoMemoryReader reader( writer.m_Bytes );
		player.SetRecording( ParseRecording( reader ).Get() );
	};
	show();
	player.show();
	const CEventTurns turns( [&]( int nTurn ) { nTurn == 0 ? show() : AnswerWhatWaits( QString() ); } );
	player.OnItemContextMenu( 1, QPoint( 10, 10 ) );
	EXPECT_EQ( player.GetCurrentTick(), 0 );
}
} // namespace
