// The Show Budget window: what it is made of, the chunks it receives, and sampling.
#include "showbudget/budgetwidget.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QScreen>
#include <QStatusBar>
#include <algorithm>
#include <vector>

#include "keel0/memalloc.h"
#include "miniprofiler/miniprofilerwidget.h"
#include "recordings/kestoplayerwidget.h"
#include "showbudget/budgetdock.h"
#include "showbudget/chunksender.h"
#include "showbudget/ibudgetwindowowner.h"
#include "tessel/itesselconnection.h"
#include "tessel/itesselhost.h"
#include "text/showntext.h"
#include "views/budgethistorywidget.h"
#include "views/budgetsampleswidget.h"
#include "wire/chunks.h"

namespace
{
constexpr int CONNECTED = 3;      // ITesselConnection::GetState
constexpr int LONGEST_NAME = 255; // characters in a title

// In a title "[*]" is the place of the mark of unsaved changes; doubled it stands for itself.
QString NameForTitle( const ITesselConnection &connection )
{
	return ShownText( QString::fromUtf8( connection.GetName() ), LONGEST_NAME )
		.replace( QLatin1String( "[*]" ), QLatin1String( "[*][*]" ) );
}

// The same colours, for a widget that keeps them when the application gets others.
QPalette Pinned( QPalette palette )
{
	for ( const auto group : { QPalette::Active, QPalette::Inactive, QPalette::Disabled } )
	{
		for ( int nRole = 0; nRole < QPalette::NColorRoles; nRole++ )
		{
			const auto role = static_cast<QPalette::ColorRole>( nRole );
			palette.setBrush( group, role, palette.brush( group, role ) );
		}
	}
	return palette;
}
} // namespace

// Marks the time in which the connection or the host may call back into the sub-tool.
class CQBudgetWidget::CBusy
{
public:
	explicit CBusy( CQBudgetWidget &window )
		: m_Window( window )
	{
		m_Window.m_nBusy++;
	}
	~CBusy() { m_Window.m_nBusy--; }
	CBusy( const CBusy & ) = delete;
	CBusy &operator=( const CBusy & ) = delete;

private:
	CQBudgetWidget &m_Window;
};

CQBudgetWidget::CQBudgetWidget( ITesselConnection &connection, IBudgetWindowOwner &owner )
	: m_pConnection( &connection )
	, m_Owner( owner )
	, m_Options( BudgetOptions::Read( owner.GetSettings() ) )
	, m_Style( BudgetViewStyle::Make( owner.GetHost().IsDarkStyle(), owner.GetHost().GetUIScale() ) )
	, m_StatusBar( *statusBar() )
{
	setAttribute( Qt::WA_QuitOnClose, false ); // the host lives as long as its own window
	setPalette( Pinned( palette() ) );         // the views' colours are chosen here, once, and must stay readable
	setWindowTitle( tr( "Show Budget - %1" ).arg( NameForTitle( connection ) ) );
	m_StatusBar.SetState( tr( "Stopped." ) );
	setDockOptions( QMainWindow::AnimatedDocks | QMainWindow::AllowNestedDocks | QMainWindow::AllowTabbedDocks );
	CreateViews();
	CreateActions();
	CreateMenusAndToolBar();
	OnClearSamples();
	RegisterReceivers();
	// Said outright, because the toolkit would take two thirds of the screen at most.
	resize( sizeHint().boundedTo( screen()->availableSize() ) );
}

CQBudgetWidget::~CQBudgetWidget()
{
	m_pConnection = nullptr;
	m_Actions.m_pMicroprofiler->disconnect( this );
	// The views ask this window for their data for as long as they live.
	delete m_pSamplesView;
	delete m_pHistoryDock;
	delete m_pMiniProfilerDock;
	delete m_pPlayerDock;
}

void CQBudgetWidget::CreateViews()
{
	m_pSamplesView = new CQBudgetSamplesWidget( *this, this );
	setCentralWidget( m_pSamplesView );

	m_pHistoryView = new CQBudgetHistoryWidget( *this, this );
	m_pHistoryDock = AddBottomDock( tr( "Budget History" ), "ShowBudget_History", m_pHistoryView );

	m_pMiniProfiler = new CQMiniProfilerWidget( this, m_Owner.GetHost().IsDarkStyle() );
	connect( m_pMiniProfiler, SIGNAL( OnPauseStateChanged( bool ) ), SLOT( SendMiniProfilerUpdateFlags() ) );
	m_pMiniProfilerDock = AddBottomDock( tr( "MiniProfiler History" ), "MiniProfiler_History", m_pMiniProfiler );
	m_pMiniProfilerDock->hide();

	m_pPlayer = new CQKestoPlayerWidget( this );
	m_pPlayerDock = AddBottomDock( tr( "Kesto Player" ), "Kesto_Player", m_pPlayer );
	m_pPlayerDock->setWindowIcon( QIcon( QStringLiteral( "game:tools/images/tessel/flamegraph.png" ) ) );
	m_pPlayerDock->hide();
	if ( const KeyValues *pSettings = m_Owner.GetSettings() )
		m_pPlayer->LoadSettings( *pSettings );
}

QDockWidget *CQBudgetWidget::AddBottomDock( const QString &title, const char *pObjectName, QWidget *pContent )
{
	auto *pDock = new CQBudgetDock( title, this );
	pDock->setObjectName( QString::fromLatin1( pObjectName ) );
	pDock->setFeatures(
		QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable );
	pDock->setWidget( pContent );
	pDock->setAttribute( Qt::WA_WindowPropagation ); // the window's palette, also while it floats
	addDockWidget( Qt::BottomDockWidgetArea, pDock, Qt::Horizontal );
	return pDock;
}

void CQBudgetWidget::RegisterReceivers()
{
	for ( const uint32_t nType : { wire::CHUNK_CATEGORIES, wire::CHUNK_SAMPLE, wire::CHUNK_MINIPROFILER } )
		m_pConnection->RegisterReceiver( nType, wire::CHUNK_VERSION, this );
}

bool CQBudgetWidget::IsConnected() const
{
	return m_pConnection && m_pConnection->GetState() == CONNECTED;
}

// -- Chunks

bool CQBudgetWidget::OnDataReceived(
	ITesselConnection *, uint32_t nChunkType, uint16_t nVersion, uint32_t nLength, uint8_t *pBuffer )
{
	const bool bKnownVersion = nVersion == wire::CHUNK_VERSION;
	if ( bKnownVersion )
	{
		const CBusy busy( *this );
		const std::span<const uint8_t> payload( pBuffer + wire::CHUNK_HEADER_SIZE, nLength );
		if ( nChunkType == wire::CHUNK_CATEGORIES && m_bRunning )
			ReceiveCategories( payload );
		else if ( nChunkType == wire::CHUNK_SAMPLE && m_bRunning )
			ReceiveSample( payload );
		else if ( nChunkType == wire::CHUNK_MINIPROFILER ) // also while sampling is stopped
			ReceiveMiniProfiler( payload );
	}
	g_pMemAlloc->Free( pBuffer );
	return bKnownVersion;
}

void CQBudgetWidget::ReceiveCategories( std::span<const uint8_t> payload )
{
	std::vector<BudgetCategory> categories;
	if ( !DecodeCategories( payload, categories ) )
		return;
	m_Samples.SetCategories( categories );
	OnClearSamples();
	for ( const BudgetCategory &category : categories )
		m_pMiniProfiler->SetBudgetColour( QString::fromUtf8( category.m_Name.Get() ), category.m_Colour );
}

void CQBudgetWidget::ReceiveSample( std::span<const uint8_t> payload )
{
	if ( !DecodeSample( payload, m_Samples.Categories().size(), m_ReceivedSample ) )
		return;
	const bool bTickSampling = m_Actions.m_pTickSampling->isChecked();
	m_Samples.AddSample( m_ReceivedSample.m_Values, m_ReceivedSample.m_flFrameRate,
		m_ReceivedSample.m_bContinuation && bTickSampling, bTickSampling );
	RefreshStatusTexts();
	m_SamplePainting.Request( screen()->refreshRate() );
}

void CQBudgetWidget::ReceiveMiniProfiler( std::span<const uint8_t> payload )
{
	if ( !m_pMiniProfiler->ReceiveChunk( payload ) )
		return;
	const std::vector<uint64_t> ids = m_pMiniProfiler->TakeWantedIds();
	// The connection may end in any of the attempts.
	for ( size_t i = 0; i < ids.size() && m_pConnection; i += MAX_NAMES_PER_REQUEST )
		SendNameRequest(
			*m_pConnection, std::span( ids ).subspan( i, std::min( MAX_NAMES_PER_REQUEST, ids.size() - i ) ) );
}

void CQBudgetWidget::SendMiniProfilerUpdateFlags()
{
	if ( !IsConnected() )
		return;
	const CBusy busy( *this );
	SendMiniProfilerControl( *m_pConnection, m_pMiniProfilerDock->isVisible() && !m_pMiniProfiler->IsPaused() );
}

// -- Sampling

void CQBudgetWidget::StartSampling()
{
	if ( m_bRunning || !IsConnected() )
		return;
	const CBusy busy( *this );
	const bool bSent = SendSamplingRequest( *m_pConnection, true, m_SamplingOptions );
	if ( !bSent || !m_pConnection ) // the connection may have ended in the attempt
		return;
	m_bRunning = true;
	m_pHistoryView->SetCursorMode( false );
	m_StatusBar.SetState( tr( "Running." ) );
	m_Actions.m_pStartSampling->setEnabled( false );
	m_Actions.m_pStopSampling->setEnabled( true );
	RefreshStatusTexts();
	RepaintViews();
}

void CQBudgetWidget::StopSampling()
{
	if ( !m_bRunning && IsConnected() )
		return;
	const CBusy busy( *this );
	m_bRunning = false;
	if ( m_pConnection )
		SendSamplingRequest( *m_pConnection, false, m_SamplingOptions );
	m_pHistoryView->SetCursorMode( true );
	m_StatusBar.SetState( tr( "Stopped." ) );
	m_Actions.m_pStartSampling->setEnabled( true );
	m_Actions.m_pStopSampling->setEnabled( false );
	RefreshStatusTexts();
	RepaintViews();
}

void CQBudgetWidget::ToggleSampling()
{
	if ( m_bRunning )
		StopSampling();
	else
		StartSampling();
}

void CQBudgetWidget::OnConnectionStateChanged()
{
	if ( IsConnected() )
	{
		ArrangeForRecording( false );
		m_pMiniProfiler->Clear();
		SendMiniProfilerUpdateFlags();
	}
	else
		StopSampling();
	const bool bConnected = IsConnected();
	m_Actions.m_pStartSampling->setEnabled( bConnected && !m_bRunning );
	m_Actions.m_pStopSampling->setEnabled( bConnected && m_bRunning );
}

void CQBudgetWidget::OnConnectionEnded()
{
	StopSampling();
	ForgetConnection();
}

void CQBudgetWidget::ForgetConnection()
{
	m_pConnection = nullptr;
	m_bRunning = false;
	m_Actions.m_pStartSampling->setEnabled( false );
	m_Actions.m_pStopSampling->setEnabled( false );
}

// -- Recordings

bool CQBudgetWidget::OpenRecording( const QString &fileName )
{
	m_pPlayerDock->show();
	m_pPlayerDock->raise();
	if ( !IsConnected() )
		ArrangeForRecording( true );
	return m_pPlayer->OpenRecording( fileName );
}

void CQBudgetWidget::ArrangeForRecording( bool bOn )
{
	if ( bOn == m_bArrangedForRecording )
		return;
	m_bArrangedForRecording = bOn;
	m_pSamplesView->setVisible( !bOn );
	m_pHistoryDock->setVisible( !bOn );
}

void CQBudgetWidget::ShowRecordedFrame( int nFrame )
{
	m_pPlayer->ShowFrame( nFrame );
	m_pPlayer->ShowWholeFrame();
}

void CQBudgetWidget::ShowSlowestRecordedFrame()
{
	m_pPlayer->ShowSlowestFrame();
	m_pPlayer->ShowWholeFrame();
}

// -- What the views see

BudgetViewData CQBudgetWidget::GetViewData() const
{
	BudgetViewData viewData;
	m_Samples.FillViewData( viewData );
	viewData.m_bLive = m_bRunning;
	viewData.m_bTickSampling = m_Actions.m_pTickSampling && m_Actions.m_pTickSampling->isChecked();
	viewData.m_bFPSUnits = m_Options.m_bFPSLabels;
	viewData.m_bShowAverages = m_Options.m_bShowAverages;
	viewData.m_bShowThresholds = m_Options.m_bShowThresholds;
	viewData.m_bFPSAverages = m_Options.m_bFPSAverages;
	viewData.m_nCursor = m_pHistoryView ? m_pHistoryView->Cursor() : 0;
	return viewData;
}

KeyValues *CQBudgetWidget::GetViewSettings()
{
	return m_Owner.GetSettings();
}

void CQBudgetWidget::OnHistoryCursorChanged()
{
	RefreshStatusTexts();
	RepaintViews();
}

void CQBudgetWidget::AddCursorLabel( QWidget *pLabel )
{
	m_StatusBar.AddCursorLabel( pLabel );
}

void CQBudgetWidget::RefreshStatusTexts()
{
	m_StatusBar.SetTexts( BudgetStatusTexts::Make( GetViewData(), m_Samples.SampleCount() ) );
}

void CQBudgetWidget::RepaintViews()
{
	update();
	if ( m_pHistoryDock->isFloating() )
		m_pHistoryDock->update();
}

// -- Events

void CQBudgetWidget::showEvent( QShowEvent *pEvent )
{
	QMainWindow::showEvent( pEvent );
	if ( pEvent->spontaneous() ) // the window manager brought an iconified window back: all is as the user left it
		return;
	const CBusy busy( *this );
	RestoreLayout();
	StartSampling();
}

void CQBudgetWidget::closeEvent( QCloseEvent *pEvent )
{
	const CBusy busy( *this );
	StopSampling();
	SaveSettings();
	for ( QDockWidget *pDock : { m_pHistoryDock, m_pMiniProfilerDock, m_pPlayerDock } )
		pDock->close();
	pEvent->accept();
}

// What no child took: stepping through the samples works wherever the focus is.
void CQBudgetWidget::keyPressEvent( QKeyEvent *pEvent )
{
	if ( !m_pHistoryView->HandleKey( *pEvent ) )
		QMainWindow::keyPressEvent( pEvent );
}

void CQBudgetWidget::contextMenuEvent( QContextMenuEvent *pEvent )
{
	// Not exec(): the connection, and the window with it, may end while the menu is open.
	m_pContextMenu->popup( pEvent->globalPos() );
	pEvent->accept();
}
