// The sub-tool and its windows under any sequence of what a host, an engine and a user can do. After every step the
// windows must agree with what they say, and at the end every block that crossed to the host must have been freed.
//
// An input is a sequence of steps: a byte that chooses one, a byte that chooses the connection, and what the step
// reads.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDialog>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <array>
#include <memory>

#include "frame/moduleframe.h"
#include "frame/showbudgettool.h"
#include "keel0/logging.h"
#include "memorylimit.h"
#include "miniprofiler/framebuilder.h"
#include "require.h"
#include "showbudget/budgetpayloads.h"
#include "showbudget/budgetwidget.h"
#include "support/countingallocator.h"
#include "support/fakeclock.h"
#include "support/fakeconnection.h"
#include "support/fakehost.h"
#include "support/unwatchedmemory.h"
#include "views/historyplotwidget.h"
#include "windowinvariants.h"

namespace
{
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

// The value of the newest frame that a store was given, as the bytes of a 'PCPU' payload have it.
uint32_t SentValue( std::span<const uint8_t> payload, size_t nCategory )
{
	uint32_t nValue = 0;
	for ( const uint8_t nByte : payload.subspan( 12 + 4 * nCategory, 4 ) )
		nValue = nValue << 8 | nByte;
	return nValue;
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
			&CSession::UseSettings, &CSession::ChangeSending, &CSession::RunEvents, &CSession::SendScopes,
			&CSession::UseMouse, &CSession::Resize, &CSession::Search, &CSession::Regenerate, &CSession::ToggleTicks };
		const auto step = steps[m_Bytes.Next() % std::size( steps )];
		( this->*step )( m_Bytes.Next() % m_Connections.size() );
		for ( const auto &pConnection : m_Connections )
		{
			if ( const CQBudgetWidget *pWindow = m_Tool.FindWindow( pConnection.get() ) )
				fuzz::CheckWindow( *pWindow );
		}
	}

private:
	CFakeConnection &Connection( size_t i ) { return *m_Connections[i]; }
	CQBudgetWidget *Window( size_t i ) { return m_Tool.FindWindow( m_Connections[i].get() ); }

	void Deliver( size_t i, uint32_t nType, uint16_t nVersion, std::span<const uint8_t> payload )
	{
		CQBudgetWidget *pWindow = Window( i );
		if ( !pWindow )
			return;
		const bool bRunning = pWindow->IsRunning();
		const uint32_t nCount = pWindow->Samples().SampleCount();
		{
			CMemoryLimit limit( payload.size() );
			Require( DeliverChunk( *pWindow, &Connection( i ), nType, nVersion, payload ) == ( nVersion == 2 ),
				"only version 2 is taken" );
		}
		if ( nType != CHUNK_PCPU || nVersion != 2 )
			return;
		const uint32_t nAdded = pWindow->Samples().SampleCount() - nCount;
		Require( nAdded == 0 || ( nAdded == 1 && bRunning ), "a sample counts once, and only while sampling runs" );
		if ( nAdded == 1 )
			CheckNewestFrame( pWindow->GetViewData(), payload );
	}

	static void CheckNewestFrame( const BudgetViewData &viewData, std::span<const uint8_t> payload )
	{
		const uint32_t nSlot = BudgetSlot( int64_t{ viewData.m_nSampleCount } - 1 );
		for ( size_t nCategory = 0; nCategory + 1 < viewData.m_Categories.size(); nCategory++ )
			Require(
				viewData.Value( nCategory, nSlot ) == SentValue( payload, nCategory ), "a value is what was sent" );
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

	// A whole 'PMPF' chunk: entries, which name their callers, and names for some of them.
	void SendScopes( size_t i )
	{
		CFrameBuilder frame( m_Bytes.Next() );
		const uint8_t nOptions = m_Bytes.Next();
		frame.BeginData( nOptions & 1 );
		for ( int nEntries = nOptions >> 4; nEntries > 0; nEntries-- )
		{
			const uint64_t nId = m_Bytes.Next() % 16;
			const uint64_t nCaller = m_Bytes.Next() % 16;
			const uint64_t nTicks = m_Bytes.Next() * 1000003ull;
			frame.Entry( nId, nCaller, nTicks, m_Bytes.Next() );
		}
		frame.End( nOptions & 2 ? -1 : 0 );
		if ( nOptions & 4 )
			AddNames( frame );
		Deliver( i, CHUNK_PMPF, 2, frame.Payload() );
	}

	void AddNames( CFrameBuilder &frame )
	{
		static constexpr const char *names[] = { "", "Step", "Draw", "Step:Inner", "\xff" };
		static constexpr const char *descriptions[] = {
			"", "Physics\nStep\nc:\\engine\\a.cpp\n\nengine\n", "Renderer\nDraw\n/engine/b/c.cpp\n", "\n\n\n\n\n\n" };
		const int nNames = m_Bytes.Next() % 8;
		frame.BeginNames( 1000000000, nNames );
		for ( int nName = 0; nName < nNames; nName++ )
		{
			const uint64_t nId = m_Bytes.Next() % 16;
			const uint8_t nTexts = m_Bytes.Next();
			frame.Name( nId, m_Bytes.Next() % 16, names[nTexts % std::size( names )],
				descriptions[nTexts / 16 % std::size( descriptions )] );
		}
		frame.End();
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

	// Presses, drags, releases or turns the wheel over the history, where columns are picked.
	void UseMouse( size_t i )
	{
		static constexpr QEvent::Type types[] = {
			QEvent::MouseButtonPress, QEvent::MouseMove, QEvent::MouseButtonRelease };
		const uint8_t nType = m_Bytes.Next() % 4;
		const QPointF point{ m_Bytes.Next() * 8.0, m_Bytes.Next() * 1.0 }; // in this order
		if ( !Window( i ) )
			return;
		QList<CQHistoryPlotWidget *> plots = Window( i )->findChildren<CQHistoryPlotWidget *>();
		CQHistoryPlotWidget *pPlot = plots[static_cast<int>( point.y() ) % plots.size()];
		if ( nType < std::size( types ) )
		{
			QMouseEvent event( types[nType], point, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier );
			QApplication::sendEvent( pPlot, &event );
			return;
		}
		QWheelEvent event( point, pPlot->mapToGlobal( point.toPoint() ), QPoint(),
			QPoint( 0, point.x() > 1000 ? 120 : -120 ), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false );
		QApplication::sendEvent( pPlot, &event );
	}

	void Resize( size_t i )
	{
		const QSize size{ m_Bytes.Next() * 6, m_Bytes.Next() * 4 };
		if ( Window( i ) )
			Window( i )->resize( size );
	}

	void Search( size_t i )
	{
		const std::span<const uint8_t> text = m_Bytes.Take( m_Bytes.Next() % 8 );
		if ( CQMiniProfilerWidget *pScopes = MiniProfiler( i ) )
			pScopes->OnSearchMiniProfiler(
				QString::fromLatin1( reinterpret_cast<const char *>( text.data() ), static_cast<int>( text.size() ) ) );
	}

	void Regenerate( size_t i )
	{
		if ( CQMiniProfilerWidget *pScopes = MiniProfiler( i ) )
			pScopes->RegenerateDataView();
	}

	void ToggleTicks( size_t i )
	{
		if ( !Window( i ) )
			return;
		for ( QAction *pAction : Window( i )->findChildren<QAction *>() )
			if ( pAction->text() == "Tick Sampling" )
				pAction->toggle();
	}

	CQMiniProfilerWidget *MiniProfiler( size_t i )
	{
		return Window( i ) ? Window( i )->findChild<CQMiniProfilerWidget *>() : nullptr;
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

// Cancels each dialog that an action opens, which would wait for a user otherwise.
class CDialogCanceller final : public QObject
{
public:
	bool eventFilter( QObject *pWatched, QEvent *pEvent ) override
	{
		if ( pEvent->type() == QEvent::Show && qobject_cast<QDialog *>( pWatched ) )
			QMetaObject::invokeMethod( pWatched, "reject", Qt::QueuedConnection );
		return false;
	}
};

void Run( std::span<const uint8_t> input )
{
	CBytes bytes( input );
	CSession session( bytes );
	while ( !bytes.IsEmpty() )
		session.Step();
}

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
	static CDialogCanceller s_Canceller;
	pApplication->installEventFilter( &s_Canceller );
	qInstallMessageHandler( []( QtMsgType, const QMessageLogContext &, const QString & ) {} );
	Logging_AddListener( []( LoggingSeverity, const char *, void * ) {}, nullptr );
	testing::GTEST_FLAG( break_on_failure ) = true; // the fakes report with it

	// The first text has the font library read its configuration, which it keeps as unwatchedfonts.cpp says.
	const CUnwatchedMemory unwatched;
	QFontMetrics( QApplication::font() ).horizontalAdvance( QStringLiteral( "x" ) );
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *pData, size_t nSize )
{
	SetUpProcess();
	Run( { pData, std::min<size_t>( nSize, 2000 ) } );
	return 0;
}
