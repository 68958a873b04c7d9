// The whole panel: what it is made of, and how its tree follows what chunks bring.
#include "widgetfixture.h"

#include <QGridLayout>
#include <QScrollBar>
#include <QSignalSpy>
#include <QToolBar>

namespace
{
TEST_F( MiniProfilerWidget, HasItsColumnsBeforeAnyData )
{
	EXPECT_EQ( m_Tree.columnCount(), 6 );
	EXPECT_EQ( m_Tree.headerItem()->text( 0 ), "Name" );
	EXPECT_EQ( m_Tree.headerItem()->text( 2 ), QString::fromUtf8( "\xCE\xBCs/frame, Inclusive" ) );
	EXPECT_TRUE( m_Tree.isSortingEnabled() );
	EXPECT_EQ( m_Tree.selectionMode(), QAbstractItemView::ExtendedSelection );
	EXPECT_EQ( m_Tree.contextMenuPolicy(), Qt::CustomContextMenu );
	for ( int i = 0; i < 6; i++ )
		EXPECT_GE( m_Tree.columnWidth( i ), m_Tree.fontMetrics().horizontalAdvance( m_Tree.headerItem()->text( i ) ) );
}

TEST_F( MiniProfilerWidget, IsWrittenInArialOfNinePoints )
{
	for ( const QWidget *pWidget : { static_cast<QWidget *>( &m_Panel ), static_cast<QWidget *>( &m_Tree ),
			  static_cast<QWidget *>( &Box( "Ave" ) ) } )
	{
		EXPECT_EQ( pWidget->font().family(), "Arial" );
		EXPECT_EQ( pWidget->font().pointSize(), 9 );
		EXPECT_EQ( pWidget->font().weight(), QFont::Normal );
	}
}

TEST_F( MiniProfilerWidget, HasToolsAboveTheTreeAndChoicesBelow )
{
	auto *pLayout = qobject_cast<QVBoxLayout *>( m_Panel.layout() );
	ASSERT_NE( pLayout, nullptr );
	ASSERT_EQ( pLayout->count(), 3 );
	auto *pToolBar = qobject_cast<QToolBar *>( pLayout->itemAt( 0 )->widget() );
	ASSERT_NE( pToolBar, nullptr );
	const QList<QAction *> actions = pToolBar->actions();
	ASSERT_EQ( actions.size(), 5 );
	const char *const texts[] = { "Pause Collection", "Rapid Update", "Rebuild Hierarchy Continuously" };
	for ( int i = 0; i < 3; i++ )
	{
		EXPECT_EQ( actions[i]->text(), texts[i] );
		EXPECT_TRUE( actions[i]->isCheckable() );
	}
	EXPECT_EQ( pToolBar->widgetForAction( actions[3] ), &m_Search );
	EXPECT_NE( qobject_cast<QLabel *>( pToolBar->widgetForAction( actions[4] ) ), nullptr );
	EXPECT_EQ( pLayout->itemAt( 1 )->widget(), &m_Tree );
	EXPECT_EQ( pLayout->stretch( 1 ), 100 );

	auto *pGrid = qobject_cast<QGridLayout *>( pLayout->itemAt( 2 )->layout() );
	ASSERT_NE( pGrid, nullptr );
	const auto Place = [pGrid]( QWidget &widget )
	{
		int nRow = -1, nColumn = -1, nRows = -1, nColumns = -1;
		pGrid->getItemPosition( pGrid->indexOf( &widget ), &nRow, &nColumn, &nRows, &nColumns );
		return QRect( nColumn, nRow, nColumns, nRows );
	};
	EXPECT_EQ( Place( GroupMode() ), QRect( 0, 0, 1, 1 ) );
	EXPECT_EQ( Place( LeafMode() ), QRect( 1, 0, 1, 1 ) );
	EXPECT_EQ( Place( Combo( "ms #" ) ), QRect( 3, 0, 2, 1 ) );
	QWidget *pOverhead = pGrid->itemAtPosition( 0, 2 )->widget();
	ASSERT_NE( qobject_cast<QLabel *>( pOverhead ), nullptr );
	EXPECT_EQ( Place( *pOverhead ), QRect( 2, 0, 1, 2 ) );
	auto *pNumbers = qobject_cast<QHBoxLayout *>( pGrid->itemAtPosition( 1, 3 )->layout() );
	ASSERT_NE( pNumbers, nullptr );
	EXPECT_EQ( pGrid->itemAtPosition( 1, 4 )->layout(), pNumbers );
	EXPECT_TRUE( pNumbers->contentsMargins().isNull() );
	const char *const boxes[] = { "Cur", "Ave", "StDev", "Peaks" };
	for ( int i = 0; i < 4; i++ )
		EXPECT_EQ( pNumbers->itemAt( i )->widget(), &Box( boxes[i] ) );
}

TEST_F( MiniProfilerWidget, OffersItsModesAndUnits )
{
	const auto Items = []( const QComboBox &combo )
	{
		QStringList items;
		for ( int i = 0; i < combo.count(); i++ )
			items << combo.itemText( i ) + "=" + combo.itemData( i ).toString();
		return items;
	};
	EXPECT_EQ( Items( GroupMode() ), ( QStringList{ "No Group Hierarchy=0", "Group by Budget=3", "Group by File=4",
										 "Group by Function=6", "Group by Project=7" } ) );
	EXPECT_EQ( Items( LeafMode() ),
		( QStringList{ "No Leaf Hierarchy=0", "Leaf Static Tree=1", "Leaf Dynamic Tree (approx)=2" } ) );
	EXPECT_EQ( Combo( "ms #" ).count(), 9 );
	EXPECT_EQ( Combo( "ms #" ).currentIndex(), 5 );
	EXPECT_FALSE( Box( "Cur" ).isChecked() || Box( "StDev" ).isChecked() || Box( "Peaks" ).isChecked() );
	EXPECT_TRUE( Box( "Ave" ).isChecked() );
	EXPECT_FALSE( Action( "Pause Collection" )->isChecked() || Action( "Rapid Update" )->isChecked() ||
				  Action( "Rebuild Hierarchy Continuously" )->isChecked() );
}

TEST_F( MiniProfilerWidget, EveryColumnOfAnItemCarriesItsRow )
{
	Receive( 1 );
	QTreeWidgetItem *pItem = m_Tree.topLevelItem( 0 );
	for ( int i = 0; i < 6; i++ )
		EXPECT_EQ( pItem->data( i, Qt::UserRole ).value<CMiniProfilerRow *>(), m_Panel.Model().Records()[0].get() );
	EXPECT_STREQ( pItem->data( 0, Qt::UserRole ).typeName(), "CMiniProfilerRow*" );
	EXPECT_EQ( pItem->toolTip( 0 ), "Physics\nCFoo::f0\nC:\\Src\\x.cpp\n1\ndemo\n" );
	for ( const int nColumn : { 3, 5 } )
		EXPECT_EQ( pItem->foreground( nColumn ).color(), QColor( Qt::black ) );
	for ( const int nColumn : { 2, 4 } )
		EXPECT_EQ( pItem->foreground( nColumn ).color(), QColor( Qt::gray ) );
}

TEST_F( MiniProfilerWidget, ChunksOfDataStartTheTimerAndRapidUpdateShortensIt )
{
	EXPECT_TRUE( m_Timer.isSingleShot() );
	m_Panel.ReceiveChunk( CFrameBuilder( 1 ).Payload() );
	m_Panel.ReceiveChunk( CFrameBuilder().BeginNames( 1, 1 ).Name( 1, 0, "x", "" ).End().Payload() );
	EXPECT_FALSE( m_Timer.isActive() );
	SetTicks( { { 1, 1 } } );
	EXPECT_TRUE( m_Timer.isActive() );
	EXPECT_EQ( m_Timer.interval(), 250 );
	Action( "Rapid Update" )->setChecked( true );
	SetTicks( { { 1, 1 } } );
	EXPECT_EQ( m_Timer.interval(), 250 ); // a running timer is left alone
	m_Timer.stop();
	SetTicks( { { 1, 1 } } );
	EXPECT_EQ( m_Timer.interval(), 10 );
}

TEST_F( MiniProfilerWidget, PauseIsToldAndKeepsRecordsAway )
{
	QSignalSpy spy( &m_Panel, SIGNAL( OnPauseStateChanged( bool ) ) );
	Action( "Pause Collection" )->trigger();
	ASSERT_EQ( spy.count(), 1 );
	EXPECT_TRUE( spy[0][0].toBool() );
	EXPECT_TRUE( m_Panel.IsPaused() );
	SetTicks( { { 1, 1 } } );
	EXPECT_EQ( m_Tree.topLevelItemCount(), 0 );
	EXPECT_FALSE( m_Timer.isActive() );
	m_Panel.SetPaused( false );
	EXPECT_EQ( spy.count(), 2 );
}

TEST_F( MiniProfilerWidget, TimesAreTheHostsUntilTheEngineTellsItsFrequency )
{
	EXPECT_EQ( m_Panel.Model().TickFrequency(), Plat_CPUTickFrequency() );
	EXPECT_EQ( m_Delegate.Display().m_Numbers.m_flFactor, 1e6 / static_cast<double>( Plat_CPUTickFrequency() ) );
	m_Panel.ReceiveChunk( CFrameBuilder().BeginNames( 2000000, 0 ).End().Payload() );
	m_Panel.RegenerateDataView();
	EXPECT_EQ( m_Delegate.Display().m_Numbers.m_flFactor, 0.5 );
}

// -- Order

TEST_F( MiniProfilerWidget, EveryRegenerationRestoresTheOrderAsShown )
{
	Receive( 3 );
	EXPECT_EQ( TopLevel(), ( QStringList{ "C", "B", "A" } ) ); // the heaviest first
	m_Tree.sortByColumn( 0, Qt::AscendingOrder );
	EXPECT_EQ( TopLevel(), ( QStringList{ "A", "B", "C" } ) );
	m_Tree.sortByColumn( 2, Qt::AscendingOrder );
	SetTicks( { { 16, 900000 } } );
	m_Panel.RegenerateDataView();
	EXPECT_EQ( TopLevel(), ( QStringList{ "B", "C", "A" } ) );
	Box( "Ave" ).setChecked( false );
	Box( "Cur" ).setChecked( true ); // 900000, 0, 0: equal ones stay where they are
	EXPECT_EQ( TopLevel(), ( QStringList{ "B", "C", "A" } ) );
}

TEST_F( MiniProfilerWidget, NothingMovesWhenTheOrderIsRight )
{
	Receive( 10 );
	QSignalSpy spy( m_Tree.model(), SIGNAL( layoutChanged() ) );
	SetTicks( { { 160, 99999 } } ); // the heaviest grows
	m_Panel.RegenerateDataView();
	EXPECT_EQ( spy.count(), 0 );
	SetTicks( { { 16, 9999999 } } ); // the lightest becomes the heaviest
	m_Panel.RegenerateDataView();
	EXPECT_EQ( spy.count(), 1 );
}

TEST_F( MiniProfilerWidget, WithSortingOffRowsStay )
{
	Receive( 3 );
	Action( "Sort" )->trigger();
	EXPECT_FALSE( m_Tree.isSortingEnabled() );
	SetTicks( { { 16, 900000 } } );
	m_Panel.RegenerateDataView();
	EXPECT_EQ( TopLevel(), ( QStringList{ "C", "B", "A" } ) );
	Action( "Sort" )->trigger();
	EXPECT_EQ( TopLevel(), ( QStringList{ "A", "C", "B" } ) );
}

TEST_F( MiniProfilerWidget, SelectionCurrentItemExpansionAndPlaceSurviveNewRowsAndOrder )
{
	Receive( 100 );
	GroupMode().setCurrentIndex( 3 ); // by function: CFoo with 100 groups
	m_Panel.show();
	m_Tree.expandAll();
	m_Tree.setCurrentItem( Item( "CCC" ) );
	Item( "DDD" )->setSelected( true );
	m_Tree.verticalScrollBar()->setValue( 40 );
	const QStringList selected = Selected();
	ASSERT_EQ( selected.size(), 2 );

	SetTicks( { { 16, 90000000 }, { 5000, 3 }, { 5008, 4 } } );
	m_Panel.RegenerateDataView();
	EXPECT_EQ( m_Tree.verticalScrollBar()->value(), 40 );
	EXPECT_EQ( m_Tree.currentItem(), Item( "CCC" ) );
	EXPECT_TRUE( Item( "CFoo" )->isExpanded() );
	QStringList sorted = Selected();
	sorted.sort();
	EXPECT_EQ( sorted, ( QStringList{ "CCC", "DDD" } ) );
}

// -- Hierarchy

TEST_F( MiniProfilerWidget, GroupingMovesItemsAndKeepsWhatIsSelected )
{
	Receive( 100 ); // more than are moved one by one
	m_Tree.setCurrentItem( Item( "B" ) );
	GroupMode().setCurrentIndex( 1 );
	EXPECT_EQ( TopLevel(), QStringList{ "Physics" } );
	EXPECT_EQ( m_Tree.topLevelItem( 0 )->childCount(), 100 );
	EXPECT_EQ( Selected(), QStringList{ "B" } );
	EXPECT_EQ( m_Tree.currentItem(), Item( "B" ) );
	GroupMode().setCurrentIndex( 0 );
	EXPECT_EQ( m_Tree.topLevelItemCount(), 100 );
	EXPECT_EQ( m_Tree.findItems( "Physics", Qt::MatchExactly | Qt::MatchRecursive ).size(), 0 );
	EXPECT_EQ( Selected(), QStringList{ "B" } );
}

TEST_F( MiniProfilerWidget, AFewMovesGoOneByOneToTheSameEnd )
{
	Receive( 3 );
	m_Tree.setCurrentItem( Item( "B" ) );
	GroupMode().setCurrentIndex( 1 );
	EXPECT_EQ( TopLevel(), QStringList{ "Physics" } );
	EXPECT_EQ( m_Tree.topLevelItem( 0 )->childCount(), 3 );
	EXPECT_EQ( m_Tree.currentItem(), Item( "B" ) );
	Receive( 3, "Audio" ); // named anew
	EXPECT_EQ( Item( "B" )->parent(), Item( "Audio" ) );
	EXPECT_EQ( Item( "Physics" )->childCount(), 0 ); // until the next change of mode
	GroupMode().setCurrentIndex( 0 );
	EXPECT_EQ( TopLevel(), ( QStringList{ "C", "B", "A" } ) );
}

TEST_F( MiniProfilerWidget, TheDynamicTreeFollowsCallersWhenRebuiltContinuously )
{
	Receive( 3 );
	LeafMode().setCurrentIndex( 2 );
	m_Panel.ReceiveChunk( CFrameBuilder().BeginData( true ).Entry( 16, 32, 5, 1 ).End().Payload() );
	m_Panel.RegenerateDataView();
	EXPECT_EQ( Item( "A" )->parent(), nullptr );
	Action( "Rebuild Hierarchy Continuously" )->trigger();
	m_Panel.RegenerateDataView();
	EXPECT_EQ( Item( "A" )->parent(), Item( "B" ) );
	m_Panel.ReceiveChunk( CFrameBuilder().BeginData( true ).Entry( 16, 48, 5, 1 ).Entry( 48, 32 ).End().Payload() );
	m_Panel.RegenerateDataView();
	EXPECT_EQ( Item( "A" )->parent(), Item( "C" ) );
	EXPECT_EQ( Item( "C" )->parent(), Item( "B" ) );
}

TEST_F( MiniProfilerWidget, AChainOfVeryManyCallersIsShownAndCleared )
{
	constexpr uint64_t RECORDS = 100000;
	CFrameBuilder data;
	data.BeginData( true );
	for ( uint64_t nId = 1; nId < RECORDS; nId++ )
		data.Entry( nId, nId + 1, nId, 1 );
	LeafMode().setCurrentIndex( 2 );
	Action( "Rebuild Hierarchy Continuously" )->trigger();
	m_Panel.ReceiveChunk( data.End().Payload() );
	m_Panel.show();
	for ( int i = 0; i < 2; i++ ) // the second time nothing moves
	{
		m_Panel.RegenerateDataView();
		EXPECT_EQ( m_Tree.topLevelItemCount(), static_cast<int>( ( RECORDS + 255 ) / 256 ) );
	}
	m_Tree.expandAll();
	m_Panel.RegenerateDataView();
	m_Panel.Clear();
	EXPECT_EQ( m_Tree.topLevelItemCount(), 0 );
}

TEST_F( MiniProfilerWidget, JumpsToTheCallerOrTheStaticParent )
{
	m_Panel.ReceiveChunk( CFrameBuilder()
							  .BeginData( true )
							  .Entry( 1, 2 )
							  .End()
							  .BeginNames( 1, 3 )
							  .Name( 1, 3, "one", "" )
							  .Name( 2, 3, "two", "" )
							  .Name( 3, 0, "three", "" )
							  .End()
							  .Payload() );
	m_Tree.setCurrentItem( Item( "one" ) );
	QTest::keyClick( &m_Tree, Qt::Key_Up, Qt::AltModifier );
	EXPECT_EQ( m_Tree.currentItem(), Item( "two" ) ); // its caller
	m_Panel.OnJumpToParent( m_Tree.currentItem() );
	EXPECT_EQ( Selected(), QStringList{ "three" } ); // no caller, so its static parent
	m_Panel.OnJumpToParent( m_Tree.currentItem() );
	EXPECT_EQ( Selected(), QStringList{ "three" } );
}
} // namespace
