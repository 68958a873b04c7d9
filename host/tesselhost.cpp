#include "tesselhost.h"

#include <QApplication>
#include <QDir>
#include <QScreen>

#include <cstdio>
#include <cstring>

#include "accesstoken.h"
#include "connectionspanel.h"
#include "consolepanel.h"
#include "demoprocess.h"
#include "displaytext.h"
#include "keel0/logging.h"
#include "keel0/memalloc.h"
#include "miniprofilerpicture.h"
#include "recordingconnection.h"
#include "targetconnection.h"
#include "unattendedboxes.h"

namespace
{
constexpr double FIRST_WINDOW_SHARE = 0.7; // of the screen

// A sub-tool's windows are its own; the host knows them by their title, which begins with the sub-tool's.
QWidget *FindSubToolWindow( const QLatin1String &title )
{
	for ( QWidget *pWidget : QApplication::topLevelWidgets() )
		if ( pWidget->isVisible() && pWidget->windowTitle().startsWith( title ) )
			return pWidget;
	return nullptr;
}

void PrintToErrorOutput( LoggingSeverity severity, const char *pText, void * )
{
	if ( severity != LoggingSeverity::Message )
		std::fprintf( stderr, "tessel: %s", pText );
}
} // namespace

CTesselHost::CTesselHost( const CommandLineOptions &options )
	: m_Options( options )
	, m_SubToolsToOpen( options.SubToolsToOpen() )
	, m_pLog( std::make_unique<CConsoleLog>( m_ConsoleModel ) )
	, m_Settings( options.m_SettingsFile.isEmpty() ? CHostSettings::DefaultPath() : options.m_SettingsFile )
	, m_pConnections( std::make_unique<CConnectionList>() )
{
	const StyleChoice style = options.m_Style.value_or( m_Settings.Style() );
	ApplyStyle( style );
	m_pSubTools = std::make_unique<CSubTools>(
		*this, [this]( const QString &line ) { Report( LoggingSeverity::Error, QString(), line ); } );
	m_pWindow = std::make_unique<CQMainWindow>( *m_pConnections, m_ConsoleModel );
	m_pWindow->SetStyleChoice( style );
	ConnectSignals();
	ConnectConsole();
}

CTesselHost::~CTesselHost()
{
	ShutDown();
}

void CTesselHost::ConnectSignals()
{
	connect( m_pWindow.get(), &CQMainWindow::OpenRequested, this, &CTesselHost::OnOpenRequested );
	connect( m_pWindow.get(), &CQMainWindow::StyleChosen, this, &CTesselHost::OnStyleChosen );
	connect( m_pWindow.get(), &CQMainWindow::CloseRequested, this, [this]() { emit Finished( 0 ); } );
	connect( &m_pWindow->Connections(), &CQConnectionsPanel::ConnectRequested, this, &CTesselHost::OnConnectRequested );
	connect( m_pConnections.get(), &CConnectionList::LinkChanged, this, &CTesselHost::OnLinkChanged );
	connect( m_pConnections.get(), &CConnectionList::Ending, this,
		[this]( CTargetConnection *pConnection ) { m_pSubTools->ConnectionEnded( pConnection ); } );
}

void CTesselHost::ConnectConsole()
{
	connect( &m_pWindow->Console(), &CQConsolePanel::CommandEntered, this, &CTesselHost::OnCommandEntered );
	connect( m_pConnections.get(), &CConnectionList::Printed, this,
		[this]( CTargetConnection *pConnection, LoggingSeverity severity, const QString &text )
		{ m_pLog->Add( severity, pConnection->Name(), text ); } );
	connect( m_pConnections.get(), &CConnectionList::Reported, this,
		[this]( CTargetConnection *pConnection, LoggingSeverity severity, const QString &text )
		{ Report( severity, QString(), QStringLiteral( "%1: %2" ).arg( pConnection->Address().ToString(), text ) ); } );
}

QString CTesselHost::PluginFolder() const
{
	if ( !m_Options.m_PluginFolder.isEmpty() )
		return m_Options.m_PluginFolder;
	return QDir( QCoreApplication::applicationDirPath() ).filePath( QStringLiteral( "subtools" ) );
}

bool CTesselHost::Start( QString &error )
{
	const std::optional<std::string> token = FindAccessToken( m_Options.m_TokenFile, error );
	if ( !token )
		return false;
	m_pConnections->SetToken( *token );
	// A module that was asked for by name comes before one of the folder that offers the same.
	m_pSubTools->Load( m_Options.m_Plugins + CSubTools::FindPlugins( PluginFolder() ), m_Settings.SubTools() );
	if ( !CheckSubToolsToOpen( error ) )
		return false;
	m_bStarted = true;
	m_pWindow->SetSubTools( m_pSubTools->All() );
	m_pWindow->ReadSettings( m_Settings );
	m_pWindow->show();
	if ( !m_Options.m_ScreenshotFile.isEmpty() )
		StartScreenshot();
	for ( const TargetAddress &address : m_Options.m_Connect )
		OnConnectRequested( address );
	if ( !m_Options.m_Connect.empty() )
		m_pConnections->SetCurrent( m_pConnections->At( 0 ) );
	if ( m_Options.m_bDemo )
		StartDemo();
	if ( m_Options.m_Connect.empty() && !m_Options.m_bDemo )
		m_pWindow->Connections().OnFocusAddress();
	// Later, because opening asks the user where a file is damaged, and the program's loop must run by then.
	QMetaObject::invokeMethod( this, &CTesselHost::OpenRecordings, Qt::QueuedConnection );
	return true;
}

bool CTesselHost::CheckSubToolsToOpen( QString &error ) const
{
	QStringList wanted = m_SubToolsToOpen;
	if ( !m_Options.m_Recordings.isEmpty() )
		wanted += CommandLineOptions::RecordingSubTool();
	for ( const QString &title : wanted )
	{
		if ( m_pSubTools->Find( title ) )
			continue;
		QStringList titles;
		for ( const SubTool *pTool : m_pSubTools->All() )
			titles += QStringLiteral( "\"%1\"" ).arg( pTool->m_Known.m_pTitle );
		error = tr( "there is no sub-tool \"%1\" (loaded: %2)" )
					.arg( title, titles.isEmpty() ? tr( "none" ) : titles.join( QStringLiteral( ", " ) ) );
		return false;
	}
	return true;
}

void CTesselHost::StartDemo()
{
	m_pDemo = std::make_unique<CDemoProcess>(
		m_Options.m_DemoProgram.isEmpty() ? CDemoProcess::DefaultProgram() : m_Options.m_DemoProgram );
	connect( m_pDemo.get(), &CDemoProcess::Listening, this,
		[this]( const TargetAddress &address ) { m_pConnections->Add( address ); } );
	connect( m_pDemo.get(), &CDemoProcess::Printed, this,
		[this]( LoggingSeverity severity, const QString &line )
		{ m_pLog->Add( severity, tr( "demo engine" ), line ); } );
	connect( m_pDemo.get(), &CDemoProcess::Failed, this,
		[this]( const QString &reason )
		{
			Report( LoggingSeverity::Error, QString(), tr( "demo engine: %1" ).arg( reason ) );
			if ( m_pScreenshot && !m_pScreenshot->HasBegun() )
				emit Finished( 1 );
		} );
	if ( !m_Options.m_TokenFile.isEmpty() )
		m_pDemo->UseTokenFile( m_Options.m_TokenFile );
	m_pDemo->Start();
}

void CTesselHost::StartScreenshot()
{
	m_pUnattendedBoxes = std::make_unique<CUnattendedBoxes>(
		[this]( const QString &line ) { Report( LoggingSeverity::Warning, QString(), line ); } );
	const auto findWindow = [this]() -> QWidget *
	{
		m_pLog->Flush();
		if ( m_Options.m_ScreenshotSubject == ScreenshotSubject::Console )
			return m_pWindow.get();
		if ( m_Options.m_ScreenshotSubject == ScreenshotSubject::Player )
			return m_RecordingWindows.empty() ? nullptr : m_RecordingWindows.back();
		QWidget *pWindow = FindSubToolWindow( QLatin1String( "Show Budget" ) );
		if ( pWindow && m_Options.m_ScreenshotSubject == ScreenshotSubject::MiniProfiler )
			return ArrangeMiniProfiler( *pWindow );
		return pWindow;
	};
	m_pScreenshot = std::make_unique<CScreenshot>( m_Options.m_ScreenshotFile, m_Options.m_flScreenshotAfter,
		m_Options.m_ScreenshotSize * static_cast<double>( GetUIScale() ), findWindow );
	connect( m_pScreenshot.get(), &CScreenshot::Written, this, [this]() { emit Finished( 0 ); } );
	connect( m_pScreenshot.get(), &CScreenshot::Failed, this,
		[this]( const QString &reason )
		{
			Report( LoggingSeverity::Error, QString(), reason );
			emit Finished( 1 );
		} );
	if ( m_Options.m_ScreenshotSubject == ScreenshotSubject::Player )
		return; // begins when the recordings are open
	if ( m_Options.m_Connect.empty() && !m_Options.m_bDemo )
		m_pScreenshot->Begin();
	else
		m_pScreenshot->Wait();
}

void CTesselHost::OpenRecordings()
{
	if ( m_bShutDown )
		return;
	bool bAllTaken = true;
	for ( const QString &fileName : std::as_const( m_Options.m_Recordings ) )
		bAllTaken = OpenRecording( fileName ) && bAllTaken;
	if ( !bAllTaken && m_Options.m_ScreenshotSubject == ScreenshotSubject::Player )
		emit Finished( 1 );
	else // later, when the windows are laid out
		QMetaObject::invokeMethod( this, &CTesselHost::OnRecordingsOpen, Qt::QueuedConnection );
}

// A sub-tool says that it opens recordings by a window with these functions; the host knows nothing else of it.
bool CTesselHost::OpenRecording( const QString &fileName )
{
	bool bTaken = false;
	const QPointer<QWidget> pWindow = OpenRecordingWindow( fileName );
	if ( !pWindow || !QMetaObject::invokeMethod(
						 pWindow, "OpenRecording", Q_RETURN_ARG( bool, bTaken ), Q_ARG( QString, fileName ) ) )
		Report( LoggingSeverity::Error, QString(),
			tr( "%1 is not opened: %2 shows no recordings" ).arg( fileName, CommandLineOptions::RecordingSubTool() ) );
	else if ( !bTaken )
		Report( LoggingSeverity::Warning, QString(), tr( "%1 is not opened" ).arg( fileName ) );
	return bTaken;
}

void CTesselHost::OnRecordingsOpen()
{
	if ( m_pScreenshot && m_Options.m_ScreenshotSubject == ScreenshotSubject::Player )
		m_pScreenshot->Begin();
	for ( const QPointer<QWidget> &pWindow : m_RecordingWindows )
	{
		if ( !pWindow || !m_Options.m_Frame )
			continue;
		if ( *m_Options.m_Frame == CommandLineOptions::SLOWEST_FRAME )
			QMetaObject::invokeMethod( pWindow, "ShowSlowestRecordedFrame" );
		else
			QMetaObject::invokeMethod( pWindow, "ShowRecordedFrame", Q_ARG( int, *m_Options.m_Frame ) );
	}
}

// The sub-tool's window for the file; null when it opens none.
QWidget *CTesselHost::OpenRecordingWindow( const QString &fileName )
{
	const SubTool *pTool = m_pSubTools->Find( CommandLineOptions::RecordingSubTool() );
	m_Recordings.push_back( std::make_unique<CRecordingConnection>( fileName ) );
	const QWidgetList before = QApplication::topLevelWidgets();
	m_pOpenedFor = m_Recordings.back().get();
	OnOpenRequested( pTool );
	m_pOpenedFor = nullptr;
	for ( QWidget *pWidget : QApplication::topLevelWidgets() )
		if ( !before.contains( pWidget ) && pWidget->isVisible() &&
			 pWidget->windowTitle().startsWith( QLatin1String( pTool->m_Known.m_pTitle ) ) )
			return m_RecordingWindows.emplace_back( pWidget );
	return nullptr;
}

// One line, also of a file whose name has line feeds: the log would make lines of its own of them. Whoever waits for a
// picture watches the error output and not the console.
void CTesselHost::Report( LoggingSeverity severity, const QString &source, const QString &text )
{
	m_pLog->Add( severity, source, ToDisplayLine( text, ConsoleLine::LONGEST_TEXT ) );
	if ( !m_Options.m_ScreenshotFile.isEmpty() && severity != LoggingSeverity::Message )
		std::fprintf( stderr, "tessel: %s\n", qUtf8Printable( ToDisplayLine( text, CConsoleModel::SHOWN_LENGTH ) ) );
}

void CTesselHost::OnOpenRequested( const SubTool *pTool )
{
	if ( !pTool->m_pTool->Open() )
		Report( LoggingSeverity::Warning, QString(),
			tr( "%1 needs a connection: connect to an engine first" ).arg( pTool->m_Known.m_pTitle ) );
	else
		GiveRoomTheFirstTime( pTool );
}

// A sub-tool that has kept nothing yet opens as small as its parts allow. Later it knows what the user made of it.
void CTesselHost::GiveRoomTheFirstTime( const SubTool *pTool )
{
	const char *pInterface = pTool->m_Known.m_pInterface;
	if ( m_SubToolsWithSize.contains( pInterface ) || m_Settings.SubTools().FindKey( pInterface ) )
		return;
	m_SubToolsWithSize += pInterface;
	if ( QWidget *pWindow = FindSubToolWindow( QLatin1String( pTool->m_Known.m_pTitle ) ) )
		pWindow->resize( pWindow->size().expandedTo( pWindow->screen()->availableSize() * FIRST_WINDOW_SHARE ) );
}

void CTesselHost::OnStyleChosen( StyleChoice choice )
{
	m_Settings.SetStyle( choice );
	ApplyStyle( choice );
}

void CTesselHost::OnLinkChanged( CTargetConnection *pConnection )
{
	m_pSubTools->ConnectionStateChanged( pConnection );
	if ( !pConnection->IsConnected() )
		return;
	OpenWanted( pConnection );
	if ( m_pScreenshot )
		m_pScreenshot->Begin();
}

// Sub-tools open for the current connection: that had better be one with an engine at its other end.
void CTesselHost::OpenWanted( CTargetConnection *pConnection )
{
	if ( !m_SubToolsToOpen.isEmpty() && !m_pConnections->Current()->IsConnected() )
		m_pConnections->SetCurrent( pConnection );
	for ( const QString &title : std::exchange( m_SubToolsToOpen, {} ) )
		if ( const SubTool *pTool = m_pSubTools->Find( title ) )
			OnOpenRequested( pTool );
}

void CTesselHost::OnConnectRequested( const TargetAddress &address )
{
	m_pWindow->Connections().AddRecentAddress( address );
	m_pConnections->Add( address );
}

void CTesselHost::OnCommandEntered( const QString &command )
{
	CTargetConnection *pConnection = m_pConnections->Current();
	const QByteArray bytes = command.toUtf8();
	m_pLog->Add( LoggingSeverity::Message, QString(), QStringLiteral( "> " ) + command );
	if ( !pConnection || !pConnection->IsConnected() )
	{
		Report( LoggingSeverity::Error, QString(), tr( "the command is not sent: no engine is connected" ) );
		return;
	}
	if ( static_cast<size_t>( bytes.size() ) > wire::MAX_COMMAND_TEXT )
	{
		Report( LoggingSeverity::Error, QString(),
			tr( "the command is not sent: it is %1 bytes long, the limit is %2" )
				.arg( bytes.size() )
				.arg( wire::MAX_COMMAND_TEXT ) );
		return;
	}
	const auto nLength = static_cast<uint32_t>( bytes.size() );
	auto *pBuffer = static_cast<uint8_t *>( g_pMemAlloc->Alloc( nLength ) );
	std::memcpy( pBuffer, bytes.constData(), nLength );
	if ( !pConnection->SendChunk( wire::CHUNK_COMMAND, wire::CHUNK_VERSION, nLength, pBuffer ) )
		Report( LoggingSeverity::Error, QString(), tr( "the command is not sent: the engine does not read" ) );
}

ITesselConnection *CTesselHost::GetCurrentConnection()
{
	return m_pOpenedFor ? m_pOpenedFor : m_pConnections->Current();
}

bool CTesselHost::IsDarkStyle() const
{
	return IsDarkStyleActive();
}

float CTesselHost::GetUIScale() const
{
	return ScreenUIScale();
}

// What sub-tools show is saved while it is there; then their connections end, which deletes their windows while engines
// can still be told to stop; only then do they shut down.
void CTesselHost::ShutDown()
{
	if ( std::exchange( m_bShutDown, true ) )
		return;
	m_pScreenshot.reset();
	m_pUnattendedBoxes.reset();
	if ( m_bStarted )
	{
		// Nobody will read the console any more.
		Logging_AddListener( PrintToErrorOutput, nullptr );
		m_pWindow->WriteSettings( m_Settings );
		m_pSubTools->SaveSettings( m_Settings.SubTools() );
		m_Settings.Save();
		Logging_RemoveListener( PrintToErrorOutput, nullptr );
	}
	m_pConnections->RemoveAll();
	for ( const std::unique_ptr<CRecordingConnection> &pRecording : m_Recordings )
		m_pSubTools->ConnectionEnded( pRecording.get() );
	m_pSubTools->ShutDown();
	m_pDemo.reset();
}

void RegisterImages()
{
	Q_INIT_RESOURCE( images );
	// Where only text is larger (and not every pixel), pictures have to grow by themselves.
	const bool bLarge = ScreenUIScale() > 1.5f;
	QDir::addSearchPath(
		QStringLiteral( "game" ), bLarge ? QStringLiteral( ":/game_large" ) : QStringLiteral( ":/game" ) );
}
