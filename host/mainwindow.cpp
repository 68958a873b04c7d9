#include "mainwindow.h"

#include <QActionGroup>
#include <QCloseEvent>
#include <QDockWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QToolBar>

#include "connectionlist.h"
#include "connectionspanel.h"
#include "consolepanel.h"
#include "hostsettings.h"
#include "targetconnection.h"

CQMainWindow::CQMainWindow( CConnectionList &connections, CConsoleModel &console )
	: m_List( connections )
{
	setWindowTitle( tr( "Tessel" ) );
	setWindowIcon( QIcon( "game:tools/images/tessel/tessel.png" ) );
	m_pConsole = new CQConsolePanel( console );
	setCentralWidget( m_pConsole );
	m_pConnections = new CQConnectionsPanel( connections );
	m_pConnectionsDock = new QDockWidget( tr( "Connections" ) );
	m_pConnectionsDock->setObjectName( "Connections" );
	m_pConnectionsDock->setWidget( m_pConnections );
	addDockWidget( Qt::TopDockWidgetArea, m_pConnectionsDock );
	MakeMenus();
	const int nUnit = fontMetrics().height();
	resize( 58 * nUnit, 42 * nUnit );
	resizeDocks( { m_pConnectionsDock }, { 13 * nUnit }, Qt::Vertical );
	connect( &m_List, &CConnectionList::CurrentChanged, this, &CQMainWindow::OnCurrentConnectionChanged );
	connect( &m_List, &CConnectionList::Changed, this, &CQMainWindow::OnCurrentConnectionChanged );
	OnCurrentConnectionChanged();
}

void CQMainWindow::MakeMenus()
{
	QMenu *pFile = menuBar()->addMenu( tr( "&File" ) );
	QAction *pConnect = pFile->addAction( tr( "&Connect\u2026" ) );
	pConnect->setShortcut( QKeySequence( "Ctrl+L" ) );
	connect( pConnect, &QAction::triggered, this,
		[this]()
		{
			m_pConnectionsDock->show();
			m_pConnections->OnFocusAddress();
		} );
	pFile->addSeparator();
	QAction *pQuit = pFile->addAction( tr( "&Quit" ) );
	pQuit->setShortcut( QKeySequence::Quit );
	connect( pQuit, &QAction::triggered, this, &CQMainWindow::CloseRequested );

	m_pSubToolMenu = menuBar()->addMenu( tr( "&Sub-tools" ) );
	m_pSubToolBar = addToolBar( tr( "Sub-tools" ) );
	m_pSubToolBar->setObjectName( "SubTools" );
	m_pSubToolBar->setToolButtonStyle( Qt::ToolButtonTextBesideIcon );

	QMenu *pView = menuBar()->addMenu( tr( "&View" ) );
	pView->addAction( m_pConnectionsDock->toggleViewAction() );
	pView->addAction( m_pSubToolBar->toggleViewAction() );
	pView->addSeparator();
	MakeStyleMenu( *pView );

	QMenu *pHelp = menuBar()->addMenu( tr( "&Help" ) );
	connect( pHelp->addAction( tr( "&About Tessel" ) ), &QAction::triggered, this, &CQMainWindow::OnAbout );
}

void CQMainWindow::MakeStyleMenu( QMenu &viewMenu )
{
	QMenu *pMenu = viewMenu.addMenu( tr( "&Style" ) );
	m_pStyles = new QActionGroup( this );
	const auto add = [&]( const QString &text, StyleChoice choice )
	{
		QAction *pAction = pMenu->addAction( text );
		pAction->setCheckable( true );
		pAction->setData( static_cast<int>( choice ) );
		m_pStyles->addAction( pAction );
	};
	add( tr( "As the &desktop" ), StyleChoice::System );
	add( tr( "Da&rk" ), StyleChoice::Dark );
	add( tr( "&Light" ), StyleChoice::Light );
	connect( m_pStyles, &QActionGroup::triggered, this,
		[this]( const QAction *pAction ) { emit StyleChosen( static_cast<StyleChoice>( pAction->data().toInt() ) ); } );
}

void CQMainWindow::SetStyleChoice( StyleChoice choice )
{
	for ( QAction *pAction : m_pStyles->actions() )
		pAction->setChecked( pAction->data().toInt() == static_cast<int>( choice ) );
}

void CQMainWindow::SetSubTools( const std::vector<const SubTool *> &tools )
{
	for ( const SubTool *pTool : tools )
	{
		if ( pTool->m_pTool->IsHidden() )
			continue;
		auto *pAction = new QAction( QIcon( pTool->m_Known.m_pIcon ), tr( pTool->m_Known.m_pTitle ), this );
		pAction->setData( pTool->m_pTool->NeedsConnection() );
		connect( pAction, &QAction::triggered, this, [this, pTool]() { emit OpenRequested( pTool ); } );
		m_pSubToolMenu->addAction( pAction );
		m_pSubToolBar->addAction( pAction );
		m_SubToolActions.push_back( pAction );
	}
	m_pSubToolMenu->menuAction()->setVisible( !m_SubToolActions.empty() );
	m_pSubToolBar->setVisible( !m_SubToolActions.empty() );
	OnCurrentConnectionChanged();
}

void CQMainWindow::OnCurrentConnectionChanged()
{
	const CTargetConnection *pCurrent = m_List.Current();
	for ( QAction *pAction : m_SubToolActions )
	{
		pAction->setEnabled( pCurrent || !pAction->data().toBool() );
		pAction->setToolTip(
			pAction->isEnabled() ? pAction->text() : tr( "%1: connect to an engine first" ).arg( pAction->text() ) );
	}
	m_pConsole->SetCommandTarget( pCurrent && pCurrent->IsConnected() ? pCurrent->Name() : QString() );
}

void CQMainWindow::ReadSettings( const CHostSettings &settings )
{
	m_pConnections->SetRecentAddresses( settings.RecentAddresses() );
	restoreGeometry( settings.WindowGeometry() );
	restoreState( settings.WindowState() );
}

void CQMainWindow::WriteSettings( CHostSettings &settings ) const
{
	settings.SetRecentAddresses( m_pConnections->RecentAddresses() );
	settings.SetWindow( saveGeometry(), saveState() );
}

// The console is the program: closing it ends everything, in the program's own order.
void CQMainWindow::closeEvent( QCloseEvent *pEvent )
{
	pEvent->ignore();
	emit CloseRequested();
}

void CQMainWindow::OnAbout()
{
	QMessageBox::about( this, tr( "About Tessel" ),
		tr( "<b>Tessel %1</b><p>A developer console for running engine processes.</p>" ).arg( TESSEL_VERSION ) );
}
