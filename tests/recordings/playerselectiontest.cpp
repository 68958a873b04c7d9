// What is selected in the player: in the tree, in the flame graph, by the filter.
#include <gtest/gtest.h>

#include <QLineEdit>
#include <QToolTip>

#include "recordings/flamegraphrowitem.h"
#include "tests/recordings/playerfixture.h"

namespace
{
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

TEST_F( Player, AClickInOneViewSelectsInBoth )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame().Node( 0, "left", 1 ).Node( 0, "right", 2 );
	Show( writer.BeginTimings().Entry( 1, 900 ).Entry( 1, 400 ).Entry( 1, 500 ).EndFrame() ); // root, right, left
	QTreeWidget &tree = Child<QTreeWidget>();
	CQFlamegraphWidget &flames = Child<CQFlamegraphWidget>();
	const auto clickRow = [&]( const char *pName, Qt::KeyboardModifiers modifiers )
	{
		const QPoint pt = tree.visualItemRect( &Item( pName ) ).center();
		QTest::mouseClick( tree.viewport(), Qt::LeftButton, modifiers, pt );
	};
	const auto clickBar = [&]( size_t nRow )
	{
		const QPointF ptBar = flames.GetRowItems()[nRow]->boundingRect().center();
		QTest::mouseClick( flames.viewport(), Qt::LeftButton, Qt::NoModifier, flames.mapFromScene( ptBar ) );
	};
	const auto selected = [&]
	{
		QStringList names;
		for ( const CQFlamegraphRowItem *pBar : flames.GetRowItems() )
			if ( pBar->isSelected() )
				names << flames.GetNodeText( pBar->GetNode() );
		QStringList rows;
		for ( const QTreeWidgetItem *pItem : tree.selectedItems() )
			rows << pItem->text( 0 );
		rows.sort();
		names.sort();
		EXPECT_EQ( rows, names );
		return names.join( " " );
	};
	clickRow( "left", Qt::NoModifier );
	EXPECT_EQ( selected(), "left" );
	clickRow( "right", Qt::ControlModifier );
	EXPECT_EQ( selected(), "left right" );
	clickBar( 1 );
	EXPECT_EQ( selected(), "right" );
	clickBar( 2 );
	EXPECT_EQ( selected(), "left" );
}

TEST_F( Player, ABarThatIsSelectedBringsItsRowIntoView )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int32_t i = 1; i <= 150; i++ )
		writer.Node( 0, i == 1 ? "last row" : "node", i );
	Show( writer.Node( 1, "below it", 151 ).EndFrame() );
	const QTreeWidget &tree = Child<QTreeWidget>();
	const auto isSeen = [&]
	{ return tree.viewport()->rect().contains( tree.visualItemRect( &Item( "below it" ) ).center() ); };
	ASSERT_FALSE( Item( "last row" ).isExpanded() );
	for ( CQFlamegraphRowItem *pBar : Child<CQFlamegraphWidget>().GetRowItems() )
		if ( pBar->GetNode() == 151 )
			pBar->setSelected( true );
	EXPECT_TRUE( Item( "last row" ).isExpanded() );
	EXPECT_TRUE( isSeen() );
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

TEST_F( Player, AFilterThatMatchesLittleTakesTheToolTipAway )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int32_t i = 1; i <= 201; i++ )
		writer.Node( 0, i == 1 ? "xa" : "a", i );
	Show( writer.EndFrame() );
	Child<QLineEdit>().setText( "a" );
	ASSERT_TRUE( QToolTip::isVisible() );
	Child<QLineEdit>().setText( "x" );
	EXPECT_TRUE( QTest::qWaitFor( [] { return !QToolTip::isVisible(); } ) );
}

// Deliberate, although rows stand in the reverse order.
TEST_F( Player, AFilterScrollsToTheMatchWithTheLowestId )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int32_t i = 1; i <= 150; i++ )
		writer.Node( 0, i == 20 ? "low hit" : i == 60 ? "high hit" : "node", i );
	Show( writer.EndFrame() );
	Child<QLineEdit>().setText( "hit" );
	const QTreeWidget &tree = Child<QTreeWidget>();
	const auto isSeen = [&]( const char *pName )
	{ return tree.viewport()->rect().contains( tree.visualItemRect( &Item( pName ) ) ); };
	EXPECT_TRUE( isSeen( "low hit" ) );
	EXPECT_FALSE( isSeen( "high hit" ) );
}

// The toolkit descends into what is expanded, so the depth of what is shown is limited.
TEST_F( Player, TheDeepestNodeThatIsShownCanBeSelectedAndGoes )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int32_t i = 1; i <= 6000; i++ )
		writer.Node( i - 1, i == 4096 ? "deepest" : i == 4097 ? "too deep" : "n", i );
	Show( writer.EndFrame() );
	Child<QLineEdit>().setText( "deep" );
	const QTreeWidget &tree = Child<QTreeWidget>();
	ASSERT_EQ( tree.selectedItems().size(), 1 );
	EXPECT_EQ( tree.selectedItems()[0]->text( 0 ), "deepest" );
	EXPECT_TRUE( tree.viewport()->rect().intersects( tree.visualItemRect( tree.selectedItems()[0] ) ) );
	m_Player.grab();
	Show( Recording( { 1 } ) );
	EXPECT_EQ( tree.topLevelItemCount(), 2 );
}
} // namespace
