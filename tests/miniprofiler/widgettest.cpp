// The whole panel: tree, controls, menu, search and keys.
#include <gmock/gmock.h>

#include <QAction>
#include <QActionGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include "framebuilder.h"
#include "keel0/platform.h"
#include "miniprofiler/miniprofilerbardelegate.h"
#include "miniprofiler/miniprofilermenu.h"
#include "miniprofiler/miniprofilerrowitem.h"
#include "miniprofiler/miniprofilertreewidget.h"
#include "miniprofiler/miniprofilerwidget.h"
#include "support/fakeclock.h"
#include "support/logguard.h"
#include "support/paintlog.h"

namespace
{
std::string g_Clipboard;

class MiniProfilerWidget : public testing::Test
{
protected:
	MiniProfilerWidget()
	{
		g_Clipboard = "untouched";
		Plat_SetClipboardSink( []( const char *pText ) { g_Clipboard = pText; } );
		m_Panel.resize( 900, 500 );
	}
	~MiniProfilerWidget() override { Plat_SetClipboardSink( nullptr ); }

	// Names "A" on with the ids 16, 32 …; times are 1000, 2000 … ticks, so the last is the heaviest.
	void Receive( int nRecords, std::string_view budget = "Physics" )
	{
		CFrameBuilder data, names;
		data.BeginData( true, 99, static_cast<uint32_t>( nRecords ) );
		names.BeginNames( 1000000, nRecords );
		for ( int i = 0; i < nRecords; i++ )
		{
			const auto nNumber = static_cast<uint64_t>( i + 1 );
			data.Entry( nNumber * 16, 0, nNumber * 1000, 1 );
			names.Name( nNumber * 16, 0, NameOf( i ),
				std::string( budget ) + "\nCFoo::f" + std::to_string( i ) + "\nC:\\Src\\x.cpp\n1\ndemo\n" );
		}
		m_Panel.ReceiveChunk( names.End().Payload() );
		m_Panel.ReceiveChunk( data.End().Payload() );
		m_Panel.RegenerateDataView();
	}
	static std::string NameOf( int nIndex )
	{
		const auto nLetter = static_cast<char>( 'A' + nIndex % 26 );
		return std::string( static_cast<size_t>( nIndex / 26 + 1 ), nLetter );
	}
	void SetTicks( std::initializer_list<std::pair<uint64_t, uint64_t>> ticks )
	{
		CFrameBuilder data;
		data.BeginData( true );
		for ( const auto &[nId, nTicks] : ticks )
			data.Entry( nId, 0, nTicks, 1 );
		m_Panel.ReceiveChunk( data.End().Payload() );
	}

	QStringList TopLevel() const
	{
		QStringList names;
		for ( int i = 0; i < m_Tree.topLevelItemCount(); i++ )
			names << m_Tree.topLevelItem( i )->text( 0 );
		return names;
	}
	QTreeWidgetItem *Item( const QString &name ) const
	{
		const auto items = m_Tree.findItems( name, Qt::MatchExactly | Qt::MatchRecursive );
		return items.isEmpty() ? nullptr : items.first();
	}
	QStringList Selected() const
	{
		QStringList names;
		for ( const CMiniProfilerRow *pRow : m_Tree.SelectedRows() )
			names << pRow->Name();
		return names;
	}
	QAction *Action( const QString &text ) const
	{
		for ( QAction *pAction : m_Panel.findChildren<QAction *>() )
			if ( pAction->text() == text )
				return pAction;
		ADD_FAILURE() << "no action " << text.toStdString();
		return nullptr;
	}
	QComboBox &Combo( const QString &firstText ) const
	{
		for ( QComboBox *pCombo : m_Panel.findChildren<QComboBox *>() )
			if ( pCombo->itemText( 0 ) == firstText )
				return *pCombo;
		throw std::runtime_error( "no combo box" );
	}
	QComboBox &GroupMode() const { return Combo( "No Group Hierarchy" ); }
	QComboBox &LeafMode() const { return Combo( "No Leaf Hierarchy" ); }
	QCheckBox &Box( const QString &text ) const
	{
		for ( QCheckBox *pBox : m_Panel.findChildren<QCheckBox *>() )
			if ( pBox->text() == text )
				return *pBox;
		throw std::runtime_error( "no check box" );
	}
	void Search( const char *pText )
	{
		m_Search.clear();
		QTest::keyClicks( &m_Search, pText );
	}
	QLabel *LabelWith( const QString &text ) const
	{
		for ( QLabel *pLabel : m_Panel.findChildren<QLabel *>() )
			if ( pLabel->text().contains( text ) )
				return pLabel;
		return nullptr;
	}

	CFakeClock m_Clock;
	CQMiniProfilerWidget m_Panel{ nullptr };
	CQMiniProfilerTreeWidget &m_Tree = *m_Panel.findChild<CQMiniProfilerTreeWidget *>();
	CQMiniProfilerMenu &m_Menu = *m_Panel.findChild<CQMiniProfilerMenu *>();
	CQMiniProfilerBarDelegate &m_Delegate = *m_Panel.findChild<CQMiniProfilerBarDelegate *>();
	QTimer &m_Timer = *m_Panel.findChild<QTimer *>( "RegenerationTimer" );
	QLineEdit &m_Search = *m_Panel.findChild<QLineEdit *>();
};

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

// -- Scales and texts

TEST_F( MiniProfilerWidget, BarsAreScaledToWhatIsVisibleOrToTheSelection )
{
	Receive( 3 );
	EXPECT_EQ( m_Delegate.Display().m_BarMaxima[2], 3000.0f );
	EXPECT_EQ( m_Delegate.Display().m_nNormalised, 0 );
	Action( "Normalize To Selected" )->trigger();
	m_Clock.Advance( 10.0 ); // the old scale falls away
	Item( "A" )->setSelected( true );
	EXPECT_NEAR( m_Delegate.Display().m_BarMaxima[2], 1000.0f, 0.001f );
	EXPECT_EQ( m_Delegate.Display().m_nNormalised, 1 );
	EXPECT_NE( LabelWith( QString::fromUtf8( "0.0\xCE\xBCs/frame, 1 calls" ) ), nullptr );
	Item( "B" )->setSelected( true );
	EXPECT_EQ( m_Delegate.Display().m_nNormalised, 2 );
	EXPECT_NE( LabelWith( ", 2 calls" ), nullptr );
}

TEST_F( MiniProfilerWidget, TheOverheadKeepsItsTextWithoutCosts )
{
	EXPECT_EQ( LabelWith( "MiniProfiler net" ), nullptr );
	Receive( 2 );
	QLabel *pOverhead = LabelWith( "MiniProfiler net engine service: " );
	ASSERT_NE( pOverhead, nullptr );
	EXPECT_TRUE( pOverhead->text().contains( "2/99 profilers" ) );
	EXPECT_TRUE( pOverhead->toolTip().contains( "2 profiler names sent" ) );
}

TEST_F( MiniProfilerWidget, ScopesBeyondTheLimitAreCountedInTheOverhead )
{
	CExpectWarnings warnings;
	CFrameBuilder data;
	data.BeginData( true );
	for ( uint64_t nId = 1; nId <= CMiniProfilerModel::MAX_RECORDS + 2; nId++ )
		data.Entry( nId, 0, nId, 1 );
	m_Panel.ReceiveChunk( data.End().Payload() );
	m_Panel.RegenerateDataView();
	EXPECT_EQ( warnings.Take().size(), 1u );
	EXPECT_EQ( m_Tree.topLevelItemCount(), static_cast<int>( CMiniProfilerModel::MAX_RECORDS ) );
	const QLabel *pOverhead = LabelWith( "MiniProfiler net engine service: " );
	ASSERT_NE( pOverhead, nullptr );
	EXPECT_TRUE( pOverhead->toolTip().endsWith( "\n2 further profilers ignored: at most 131072 are kept" ) );
}

TEST_F( MiniProfilerWidget, WithoutAnyNumbersCellsAreEmptyAndThePeaksSort )
{
	Receive( 2 );
	Box( "Ave" ).setChecked( false );
	EXPECT_EQ( m_Tree.SortArray(), MiniProfilerSortArray::Peaks );
	Item( "A" )->setSelected( true );
	m_Panel.setFocus();
	QTest::keyClick( &m_Tree, Qt::Key_C, Qt::ControlModifier );
	EXPECT_EQ( g_Clipboard, "A\t\t\t\t\t\n" );
}

TEST_F( MiniProfilerWidget, EveryCheckBoxShowsItsNumber )
{
	Receive( 1 );
	SetTicks( { { 16, 3000 } } ); // after 1000: mean 2000, deviation 1000
	m_Tree.setCurrentItem( Item( "A" ) );
	const auto Inclusive = [this]
	{
		QTest::keyClick( &m_Tree, Qt::Key_C, Qt::ControlModifier );
		return QString::fromStdString( g_Clipboard ).split( '\t' ).value( 2 );
	};
	Box( "Cur" ).setChecked( true );
	EXPECT_EQ( Inclusive(), "3000.0 [2000.0]" );
	Box( "StDev" ).setChecked( true );
	EXPECT_EQ( Inclusive(), "3000.0 [2000.0] +- 1000.0" );
	Box( "Peaks" ).setChecked( true );
	EXPECT_EQ( Inclusive(), "3000.0 [2000.0] +- 1000.0 -> 3000.0" );
	Box( "Ave" ).setChecked( false );
	EXPECT_EQ( Inclusive(), "3000.0 +- 1000.0 -> 3000.0" );
}

TEST_F( MiniProfilerWidget, ShownTextsStayUntilTheNextRegeneration )
{
	Receive( 5 );
	m_Panel.show();
	const auto Texts = [this]
	{
		CPaintLog log( m_Tree.viewport()->size() );
		m_Tree.viewport()->render( &log );
		return log.Texts();
	};
	const std::vector<QString> before = Texts();
	EXPECT_GE( before.size(), 5u * 6 );
	SetTicks( { { 16, 777000 }, { 32, 888000 } } );
	EXPECT_EQ( Texts(), before );
	m_Panel.RegenerateDataView();
	EXPECT_NE( Texts(), before );
}

TEST_F( MiniProfilerWidget, TheTimerRegenerates )
{
	Action( "Rapid Update" )->setChecked( true );
	SetTicks( { { 16, 777 } } );
	EXPECT_EQ( m_Panel.Model().Records()[0]->m_Ave[2], 0.0f );
	EXPECT_TRUE( QTest::qWaitFor( [this] { return m_Panel.Model().Records()[0]->m_Ave[2] == 777.0f; }, 10000 ) );
	EXPECT_FALSE( m_Timer.isActive() );
}

TEST_F( MiniProfilerWidget, TheUnitChangesTheHeaderButNotTheUsersColumnWidths )
{
	m_Tree.setColumnWidth( 2, 77 );
	Combo( "ms #" ).setCurrentIndex( 8 );
	EXPECT_EQ( m_Tree.headerItem()->text( 2 ), "ticks/frame, Inclusive" );
	EXPECT_EQ( m_Tree.columnWidth( 2 ), 77 );
}

TEST_F( MiniProfilerWidget, NamesTakeTheRestOfTheWidthUntilTheUserSetsOne )
{
	const auto Sum = [this]
	{
		int nSum = 0;
		for ( int i = 0; i < m_Tree.columnCount(); i++ )
			nSum += m_Tree.columnWidth( i );
		return nSum;
	};
	m_Panel.resize( 1400, 500 );
	m_Panel.show();
	EXPECT_EQ( Sum(), m_Tree.viewport()->width() );
	const int nNames = m_Tree.columnWidth( 0 );
	const int nCalls = m_Tree.columnWidth( 1 );
	m_Panel.resize( 1500, 500 );
	EXPECT_EQ( m_Tree.columnWidth( 0 ), nNames + 100 );
	EXPECT_EQ( m_Tree.columnWidth( 1 ), nCalls );
	m_Panel.resize( 300, 500 );
	EXPECT_GT( m_Tree.columnWidth( 0 ), m_Tree.fontMetrics().horizontalAdvance( "Some rather long name" ) );

	m_Tree.header()->resizeSection( 4, 50 );
	m_Panel.resize( 1400, 500 );
	EXPECT_LT( Sum(), m_Tree.viewport()->width() );
	EXPECT_EQ( m_Tree.columnWidth( 4 ), 50 );
}

TEST_F( MiniProfilerWidget, TextsThatChangeMoveNothing )
{
	m_Panel.show();
	const QRect tree = m_Tree.geometry();
	const QRect search = m_Search.geometry();
	const int nWidth = m_Panel.minimumSizeHint().width();
	Receive( 50 );
	SetTicks( { { 16, 1ull << 62 } } );
	m_Panel.RegenerateDataView();
	QApplication::processEvents();
	EXPECT_EQ( m_Tree.geometry(), tree );
	EXPECT_EQ( m_Search.geometry(), search );
	EXPECT_EQ( m_Panel.minimumSizeHint().width(), nWidth );
}

TEST_F( MiniProfilerWidget, TheUsersColumnWidthsOutliveRowsGroupsAndClear )
{
	for ( int i = 0; i < m_Tree.columnCount(); i++ )
		m_Tree.header()->resizeSection( i, 60 + i );
	m_Panel.show();
	Receive( 100 );
	GroupMode().setCurrentIndex( 2 );
	Box( "Peaks" ).setChecked( true );
	m_Panel.Clear();
	Receive( 3 );
	for ( int i = 0; i < m_Tree.columnCount(); i++ )
		EXPECT_EQ( m_Tree.columnWidth( i ), 60 + i );
}

// -- Texts from outside

TEST_F( MiniProfilerWidget, ARowStaysOneRowWhateverItsName )
{
	m_Panel.ReceiveChunk( CFrameBuilder()
							  .BeginData( true )
							  .Entry( 16 )
							  .End()
							  .BeginNames( 1000000, 1 )
							  .Name( 16, 0, "a\nb\tc\r<b>&d</b>\xE2\x80\xAE\xFF", "" )
							  .End()
							  .Payload() );
	m_Panel.RegenerateDataView();
	m_Tree.selectAll();
	QTest::keyClick( &m_Tree, Qt::Key_C, Qt::ControlModifier );
	const std::string bad = "\xEF\xBF\xBD"; // U+FFFD
	EXPECT_EQ( g_Clipboard, "a" + bad + "b    c" + bad + "<b>&d</b>" + bad + bad + "\t0\t0.0\t0.0\t0.0\t0.0\n" );
	EXPECT_EQ( m_Panel.Model().Records()[0]->Name(), // which is kept as it came
		QString::fromUtf8( "a\nb\tc\r<b>&d</b>\xE2\x80\xAE\xEF\xBF\xBD" ) );
}

TEST_F( MiniProfilerWidget, NoMoreOfAMillionCharactersIsDrawnThanCanBeSeen )
{
	constexpr int LENGTH = 1000000;
	const std::string name( LENGTH, 'n' );
	const std::string description = name + "\n" + name + "\n" + name + "\n1\n" + name + "\n";
	CFrameBuilder names, data;
	names.BeginNames( 1000000, 4 );
	data.BeginData( true );
	for ( uint64_t nId = 1; nId <= 4; nId++ )
	{
		names.Name( nId, 0, name, description );
		data.Entry( nId, 0, nId * 1000, 1 );
	}
	m_Panel.ReceiveChunk( names.End().Payload() );
	m_Panel.ReceiveChunk( data.End().Payload() );
	m_Panel.show();
	GroupMode().setCurrentIndex( 4 ); // by project, which is a name, too
	m_Tree.expandAll();
	m_Tree.topLevelItem( 0 )->child( 0 )->setSelected( true );
	Action( "Disambiguate by Caller" )->trigger();
	m_Panel.RegenerateDataView();

	for ( const auto &pRecord : m_Panel.Model().Records() )
	{
		EXPECT_EQ( pRecord->Name().size(), LENGTH );
		EXPECT_LE( pRecord->LaidOutName( m_Tree.font() ).text().size(), 256 );
		EXPECT_LE( pRecord->m_pItem->toolTip( 0 ).size(), 1000 );
	}
	size_t nCharacters = 0;
	CPaintLog log( m_Tree.viewport()->size() );
	m_Tree.viewport()->render( &log );
	for ( const QString &text : log.Texts() )
		nCharacters += static_cast<size_t>( text.size() );
	EXPECT_GT( nCharacters, 5u * 256 ); // the group and its four
	EXPECT_LT( nCharacters, 5u * ( 256 + 64 + 5 * 10 ) );
	// A row's height is known without a look at its text, which the view would lay out.
	for ( int i = 0; i < m_Tree.columnCount(); i++ )
		EXPECT_TRUE( m_Tree.topLevelItem( 0 )->data( i, Qt::SizeHintRole ).isValid() ) << i;
}

TEST_F( MiniProfilerWidget, ClearIsSafeWithASelectionAndARunningTimer )
{
	Receive( 5 );
	GroupMode().setCurrentIndex( 1 );
	m_Panel.show();
	m_Tree.expandAll();
	m_Tree.selectAll();
	Search( "a" );
	m_Panel.Clear();
	EXPECT_EQ( m_Tree.topLevelItemCount(), 0 );
	m_Panel.RegenerateDataView();
	QTest::keyClick( &m_Search, Qt::Key_Return );
	Receive( 2 ); // and it begins anew, grouped as before
	EXPECT_EQ( TopLevel(), QStringList{ "Physics" } );
	EXPECT_FALSE( RowOf( *Item( "A" ) ).HasFlag( MINIPROFILER_ROW_DUPLICATE ) );
}
} // namespace
