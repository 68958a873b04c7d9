// Tessel: connects to running engine processes and shows what they send.
#include <QApplication>

#include <cstdio>
#include <utility>
#include <vector>

#include "commandline.h"
#include "signalwatcher.h"
#include "tesselhost.h"

namespace
{
constexpr int STATUS_FAILED = 1;
constexpr int STATUS_WRONG_ARGUMENTS = 2;

QStringList ToStringList( int nArguments, char **ppArguments )
{
	QStringList arguments;
	for ( int i = 0; i < nArguments; i++ )
		arguments += QString::fromLocal8Bit( ppArguments[i] );
	return arguments;
}

// A picture needs no display; a console does, and says so itself where the toolkit would abort.
bool ChoosePlatform( const CommandLineOptions &options )
{
	const bool bDisplay = !qEnvironmentVariableIsEmpty( "DISPLAY" ) ||
						  !qEnvironmentVariableIsEmpty( "WAYLAND_DISPLAY" ) ||
						  !qEnvironmentVariableIsEmpty( "QT_QPA_PLATFORM" );
	if ( !bDisplay && !options.m_ScreenshotFile.isEmpty() )
		qputenv( "QT_QPA_PLATFORM", "offscreen" );
	return bDisplay || !options.m_ScreenshotFile.isEmpty();
}

CConsoleLog *g_pLog = nullptr;
std::vector<std::pair<LoggingSeverity, QString>> g_EarlyMessages; // of the time before there is a log

void LogQtMessage( LoggingSeverity severity, const QString &text )
{
	g_pLog->Add( severity, QStringLiteral( "Qt" ), text );
}

// The process ends with it. What came before may say why.
void PrintFatalMessage( const QString &text )
{
	for ( const auto &[severity, early] : g_EarlyMessages )
		std::fprintf( stderr, "tessel: Qt: %s\n", qUtf8Printable( early ) );
	std::fprintf( stderr, "tessel: Qt: %s\n", qUtf8Printable( text ) );
}

// The platform without a screen says that it has no windows to move; without a folder for the session's files the
// toolkit takes another, and says so.
bool IsOfNoMatter( const QString &text )
{
	return text.startsWith( QLatin1String( "This plugin does not support" ) ) ||
		   text.startsWith( QLatin1String( "QStandardPaths: XDG_RUNTIME_DIR not set" ) );
}

// What the toolkit complains about goes to the console like everything else.
void OnQtMessage( QtMsgType type, const QMessageLogContext &, const QString &text )
{
	if ( type == QtFatalMsg )
		return PrintFatalMessage( text );
	if ( IsOfNoMatter( text ) )
		return;
	const bool bWarning = type != QtDebugMsg && type != QtInfoMsg;
	const LoggingSeverity severity = bWarning ? LoggingSeverity::Warning : LoggingSeverity::Message;
	if ( g_pLog )
		LogQtMessage( severity, text );
	else
		g_EarlyMessages.emplace_back( severity, text );
}

void SetLog( CConsoleLog &log )
{
	g_pLog = &log;
	for ( const auto &[severity, text] : std::exchange( g_EarlyMessages, {} ) )
		LogQtMessage( severity, text );
}

// Where no desktop chooses a font the toolkit's own choice is a large one.
void SetDefaultFont()
{
	if ( QGuiApplication::platformName() != QLatin1String( "offscreen" ) )
		return;
	QFont font = QApplication::font();
	font.setPointSize( 9 );
	QApplication::setFont( font );
}

int Run( const CommandLineOptions &options )
{
	CSignalWatcher signalWatcher;
	CTesselHost host( options );
	SetLog( host.Log() );
	QObject::connect( &host, &CTesselHost::Finished, qApp, &QCoreApplication::exit, Qt::QueuedConnection );
	QObject::connect( &signalWatcher, &CSignalWatcher::Stopped, qApp, []() { QCoreApplication::exit( 0 ); } );
	QString error;
	if ( !host.Start( error ) )
	{
		std::fprintf( stderr, "tessel: %s\n", qUtf8Printable( error ) );
		qInstallMessageHandler( nullptr );
		return STATUS_WRONG_ARGUMENTS;
	}
	const int nStatus = QApplication::exec();
	host.ShutDown();
	qInstallMessageHandler( nullptr );
	return nStatus;
}
} // namespace

int main( int nArguments, char **ppArguments )
{
	const CommandLineResult commandLine = ParseCommandLine( ToStringList( nArguments, ppArguments ) );
	if ( commandLine.m_Kind == CommandLineResult::Kind::Print )
	{
		std::fputs( qUtf8Printable( commandLine.m_Text ), stdout );
		return 0;
	}
	if ( commandLine.m_Kind == CommandLineResult::Kind::Wrong )
	{
		std::fprintf( stderr, "%s\n", qUtf8Printable( commandLine.m_Text ) );
		return STATUS_WRONG_ARGUMENTS;
	}
	if ( !ChoosePlatform( commandLine.m_Options ) )
	{
		std::fputs( "tessel: there is no display (DISPLAY and WAYLAND_DISPLAY are not set)\n", stderr );
		return STATUS_FAILED;
	}
	qInstallMessageHandler( OnQtMessage );
	QCoreApplication::setAttribute( Qt::AA_EnableHighDpiScaling );
	QCoreApplication::setAttribute( Qt::AA_UseHighDpiPixmaps );
	QGuiApplication::setHighDpiScaleFactorRoundingPolicy( Qt::HighDpiScaleFactorRoundingPolicy::PassThrough );
	// The toolkit would take options such as --style for its own: it gets the program's name alone.
	int nProgramOnly = 1;
	QApplication application( nProgramOnly, ppArguments );
	QCoreApplication::setApplicationName( QStringLiteral( "tessel" ) );
	QCoreApplication::setApplicationVersion( QStringLiteral( TESSEL_VERSION ) );
	QApplication::setQuitOnLastWindowClosed( false );
	SetDefaultFont();
	RegisterImages();
	return Run( commandLine.m_Options );
}
