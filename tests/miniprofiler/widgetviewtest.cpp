// The whole panel: scales, texts and columns, and names that an engine should not send.
#include "widgetfixture.h"

#include <QHeaderView>
#include <cmath>

#include "support/logguard.h"
#include "support/paintlog.h"

namespace
{
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

TEST_F( MiniProfilerWidget, WithNothingSelectedTheVisibleRowsCountAndWithoutAnyAllScopes )
{
	Receive( 3 );
	m_Panel.show();
	Action( "Normalize To Selected" )->trigger(); // but nothing is
	EXPECT_EQ( m_Delegate.Display().m_nNormalised, 0 );
	EXPECT_NE( LabelWith( ", 3 calls" ), nullptr );
	m_Clock.Advance( 10.0 );                            // the old scale falls away
	m_Tree.setFixedHeight( m_Tree.header()->height() ); // which leaves no room below
	QApplication::processEvents();
	m_Panel.OnTreeSelectionChanged();
	EXPECT_EQ( LabelWith( " calls" ), nullptr );
	EXPECT_NEAR( m_Delegate.Display().m_BarMaxima[2], 3000.0f, 0.001f );
}

TEST_F( MiniProfilerWidget, AnotherHierarchyBeginsANewScale )
{
	Receive( 3 );
	ASSERT_EQ( m_Delegate.Display().m_BarMaxima[2], 3000.0f );
	Action( "Draw Peaks" )->trigger(); // or the highest of all intervals counts
	for ( int i = 0; i < 3; i++ )
		SetTicks( { { 48, 0 } } );
	m_Panel.RegenerateDataView();
	ASSERT_EQ( m_Delegate.Display().m_BarMaxima[2], 3000.0f ); // no time has passed in which it would fall
	LeafMode().setCurrentIndex( 1 );
	// Of 0, 0, 0 and 3000: the mean, and its distance from each.
	const double flDeviation = std::sqrt( ( 3 * 750.0 * 750.0 + 2250.0 * 2250.0 ) / 4 );
	EXPECT_NEAR( m_Delegate.Display().m_BarMaxima[2], 750.0 + flDeviation, 0.01 );
}

TEST_F( MiniProfilerWidget, TimeSpentPaintingIsToldOnce )
{
	Receive( 50 );
	m_Panel.show();
	Combo( "ms #" ).setCurrentIndex( 8 ); // ticks
	const auto PaintTicks = [this]
	{
		m_Panel.RegenerateDataView();
		const QString text = LabelWith( "paint " )->text();
		return text.mid( text.lastIndexOf( ' ' ) + 1 );
	};
	CPaintLog log( m_Tree.viewport()->size() );
	PaintTicks();
	m_Tree.viewport()->render( &log );
	EXPECT_NE( PaintTicks(), "0ticks" );
	EXPECT_EQ( PaintTicks(), "0ticks" );
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

TEST_F( MiniProfilerWidget, AColumnFitsItsContentsWhenItsEdgeIsDoubleClicked )
{
	Receive( 3 );
	GroupMode().setCurrentIndex( 1 );
	m_Panel.show();
	m_Tree.expandAll();
	for ( const char *pBox : { "Cur", "StDev", "Peaks" } )
		Box( pBox ).setChecked( true );
	const auto DoubleClick = [this]( int nColumn )
	{
		QHeaderView &header = *m_Tree.header();
		const QPoint ptEdge( header.sectionViewportPosition( nColumn ) + header.sectionSize( nColumn ) - 1, 5 );
		QTest::mouseMove( header.viewport(), ptEdge );
		QTest::mouseDClick( header.viewport(), Qt::LeftButton, Qt::NoModifier, ptEdge );
		return header.sectionSize( nColumn );
	};
	const QFontMetrics metrics = m_Tree.fontMetrics();
	EXPECT_GE( DoubleClick( 2 ), metrics.horizontalAdvance( "3000.0 [3000.0] +- 0.0 -> 3000.0" ) );
	EXPECT_LE( DoubleClick( 2 ), metrics.horizontalAdvance( "~3000.0 [3000.0] +- 0.0 -> 3000.0~ and more" ) );
	const int nGroup = metrics.horizontalAdvance( "Physics" ) + m_Tree.indentation();
	EXPECT_GE( DoubleClick( 0 ), nGroup );
	EXPECT_LE( DoubleClick( 0 ), 2 * nGroup );
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
