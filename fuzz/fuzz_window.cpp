// The sub-tool and its windows under any sequence of what a host, an engine and a user can do. After every step the
// windows must agree with what they say, and at the end every block that crossed to the host must have been freed.
//
// An input is a sequence of steps: a byte that chooses one, a byte that chooses the connection, and what the step
// reads.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QStatusBar>
#include <array>
#include <memory>

#include "frame/moduleframe.h"
#include "frame/showbudgettool.h"
#include "keel0/logging.h"
#include "require.h"
#include "showbudget/budgetpayloads.h"
#include "showbudget/budgetwidget.h"
#include "support/countingallocator.h"
#include "support/fakeclock.h"
#include "support/fakeconnection.h"
#include "support/fakehost.h"

namespace
{
void SetUpProcess()
{
	static QApplication *pApplication = nullptr;
	if ( pApplication )
		return;
	static int nArguments = 1;
	static char name[] = "fuzz_window";
	static char *arguments[] = { name, nullptr };
	qputenv( "QT_QPA_PLATFORM", "offscreen" );
	pApplication = new QApplication( nArguments, arguments );
	qInstallMessageHandler( []( QtMsgType, const QMessageLogContext &, const QString & ) {} );
	Logging_AddListener( []( LoggingSeverity, const char *, void * ) {}, nullptr );
	testing::GTEST_FLAG( break_on_failure ) = true; // the fakes report with it
}

class CBytes
{
public:
	explicit CBytes( std::span<const uint8_t> bytes )
		: m_Bytes( bytes )
	{
	}

	bool IsEmpty() const { return m_Bytes.empty(); }

	uint8_t Next() // 0 at the end
	{
		if ( m_Bytes.empty() )
			return 0;
		const uint8_t nValue = m_Bytes.front();
		m_Bytes = m_Bytes.subspan( 1 );
		return nValue;
	}

	std::span<const uint8_t> Take( size_t nCount )
	{
		const std::span<const uint8_t> taken = m_Bytes.first( std::min( nCount, m_Bytes.size() ) );
		m_Bytes = m_Bytes.subspan( taken.size() );
		return taken;
	}

private:
	std::span<const uint8_t> m_Bytes;
};

// What every window promises at any time.
void CheckWindow( const CQBudgetWidget &window )
{
	const BudgetViewData viewData = window.GetViewData();
	QStringList labels;
	for ( const QLabel *pLabel : window.statusBar()->findChildren<QLabel *>() )
		labels += pLabel->text();
	Require( labels.contains( window.IsRunning() ? "Running." : "Stopped." ), "the state label says what is" );
	const uint32_t nCount = window.Samples().SampleCount();
	Require( labels.contains( nCount == 0 ? QString( "No Samples." ) : QString( "Samples: %1" ).arg( nCount ) ),
		"the samples label counts" );
	Require( viewData.m_bLive == window.IsRunning(), "the views are live while sampling runs" );
	if ( viewData.m_nSampleCount == 0 )
		return;

	Require( viewData.m_bLive || viewData.m_nCursor < viewData.m_nSampleCount, "the cursor is on a sample" );
	const uint32_t nSlot = BudgetSlot( int64_t{ viewData.m_nSampleCount } - 1 );
	uint32_t nSum = 0;
	for ( size_t i = 0; i + 1 < viewData.m_Categories.size(); i++ )
		nSum += viewData.Value( i, nSlot );
	Require( nSum == viewData.Value( viewData.m_Categories.size() - 1, nSlot ), "Totals is the sum" );
	for ( size_t i = 0; i < viewData.m_Categories.size(); i++ )
		Require( viewData.Peak( i ) >= viewData.Value( i, nSlot ), "no value is above its peak" );
}

class CSession
{
public:
	explicit CSession( CBytes &bytes )
		: m_Bytes( bytes )
	{
		for ( auto &pConnection : m_Connections )
			pConnection = std::make_unique<CFakeConnection>();
		m_Tool.Initialise();
		m_Tool.SetHost( &m_Host, nullptr );
	}
	~CSession() { m_Tool.ShutDown(); }

	void Step()
	{
		static constexpr void ( CSession::*steps[] )( size_t ) = { &CSession::Open, &CSession::SendCategories,
			&CSession::SendSample, &CSession::SendAnything, &CSession::EndConnection, &CSession::ChangeState,
			&CSession::TriggerAction, &CSession::ShowOrHide, &CSession::PressKey, &CSession::OpenMenu,
			&CSession::UseSettings, &CSession::ChangeSending, &CSession::RunEvents };
		const auto step = steps[m_Bytes.Next() % std::size( steps )];
		( this->*step )( m_Bytes.Next() % m_Connections.size() );
		for ( const auto &pConnection : m_Connections )
		{
			if ( const CQBudgetWidget *pWindow = m_Tool.FindWindow( pConnection.get() ) )
				CheckWindow( *pWindow );
		}
	}

private:
	CFakeConnection &Connection( size_t i ) { return *m_Connections[i]; }
	CQBudgetWidget *Window( size_t i ) { return m_Tool.FindWindow( m_Connections[i].get() ); }

	void Deliver( size_t i, uint32_t nType, uint16_t nVersion, std::span<const uint8_t> payload )
	{
		CQBudgetWidget *pWindow = Window( i );
		if ( pWindow )
			Require( DeliverChunk( *pWindow, &Connection( i ), nType, nVersion, payload ) == ( nVersion == 2 ),
				"only version 2 is taken" );
	}

	void Open( size_t i )
	{
		m_Host.m_pCurrent = &Connection( i );
		Require( m_Tool.Open(), "the tool opens" );
	}

	void SendCategories( size_t i )
	{
		const std::vector<TestCategory> categories( m_Bytes.Next() % 8 );
		Deliver( i, CHUNK_PCAT, 2, CategoriesPayload( categories ) );
	}

	void SendSample( size_t i )
	{
		m_Clock.Advance( m_Bytes.Next() * 0.03125 );
		std::vector<uint32_t> values( m_Bytes.Next() % 8 );
		for ( uint32_t &nValue : values )
			nValue = m_Bytes.Next() * 1000003u;
		Deliver( i, CHUNK_PCPU, 2, SamplePayload( values, 60.0f, m_Bytes.Next() % 2 ) );
	}

	void SendAnything( size_t i )
	{
		static constexpr uint32_t types[] = { CHUNK_PCAT, CHUNK_PCPU, CHUNK_PMPF, CHUNK_KSTO };
		const uint32_t nType = types[m_Bytes.Next() % std::size( types )];
		const uint16_t nVersion = m_Bytes.Next() % 4;
		Deliver( i, nType, nVersion, m_Bytes.Take( m_Bytes.Next() ) );
	}

	void EndConnection( size_t i )
	{
		m_Tool.ConnectionEnded( &Connection( i ) );
		Connection( i ).End();
		Require( !Window( i ), "the window goes with its connection" );
		m_Connections[i] = std::make_unique<CFakeConnection>();
	}

	void ChangeState( size_t i )
	{
		Connection( i ).m_nState = m_Bytes.Next() % 4;
		m_Tool.ConnectionStateChanged( &Connection( i ) );
		if ( const CQBudgetWidget *pWindow = Window( i ) )
			Require( !pWindow->IsRunning() || Connection( i ).m_nState == 3, "sampling needs a connection" );
	}

	void TriggerAction( size_t i )
	{
		if ( !Window( i ) )
			return;
		const QList<QAction *> actions = Window( i )->findChildren<QAction *>();
		actions[m_Bytes.Next() % actions.size()]->trigger();
	}

	void ShowOrHide( size_t i )
	{
		CQBudgetWidget *pWindow = Window( i );
		if ( !pWindow )
			return;
		const uint8_t nChoice = m_Bytes.Next() % 3;
		if ( nChoice == 0 )
			pWindow->close();
		else
			pWindow->setVisible( nChoice == 1 );
	}

	void PressKey( size_t i )
	{
		static constexpr int keys[] = { Qt::Key_Space, Qt::Key_Left, Qt::Key_Right, Qt::Key_Home, Qt::Key_End,
			Qt::Key_N, Qt::Key_M, Qt::Key_PageUp };
		const int nKey = keys[m_Bytes.Next() % std::size( keys )];
		const Qt::KeyboardModifier modifier = m_Bytes.Next() % 2 ? Qt::ShiftModifier : Qt::NoModifier;
		if ( !Window( i ) )
			return;
		QKeyEvent event( QEvent::KeyPress, nKey, modifier );
		QApplication::sendEvent( Window( i ), &event );
	}

	void OpenMenu( size_t i )
	{
		if ( !Window( i ) || !Window( i )->isVisible() )
			return;
		QContextMenuEvent event( QContextMenuEvent::Mouse, QPoint( 9, 9 ), Window( i )->mapToGlobal( QPoint( 9, 9 ) ) );
		QApplication::sendEvent( Window( i ), &event );
	}

	void UseSettings( size_t )
	{
		KeyValues settings( "Settings" );
		const std::span<const uint8_t> text = m_Bytes.Take( m_Bytes.Next() % 32 );
		settings.SetString( "windowState", std::string( text.begin(), text.end() ).c_str() );
		m_Tool.LoadSettings( m_Bytes.Next() % 2 ? &settings : m_Tool.SaveSettings() );
	}

	void ChangeSending( size_t i ) { Connection( i ).m_bSends = m_Bytes.Next() % 2 == 0; }
	void RunEvents( size_t ) { QApplication::processEvents(); }

	CBytes &m_Bytes;
	CCountingAllocator m_Allocator;
	CFakeClock m_Clock;
	CFakeHost m_Host;
	std::array<std::unique_ptr<CFakeConnection>, 3> m_Connections;
	CSchemaRegistry m_Registry;
	CModuleFrame m_Frame{ CServiceConnections( {} ), m_Registry };
	CShowBudgetTool m_Tool{ m_Frame };
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *pData, size_t nSize )
{
	SetUpProcess();
	CBytes bytes( { pData, std::min<size_t>( nSize, 2000 ) } );
	CSession session( bytes );
	while ( !bytes.IsEmpty() )
		session.Step();
	return 0;
}
