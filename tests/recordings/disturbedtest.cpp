// What runs events in the player, with something else going on meanwhile. What may happen to the whole window then is
// tested in tests/events.
#include <gtest/gtest.h>

#include "recordings/kestoplayerwidget.h"
#include "support/eventturns.h"
#include "tests/recordings/recordingfiles.h"
#include "tests/recordings/recordingreaders.h"
#include "tests/recordings/useranswers.h"

namespace
{
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
