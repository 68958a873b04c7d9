#include "demoprocess.h"

#include <QCoreApplication>
#include <QDir>

#include <csignal>
#include <sys/prctl.h>

namespace
{
const QLatin1String LISTENING_PREFIX( "listening on " );
constexpr int END_PATIENCE_MS = 1000;
constexpr qint64 LONGEST_LINE = 65536; // bytes
} // namespace

// Runs in the child between fork and exec.
void CDemoProcess::CChild::setupChildProcess()
{
	prctl( PR_SET_PDEATHSIG, SIGKILL );
}

QString CDemoProcess::DefaultProgram()
{
	return QDir( QCoreApplication::applicationDirPath() ).filePath( QStringLiteral( "demo_engine" ) );
}

CDemoProcess::CDemoProcess( const QString &program, QObject *pParent )
	: QObject( pParent )
	, m_Program( program )
{
	m_Patience.setSingleShot( true );
	m_Patience.setInterval( START_PATIENCE_MS );
	connect( &m_Patience, &QTimer::timeout, this,
		[this]() { emit Failed( tr( "%1 does not say where it listens" ).arg( m_Program ) ); } );
	connect(
		&m_Process, &QProcess::readyReadStandardOutput, this, [this]() { ReadLines( QProcess::StandardOutput ); } );
	connect( &m_Process, &QProcess::readyReadStandardError, this, [this]() { ReadLines( QProcess::StandardError ); } );
	connect( &m_Process, &QProcess::errorOccurred, this, &CDemoProcess::OnError );
	connect( &m_Process, qOverload<int, QProcess::ExitStatus>( &QProcess::finished ), this, &CDemoProcess::OnFinished );
}

CDemoProcess::~CDemoProcess()
{
	m_Process.disconnect( this );
	if ( m_Process.state() == QProcess::NotRunning )
		return;
	m_Process.terminate();
	if ( !m_Process.waitForFinished( END_PATIENCE_MS ) )
	{
		m_Process.kill();
		m_Process.waitForFinished( END_PATIENCE_MS );
	}
}

void CDemoProcess::UseTokenFile( const QString &path )
{
	QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
	environment.remove( QStringLiteral( "SHOWBUDGET_TOKEN" ) );
	environment.insert( QStringLiteral( "SHOWBUDGET_TOKEN_FILE" ), path );
	m_Process.setProcessEnvironment( environment );
}

void CDemoProcess::Start( const QStringList &arguments )
{
	m_bListening = false;
	m_Patience.start();
	m_Process.start( m_Program, arguments );
}

// Whole lines, and at the end what is left. A line that does not end is taken in pieces.
void CDemoProcess::ReadLines( QProcess::ProcessChannel channel )
{
	m_Process.setReadChannel( channel );
	const bool bEnded = m_Process.state() == QProcess::NotRunning;
	while ( m_Process.canReadLine() || m_Process.bytesAvailable() >= LONGEST_LINE ||
			( bEnded && m_Process.bytesAvailable() > 0 ) )
	{
		const QString line = QString::fromUtf8( m_Process.readLine( LONGEST_LINE ) ).trimmed();
		if ( channel == QProcess::StandardOutput )
			OnLine( line );
		else if ( !line.isEmpty() )
			emit Printed( LoggingSeverity::Message, line ); // engines log there; it need not be trouble
	}
}

void CDemoProcess::OnLine( const QString &line )
{
	QString error;
	const bool bTells = !m_bListening && line.startsWith( LISTENING_PREFIX );
	const std::optional<TargetAddress> address =
		bTells ? ParseTargetAddress( line.mid( LISTENING_PREFIX.size() ), error ) : std::nullopt;
	if ( !address )
	{
		emit Printed( LoggingSeverity::Message, line );
		return;
	}
	m_bListening = true;
	m_Patience.stop();
	emit Listening( *address );
}

void CDemoProcess::OnError( QProcess::ProcessError error )
{
	if ( error != QProcess::FailedToStart )
		return;
	m_Patience.stop();
	emit Failed( tr( "cannot start %1: %2" ).arg( m_Program, m_Process.errorString() ) );
}

void CDemoProcess::OnFinished()
{
	m_Patience.stop();
	ReadLines( QProcess::StandardOutput );
	ReadLines( QProcess::StandardError );
	emit Failed( m_Process.exitStatus() == QProcess::CrashExit
					 ? tr( "%1 was killed" ).arg( m_Program )
					 : tr( "%1 ended with status %2" ).arg( m_Program, QString::number( m_Process.exitCode() ) ) );
}
