// What runs events in the player, with something else going on meanwhile. What may happen to the whole window then is
// tested in tests/events.
#include <gtest/gtest.h>

#include <QContextMenuEvent>
#include <QTreeWidget>

#include "recordings/flamegraphrowitem.h"
#include "recordings/flamegraphwidget.h"
#include "recordings/kestoplayerwidget.h"
#include "support/eventturns.h"
#include "support/userloop.h"
#include "tests/recordings/recordingfiles.h"
#include "tests/recordings/recordingreaders.h"
#include "tests/recordings/useranswers.h"

namespace
{
void SendContextMenu( QWidget &viewport, const QPoint &pt )
{
	QContextMenuEvent event( QContextMenuEvent::Mouse, pt, viewport.mapToGlobal( pt ) );
	QCoreApplication::sendEvent( &viewport, &event );
}

// What of a player runs events, by name.
class DeletedPlayer : public testing::TestWithParam<const char *>
{
protected:
	void Begin( CQKestoPlayerWidget &player ) const
	{
		const std::string what = GetParam();
		auto &flames = *player.findChild<CQFlamegraphWidget *>();
		auto &tree = *player.findChild<QTreeWidget *>();
		if ( what == "Decoding" )
			player.OpenRecording( m_Whole );
		else if ( what == "AskingAboutDamage" )
			player.OpenRecording( m_Damaged );
		else if ( what == "AskingForAFile" )
			player.OnOpenFile();
		else if ( what == "TheTreesMenu" )
			SendContextMenu( *tree.viewport(), tree.visualItemRect( tree.topLevelItem( 0 ) ).center() );
		else
			SendContextMenu(
				*flames.viewport(), flames.mapFromScene( flames.GetRowItems()[0]->boundingRect().center() ) );
	}

	// Whether the turn came before everything was over.
	bool DeleteInTurn( int nTurn ) const
	{
		QPointer<CQKestoPlayerWidget> pPlayer = new CQKestoPlayerWidget( nullptr );
		pPlayer->resize( 900, 400 );
		pPlayer->show();
		const CRecordingWriter writer = RecordingOf( 3, 3 );
		pPlayer->SetRecording( Parse( writer ).Get() );
		pPlayer->OnSetTick( 1 );
		CUserLoop loop( [this] { AnswerWhatWaits( m_Whole ); } );
		loop.AddStep(
			[&]
			{
				if ( pPlayer )
					Begin( *pPlayer );
			} );
		for ( int i = 0; i < 3; i++ ) // in which what was opened stays open
			loop.AddStep( nullptr );
		const bool bCame = loop.Run( nTurn, [&] { delete pPlayer; } );
		EXPECT_EQ( QApplication::activePopupWidget(), nullptr );
		EXPECT_EQ( QApplication::activeModalWidget(), nullptr );
		delete pPlayer;
		return bCame;
	}

	QTemporaryDir m_Folder;
	QString m_Whole = WriteRecording( m_Folder, "whole.kesto", RecordingOf( 250, 1000 ) );
	QString m_Damaged = WriteRecording( m_Folder, "damaged.kesto", RecordingOf( 250, 1000 ).U8( 9 ) );
};

TEST_P( DeletedPlayer, EndsWhatItIsAtInEachTurn )
{
	int nTurn = 0;
	while ( DeleteInTurn( nTurn ) && !HasFailure() )
		nTurn++;
	EXPECT_GE( nTurn, 4 ) << "it takes some turns";
}

INSTANTIATE_TEST_SUITE_P(, DeletedPlayer,
	testing::Values( "Decoding", "AskingAboutDamage", "AskingForAFile", "TheTreesMenu", "TheFlameGraphsMenu" ),
	[]( const auto &parameter ) { return std::string( parameter.param ); } );

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
