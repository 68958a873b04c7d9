#include "network/namespaces.h"

#include <QCoreApplication>
#include <QProcess>

#include "network/child.h"

CTwoHosts::~CTwoHosts()
{
	for ( const QString &name : { m_First, m_Second } )
		if ( !name.isEmpty() )
			QProcess::execute( "ip", { "netns", "delete", name } );
}

bool CTwoHosts::SetUp()
{
	const QString suffix = QString::number( QCoreApplication::applicationPid() );
	const QString first = "showbudget-a-" + suffix;
	const QString second = "showbudget-b-" + suffix;
	if ( !Run( { "ip", "netns", "add", first } ) )
		return false;
	m_First = first;
	if ( !Run( { "ip", "netns", "add", second } ) )
		return false;
	m_Second = second;
	return Run( { "ip", "-n", first, "link", "set", "lo", "up" } ) &&
		   Run( { "ip", "-n", first, "link", "add", "cable", "type", "veth", "peer", "name", "cable", "netns",
			   second } ) &&
		   Run( { "ip", "-n", first, "address", "add", FirstAddress() + "/24", "dev", "cable" } ) &&
		   Run( { "ip", "-n", second, "address", "add", "10.77.0.2/24", "dev", "cable" } ) &&
		   Run( { "ip", "-n", second, "link", "set", "cable", "up" } ) && SetLink( true );
}

bool CTwoHosts::SetLink( bool bUp )
{
	return Run( { "ip", "-n", m_First, "link", "set", "cable", bUp ? "up" : "down" } );
}

bool CTwoHosts::SetPortsOfFirst( int nLowest, int nHighest )
{
	return Run( OnFirst( { "sh", "-c",
		QStringLiteral( "echo %1 %2 > /proc/sys/net/ipv4/ip_local_port_range" ).arg( nLowest ).arg( nHighest ) } ) );
}

QStringList CTwoHosts::In( const QString &name, const QStringList &command )
{
	return QStringList{ "ip", "netns", "exec", name } + command;
}

bool CTwoHosts::Run( const QStringList &command )
{
	QProcess process;
	process.setProcessChannelMode( QProcess::MergedChannels );
	process.start( command.first(), command.mid( 1 ) );
	if ( process.waitForFinished( PROCESS_PATIENCE_MS ) && process.exitStatus() == QProcess::NormalExit &&
		 process.exitCode() == 0 )
		return true;
	m_Problem = QStringLiteral( "%1: %2" )
					.arg( command.join( ' ' ), process.error() == QProcess::UnknownError
												   ? QString::fromUtf8( process.readAll() ).trimmed()
												   : process.errorString() );
	return false;
}
