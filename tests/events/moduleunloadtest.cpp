// The module leaves the process with everything that it made there, whatever was still to come.
#include <gtest/gtest.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QFontMetrics>
#include <QHelpEvent>
#include <QLabel>
#include <QMetaType>
#include <QTest>
#include <QTimer>

#include "events/loadedmodule.h"
#include "frame/budgetwindows.h"
#include "support/countingallocator.h"
#include "support/watchdog.h"

namespace
{
QTimer &RegenerationTimer( const QWidget &window )
{
	return *window.findChild<QTimer *>( "RegenerationTimer" );
}

QWidget &Part( const QWidget &window, const char *pClass )
{
	for ( QWidget *pWidget : window.findChildren<QWidget *>() )
		if ( pWidget->inherits( pClass ) )
			return *pWidget;
	qFatal( "the window has no %s", pClass );
}

void ShowToolTip( QWidget &widget )
{
	QHelpEvent event( QEvent::ToolTip, QPoint( 5, 5 ), widget.mapToGlobal( QPoint( 5, 5 ) ) );
	QCoreApplication::sendEvent( &widget, &event );
}

void OpenMenu( QWidget &window )
{
	QContextMenuEvent event( QContextMenuEvent::Mouse, QPoint( 5, 5 ), window.mapToGlobal( QPoint( 5, 5 ) ) );
	QCoreApplication::sendEvent( &window, &event );
}

// What the rest of the process goes on doing with the toolkit: texts in the fonts that the module used too, tool tips,
// events, types.
void UseTheToolkit()
{
	QLabel label( "All work and no play" );
	for ( const char *pFamily : { "Arial", "Verdana", "Courier New", "Sans" } )
		for ( const int nPoints : { 6, 9, 10, 12 } )
		{
			label.setFont( QFont( QString::fromLatin1( pFamily ), nPoints ) );
			EXPECT_FALSE( label.grab().isNull() );
		}
	label.show();
	ShowToolTip( label );
	QApplication::processEvents();
	QApplication::sendPostedEvents( nullptr, QEvent::DeferredDelete );
}
} // namespace

TEST( ModuleUnload, LeavesTheProcessAHundredTimesWithTimersPending )
{
	const CWatchdog watchdog( "loading and unloading the module" );
	const CCountingAllocator allocator;
	for ( int i = 0; i < 100; i++ )
	{
		SCOPED_TRACE( i );
		CLoadedModule module;
		EXPECT_TRUE( CLoadedModule::IsMapped() );
		QWidget &window = module.OpenWindow( 0 );
		EXPECT_TRUE( RegenerationTimer( window ).isActive() );
		if ( i % 2 == 0 ) // else the host forgets
			module.ShutDown();
		module.Unload();
		ASSERT_FALSE( CLoadedModule::IsMapped() );
		EXPECT_TRUE( BudgetWindows().empty() );
		UseTheToolkit();
	}
}

// Longer than the longest of the module's timers.
TEST( ModuleUnload, NothingOfItComesLater )
{
	const CWatchdog watchdog( "waiting after the module has gone" );
	CLoadedModule module;
	EXPECT_EQ( RegenerationTimer( module.OpenWindow( 0 ) ).interval(), 250 );
	module.ShutDown();
	module.Unload();
	bool bLaterTimerFired = false;
	QTimer::singleShot( 300, [&] { bLaterTimerFired = true; } );
	EXPECT_TRUE( QTest::qWaitFor( [&] { return bLaterTimerFired; } ) );
	EXPECT_FALSE( CLoadedModule::IsMapped() );
}

TEST( ModuleUnload, TakesItsOpenMenuAlong )
{
	CLoadedModule module;
	OpenMenu( module.OpenWindow( 0 ) );
	ASSERT_NE( QApplication::activePopupWidget(), nullptr );
	module.ShutDown();
	module.Unload();
	EXPECT_EQ( QApplication::activePopupWidget(), nullptr );
	UseTheToolkit();
}

TEST( ModuleUnload, LeavesNoToolTipBehindThatNeedsIt )
{
	for ( const char *pClass : { "CQBudgetHistoryBarsWidget", "CQFPSGraphWidget" } )
	{
		SCOPED_TRACE( pClass );
		CLoadedModule module;
		ShowToolTip( Part( module.OpenWindow( 0 ), pClass ) );
		module.ShutDown();
		module.Unload();
		UseTheToolkit();
	}
}

// Loaded again, the module may lie elsewhere: functions that the toolkit kept would be somebody else's then.
TEST( ModuleUnload, TakesItsTypesOutOfTheToolkit )
{
	const char *const pType = "CMiniProfilerRow*";
	for ( int i = 0; i < 3; i++ )
	{
		CLoadedModule module;
		module.OpenWindow( 0 );
		const int nType = QMetaType::type( pType );
		EXPECT_GE( nType, int( QMetaType::User ) );
		EXPECT_STREQ( QMetaType::typeName( nType ), pType );
		module.ShutDown();
		module.Unload();
		EXPECT_EQ( QMetaType::type( pType ), int( QMetaType::UnknownType ) );
		EXPECT_FALSE( QMetaType::isRegistered( nType ) );
	}
}

TEST( ModuleUnload, AWindowThatIsToGoLaterGoesBeforeItsCode )
{
	CLoadedModule module;
	QWidget &window = module.OpenWindow( 0 );
	// The connection ends while the window tells it something, so the window cannot be deleted at once.
	module.m_Connections[0].m_OnSend = [&]( const CFakeConnection::Chunk & )
	{
		module.m_Connections[0].m_OnSend = nullptr;
		module.EndConnections();
	};
	CLoadedModule::ActionOf( window, "Stop Sampling" ).trigger();
	module.ShutDown();
	module.Unload();
	EXPECT_TRUE( BudgetWindows().empty() );
	UseTheToolkit();
}
