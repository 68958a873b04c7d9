// The sub-tool: every operation of its two interfaces, and its windows in whatever order things happen.
#include "frame/showbudgettool.h"

#include <gmock/gmock.h>

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QPointer>
#include <memory>

#include "frame/budgetwindows.h"
#include "frame/fakeservices.h"
#include "frame/moduleframe.h"
#include "showbudget/budgetwidget.h"
#include "support/countingallocator.h"
#include "support/fakeconnection.h"
#include "support/fakehost.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
constexpr uint32_t CHUNK_KSTO = 0x4b53544f;

bool IsStop( const CFakeConnection::Chunk &chunk )
{
	return chunk.m_nType == CHUNK_KSTO && chunk.m_Payload[0] == 0;
}

bool IsStart( const CFakeConnection::Chunk &chunk )
{
	return chunk.m_nType == CHUNK_KSTO && chunk.m_Payload[0] == 1;
}

class CEventCounter final : public QObject
{
public:
	CEventCounter( QObject &watched, QEvent::Type type )
		: m_Type( type )
	{
		watched.installEventFilter( this );
	}
	bool eventFilter( QObject *, QEvent *pEvent ) override
	{
		m_nCount += pEvent->type() == m_Type ? 1 : 0;
		return false;
	}

	const QEvent::Type m_Type;
	int m_nCount = 0;
};

class ShowBudgetToolTest : public testing::Test
{
protected:
	ShowBudgetToolTest() { m_pTool->SetHost( &m_Host, nullptr ); }

	// Opens the tool for a connection.
	CQBudgetWidget *Open( CFakeConnection &connection )
	{
		m_Host.m_pCurrent = &connection;
		EXPECT_TRUE( m_pTool->Open() );
		return m_pTool->FindWindow( &connection );
	}

	CCountingAllocator m_Allocator;
	CFakeServices m_Services;
	ServiceConnection m_Rows[2] = { { "TesselPostConnect_001" }, { "SchemaSystem_001" } };
	CSchemaRegistry m_Registry;
	CModuleFrame m_Frame{ CServiceConnections( m_Rows ), m_Registry };
	CFakeHost m_Host;
	CFakeConnection m_Connection;
	CFakeConnection m_OtherConnection{ "other" };
	std::unique_ptr<CShowBudgetTool> m_pTool = std::make_unique<CShowBudgetTool>( m_Frame );
};
} // namespace

TEST_F( ShowBudgetToolTest, AnswersTheConstantQueries )
{
	IExternalTesselSubTool *pTool = m_pTool.get();
	EXPECT_EQ( pTool->FindInterface( "Tessel_SubTool_001_ShowBudgetTool" ), nullptr );
	EXPECT_EQ( pTool->FindInterface( nullptr ), nullptr );
	EXPECT_EQ( pTool->Initialise(), 1 );
	EXPECT_EQ( pTool->GetDependencies(), nullptr );
	EXPECT_EQ( pTool->GetFrameworkTier(), 3 );
	EXPECT_TRUE( pTool->IsSingleton() );
	EXPECT_EQ( pTool->GetBuildKind(), 2 );
	auto *pSubTool = dynamic_cast<ITesselSubTool *>( pTool );
	ASSERT_NE( pSubTool, nullptr );
	EXPECT_TRUE( pSubTool->NeedsConnection() );
	EXPECT_FALSE( pSubTool->IsHidden() );
}

TEST_F( ShowBudgetToolTest, UnusedOperationsDoNothing )
{
	CQBudgetWidget *pWindow = Open( m_Connection );
	m_Connection.TakeSent();
	IExternalTesselSubTool *pTool = m_pTool.get();
	pTool->Unused6();
	ITesselSubTool *pSubTool = m_pTool.get();
	pSubTool->Unused2();
	pSubTool->Unused6();
	pSubTool->Unused8();
	pSubTool->Unused10();
	pSubTool->Unused11();
	pSubTool->Unused12();
	pSubTool->Unused15();
	EXPECT_EQ( m_pTool->FindWindow( &m_Connection ), pWindow );
	EXPECT_TRUE( pWindow->IsRunning() );
	EXPECT_THAT( m_Connection.TakeSent(), IsEmpty() );
}

TEST_F( ShowBudgetToolTest, ADisconnectTakesBackEveryCountedConnection )
{
	EXPECT_TRUE( m_pTool->Connect( &CFakeServices::Factory ) );
	EXPECT_TRUE( m_pTool->Connect( &CFakeServices::Factory ) );
	m_pTool->ConnectInterface( &CFakeServices::Factory, "SchemaSystem_001" );
	EXPECT_THAT( m_Services.m_PostConnect.m_Calls, ElementsAre( "register", "add 0" ) );
	m_pTool->Disconnect();
	EXPECT_THAT( m_Services.m_PostConnect.m_Calls, ElementsAre( "register", "add 0", "remove 0", "unregister" ) );
	m_pTool->Disconnect();
	EXPECT_EQ( m_Services.m_PostConnect.m_Calls.size(), 4u ) << "nothing is left to take back";
	EXPECT_TRUE( m_pTool->Connect( &CFakeServices::Factory ) );
	EXPECT_EQ( m_Services.m_PostConnect.m_Calls.size(), 6u ) << "registered again";
	m_pTool->Disconnect();
	EXPECT_EQ( m_Services.m_PostConnect.m_Calls.size(), 8u );
}

TEST_F( ShowBudgetToolTest, TheModulesCountGoesOverAllItsObjects )
{
	CShowBudgetTool other( m_Frame );
	m_pTool->Connect( &CFakeServices::Factory );
	other.Connect( &CFakeServices::Factory );
	m_pTool->Disconnect();
	EXPECT_THAT( m_Services.m_PostConnect.m_Calls, ElementsAre( "register", "add 0" ) );
	other.Disconnect();
	EXPECT_THAT( m_Services.m_PostConnect.m_Calls, ElementsAre( "register", "add 0", "remove 0", "unregister" ) );
}

TEST_F( ShowBudgetToolTest, OpeningWithoutAHostOrAConnectionIsFalse )
{
	EXPECT_FALSE( m_pTool->Open() );
	m_pTool->SetHost( nullptr, nullptr );
	EXPECT_FALSE( m_pTool->Open() );
	EXPECT_THAT( BudgetWindows(), IsEmpty() );
}

TEST_F( ShowBudgetToolTest, OpeningShowsAWindowForTheCurrentConnection )
{
	CQBudgetWidget *pWindow = Open( m_Connection );
	ASSERT_NE( pWindow, nullptr );
	EXPECT_TRUE( pWindow->isVisible() );
	EXPECT_EQ( pWindow->windowTitle(), "Show Budget - engine" );
	EXPECT_TRUE( pWindow->IsRunning() );
}

TEST_F( ShowBudgetToolTest, OpeningTwiceShowsTheSameWindowTwice )
{
	CQBudgetWidget *pWindow = Open( m_Connection );
	pWindow->hide();
	EXPECT_EQ( Open( m_Connection ), pWindow );
	EXPECT_TRUE( pWindow->isVisible() );
	EXPECT_EQ( m_Connection.m_Receivers.size(), 3u ) << "registered once";
}

TEST_F( ShowBudgetToolTest, OpeningAgainBringsTheWindowToTheFront )
{
	CQBudgetWidget *pWindow = Open( m_Connection );
	CQBudgetWidget *pOther = Open( m_OtherConnection );
	QApplication::processEvents();
	EXPECT_EQ( QApplication::activeWindow(), pOther );
	CEventCounter raises( *pWindow, QEvent::ZOrderChange );
	Open( m_Connection );
	QApplication::processEvents();
	EXPECT_EQ( raises.m_nCount, 1 );
	EXPECT_EQ( QApplication::activeWindow(), pWindow );
}

TEST_F( ShowBudgetToolTest, AClosedWindowIsOpenedAgain )
{
	CQBudgetWidget *pWindow = Open( m_Connection );
	pWindow->close();
	EXPECT_FALSE( pWindow->IsRunning() );
	EXPECT_EQ( Open( m_Connection ), pWindow );
	EXPECT_TRUE( pWindow->IsRunning() );
}

TEST_F( ShowBudgetToolTest, EndingOneOfTwoConnectionsDeletesOnlyItsWindow )
{
	const QPointer<CQBudgetWidget> pWindow = Open( m_Connection );
	const QPointer<CQBudgetWidget> pOther = Open( m_OtherConnection );
	EXPECT_NE( pWindow.data(), pOther.data() );
	m_Connection.TakeSent();
	m_pTool->ConnectionEnded( &m_Connection );
	EXPECT_TRUE( pWindow.isNull() );
	EXPECT_EQ( m_pTool->FindWindow( &m_Connection ), nullptr );
	EXPECT_EQ( m_pTool->FindWindow( &m_OtherConnection ), pOther.data() );
	EXPECT_TRUE( pOther->isVisible() );
	const auto sent = m_Connection.TakeSent();
	ASSERT_EQ( sent.size(), 1u );
	EXPECT_TRUE( IsStop( sent[0] ) );
}

TEST_F( ShowBudgetToolTest, EndingAStoppedWindowSendsOnlyWhenNoLongerConnected )
{
	Open( m_Connection )->StopSampling();
	m_Connection.TakeSent();
	m_pTool->ConnectionEnded( &m_Connection );
	EXPECT_THAT( m_Connection.TakeSent(), IsEmpty() );

	Open( m_OtherConnection )->StopSampling();
	m_OtherConnection.TakeSent();
	m_OtherConnection.m_nState = 0;
	m_pTool->ConnectionEnded( &m_OtherConnection );
	const auto sent = m_OtherConnection.TakeSent();
	ASSERT_EQ( sent.size(), 1u );
	EXPECT_TRUE( IsStop( sent[0] ) );
}

TEST_F( ShowBudgetToolTest, AConnectionMayEndTwiceAndWithoutAWindow )
{
	m_pTool->ConnectionEnded( &m_Connection );
	m_pTool->ConnectionEnded( nullptr );
	Open( m_Connection );
	m_pTool->ConnectionEnded( &m_Connection );
	m_Connection.End();
	m_pTool->ConnectionEnded( &m_Connection );
	m_pTool->ConnectionStateChanged( &m_Connection );
	EXPECT_EQ( m_pTool->FindWindow( &m_Connection ), nullptr );
}

TEST_F( ShowBudgetToolTest, AConnectionMayEndWhileItsWindowIsHidden )
{
	const QPointer<CQBudgetWidget> pWindow = Open( m_Connection );
	pWindow->close();
	m_pTool->ConnectionEnded( &m_Connection );
	EXPECT_TRUE( pWindow.isNull() );
}

TEST_F( ShowBudgetToolTest, AConnectionMayEndWhileItsWindowShowsAMenu )
{
	const QPointer<CQBudgetWidget> pWindow = Open( m_Connection );
	QContextMenuEvent event( QContextMenuEvent::Mouse, QPoint( 5, 5 ), pWindow->mapToGlobal( QPoint( 5, 5 ) ) );
	QApplication::sendEvent( pWindow.data(), &event );
	ASSERT_NE( QApplication::activePopupWidget(), nullptr );
	m_pTool->ConnectionEnded( &m_Connection );
	m_Connection.End();
	EXPECT_TRUE( pWindow.isNull() );
	QApplication::processEvents();
	EXPECT_EQ( QApplication::activePopupWidget(), nullptr );
}

TEST_F( ShowBudgetToolTest, AConnectionOrTheToolMayEndInsideAnyChunkThatAWindowSends )
{
	const struct
	{
		const char *m_pName;
		bool ( *m_pIsChunk )( const CFakeConnection::Chunk & );
		void ( *m_pAct )( CQBudgetWidget & );
	} rows[] = {
		{ "stopping", &IsStop, []( CQBudgetWidget &window ) { window.StopSampling(); } },
		{ "closing", &IsStop, []( CQBudgetWidget &window ) { window.close(); } },
		{ "flags", []( const CFakeConnection::Chunk & ) { return true; },
			[]( CQBudgetWidget &window ) { window.ShowMiniProfiler( true ); } },
		{ "state", []( const CFakeConnection::Chunk & ) { return true; },
			[]( CQBudgetWidget &window ) { window.OnConnectionStateChanged(); } },
	};
	for ( const bool bShutDown : { false, true } )
		for ( const auto &row : rows )
		{
			SCOPED_TRACE( row.m_pName + std::string( bShutDown ? ", shut down" : ", connection ends" ) );
			CFakeConnection connection;
			const QPointer<CQBudgetWidget> pWindow = Open( connection );
			connection.m_OnSend = [&]( const CFakeConnection::Chunk &chunk )
			{
				if ( !row.m_pIsChunk( chunk ) || !m_pTool->FindWindow( &connection ) )
					return;
				bShutDown ? m_pTool->ShutDown() : m_pTool->ConnectionEnded( &connection );
				connection.End();
			};
			row.m_pAct( *pWindow );
			EXPECT_EQ( m_pTool->FindWindow( &connection ), nullptr );
			QApplication::sendPostedEvents( nullptr, QEvent::DeferredDelete );
			EXPECT_TRUE( pWindow.isNull() );
		}
}

TEST_F( ShowBudgetToolTest, AWindowThatIsToGoLaterGoesWithTheToolAtLast )
{
	const QPointer<CQBudgetWidget> pWindow = Open( m_Connection );
	m_Connection.m_OnSend = [&]( const CFakeConnection::Chunk & )
	{
		m_pTool->ConnectionEnded( &m_Connection );
		m_Connection.End();
	};
	pWindow->ShowMiniProfiler( true );
	EXPECT_FALSE( pWindow.isNull() ) << "it was inside a function of its own";
	m_pTool->ShutDown();
	EXPECT_TRUE( pWindow.isNull() );
}

TEST_F( ShowBudgetToolTest, AWindowThatSomebodyElseDeletedIsNotTouched )
{
	delete Open( m_Connection );
	KeyValues settings( "Settings" );
	m_pTool->LoadSettings( &settings );
	EXPECT_EQ( m_pTool->FindWindow( &m_Connection ), nullptr );
	EXPECT_FALSE( m_pTool->Open() ) << "the connection still knows the old one as its receiver";
	m_pTool->ConnectionStateChanged( &m_Connection );
	EXPECT_EQ( m_pTool->SaveSettings()->GetCount(), 0 );
	m_pTool->ConnectionEnded( &m_Connection );
	EXPECT_NE( Open( m_Connection ), nullptr );
}

TEST_F( ShowBudgetToolTest, AConnectionMayEndWhileItsWindowOpens )
{
	for ( const bool bAtStart : { false, true } )
	{
		SCOPED_TRACE( bAtStart );
		CFakeConnection connection;
		bool bEnded = false;
		connection.m_OnSend = [&]( const CFakeConnection::Chunk &chunk )
		{
			if ( bEnded || ( bAtStart && !IsStart( chunk ) ) )
				return;
			bEnded = true;
			m_pTool->ConnectionEnded( &connection );
			connection.End();
		};
		m_Host.m_pCurrent = &connection;
		EXPECT_FALSE( m_pTool->Open() );
		EXPECT_EQ( m_pTool->FindWindow( &connection ), nullptr );
		QApplication::sendPostedEvents( nullptr, QEvent::DeferredDelete );
		EXPECT_THAT( BudgetWindows(), IsEmpty() );
	}
}

TEST_F( ShowBudgetToolTest, AStateChangeReachesItsWindowOnly )
{
	CQBudgetWidget *pWindow = Open( m_Connection );
	CQBudgetWidget *pOther = Open( m_OtherConnection );
	m_Connection.m_nState = 0;
	m_OtherConnection.m_nState = 0;
	m_pTool->ConnectionStateChanged( &m_Connection );
	EXPECT_FALSE( pWindow->IsRunning() );
	EXPECT_TRUE( pOther->IsRunning() );
}

TEST_F( ShowBudgetToolTest, AWindowThatCouldNotBeMadeIsKeptAsNull )
{
	m_pTool = std::make_unique<CShowBudgetTool>(
		m_Frame, []( ITesselConnection &, IBudgetWindowOwner & ) -> CQBudgetWidget * { return nullptr; } );
	m_pTool->SetHost( &m_Host, nullptr );
	m_Host.m_pCurrent = &m_Connection;
	EXPECT_FALSE( m_pTool->Open() );
	EXPECT_FALSE( m_pTool->Open() );
	m_pTool->ConnectionStateChanged( &m_Connection );
	EXPECT_EQ( m_pTool->SaveSettings(), nullptr );
	m_pTool->ConnectionEnded( &m_Connection );
	EXPECT_EQ( m_pTool->FindWindow( &m_Connection ), nullptr );
}

TEST_F( ShowBudgetToolTest, SavingWithoutWindowsReturnsTheKeptTreeUnchanged )
{
	EXPECT_EQ( m_pTool->SaveSettings(), nullptr );
	KeyValues settings( "Settings" );
	settings.SetInt( "fps_labels", 5 );
	KeyValues *pKept = m_pTool->LoadSettings( &settings );
	EXPECT_EQ( m_pTool->SaveSettings(), pKept );
	EXPECT_EQ( pKept->GetCount(), 1 );
	EXPECT_STREQ( pKept->GetString( "fps_labels" ), "5" );
}

TEST_F( ShowBudgetToolTest, LoadingKeepsACopyAndASecondLoadOnlyTheSecond )
{
	KeyValues first( "First" );
	KeyValues second( "Second" );
	second.SetString( "mark", "second" );
	KeyValues *pFirst = m_pTool->LoadSettings( &first );
	EXPECT_NE( pFirst, &first );
	KeyValues *pSecond = m_pTool->LoadSettings( &second );
	EXPECT_NE( pSecond, &second );
	EXPECT_STREQ( pSecond->GetString( "mark" ), "second" );
	EXPECT_EQ( m_pTool->SaveSettings(), pSecond );
}

TEST_F( ShowBudgetToolTest, LoadingTheKeptTreeItselfKeepsItsContent )
{
	KeyValues settings( "Settings" );
	settings.SetString( "mark", "here" );
	m_pTool->LoadSettings( &settings );
	EXPECT_STREQ( m_pTool->LoadSettings( m_pTool->SaveSettings() )->GetString( "mark" ), "here" );
}

TEST_F( ShowBudgetToolTest, LoadingNothingForgetsWhatWasKept )
{
	KeyValues settings( "Settings" );
	m_pTool->LoadSettings( &settings );
	EXPECT_EQ( m_pTool->LoadSettings( nullptr ), nullptr );
	EXPECT_EQ( m_pTool->SaveSettings(), nullptr );
}

TEST_F( ShowBudgetToolTest, SavingWithWindowsButNoTreeReturnsNull )
{
	Open( m_Connection );
	EXPECT_EQ( m_pTool->SaveSettings(), nullptr );
}

TEST_F( ShowBudgetToolTest, AWindowReadsTheKeptTree )
{
	KeyValues settings( "Settings" );
	settings.SetInt( "fps_labels", 1 );
	m_pTool->LoadSettings( &settings );
	EXPECT_TRUE( Open( m_Connection )->GetViewData().m_bFPSUnits );
}

// The windows are visited by address, so the one at the higher address decides what they share.
TEST_F( ShowBudgetToolTest, TheLastWindowInKeyOrderDecidesSharedSettings )
{
	CFakeConnection connections[3];
	KeyValues settings( "Settings" );
	m_pTool->LoadSettings( &settings );
	for ( const size_t i : { size_t{ 2 }, size_t{ 0 }, size_t{ 1 } } )
		Open( connections[i] );
	const auto setOption = [&]( size_t nWindow, bool bOn )
	{
		for ( QAction *pAction : m_pTool->FindWindow( &connections[nWindow] )->findChildren<QAction *>() )
		{
			if ( pAction->text() == "FPS Units" )
				pAction->setChecked( bOn );
		}
	};
	setOption( 0, true );
	setOption( 1, true );
	EXPECT_STREQ( m_pTool->SaveSettings()->GetString( "fps_labels" ), "0" );
	setOption( 0, false );
	setOption( 1, false );
	setOption( 2, true );
	EXPECT_STREQ( m_pTool->SaveSettings()->GetString( "fps_labels" ), "1" );
}

TEST_F( ShowBudgetToolTest, ShuttingDownRunsTheModulesCallbacks )
{
	int nRun = 0;
	m_Frame.ShutdownCallbacks().Add( [&] { nRun++; } );
	m_pTool->ShutDown();
	m_pTool->ShutDown();
	EXPECT_EQ( nRun, 1 );
}

TEST_F( ShowBudgetToolTest, ShuttingDownWithWindowsDeletesThemWithoutTouchingTheirConnections )
{
	m_pTool->Initialise();
	const QPointer<CQBudgetWidget> pWindow = Open( m_Connection );
	const QPointer<CQBudgetWidget> pOther = Open( m_OtherConnection );
	m_Connection.End();
	m_OtherConnection.End();
	m_pTool->ShutDown();
	EXPECT_TRUE( pWindow.isNull() );
	EXPECT_TRUE( pOther.isNull() );
	m_pTool->ConnectionEnded( &m_Connection );
	m_pTool->Disconnect();
}

TEST_F( ShowBudgetToolTest, EndingTheToolWithWindowsDeletesThem )
{
	const QPointer<CQBudgetWidget> pWindow = Open( m_Connection );
	m_Connection.End();
	m_pTool.reset();
	EXPECT_TRUE( pWindow.isNull() );
}
