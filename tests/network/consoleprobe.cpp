// The console as a process that says what it shows: one line on the output for each change. Its only argument is the
// engine's address; a line "start" on its input presses "Start Sampling", and it ends when the input ends.
//
//	state N             the connection's state, 3 for connected
//	stalled 0|1
//	dropped N           frames that the engine left out
//	samples N           in the Show Budget window
//	window TEXT         its state label
//	report TEXT         a line about the connection
#include <QApplication>
#include <QMainWindow>
#include <QSocketNotifier>
#include <QTemporaryDir>

#include <cstdio>
#include <map>

#include <unistd.h>

#include "endtoend/budgetwindow.h"
#include "targetconnection.h"
#include "tesselhost.h"

namespace
{
class CProbe
{
public:
	explicit CProbe( CTesselHost &host )
		: m_Host( host )
	{
		QObject::connect( &host.Connections(), &CConnectionList::Reported, &host,
			[]( CTargetConnection *, LoggingSeverity, const QString &text ) { Say( "report", text ); } );
		QObject::connect( &host.Connections(), &CConnectionList::Changed, &host, [this]() { SayConnection(); } );
		QObject::connect( &m_Look, &QTimer::timeout, &host, [this]() { SayWindow(); } );
		m_Look.start( 20 );
	}

	void OnInput()
	{
		char bytes[256];
		const ssize_t nRead = read( STDIN_FILENO, bytes, sizeof( bytes ) );
		if ( nRead <= 0 )
			QCoreApplication::quit();
		else if ( QByteArray( bytes, static_cast<int>( nRead ) ).contains( "start" ) && FindBudgetWindow() )
			QMetaObject::invokeMethod( FindBudgetWindow(), "StartSampling" );
	}

private:
	static void Say( const char *pWhat, const QString &text )
	{
		std::printf( "%s %s\n", pWhat, qUtf8Printable( text ) );
		std::fflush( stdout );
	}

	void SayIfNew( const char *pWhat, const QString &text )
	{
		if ( std::exchange( m_Said[pWhat], text ) != text )
			Say( pWhat, text );
	}

	void SayConnection()
	{
		const CTargetConnection &connection = *m_Host.Connections().At( 0 );
		SayIfNew( "state", QString::number( connection.GetState() ) );
		SayIfNew( "stalled", QString::number( connection.IsStalled() ) );
		SayIfNew( "dropped", QString::number( connection.DroppedFrames() ) );
	}

	void SayWindow()
	{
		SayIfNew( "samples", QString::number( BudgetWindowSamples() ) );
		for ( const char *pState : { "Running.", "Stopped." } )
			if ( !BudgetWindowStatus( pState ).isEmpty() )
				SayIfNew( "window", pState );
	}

	CTesselHost &m_Host;
	QTimer m_Look;
	std::map<std::string, QString> m_Said;
};
} // namespace

int main( int nArguments, char **ppArguments )
{
	qputenv( "QT_QPA_PLATFORM", "offscreen" );
	const QApplication application( nArguments, ppArguments );
	const QTemporaryDir folder;
	CommandLineOptions options;
	QString error;
	const std::optional<TargetAddress> address = ParseTargetAddress( application.arguments().value( 1 ), error );
	if ( !address )
	{
		std::fprintf( stderr, "console_probe: %s\n", qUtf8Printable( error ) );
		return 2;
	}
	options.m_Connect.push_back( *address );
	options.m_Open.append( QStringLiteral( "Show Budget" ) );
	options.m_SettingsFile = folder.filePath( QStringLiteral( "tessel.settings" ) );
	RegisterImages();
	CTesselHost host( options );
	CProbe probe( host );
	QSocketNotifier input( STDIN_FILENO, QSocketNotifier::Read );
	QObject::connect( &input, &QSocketNotifier::activated, &application, [&probe]() { probe.OnInput(); } );
	if ( !host.Start( error ) )
	{
		std::fprintf( stderr, "console_probe: %s\n", qUtf8Printable( error ) );
		return 1;
	}
	return QApplication::exec();
}
