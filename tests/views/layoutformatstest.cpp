#include "views/layoutformats.h"

#include <gtest/gtest.h>

#include <QDockWidget>
#include <QMainWindow>
#include <QSplitter>
#include <QToolBar>
#include <array>

namespace
{
// A main window like the one of this sub-tool, in whatever arrangement a test gives it.
struct Window
{
	Window()
	{
		m_Window.setCentralWidget( new QWidget );
		m_Window.setDockOptions(
			QMainWindow::AnimatedDocks | QMainWindow::AllowNestedDocks | QMainWindow::AllowTabbedDocks );
		for ( size_t i = 0; i < m_Docks.size(); i++ )
		{
			m_Docks[i] = new QDockWidget( &m_Window );
			m_Docks[i]->setObjectName( QString( "Dock %1" ).arg( i ) );
			m_Docks[i]->setWidget( new QWidget );
			m_Window.addDockWidget( Qt::BottomDockWidgetArea, m_Docks[i], Qt::Horizontal );
		}
		m_pToolBar = m_Window.addToolBar( "Tools" );
		m_pToolBar->setObjectName( "Tools" );
		m_Window.show();
	}

	QMainWindow m_Window;
	std::array<QDockWidget *, 3> m_Docks;
	QToolBar *m_pToolBar;
};

std::vector<QByteArray> ArrangementsOfAWindow()
{
	Window window;
	const auto &docks = window.m_Docks;
	std::vector<QByteArray> states{ window.m_Window.saveState() };
	const auto after = [&]( auto arrange )
	{
		arrange();
		states.push_back( window.m_Window.saveState() );
	};
	after( [&] { docks[1]->hide(); } );
	after( [&] { window.m_Window.tabifyDockWidget( docks[0], docks[1] ); } );
	after( [&] { window.m_Window.splitDockWidget( docks[0], docks[2], Qt::Vertical ); } );
	after( [&] { docks[2]->setFloating( true ); } );
	after( [&] { window.m_Window.addDockWidget( Qt::LeftDockWidgetArea, docks[0] ); } );
	after( [&] { window.m_Window.addToolBar( Qt::RightToolBarArea, window.m_pToolBar ); } );
	after( [&] { window.m_pToolBar->hide(); } );
	after( [&] { window.m_Window.removeToolBar( window.m_pToolBar ); } );
	return states;
}

QByteArray StateOfASplitter( int nChildren )
{
	QSplitter splitter( Qt::Vertical );
	for ( int i = 0; i < nChildren; i++ )
		splitter.addWidget( new QWidget );
	splitter.resize( 300, 400 );
	splitter.show();
	return splitter.saveState();
}

// Neither a part of the bytes nor the bytes with more behind them is a layout.
void ExpectOnlyTheWhole( const QByteArray &bytes, bool ( *pIsLayout )( const QByteArray & ) )
{
	EXPECT_TRUE( pIsLayout( bytes ) );
	for ( int i = 0; i < bytes.size(); i++ )
		EXPECT_FALSE( pIsLayout( bytes.left( i ) ) ) << i << " of " << bytes.size() << " bytes";
	EXPECT_FALSE( pIsLayout( bytes + '\0' ) );
}

QByteArray With( QByteArray bytes, int nPlace, char c )
{
	bytes[nPlace] = c;
	return bytes;
}
} // namespace

TEST( LayoutFormats, KnowWhatQtWritesOfAnyArrangement )
{
	for ( const QByteArray &state : ArrangementsOfAWindow() )
	{
		EXPECT_TRUE( IsMainWindowState( state ) ) << state.toHex( ' ' ).constData();
		EXPECT_FALSE( IsSplitterState( state ) );
		EXPECT_FALSE( IsWindowGeometry( state ) );
	}
	for ( const int nChildren : { 0, 1, 2, 5 } )
		EXPECT_TRUE( IsSplitterState( StateOfASplitter( nChildren ) ) ) << nChildren;
	Window window;
	EXPECT_TRUE( IsWindowGeometry( window.m_Window.saveGeometry() ) );
	window.m_Window.showMaximized();
	EXPECT_TRUE( IsWindowGeometry( window.m_Window.saveGeometry() ) );
	window.m_Window.showFullScreen();
	EXPECT_TRUE( IsWindowGeometry( window.m_Window.saveGeometry() ) );
}

TEST( LayoutFormats, TakeNothingButTheWhole )
{
	for ( const QByteArray &state : ArrangementsOfAWindow() )
		ExpectOnlyTheWhole( state, &IsMainWindowState );
	ExpectOnlyTheWhole( StateOfASplitter( 2 ), &IsSplitterState );
	ExpectOnlyTheWhole( Window().m_Window.saveGeometry(), &IsWindowGeometry );
}

// Each of these ends or blocks the process when Qt's restore functions get it.
TEST( LayoutFormats, RefuseCountsThatNoBytesCover )
{
	constexpr int SPLITTER_SIZES = 8; // behind magic number and version
	EXPECT_FALSE( IsSplitterState( With( StateOfASplitter( 2 ), SPLITTER_SIZES, 0x7F ) ) );

	const QByteArray state = Window().m_Window.saveState();
	constexpr int AREAS = 9; // behind magic number, version and marker
	constexpr int FIRST_AREA = AREAS + 4;
	constexpr int DOCKS = FIRST_AREA + 4 + 8 + 2;              // behind size, marker and orientation
	const int nToolBarLines = state.lastIndexOf( '\xFC' ) + 1; // the last marker is the tool bars'
	ASSERT_EQ( state.mid( DOCKS, 4 ), QByteArray( "\0\0\0\3", 4 ) );
	ASSERT_EQ( state.mid( nToolBarLines, 4 ), QByteArray( "\0\0\0\1", 4 ) );
	for ( const int nPlace : { AREAS, FIRST_AREA, DOCKS, nToolBarLines, nToolBarLines + 4, nToolBarLines + 8 } )
		EXPECT_FALSE( IsMainWindowState( With( state, nPlace, 0x7F ) ) ) << nPlace;
	EXPECT_FALSE( IsMainWindowState( With( state, FIRST_AREA + 3, 4 ) ) ) << "there are four areas";
}

TEST( LayoutFormats, RefuseDocksInsideOneAnotherWithoutEnd )
{
	QByteArray state = Window().m_Window.saveState().left( 13 + 4 + 8 ); // up to the first row of docks
	for ( int i = 0; i < 100000; i++ )
		state += QByteArray( "\xFC\1\0\0\0\1\xFC\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 23 ); // a row of one row
	EXPECT_FALSE( IsMainWindowState( state ) );
}
