#include <gmock/gmock.h>

#include <QAction>
#include <QDropEvent>
#include <QFile>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QSlider>
#include <QSplitter>
#include <QStyledItemDelegate>
#include <QTemporaryDir>
#include <QTest>
#include <QTextDocument>
#include <QTimer>
#include <QToolBar>
#include <QToolTip>
#include <QTreeWidget>
#include <QUrl>

#include "keel0/keyvalues.h"
#include "keel0/platform.h"
#include "recordings/flamegraphrowitem.h"
#include "recordings/flamegraphwidget.h"
#include "recordings/kestoplayerwidget.h"
#include "recordings/kestotexts.h"
#include "tests/recordings/recordingreaders.h"
#include "tests/recordings/recordingwriter.h"

namespace
{
// Root 0 with "Physics" (1) and "Render" (2), "Shadows" (3) below 2: rows 0, 2, 3, 1. Times in units of 4 microseconds;
// the time of "Render" is nRender.
CRecordingWriter &Frame( CRecordingWriter &writer, uint32_t nRoot, uint32_t nRender )
{
	return writer.BeginFrame()
		.BeginTimings()
		.Entry( 1, nRoot )
		.Entry( 2, nRender )
		.Entry( 0, 0 )
		.Entry( 3, 0 )
		.EndFrame();
}

CRecordingWriter Recording( const std::vector<uint32_t> &renderTimes )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	writer.Node( 0, "Physics", 1 ).Node( 0, "Render", 2 ).Node( 2, "Shadows", 3 ).EndFrame();
	for ( const uint32_t nTime : renderTimes )
		Frame( writer, 4000, nTime );
	return writer;
}

class Player : public testing::Test
{
protected:
	Player()
	{
		m_Player.resize( 900, 400 );
		m_Player.show();
	}

	void Show( const CRecordingWriter &writer ) { m_Player.SetRecording( Parse( writer ).Get() ); }
	template <typename T>
	T &Child() const
	{
		return *m_Player.findChild<T *>();
	}
	QTreeWidgetItem &Item( const char *pName ) const
	{
		return *Child<QTreeWidget>().findItems( pName, Qt::MatchExactly | Qt::MatchRecursive ).value( 0 );
	}
	QStringList Cells( const char *pName ) const
	{
		return { Item( pName ).text( 1 ), Item( pName ).text( 2 ), Item( pName ).text( 3 ) };
	}
	void Key( Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier )
	{
		QTest::keyClick( &Child<CQFlamegraphWidget>(), key, modifiers );
	}

	CQKestoPlayerWidget m_Player{ nullptr };
};

TEST_F( Player, TheToolBarHasItsActionsInOrderAndOnlyOpenIsEnabled )
{
	const QList<QAction *> actions = Child<QToolBar>().actions();
	QStringList texts;
	for ( const QAction *pAction : actions )
		if ( !pAction->isSeparator() && !pAction->text().isEmpty() )
			texts << pAction->text() + ( pAction->isEnabled() ? " on" : " off" );
	// "Capture" on the first two is deliberate.
	EXPECT_EQ( texts, ( QStringList{ "Capture on", "Capture off", "Capture off", "Stop Capture off" } ) );
	EXPECT_TRUE( actions[2]->isSeparator() );
	EXPECT_TRUE( actions[5]->isSeparator() );
}

TEST_F( Player, TreeAndFlameGraphStandInTitledBoxesBelowTheToolBar )
{
	EXPECT_EQ( m_Player.layout()->contentsMargins(), QMargins() );
	EXPECT_EQ( m_Player.layout()->itemAt( 0 )->widget(), &Child<QToolBar>() );
	const auto &splitter = *static_cast<QSplitter *>( m_Player.layout()->itemAt( 1 )->widget() );
	EXPECT_EQ( static_cast<QGroupBox *>( splitter.widget( 0 ) )->title(), "Kesto Nodes" );
	EXPECT_EQ( static_cast<QGroupBox *>( splitter.widget( 1 ) )->title(), "Flamegraph" );
	EXPECT_TRUE( splitter.widget( 0 )->isAncestorOf( &Child<QLineEdit>() ) );
	EXPECT_TRUE( splitter.widget( 1 )->isAncestorOf( &Child<CQFlamegraphWidget>() ) );
	const QTreeWidget &tree = Child<QTreeWidget>();
	QStringList headings;
	for ( int i = 0; i < tree.columnCount(); i++ )
		headings << tree.headerItem()->text( i );
	EXPECT_EQ( headings, ( QStringList{ "Name", "Inclusive", "Exclusive", "Calls" } ) );
	EXPECT_EQ( tree.selectionMode(), QAbstractItemView::ExtendedSelection );
	EXPECT_EQ( tree.contextMenuPolicy(), Qt::CustomContextMenu );
	EXPECT_EQ( Child<QSlider>().orientation(), Qt::Horizontal );
}

TEST_F( Player, TheMetaObjectHasTheSlotsInTheirOrder )
{
	QStringList slotNames;
	const QMetaObject *pMeta = m_Player.metaObject();
	for ( int i = pMeta->methodOffset(); i < pMeta->methodCount(); i++ )
		if ( pMeta->method( i ).methodType() == QMetaMethod::Slot )
			slotNames << pMeta->method( i ).methodSignature();
	EXPECT_EQ( slotNames, ( QStringList{ "OnSetTick(int)", "OnSelectedChanged(int,bool)", "OnTreeSelectionChanged()",
							  "OnRecord()", "OnStop()", "OnFilterChanged(QString)", "OnOpenFile()", "OnSaveFile()",
							  "OnNodeTreeItemClicked(QPoint)", "OnItemContextMenu(int,QPoint)" } ) );
}

TEST_F( Player, AnEmptyPlayerSaysHowToGetARecording )
{
	EXPECT_EQ( m_Player.GetCurrentTick(), -1 );
	EXPECT_FALSE( Child<QSlider>().isEnabled() );
	QStringList texts;
	for ( const QLabel *pLabel : m_Player.findChildren<QLabel *>() )
		texts << ( pLabel->isVisible() ? pLabel->text() : "" );
	EXPECT_TRUE( texts.join( "" ).contains( ".kesto" ) );
	Show( Recording( { 1 } ) );
	for ( const QLabel *pLabel : m_Player.findChildren<QLabel *>() )
		EXPECT_FALSE( pLabel->isVisible() && pLabel->text().contains( ".kesto" ) );
}

TEST_F( Player, TheTreeHasTheNodesBelowTheRootInTheOrderOfTheirChains )
{
	Show( Recording( { 5 } ) );
	QTreeWidget &tree = Child<QTreeWidget>();
	ASSERT_EQ( tree.topLevelItemCount(), 2 );
	EXPECT_EQ( tree.topLevelItem( 0 )->text( 0 ), "Render" );
	EXPECT_EQ( tree.topLevelItem( 1 )->text( 0 ), "Physics" );
	EXPECT_EQ( tree.topLevelItem( 0 )->child( 0 )->text( 0 ), "Shadows" );
	EXPECT_EQ( tree.topLevelItem( 0 )->data( 0, Qt::UserRole ).toInt(), 2 );
	EXPECT_EQ( tree.headerItem()->text( 1 ), "Inclusive" );
	EXPECT_EQ( Child<QSlider>().maximum(), 1 );
}

TEST_F( Player, CellsShowMillisecondsDashesAndNothing )
{
	Show( Recording( { 3000 } ) );
	EXPECT_EQ( Cells( "Render" ), ( QStringList{ "", "", "" } ) ) << "frame 0 has no timings";
	m_Player.OnSetTick( 1 );
	EXPECT_EQ( Cells( "Render" ), ( QStringList{ "12.0", "12.0", "2" } ) );
	EXPECT_EQ( Cells( "Shadows" ), ( QStringList{ "", "", "" } ) );
	EXPECT_EQ( Cells( "Physics" ), ( QStringList{ "-", "-", "3" } ) );
	EXPECT_EQ( Item( "Render" ).toolTip( 1 ), "ave: 6.000000/call\nmax: 12.000000\nid: 2" );
	EXPECT_EQ( Child<QSlider>().toolTip(), "1" );
	m_Player.OnSetTick( 0 );
	EXPECT_EQ( Cells( "Render" ), ( QStringList{ "", "", "" } ) );
	EXPECT_EQ( Item( "Render" ).toolTip( 1 ), "ave: 6.000000/call\nmax: 12.000000\nid: 2" ) << "left as it was";
}

TEST_F( Player, MillisecondsHaveAboutThreeDigits )
{
	EXPECT_EQ( FormatMilliseconds( 12345 ), "12.3" );
	EXPECT_EQ( FormatMilliseconds( 500 ), "0.50" );
	EXPECT_EQ( FormatMilliseconds( 50 ), "0.050" );
	EXPECT_EQ( FormatMilliseconds( 150000 ), "150" );
	EXPECT_EQ( FormatMilliseconds( 1500000 ), "1500" );
	EXPECT_EQ( FormatMilliseconds( 4 ), "0.0040" );
	EXPECT_EQ( FormatMilliseconds( -12345 ), "-12.3" );
}

TEST_F( Player, TicksOutsideTheRecordingAreIgnored )
{
	m_Player.OnSetTick( 0 );
	EXPECT_EQ( m_Player.GetCurrentTick(), -1 );
	Show( Recording( { 1 } ) );
	for ( const int nTick : { -1, 2, 1000 } )
	{
		m_Player.OnSetTick( nTick );
		EXPECT_EQ( m_Player.GetCurrentTick(), 0 );
	}
}

// Deliberate: the slider's own change shows tick 0 while the views are empty, so the first frame is not shown again.
TEST_F( Player, ASecondRecordingLoadedAwayFromTheFirstFrameStaysUnfilledUntilTheSliderMoves )
{
	const auto filled = []( uint32_t nTime )
	{
		CRecordingWriter writer = CRecordingWriter().Header().BeginFrame().Node( 0, "Render", 2 ).BeginTimings();
		writer.Entry( 1, nTime ).Entry( 1, nTime ).EndFrame();
		return writer.BeginFrame().BeginTimings().Entry( 1, nTime ).Entry( 1, nTime ).EndFrame();
	};
	Show( filled( 250 ) );
	EXPECT_EQ( Cells( "Render" )[0], "1.00" );
	Child<QSlider>().setValue( 1 );
	Show( filled( 500 ) );
	EXPECT_EQ( m_Player.GetCurrentTick(), 0 );
	EXPECT_EQ( Cells( "Render" )[0], "" );
	EXPECT_EQ( Child<CQFlamegraphWidget>().GetRowItems()[0]->GetBar().m_nWidth, 0 );
	Child<QSlider>().setValue( 1 );
	EXPECT_EQ( Cells( "Render" )[0], "2.00" );
}

TEST_F( Player, ARecordingWithoutFramesDisablesTheSlider )
{
	Show( Recording( { 1 } ) );
	EXPECT_TRUE( Child<QSlider>().isEnabled() );
	Show( CRecordingWriter().Header() );
	EXPECT_FALSE( Child<QSlider>().isEnabled() );
	EXPECT_EQ( m_Player.GetCurrentTick(), -1 );
	EXPECT_EQ( Child<QTreeWidget>().topLevelItemCount(), 0 );
}

TEST_F( Player, SelectionGoesBothWays )
{
	Show( Recording( { 3000 } ) );
	m_Player.OnSetTick( 1 );
	CQFlamegraphWidget &flames = Child<CQFlamegraphWidget>();
	Item( "Shadows" ).setSelected( true );
	EXPECT_TRUE( flames.GetRowItems()[2]->isSelected() );
	EXPECT_EQ( flames.GetSelectedNode(), 3 );
	Item( "Shadows" ).setSelected( false );
	EXPECT_FALSE( flames.GetRowItems()[2]->isSelected() );

	flames.GetRowItems()[2]->setSelected( true );
	EXPECT_TRUE( Item( "Shadows" ).isSelected() );
	EXPECT_TRUE( Item( "Render" ).isExpanded() );
	flames.GetRowItems()[0]->setSelected( true );
	EXPECT_EQ( Child<QTreeWidget>().selectedItems().size(), 1 ) << "the root has no item";
}

TEST_F( Player, TheFilterSelectsWhatMatchesAndNothingElse )
{
	Show( Recording( { 1 } ) );
	QTest::keyClicks( &Child<QLineEdit>(), "s?x" );
	EXPECT_EQ( Child<QTreeWidget>().selectedItems(), QList<QTreeWidgetItem *>{} );
	Child<QLineEdit>().setText( "SH?D" );
	EXPECT_EQ( Child<QTreeWidget>().selectedItems(), QList<QTreeWidgetItem *>{ &Item( "Shadows" ) } );
	EXPECT_TRUE( Child<CQFlamegraphWidget>().GetRowItems()[2]->isSelected() );
	EXPECT_TRUE( Item( "Render" ).isExpanded() ) << "what is selected can be seen";
	Child<QLineEdit>().setText( "phys" );
	EXPECT_EQ( Child<QTreeWidget>().selectedItems(), QList<QTreeWidgetItem *>{ &Item( "Physics" ) } );
	EXPECT_FALSE( Child<CQFlamegraphWidget>().GetRowItems()[2]->isSelected() );
	Child<QLineEdit>().setText( "" );
	EXPECT_EQ( Child<QTreeWidget>().selectedItems().size(), 3 ) << "an empty text matches every name";
}

TEST_F( Player, AFilterThatMatchesMoreThan200ItemsChangesNothing )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int32_t i = 1; i <= 201; i++ )
		writer.Node( 0, i == 1 ? "xa" : "a", i );
	Show( writer.EndFrame() );
	Item( "xa" ).setSelected( true );
	Child<QLineEdit>().setText( "x" );
	Child<QLineEdit>().setText( "a" ); // 200, besides the selected one
	EXPECT_EQ( Child<QTreeWidget>().selectedItems().size(), 201 );
	Child<QTreeWidget>().clearSelection();
	Child<QLineEdit>().setText( "" );
	EXPECT_EQ( Child<QTreeWidget>().selectedItems().size(), 0 );
	EXPECT_EQ( QToolTip::text(), "too many (201) items matched" );
	QToolTip::hideText();
}

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

TEST_F( Player, TheFrameAndItsTimeAreReadable )
{
	Show( Recording( { 1, 2 } ) );
	m_Player.OnSetTick( 2 );
	QStringList texts;
	for ( const QLabel *pLabel : m_Player.findChildren<QLabel *>() )
		texts << pLabel->text();
	EXPECT_TRUE( texts.contains( "Frame 2 of 3: 16.0 ms" ) );
}

TEST_F( Player, AClickOnAColumnSortsNumbersAsNumbersWithDashesBelow )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	const std::vector<std::pair<const char *, uint32_t>> nodes = { { "dash", 0 }, { "ten", 2500 }, { "nine", 2250 } };
	for ( int32_t i = 0; i < 3; i++ )
		writer.Node( 0, nodes[static_cast<size_t>( i )].first, i + 1 );
	writer.Node( 0, "empty", 4 ).BeginTimings().Entry( 1, 9999 ).Entry( 0, 0 );
	for ( size_t i = 3; i-- > 0; )
		writer.Entry( 1, nodes[i].second );
	Show( writer.EndFrame() );
	QTreeWidget &tree = Child<QTreeWidget>();
	const auto order = [&]
	{
		QStringList names;
		for ( int i = 0; i < tree.topLevelItemCount(); i++ )
			names << tree.topLevelItem( i )->text( 0 );
		return names.join( " " );
	};
	EXPECT_EQ( order(), "empty nine ten dash" ) << "the order of the file until a header is clicked";
	QHeaderView &header = *tree.header();
	const QPoint ptInclusive( header.sectionViewportPosition( 1 ) + header.sectionSize( 1 ) / 2, header.height() / 2 );
	QTest::mouseClick( header.viewport(), Qt::LeftButton, Qt::NoModifier, ptInclusive );
	EXPECT_EQ( order(), "ten nine dash empty" );
	QTest::mouseClick( header.viewport(), Qt::LeftButton, Qt::NoModifier, ptInclusive );
	EXPECT_EQ( order(), "empty dash nine ten" );
}

TEST_F( Player, NodesThatAreNotShownAreCounted )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int32_t i = 1; i <= 4100; i++ )
		writer.Node( i - 1, "", i );
	Show( writer.EndFrame() );
	QStringList texts;
	for ( const QLabel *pLabel : m_Player.findChildren<QLabel *>() )
		texts << pLabel->text();
	EXPECT_TRUE( texts.contains( "4 nodes not shown" ) );
}

// What a label or a tool tip shows of its text.
QString Seen( const QString &text )
{
	if ( !Qt::mightBeRichText( text ) )
		return text;
	QTextDocument document;
	document.setHtml( text );
	return document.toPlainText().remove( QChar( 0x200B ) );
}

TEST_F( Player, NamesAreShownAsTheyStand )
{
	const std::vector<std::string> names = { "<b>bold</b>", "a&b &amp; c", "<img src='file:///etc/passwd'>  two blanks",
		std::string( 511, 'n' ), "<" + std::string( 300, 'w' ) + ">", "caf\xE9", "" };
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( size_t i = 0; i < names.size(); i++ )
		writer.Node( 0, names[i], static_cast<int32_t>( i + 1 ) );
	Show( writer.EndFrame() );
	const QTreeWidget &tree = Child<QTreeWidget>();
	const std::vector<CQFlamegraphRowItem *> &bars = Child<CQFlamegraphWidget>().GetRowItems();
	ASSERT_EQ( bars.size(), names.size() + 1 );
	for ( size_t i = 0; i < names.size(); i++ )
	{
		const QString name = QString::fromLatin1( names[i].c_str() );
		const int nRow = static_cast<int>( names.size() - 1 - i ); // chains are in the reverse order
		const QTreeWidgetItem &item = *tree.topLevelItem( nRow );
		EXPECT_EQ( item.text( 0 ), name );
		EXPECT_EQ( Seen( item.toolTip( 0 ) ), name );
		EXPECT_EQ( static_cast<QStyledItemDelegate *>( tree.itemDelegate() )->displayText( item.text( 0 ), {} ), name );
		EXPECT_EQ( Seen( bars[static_cast<size_t>( nRow + 1 )]->toolTip() ), name );
	}
}

TEST_F( Player, ALineFeedInANameBreaksNoRow )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	Show( writer.Node( 0, "plain", 1 ).Node( 0, "line\nfeed\t\x7F\x9B", 2 ).EndFrame() );
	const QTreeWidget &tree = Child<QTreeWidget>();
	EXPECT_EQ( tree.visualItemRect( tree.topLevelItem( 0 ) ).height(),
		tree.visualItemRect( tree.topLevelItem( 1 ) ).height() );
	const QString shown = QStringLiteral( "line\uFFFDfeed    \uFFFD\uFFFD" );
	EXPECT_EQ(
		static_cast<QStyledItemDelegate *>( tree.itemDelegate() )->displayText( tree.topLevelItem( 0 )->text( 0 ), {} ),
		shown );
	EXPECT_EQ( Child<CQFlamegraphWidget>().GetRowItems()[1]->toolTip(), shown );
	Child<QLineEdit>().setText( "line\nf" );
	EXPECT_EQ( tree.selectedItems().size(), 1 ) << "the filter knows the name itself";
}

TEST_F( Player, ADroppedFileIsOpened )
{
	QTemporaryDir folder;
	const QString path = folder.filePath( "dropped.kesto" );
	QFile file( path );
	ASSERT_TRUE( file.open( QIODevice::WriteOnly ) );
	const std::vector<uint8_t> bytes = Recording( { 1, 2 } ).m_Bytes;
	file.write( reinterpret_cast<const char *>( bytes.data() ), static_cast<qint64>( bytes.size() ) );
	file.close();
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

// 3 hangs below 0 and below 2: its rows are 1 and 3.
CRecordingWriter ReachedTwice()
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame().Node( 0, "three", 3 ).Node( 0, "one", 1 );
	return writer.Node( 0, "two", 2 ).Node( 2, "three", 3 ).EndFrame();
}

TEST_F( Player, ANodeWithTwoRowsIsSelectedAsOne )
{
	Show( ReachedTwice() );
	const QList<QTreeWidgetItem *> rows =
		Child<QTreeWidget>().findItems( "three", Qt::MatchExactly | Qt::MatchRecursive );
	ASSERT_EQ( rows.size(), 2 );
	CQFlamegraphWidget &flames = Child<CQFlamegraphWidget>();
	const auto barsSelected = [&]
	{
		int nSelected = 0;
		for ( const CQFlamegraphRowItem *pBar : flames.GetRowItems() )
			nSelected += pBar->GetNode() == 3 && pBar->isSelected() ? 1 : 0;
		return nSelected;
	};
	for ( QTreeWidgetItem *pRow : rows )
	{
		pRow->setSelected( true );
		EXPECT_EQ( barsSelected(), 2 );
	}
	rows[0]->setSelected( false );
	EXPECT_EQ( barsSelected(), 2 ) << "one row is selected still";
	rows[0]->setSelected( true );
	m_Player.OnSelectedChanged( 3, false );
	EXPECT_FALSE( rows[0]->isSelected() || rows[1]->isSelected() );
	EXPECT_EQ( barsSelected(), 0 );
}

TEST_F( Player, ShowingAFrameThatThereIsNotShowsTheNearest )
{
	Show( Recording( { 1, 2 } ) );
	m_Player.ShowFrame( 99 );
	EXPECT_EQ( m_Player.GetCurrentTick(), 2 );
	m_Player.ShowFrame( -5 );
	EXPECT_EQ( m_Player.GetCurrentTick(), 0 );
}

TEST_F( Player, AnotherFrameIsSortedAgain )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame().Node( 0, "b", 1 ).Node( 0, "a", 2 );
	writer.BeginTimings().Entry( 1, 9 ).Entry( 1, 1 ).Entry( 1, 2 ).EndFrame();
	Show( writer.BeginFrame().BeginTimings().Entry( 1, 9 ).Entry( 1, 4 ).Entry( 1, 3 ).EndFrame() );
	QTreeWidget &tree = Child<QTreeWidget>();
	emit tree.header()->sectionClicked( 1 );
	EXPECT_EQ( tree.topLevelItem( 0 )->text( 0 ), "b" );
	m_Player.OnSetTick( 1 );
	EXPECT_EQ( tree.topLevelItem( 0 )->text( 0 ), "a" );
}

TEST_F( Player, TheTreeFitsItsColumnsAtFirst )
{
	m_Player.resize( 1400, 600 );
	QCoreApplication::processEvents();
	const QTreeWidget &tree = Child<QTreeWidget>();
	EXPECT_EQ( tree.header()->length(), tree.viewport()->width() ) << "no scroll bar, no gap";
}
} // namespace
