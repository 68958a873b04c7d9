#include "frame/showbudgettool.h"

#include <QApplication>
#include <new>
#include <utility>

#include "frame/moduleframe.h"
#include "showbudget/budgetwidget.h"
#include "tessel/itesselhost.h"

namespace
{
// The tool whose windows must be gone before the application object is: Qt's routines for that take no argument.
CShowBudgetTool *g_pStartedTool = nullptr;

bool HasApplication()
{
	return qobject_cast<QApplication *>( QCoreApplication::instance() ) != nullptr;
}

bool HasLowerAddress( ITesselConnection *const &pLeft, ITesselConnection *const &pRight )
{
	return reinterpret_cast<uintptr_t>( pLeft ) < reinterpret_cast<uintptr_t>( pRight );
}
} // namespace

CShowBudgetTool::CShowBudgetTool( CModuleFrame &frame, MakeWindowFn pMakeWindow )
	: m_Frame( frame )
	, m_pMakeWindow( pMakeWindow )
	, m_Windows( &HasLowerAddress )
{
}

CShowBudgetTool::~CShowBudgetTool()
{
	if ( HasApplication() )
		StopQt();
}

// -- IAppSystem

bool CShowBudgetTool::Connect( CreateInterfaceFn pFactory )
{
	m_Frame.Connect( pFactory );
	m_nConnections++;
	return true;
}

void CShowBudgetTool::ConnectInterface( CreateInterfaceFn pFactory, const char *pName )
{
	m_Frame.ConnectInterface( pFactory, pName );
	m_nConnections++;
}

void CShowBudgetTool::Disconnect()
{
	m_Frame.Disconnect( m_nConnections );
	m_nConnections = 0;
}

void *CShowBudgetTool::FindInterface( const char * )
{
	return nullptr;
}

int CShowBudgetTool::Initialise()
{
	if ( HasApplication() )
		StartQt();
	return 1;
}

void CShowBudgetTool::ShutDown()
{
	m_Frame.ShutdownCallbacks().Run();
	if ( HasApplication() )
		StopQt();
}

// A host that never shuts the tool down ends its application object with windows open.
void CShowBudgetTool::StartQt()
{
	if ( g_pStartedTool )
		return;
	g_pStartedTool = this;
	qAddPostRoutine( &OnApplicationEnds );
}

void CShowBudgetTool::StopQt()
{
	if ( g_pStartedTool == this )
	{
		qRemovePostRoutine( &OnApplicationEnds );
		g_pStartedTool = nullptr;
	}
	DeleteWindows();
}

void CShowBudgetTool::OnApplicationEnds()
{
	g_pStartedTool->DeleteWindows();
	g_pStartedTool = nullptr;
}

// The windows' code is about to go. Their connections may be gone already and are not touched.
void CShowBudgetTool::DeleteWindows()
{
	std::vector<QPointer<CQBudgetWidget>> windows = std::move( m_LeavingWindows );
	m_LeavingWindows.clear();
	for ( auto nIndex = m_Windows.FirstInorder(); nIndex != WindowMap::InvalidIndex();
		  nIndex = m_Windows.NextInorder( nIndex ) )
		windows.push_back( m_Windows.Element( nIndex ) );
	m_Windows.RemoveAll();
	for ( const QPointer<CQBudgetWidget> &pWindow : windows )
	{
		if ( !pWindow )
			continue;
		pWindow->ForgetConnection();
		DeleteWindow( *pWindow );
	}
}

// A window that is inside one of its own functions goes when that has returned, or with the tool.
void CShowBudgetTool::DeleteWindow( CQBudgetWidget &window )
{
	if ( !window.IsBusy() )
	{
		delete &window;
		return;
	}
	std::erase_if( m_LeavingWindows, []( const QPointer<CQBudgetWidget> &pWindow ) { return pWindow.isNull(); } );
	m_LeavingWindows.push_back( &window );
	window.deleteLater();
}

// -- ITesselSubTool

void CShowBudgetTool::SetHost( ITesselHost *pHost, void *pSecondHost )
{
	m_pHost = pHost;
	m_pSecondHost = pSecondHost;
}

bool CShowBudgetTool::Open()
{
	ITesselConnection *pConnection = m_pHost ? m_pHost->GetCurrentConnection() : nullptr;
	if ( !pConnection )
		return false;
	CQBudgetWidget *pWindow = FindOrCreateWindow( *pConnection );
	if ( !pWindow )
		return false;
	pWindow->show();
	// Showing starts sampling, and sending may be how the host finds out that the connection has ended.
	if ( FindWindow( pConnection ) != pWindow )
		return false;
	pWindow->raise();
	pWindow->activateWindow();
	return true;
}

CQBudgetWidget *CShowBudgetTool::FindWindow( ITesselConnection *pConnection ) const
{
	const WindowMap::IndexType nIndex = m_Windows.Find( pConnection );
	return nIndex == WindowMap::InvalidIndex() ? nullptr : m_Windows.Element( nIndex ).data();
}

CQBudgetWidget *CShowBudgetTool::FindOrCreateWindow( ITesselConnection &connection )
{
	if ( m_Windows.Find( &connection ) != WindowMap::InvalidIndex() )
		return FindWindow( &connection );

	// The place comes first: a window that found none could not be taken back from its connection.
	const WindowMap::IndexType nIndex = m_Windows.Insert( &connection, nullptr );
	if ( nIndex == WindowMap::InvalidIndex() )
		return nullptr;
	CQBudgetWidget *pWindow = m_pMakeWindow( connection, *this );
	m_Windows.Element( nIndex ) = pWindow;
	if ( pWindow )
		pWindow->OnConnectionStateChanged();
	return FindWindow( &connection );
}

CQBudgetWidget *CShowBudgetTool::MakeWindow( ITesselConnection &connection, IBudgetWindowOwner &owner )
{
	return new ( std::nothrow ) CQBudgetWidget( connection, owner );
}

KeyValues *CShowBudgetTool::SaveSettings()
{
	for ( auto nIndex = m_Windows.FirstInorder(); nIndex != WindowMap::InvalidIndex();
		  nIndex = m_Windows.NextInorder( nIndex ) )
	{
		if ( CQBudgetWidget *pWindow = m_Windows.Element( nIndex ) )
			pWindow->SaveSettings();
	}
	return m_pSettings.get();
}

KeyValues *CShowBudgetTool::LoadSettings( const KeyValues *pSettings )
{
	// The copy comes first: a host may give back the very tree that it got from SaveSettings.
	m_pSettings.reset( pSettings ? pSettings->MakeCopy() : nullptr );
	return m_pSettings.get();
}

void CShowBudgetTool::ConnectionEnded( ITesselConnection *pConnection )
{
	const WindowMap::IndexType nIndex = m_Windows.Find( pConnection );
	if ( nIndex == WindowMap::InvalidIndex() )
		return;
	CQBudgetWidget *pWindow = m_Windows.Element( nIndex );
	m_Windows.Remove( nIndex );
	if ( !pWindow )
		return;
	pWindow->OnConnectionEnded();
	DeleteWindow( *pWindow );
}

void CShowBudgetTool::ConnectionStateChanged( ITesselConnection *pConnection )
{
	if ( CQBudgetWidget *pWindow = FindWindow( pConnection ) )
		pWindow->OnConnectionStateChanged();
}
