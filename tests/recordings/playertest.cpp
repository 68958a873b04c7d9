// What the player shows: its parts, the tree's cells and order, texts.
#include <gtest/gtest.h>

#include <QAction>
#include <QDir>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QSplitter>
#include <QStyledItemDelegate>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QToolBar>

#include "recordings/flamegraphrowitem.h"
#include "recordings/kestotexts.h"
#include "tests/recordings/playerfixture.h"

namespace
{
QStringList CellsOf( const QTreeWidgetItem &item )
{
	return { item.text( 1 ), item.text( 2 ), item.text( 3 ) };
}

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

TEST( PlayerActions, HaveTheIconsOfTheHost )
{
	const QStringList names = { "open", "save", "control_record", "control_stop" };
	const QTemporaryDir folder;
	ASSERT_TRUE( QDir( folder.path() ).mkpath( "tools/images/common" ) );
	for ( int i = 0; i < names.size(); i++ )
	{
		QImage image( 16, 16, QImage::Format_RGB32 );
		image.fill( QColor( 10 * i, 200, 100 ) );
		ASSERT_TRUE( image.save( folder.filePath( "tools/images/common/" + names[i] + ".png" ) ) );
	}
	const QStringList before = QDir::searchPaths( "game" );
	QDir::setSearchPaths( "game", { folder.path() } );
	const CQKestoPlayerWidget player( nullptr );
	QDir::setSearchPaths( "game", before );
	QList<QColor> colours;
	for ( const QAction *pAction : player.findChild<QToolBar *>()->actions() )
		if ( !pAction->icon().isNull() )
			colours << pAction->icon().pixmap( 16 ).toImage().pixelColor( 8, 8 );
	EXPECT_EQ( colours.size(), names.size() );
	for ( int i = 0; i < colours.size(); i++ )
		EXPECT_EQ( colours[i], QColor( 10 * i, 200, 100 ) ) << names[i].toStdString();
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
	for ( const char *pWay : { "Open a .kesto file", "drop", "SHOWBUDGET_RECORD=", "record start", "kesto convert" } )
		EXPECT_TRUE( texts.join( "" ).contains( pWay ) ) << pWay;
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
	EXPECT_EQ( CellsOf( Item( "Render" ) ), ( QStringList{ "", "", "" } ) ) << "frame 0 has no timings";
	m_Player.OnSetTick( 1 );
	EXPECT_EQ( CellsOf( Item( "Render" ) ), ( QStringList{ "12.0", "12.0", "2" } ) );
	EXPECT_EQ( CellsOf( Item( "Shadows" ) ), ( QStringList{ "", "", "" } ) );
	EXPECT_EQ( CellsOf( Item( "Physics" ) ), ( QStringList{ "-", "-", "3" } ) );
	EXPECT_EQ( Item( "Render" ).toolTip( 1 ), "ave: 6.000000/call\nmax: 12.000000\nid: 2" );
	EXPECT_EQ( Child<QSlider>().toolTip(), "1" );
	m_Player.OnSetTick( 0 );
	EXPECT_EQ( CellsOf( Item( "Render" ) ), ( QStringList{ "", "", "" } ) );
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
	EXPECT_EQ( CellsOf( Item( "Render" ) )[0], "1.00" );
	Child<QSlider>().setValue( 1 );
	Show( filled( 500 ) );
	EXPECT_EQ( m_Player.GetCurrentTick(), 0 );
	EXPECT_EQ( CellsOf( Item( "Render" ) )[0], "" );
	EXPECT_EQ( Child<CQFlamegraphWidget>().GetRowItems()[0]->GetBar().m_nWidth, 0 );
	Child<QSlider>().setValue( 1 );
	EXPECT_EQ( CellsOf( Item( "Render" ) )[0], "2.00" );
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

TEST_F( Player, TheFrameAndItsTimeAreReadable )
{
	Show( Recording( { 1, 2 } ) );
	m_Player.OnSetTick( 2 );
	QStringList texts;
	for ( const QLabel *pLabel : m_Player.findChildren<QLabel *>() )
		texts << pLabel->text();
	EXPECT_TRUE( texts.contains( "Frame 2 of 3: 16.0 ms" ) );
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

TEST_F( Player, AnotherRecordingIsInTheOrderOfItsFileAgain )
{
	Show( Recording( { 1 } ) );
	QTreeWidget &tree = Child<QTreeWidget>();
	emit tree.header()->sectionClicked( 0 );
	EXPECT_EQ( tree.topLevelItem( 0 )->text( 0 ), "Physics" );
	Show( Recording( { 1 } ) );
	EXPECT_EQ( tree.topLevelItem( 0 )->text( 0 ), "Render" );
	EXPECT_FALSE( tree.header()->isSortIndicatorShown() );
}

TEST_F( Player, TheTreeFitsItsColumnsAtFirst )
{
	m_Player.resize( 1400, 600 );
	QCoreApplication::processEvents();
	const QTreeWidget &tree = Child<QTreeWidget>();
	EXPECT_EQ( tree.header()->length(), tree.viewport()->width() ) << "no scroll bar, no gap";
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
} // namespace
