// What a user does to the player: menus, keys, files.
#include <gtest/gtest.h>

#include <QApplication>
#include <QDropEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QSlider>
#include <QTimer>
#include <QUrl>

#include "keel0/keyvalues.h"
#include "keel0/platform.h"
#include "recordings/flamegraphrowitem.h"
#include "recordings/kestotexts.h"
#include "tests/recordings/playerfixture.h"
#include "tests/recordings/recordingfiles.h"

namespace
{
QStringList TextsOf( const std::vector<NodeMenuEntry> &entries )
{
	QStringList texts;
	for ( const NodeMenuEntry &entry : entries )
		texts << entry.m_Text;
	return texts;
}

TEST_F( Player, TheNodeMenuListsTheNextFramesAtHalvesOfTheMaximum )
{
	// Frames 1 to 5 of "Render": 4000, 400, 1200, 2400, 4000 microseconds; the maximum is frame 1.
	const CRefPtr<CKestoFile> pFile = Parse( Recording( { 1000, 100, 300, 600, 1000 } ) );
	EXPECT_EQ( TextsOf( MakeNodeMenu( *pFile, 2, 1 ) ),
		( QStringList{ "Max frame 1 (4.000000 ms)", "Next frame 4 (2.400000 ms)", "Next frame 3 (1.200000 ms)",
			"Next frame 2 (0.400000 ms)" } ) );
	EXPECT_EQ( TextsOf( MakeNodeMenu( *pFile, 2, -1 ) ), ( QStringList{ "Max frame 1 (4.000000 ms)" } ) );
	EXPECT_EQ( TextsOf( MakeNodeMenu( *pFile, 2, 5 ) ), ( QStringList{ "Max frame 1 (4.000000 ms)" } ) );
}

TEST_F( Player, ANodeWithoutTimeHasNoNextFrames )
{
	EXPECT_EQ( TextsOf( MakeNodeMenu( *Parse( Recording( { 1 } ) ), 3, 0 ) ),
		( QStringList{ "Max frame -1 (0.000000 ms)" } ) );
}

TEST_F( Player, WhereThereIsNoNodeThereIsNoMenu )
{
	m_Player.OnNodeTreeItemClicked( QPoint( 10, 10 ) );
	m_Player.OnItemContextMenu( 0, QPoint( 10, 10 ) ); // would wait for the user
	Show( Recording( { 1 } ) );
	m_Player.OnNodeTreeItemClicked( Child<QTreeWidget>().viewport()->rect().bottomLeft() );
	EXPECT_EQ( QApplication::activePopupWidget(), nullptr );
}

TEST_F( Player, TheContextMenuCopiesTheNameOrShowsAFrame )
{
	static QString s_Clipboard;
	Plat_SetClipboardSink( []( const char *pText ) { s_Clipboard = pText; } );
	Show( Recording( { 1, 9, 1 } ) );
	for ( const int nEntry : { 0, 1 } )
	{
		QTimer::singleShot( 0, &m_Player,
			[nEntry]
			{
				auto *pMenu = qobject_cast<QMenu *>( QApplication::activePopupWidget() );
				ASSERT_NE( pMenu, nullptr );
				pMenu->setActiveAction( pMenu->actions()[nEntry] );
				QTest::keyClick( pMenu, Qt::Key_Return );
			} );
		QTreeWidget &tree = Child<QTreeWidget>();
		m_Player.OnNodeTreeItemClicked( tree.visualItemRect( &Item( "Render" ) ).center() );
	}
	Plat_SetClipboardSink( nullptr );
	EXPECT_EQ( s_Clipboard, "Render" );
	EXPECT_EQ( m_Player.GetCurrentTick(), 2 );
	EXPECT_EQ( Child<QSlider>().value(), 2 );
}

// Deliberate: the tree maps the place, which is one in its viewport.
TEST_F( Player, TheTreesMenuIsWhereTheTreeMapsThePlace )
{
	Show( Recording( { 1 } ) );
	const QTreeWidget &tree = Child<QTreeWidget>();
	// At the left, where a menu has room beside it on small screens, too.
	const QPoint pt( 3, tree.visualItemRect( &Item( "Render" ) ).center().y() );
	QPoint ptMenu;
	QTimer::singleShot( 0, &m_Player,
		[&ptMenu]
		{
			QWidget *pMenu = QApplication::activePopupWidget();
			ASSERT_NE( pMenu, nullptr );
			ptMenu = pMenu->pos();
			pMenu->close();
		} );
	m_Player.OnNodeTreeItemClicked( pt );
	EXPECT_EQ( ptMenu, tree.mapToGlobal( pt ) );
}

TEST_F( Player, KeysStepThroughTheFrames )
{
	CRecordingWriter writer = CRecordingWriter().Header();
	for ( uint32_t i = 0; i < 30; i++ )
		writer.BeginFrame().BeginTimings().Entry( 1, i == 7 ? 300 : i == 20 ? 400 : 100 ).EndFrame();
	Show( writer );
	Key( Qt::Key_Left );
	EXPECT_EQ( m_Player.GetCurrentTick(), 0 );
	Key( Qt::Key_Right );
	EXPECT_EQ( m_Player.GetCurrentTick(), 1 );
	Key( Qt::Key_Right, Qt::ShiftModifier );
	EXPECT_EQ( m_Player.GetCurrentTick(), 11 );
	Key( Qt::Key_N );
	EXPECT_EQ( m_Player.GetCurrentTick(), 20 );
	Key( Qt::Key_N );
	EXPECT_EQ( m_Player.GetCurrentTick(), 20 ) << "there is no further slow frame";
	Key( Qt::Key_N, Qt::ShiftModifier );
	EXPECT_EQ( m_Player.GetCurrentTick(), 7 );
	Key( Qt::Key_M );
	EXPECT_EQ( m_Player.GetCurrentTick(), 20 );
	EXPECT_EQ( Child<QSlider>().value(), 20 );
	QTest::keyClick( &Child<QLineEdit>(), Qt::Key_N );
	EXPECT_EQ( Child<QLineEdit>().text(), "n" ) << "the filter keeps its letters";
	for ( int i = 0; i < 3; i++ )
		Key( Qt::Key_Right, Qt::ShiftModifier );
	EXPECT_EQ( m_Player.GetCurrentTick(), 29 );
}

TEST_F( Player, KeysWorkInEveryPart )
{
	Show( Recording( { 1, 2, 3, 4, 5 } ) );
	int nFrame = 0;
	for ( QWidget *pPart : { static_cast<QWidget *>( &m_Player ), static_cast<QWidget *>( &Child<QTreeWidget>() ),
			  static_cast<QWidget *>( &Child<CQFlamegraphWidget>() ), static_cast<QWidget *>( &Child<QSlider>() ) } )
	{
		QTest::keyClick( pPart, Qt::Key_Right );
		EXPECT_EQ( m_Player.GetCurrentTick(), ++nFrame ) << pPart->metaObject()->className();
		EXPECT_EQ( Child<QSlider>().value(), nFrame );
	}
	Key( Qt::Key_Right, Qt::ControlModifier );
	EXPECT_EQ( m_Player.GetCurrentTick(), nFrame ) << "with Ctrl a key means something else";
}

TEST_F( Player, AKeyShowsTheWholeFrame )
{
	Key( Qt::Key_F ); // nothing to show
	Show( Recording( { 1 } ) );
	Key( Qt::Key_Right );
	Key( Qt::Key_F );
	const CQFlamegraphWidget &flames = Child<CQFlamegraphWidget>();
	const double flWidth = flames.GetRowItems()[0]->boundingRect().width();
	EXPECT_NEAR( flWidth, flames.viewport()->width(), 5.0 );
}

TEST_F( Player, ShowingAFrameThatThereIsNotShowsTheNearest )
{
	Show( Recording( { 1, 2 } ) );
	m_Player.ShowFrame( 99 );
	EXPECT_EQ( m_Player.GetCurrentTick(), 2 );
	m_Player.ShowFrame( -5 );
	EXPECT_EQ( m_Player.GetCurrentTick(), 0 );
}

TEST_F( Player, ADroppedFileIsOpened )
{
	const QTemporaryDir folder;
	const QString path = WriteRecording( folder, "dropped.kesto", Recording( { 1, 2 } ) );
	QMimeData data;
	data.setUrls( { QUrl::fromLocalFile( path ) } );
	QDragEnterEvent enter( QPoint( 5, 5 ), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier );
	QCoreApplication::sendEvent( &m_Player, &enter );
	EXPECT_TRUE( enter.isAccepted() );
	QDropEvent drop( QPointF( 5, 5 ), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier );
	QCoreApplication::sendEvent( &m_Player, &drop );
	EXPECT_EQ( m_Player.GetRecording(), nullptr ) << "not while the drop is being handled";
	QCoreApplication::processEvents();
	ASSERT_NE( m_Player.GetRecording(), nullptr );
	EXPECT_EQ( m_Player.GetRecording()->GetFrameCount(), 3 );

	KeyValues settings( "settings" );
	m_Player.SaveSettings( settings );
	EXPECT_EQ( QString( settings.GetString( "recording_directory" ) ), folder.path() );
}

TEST_F( Player, AFileMayBeDroppedOnAnyPartOfIt )
{
	QMimeData data;
	data.setUrls( { QUrl::fromLocalFile( "/some/file.kesto" ) } );
	QMimeData twoFiles;
	twoFiles.setUrls( { QUrl::fromLocalFile( "/a.kesto" ), QUrl::fromLocalFile( "/b.kesto" ) } );
	QMimeData text;
	text.setText( "/a.kesto" );
	const auto isTaken = []( QWidget &widget, const QMimeData &what )
	{
		QDragEnterEvent enter( QPoint( 2, 2 ), Qt::CopyAction, &what, Qt::LeftButton, Qt::NoModifier );
		QCoreApplication::sendEvent( &widget, &enter );
		return enter.isAccepted();
	};
	for ( QWidget *pPart :
		{ static_cast<QWidget *>( &m_Player ), Child<QTreeWidget>().viewport(), Child<CQFlamegraphWidget>().viewport(),
			static_cast<QWidget *>( &Child<QLineEdit>() ), static_cast<QWidget *>( &Child<QSlider>() ) } )
	{
		EXPECT_TRUE( isTaken( *pPart, data ) ) << pPart->metaObject()->className();
		EXPECT_FALSE( isTaken( *pPart, twoFiles ) ) << pPart->metaObject()->className();
		EXPECT_FALSE( isTaken( *pPart, text ) ) << pPart->metaObject()->className();
	}
}

TEST_F( Player, WithoutAFileNoFolderIsSaved )
{
	KeyValues settings( "settings" );
	settings.SetString( "recording_directory", "/of/another/window" );
	m_Player.SaveSettings( settings );
	EXPECT_STREQ( settings.GetString( "recording_directory" ), "/of/another/window" );
}
} // namespace
