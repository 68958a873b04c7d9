#include <QAction>
#include <QMainWindow>
#include <QTest>

#include <gtest/gtest.h>

#include <set>

#include "endtoend/demoengine.h"
#include "endtoend/liveconsole.h"
#include "support/logguard.h"
#include "support/paintlog.h"
#include "tessel/itesselconnection.h"

namespace
{
constexpr int CONNECTED = 3;

QWidget *FindByClass( const QWidget &parent, const char *pClassName )
{
	for ( QWidget *pWidget : parent.findChildren<QWidget *>() )
	{
		if ( qstrcmp( pWidget->metaObject()->className(), pClassName ) == 0 )
			return pWidget;
	}
	return nullptr;
}

bool IsRunning( const CLiveConsole &console, int nSamples )
{
	return console.StatusText( QStringLiteral( "Running." ) ) == QLatin1String( "Running." ) &&
		   console.SampleCount() >= nSamples;
}
} // namespace

TEST( LiveEngine, BudgetsOfARunningEngineAppearAndTheSamplesGrow )
{
	CDemoEngine engine;
	ASSERT_NO_FATAL_FAILURE( engine.Start() );
	CLiveConsole console( engine.Port() );

	ASSERT_TRUE( WaitUntil( [&]() { return IsRunning( console, 20 ); } ) );
	EXPECT_EQ( console.Window()->windowTitle(), "Show Budget - end-to-end" );

	console.Window()->resize( 1280, 900 ); // room for every row
	QWidget *pNames = FindByClass( *console.Window(), "CQBudgetNamesWidget" );
	ASSERT_TRUE( pNames );
	const std::vector<PaintOp> ops = CPaintLog::OfWidget( *pNames );
	QStringList names;
	std::vector<QRgb> colours;
	for ( const PaintOp &op : ops )
	{
		if ( op.m_Kind == PaintOp::Kind::Text )
			names.append( op.m_Text );
		else if ( op.m_Kind == PaintOp::Kind::FillRect )
			colours.push_back( op.m_Colour.rgb() );
	}
	EXPECT_EQ( names.first(), "Budget Nodes" );
	EXPECT_EQ( names.last(), "Totals" );
	names.removeFirst();
	EXPECT_GE( names.size(), 7 ) << "at least six budgets and the total";
	EXPECT_EQ( names.removeDuplicates(), 0 );
	EXPECT_GE( std::set<QRgb>( colours.begin(), colours.end() ).size(), 7u );

	const int nSamples = console.SampleCount();
	EXPECT_TRUE( WaitUntil( [&]() { return console.SampleCount() > nSamples; } ) );
	EXPECT_GT( console.FrameMilliseconds(), 0.0 );
}

TEST( LiveEngine, AKilledEngineStopsTheWindowAndARestartedOneComesBack )
{
	CDemoEngine engine;
	ASSERT_NO_FATAL_FAILURE( engine.Start() );
	CLiveConsole console( engine.Port() );
	ASSERT_TRUE( WaitUntil( [&]() { return IsRunning( console, 5 ); } ) );
	const CExpectWarnings expected;

	engine.KillAndWait();
	ASSERT_TRUE( WaitUntil( [&]() { return !console.StatusText( QStringLiteral( "Stopped." ) ).isEmpty(); } ) );
	EXPECT_NE( console.Host().GetCurrentConnection()->GetState(), CONNECTED );
	EXPECT_FALSE( console.Action( QStringLiteral( "Start Sampling" ) )->isEnabled() );
	const int nKept = console.SampleCount();
	EXPECT_GE( nKept, 5 ) << "what was sampled stays";

	ASSERT_NO_FATAL_FAILURE( engine.Start( engine.Port() ) );
	ASSERT_TRUE( WaitUntil( [&]() { return console.Host().GetCurrentConnection()->GetState() == CONNECTED; } ) );
	EXPECT_TRUE( console.Action( QStringLiteral( "Start Sampling" ) )->isEnabled() );
	console.Action( QStringLiteral( "Start Sampling" ) )->trigger();
	EXPECT_TRUE( WaitUntil( [&]() { return IsRunning( console, 5 ); } ) );
}

TEST( LiveEngine, TheSlowFrameOfACommandIsFoundWithOneKey )
{
	// On a busy machine every frame may take half a second.
	constexpr double SLOW_MS = 2000.0;
	CDemoEngine engine;
	ASSERT_NO_FATAL_FAILURE( engine.Start() );
	// The lower threshold at 1 frame per second: only a frame of more than a second is slower.
	CLiveConsole console( engine.Port(),
		"\"Tessel\" { \"sub_tools\" { \"Tessel_SubTool_001_ShowBudgetTool\" { \"fps_lower_marker\" \"1\" } } }" );
	ASSERT_TRUE( WaitUntil( [&]() { return IsRunning( console, 5 ); } ) );

	console.SendCommand( QStringLiteral( "slow 2000" ) );
	// The slow frame may pass between two looks at the window; that many frames later it has surely been.
	const int nSurelyPast = console.SampleCount() + 200;
	ASSERT_TRUE(
		WaitUntil( [&]() { return console.FrameMilliseconds() >= SLOW_MS || console.SampleCount() >= nSurelyPast; } ) );
	const int nBehind = console.SampleCount() + 10;
	ASSERT_TRUE( WaitUntil( [&]() { return console.SampleCount() >= nBehind; } ) );
	console.Action( QStringLiteral( "Stop Sampling" ) )->trigger();
	ASSERT_LT( console.FrameMilliseconds(), SLOW_MS ) << "the cursor begins at the newest frame";

	QTest::keyClick( console.Window(), Qt::Key_N );
	EXPECT_GE( console.FrameMilliseconds(), SLOW_MS );
}
