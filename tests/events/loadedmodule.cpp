#include "events/loadedmodule.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QWidget>
#include <algorithm>
#include <fstream>

#include "frame/budgetwindows.h"
#include "miniprofiler/framebuilder.h"
#include "showbudget/budgetpayloads.h"

CLoadedModule::CLoadedModule()
	: m_pModule( dlopen( KESTO_SUBTOOL_FILE, RTLD_NOW | RTLD_LOCAL ) )
{
	if ( !m_pModule )
		qFatal( "%s", dlerror() );
	const auto create = reinterpret_cast<CreateInterfaceFn>( dlsym( m_pModule, "CreateInterface" ) );
	m_pTool = static_cast<IExternalTesselSubTool *>( create( "Tessel_SubTool_001_ShowBudgetTool", nullptr ) );
	m_pSubTool = dynamic_cast<ITesselSubTool *>( m_pTool );
	EXPECT_TRUE( m_pTool->Connect( &CFakeServices::Factory ) );
	EXPECT_EQ( m_pTool->Initialise(), 1 );
	m_pSubTool->SetHost( &m_Host, nullptr );
	const KeyValues settings( "Show Budget" );
	m_pSubTool->LoadSettings( &settings );
}

CLoadedModule::~CLoadedModule()
{
	ShutDown();
	Unload();
}

QAction &CLoadedModule::ActionOf( const QWidget &window, const std::string &text )
{
	for ( QAction *pAction : window.findChildren<QAction *>() )
		if ( pAction->text().toStdString() == text )
			return *pAction;
	qFatal( "the window has no %s", text.c_str() );
}

QWidget &CLoadedModule::OpenWindow( size_t nConnection )
{
	const std::vector<QWidget *> before = BudgetWindows();
	m_Host.m_pCurrent = &m_Connections[nConnection];
	EXPECT_TRUE( m_pSubTool->Open() );
	QWidget *pWindow = nullptr;
	for ( QWidget *pCandidate : BudgetWindows() )
		if ( std::ranges::find( before, pCandidate ) == before.end() )
			pWindow = pCandidate;
	if ( !pWindow )
		qFatal( "no window was opened" );
	ActionOf( *pWindow, "Microprofiler" ).setChecked( true );
	ActionOf( *pWindow, "Kesto Player" ).trigger();
	SendData( nConnection );
	QApplication::processEvents(); // everything is painted once
	SendData( nConnection );
	return *pWindow;
}

void CLoadedModule::SendData( size_t nConnection )
{
	CFakeConnection &connection = m_Connections[nConnection];
	EXPECT_TRUE( connection.Deliver( CHUNK_PCAT, CategoriesPayload( { { "Render", 10, 20, 30 } } ) ) );
	EXPECT_TRUE( connection.Deliver( CHUNK_PCPU, SamplePayload( { 8000 } ) ) );
	CFrameBuilder frame( 100 );
	frame.BeginData( true ).Entry( 1, 0, 1000, 1 ).Entry( 2, 1, 500, 3 ).End();
	frame.BeginNames( 1'000'000'000, 2 );
	frame.Name( 1, 0, "Step", "Render" ).Name( 2, 1, "Draw", "Render" ).End();
	EXPECT_TRUE( connection.Deliver( CHUNK_PMPF, frame.Payload() ) );
}

void CLoadedModule::EndConnections()
{
	m_bConnectionsEnded = true;
	m_Host.m_pCurrent = nullptr;
	for ( CFakeConnection &connection : m_Connections )
	{
		if ( IsLoaded() && !m_bShutDown )
			m_pSubTool->ConnectionEnded( &connection );
		connection.End();
	}
}

void CLoadedModule::CloseWindows()
{
	for ( QWidget *pWindow : BudgetWindows() )
		pWindow->close();
}

void CLoadedModule::ShutDown()
{
	if ( !IsLoaded() || m_bShutDown )
		return;
	m_bShutDown = true;
	m_pTool->ShutDown();
	m_pTool->Disconnect();
	m_Host.End();
}

void CLoadedModule::Unload()
{
	if ( !IsLoaded() )
		return;
	EXPECT_EQ( dlclose( m_pModule ), 0 ) << dlerror();
	m_pModule = nullptr;
	m_pTool = nullptr;
	m_pSubTool = nullptr;
	m_Host.End();
}

bool CLoadedModule::IsMapped()
{
	const std::string path = KESTO_SUBTOOL_FILE;
	const std::string name = path.substr( path.rfind( '/' ) );
	std::ifstream maps( "/proc/self/maps" );
	for ( std::string line; std::getline( maps, line ); )
		if ( line.ends_with( name ) )
			return true;
	return false;
}
