#include "network/child.h"

#include <QDir>

#include <algorithm>
#include <chrono>
#include <csignal>

#include "host/waitfor.h"

CChild::CChild()
{
	m_Process.setProcessChannelMode( QProcess::ForwardedErrorChannel );
	QObject::connect( &m_Process, &QProcess::readyReadStandardOutput, &m_Process, [this]() { OnOutput(); } );
}

CChild::~CChild()
{
	if ( m_Process.state() == QProcess::NotRunning )
		return;
	m_Process.kill();
	m_Process.waitForFinished( PROCESS_PATIENCE_MS );
}

void CChild::Start( const QStringList &command )
{
	m_Process.start( command.first(), command.mid( 1 ) );
}

void CChild::SetVariable( const QString &name, const QString &value )
{
	QProcessEnvironment environment = m_Process.processEnvironment();
	if ( environment.isEmpty() )
		environment = QProcessEnvironment::systemEnvironment();
	environment.insert( name, value );
	m_Process.setProcessEnvironment( environment );
}

void CChild::OnOutput()
{
	while ( m_Process.canReadLine() )
	{
		m_Lines.push_back( QString::fromUtf8( m_Process.readLine() ).trimmed() );
		m_Times.push_back( Now() );
	}
}

qint64 CChild::Now()
{
	using namespace std::chrono;
	return duration_cast<milliseconds>( steady_clock::now().time_since_epoch() ).count();
}

int CChild::WaitForLine( const QString &prefix, int nFrom, int nMilliseconds )
{
	int nLine = nFrom;
	const auto isThere = [&]()
	{
		while ( nLine < Count() && !m_Lines[static_cast<size_t>( nLine )].startsWith( prefix ) )
			nLine++;
		return nLine < Count();
	};
	return WaitFor( isThere, nMilliseconds ) ? nLine : -1;
}

bool CChild::WaitForLines( int nCount, int nMilliseconds )
{
	return WaitFor( [&]() { return Count() >= nCount; }, nMilliseconds );
}

QString CChild::Last( const QString &prefix ) const
{
	for ( auto line = m_Lines.rbegin(); line != m_Lines.rend(); ++line )
		if ( line->startsWith( prefix ) )
			return line->mid( prefix.size() );
	return {};
}

int CChild::CountOf( const QString &prefix, int nFrom ) const
{
	return static_cast<int>( std::count_if( m_Lines.begin() + nFrom, m_Lines.end(),
		[&prefix]( const QString &line ) { return line.startsWith( prefix ); } ) );
}

QString CChild::Text() const
{
	QString text;
	for ( const QString &line : m_Lines )
		text += line + '\n';
	return text;
}

void CChild::Signal( int nSignal ) const
{
	kill( static_cast<pid_t>( m_Process.processId() ), nSignal );
}

bool CChild::EndAndWait( int nSignal )
{
	Signal( nSignal );
	return WaitFor( [this]() { return m_Process.state() == QProcess::NotRunning; }, PROCESS_PATIENCE_MS );
}

bool CChild::CloseInputAndWait()
{
	m_Process.closeWriteChannel();
	return WaitFor( [this]() { return m_Process.state() == QProcess::NotRunning; }, PROCESS_PATIENCE_MS ) &&
		   m_Process.exitStatus() == QProcess::NormalExit && m_Process.exitCode() == 0;
}

int CChild::OpenDescriptors() const
{
	const QDir folder( QStringLiteral( "/proc/%1/fd" ).arg( ProcessId() ) );
	return static_cast<int>( folder.entryList( QDir::Files | QDir::System | QDir::NoDotAndDotDot ).size() );
}

QString WaitForAddress( CChild &engine, int nFrom )
{
	const QString prefix = QStringLiteral( "listening on " );
	const int nLine = engine.WaitForLine( prefix, nFrom, PROCESS_PATIENCE_MS );
	return nLine < 0 ? QString() : engine.Lines()[static_cast<size_t>( nLine )].mid( prefix.size() );
}
