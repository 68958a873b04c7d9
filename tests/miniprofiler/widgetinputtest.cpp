// The whole panel: search, menu and keys.
#include "widgetfixture.h"

#include <QActionGroup>
#include <QContextMenuEvent>

namespace
{
// -- Search

TEST_F( MiniProfilerWidget, ASearchSelectsAndOpensEveryMatch )
{
	Receive( 60 );
	GroupMode().setCurrentIndex( 1 );
	Search( "bb" );
	EXPECT_EQ( Selected(), ( QStringList{ "BBB", "BB" } ) ); // heaviest first
	EXPECT_TRUE( Item( "Physics" )->isExpanded() );
	Search( "phys" );
	EXPECT_EQ( Selected(), QStringList{ "Physics" } );
}

TEST_F( MiniProfilerWidget, ABlankMatchesAnything )
{
	Receive( 3 );
	Search( " " );
	EXPECT_EQ( Selected().size(), 3 );
}

TEST_F( MiniProfilerWidget, WithoutAMatchingNameDescriptionsAreSearched )
{
	Receive( 12 );
	Search( "foo f11" );
	EXPECT_EQ( Selected(), QStringList{ "L" } );
	Search( "nowhere" );
	EXPECT_TRUE( Selected().isEmpty() );
	Search( "[" ); // no pattern at all
	EXPECT_TRUE( Selected().isEmpty() );
}

TEST_F( MiniProfilerWidget, ReturnStepsThroughTheMatchesAndShiftReturnBack )
{
	Receive( 60 );
	Search( "b" );
	ASSERT_EQ( Selected(), ( QStringList{ "BBB", "BB", "B" } ) );
	const auto Step = [this]( Qt::KeyboardModifiers modifiers )
	{
		QTest::keyClick( &m_Search, Qt::Key_Return, modifiers );
		return m_Tree.currentItem()->text( 0 );
	};
	m_Tree.setCurrentItem( Item( "A" ) );
	EXPECT_EQ( Step( Qt::NoModifier ), "BBB" );
	EXPECT_EQ( Step( Qt::NoModifier ), "BB" );
	EXPECT_EQ( Selected(), QStringList{ "BB" } );
	EXPECT_EQ( Step( Qt::NoModifier ), "B" );
	EXPECT_EQ( Step( Qt::NoModifier ), "BBB" );
	EXPECT_EQ( Step( Qt::ShiftModifier ), "B" );
}

TEST_F( MiniProfilerWidget, ClearFromWithinASearchOrAJumpIsSafe )
{
	QObject listener;
	int nHeard = 0;
	QObject::connect( &m_Tree, &QTreeWidget::itemSelectionChanged, &listener,
		[&]
		{
			if ( m_Tree.topLevelItemCount() > 0 && nHeard++ == 0 )
				m_Panel.Clear();
		} );
	const auto Prepare = [&]
	{
		nHeard = 1;
		Receive( 30 );
		GroupMode().setCurrentIndex( 1 );
		nHeard = 0;
	};
	Prepare();
	Search( "a" );
	EXPECT_GE( nHeard, 1 );
	EXPECT_EQ( m_Tree.topLevelItemCount(), 0 );
	Prepare();
	QTest::keyClick( &m_Search, Qt::Key_Return );
	EXPECT_EQ( m_Tree.topLevelItemCount(), 0 );
	Prepare();
	m_Panel.ReceiveChunk( CFrameBuilder().BeginData( true ).Entry( 16, 32 ).End().Payload() );
	m_Panel.OnJumpToParent( Item( "A" ) );
	EXPECT_EQ( m_Tree.topLevelItemCount(), 0 );
}

TEST_F( MiniProfilerWidget, ControlFGoesToTheSearchAndEscapeEmptiesIt )
{
	m_Panel.show();
	m_Panel.activateWindow();
	QApplication::processEvents();
	m_Tree.setFocus();
	QTest::keyClick( &m_Tree, Qt::Key_F, Qt::ControlModifier );
	EXPECT_TRUE( m_Search.hasFocus() );
	QTest::keyClicks( &m_Search, "abc" );
	QTest::keyClick( &m_Search, Qt::Key_Escape );
	EXPECT_TRUE( m_Search.text().isEmpty() );
}

// -- Menu

TEST_F( MiniProfilerWidget, TheMenuHasItsEntriesSectionsAndStartStates )
{
	QStringList entries;
	for ( const QAction *pAction : m_Menu.actions() )
	{
		QString entry = pAction->text();
		if ( pAction->isSeparator() )
			entry = "--" + entry;
		else if ( pAction->isCheckable() )
			entry += pAction->isChecked() ? " on" : " off";
		entries << entry;
	}
	EXPECT_EQ(
		entries, ( QStringList{ "Bar: Exclusive, per Sampling Interval off", "Bar: Inclusive, per Sampling Interval on",
					 "Bar: None off", "Bar: Calls off", "Bar: Exclusive, per Call off", "Bar: Inclusive, per Call off",
					 "--Name Alignment", "Center Align off", "Right Align off", "Left Align on", "--Draw",
					 "Name: Transparent off", "Draw Bars on", "Draw Sigmas on", "Draw Peaks on", "Group Colors off",
					 "Normalize To Selected off", "Hide All Text off", "--Options", "Sort on", "--Tools",
					 "Copy Address", "Clear Selection", "Disambiguate by Caller" } ) );
	const auto actions = m_Menu.actions();
	for ( int i = 0; i < 6; i++ )
		EXPECT_EQ( actions[i]->actionGroup(), actions[0]->actionGroup() );
	for ( int i = 7; i < 10; i++ )
		EXPECT_EQ( actions[i]->actionGroup(), actions[7]->actionGroup() );
	EXPECT_TRUE( actions[0]->actionGroup()->isExclusive() && actions[7]->actionGroup()->isExclusive() );
	EXPECT_NE( actions[0]->actionGroup(), actions[7]->actionGroup() );
}

TEST_F( MiniProfilerWidget, MenuEntriesReachTheDelegate )
{
	const std::pair<const char *, int> modes[] = { { "Bar: Exclusive, per Sampling Interval", 3 }, { "Bar: None", 0 },
		{ "Bar: Calls", 1 }, { "Bar: Exclusive, per Call", 5 }, { "Bar: Inclusive, per Call", 4 },
		{ "Bar: Inclusive, per Sampling Interval", 2 } };
	for ( const auto &[pText, nMode] : modes )
	{
		Action( pText )->trigger();
		EXPECT_EQ( m_Delegate.Display().m_nBarMode, nMode ) << pText;
	}
	Action( "Right Align" )->trigger();
	EXPECT_EQ( m_Delegate.Display().m_Alignment, Qt::AlignRight );
	EXPECT_FALSE( Action( "Left Align" )->isChecked() );
	const std::pair<const char *, bool MiniProfilerDisplay::*> toggles[] = {
		{ "Name: Transparent", &MiniProfilerDisplay::m_bNameTransparent },
		{ "Draw Bars", &MiniProfilerDisplay::m_bDrawBars }, { "Draw Sigmas", &MiniProfilerDisplay::m_bDrawSigmas },
		{ "Draw Peaks", &MiniProfilerDisplay::m_bDrawPeaks }, { "Group Colors", &MiniProfilerDisplay::m_bGroupColours },
		{ "Hide All Text", &MiniProfilerDisplay::m_bTextVisible } };
	for ( const auto &[pText, pOption] : toggles )
	{
		const bool bBefore = m_Delegate.Display().*pOption;
		Action( pText )->trigger();
		EXPECT_NE( m_Delegate.Display().*pOption, bBefore ) << pText;
	}
}

TEST_F( MiniProfilerWidget, MenuEntriesAlignTexts )
{
	const std::pair<const char *, Qt::Alignment> alignments[] = {
		{ "Center Align", Qt::AlignHCenter | Qt::AlignVCenter }, { "Right Align", Qt::AlignRight },
		{ "Left Align", Qt::AlignLeft } };
	for ( const auto &[pText, alignment] : alignments )
	{
		Action( pText )->trigger();
		EXPECT_EQ( m_Delegate.Display().m_Alignment, alignment ) << pText;
	}
}

TEST_F( MiniProfilerWidget, MenuEntriesActAfterClearHasEmptiedThePanelBehindTheMenu )
{
	Receive( 3 );
	m_Panel.show();
	m_Tree.selectAll();
	m_Tree.OpenContextMenu( QPoint( 10, 10 ) );
	m_Panel.Clear();
	for ( QAction *pAction : m_Menu.actions() )
		pAction->trigger();
	EXPECT_EQ( g_Clipboard, "" ); // no addresses
	EXPECT_TRUE( m_Tree.SelectedRows().empty() );
	m_Menu.hide();
}

TEST_F( MiniProfilerWidget, ARightPressAndTheMenuKeyOpenTheOneMenu )
{
	Receive( 2 );
	m_Panel.show();
	m_Tree.setCurrentItem( Item( "A" ) );
	QTest::mousePress( m_Tree.viewport(), Qt::RightButton, Qt::NoModifier, QPoint( 20, 5 ) );
	EXPECT_TRUE( m_Menu.isVisible() );
	EXPECT_EQ( Selected(), QStringList{ "A" } ); // the press does not select
	m_Menu.hide();
	QContextMenuEvent event( QContextMenuEvent::Keyboard, QPoint( 10, 10 ) );
	QApplication::sendEvent( &m_Tree, &event );
	EXPECT_TRUE( m_Menu.isVisible() );
	m_Menu.hide();
	QTest::mousePress( &m_Panel, Qt::RightButton, Qt::NoModifier, QPoint( 2, 2 ) );
	EXPECT_TRUE( m_Menu.isVisible() );
	m_Panel.Clear(); // with the menu open
	m_Menu.hide();
}

TEST_F( MiniProfilerWidget, CopyAddressListsTheSelectedRecords )
{
	Receive( 3 );
	GroupMode().setCurrentIndex( 1 );
	Item( "Physics" )->setSelected( true );
	Action( "Copy Address" )->trigger();
	EXPECT_EQ( g_Clipboard, "" ); // groups have none
	Item( "A" )->setSelected( true );
	Item( "C" )->setSelected( true );
	Action( "Copy Address" )->trigger();
	EXPECT_EQ( g_Clipboard, "0x30\n0x10\n" );
}

TEST_F( MiniProfilerWidget, ControlCCopiesTheSelectedRowsAsShown )
{
	Receive( 2 );
	Item( "A" )->setSelected( true );
	QTest::keyClick( &m_Tree, Qt::Key_C, Qt::ControlModifier );
	EXPECT_EQ( g_Clipboard, "A\t1\t1000.0\t0.0\t1000.0\t0.0\n" ); // a tick is a microsecond here
}

TEST_F( MiniProfilerWidget, ClearSelectionAndDisambiguateActOnTheSelection )
{
	Receive( 2 );
	GroupMode().setCurrentIndex( 1 );
	m_Tree.selectAll();
	Item( "Physics" )->setSelected( true );
	Item( "A" )->setSelected( true );
	Action( "Disambiguate by Caller" )->trigger();
	EXPECT_TRUE( RowOf( *Item( "A" ) ).HasFlag( MINIPROFILER_ROW_DISAMBIGUATE ) );
	EXPECT_FALSE( RowOf( *Item( "Physics" ) ).HasFlag( MINIPROFILER_ROW_DISAMBIGUATE ) );
	Action( "Clear Selection" )->trigger();
	EXPECT_TRUE( Selected().isEmpty() );
}
} // namespace
