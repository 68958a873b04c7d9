// The demo engine as a child of the console, and the signals that end the console.
#include <gmock/gmock.h>

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <csignal>
#include <sys/stat.h>

#include "demoprocess.h"
#include "signalwatcher.h"
#include "waitfor.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace
{
class DemoProcess : public testing::Test
{
protected:
	DemoProcess()
		: m_Demo( "/bin/sh" )
	{
		QObject::connect( &m_Demo, &CDemoProcess::Printed, &m_Demo,
			[this]( LoggingSeverity, const QString &line ) { m_Lines += line; } );
		QObject::connect( &m_Demo, &CDemoProcess::Listening, &m_Demo,
			[this]( const TargetAddress &address ) { m_Addresses.push_back( address ); } );
	}
	CDemoProcess m_Demo;
	QStringList m_Lines;
	std::vector<TargetAddress> m_Addresses;
};

TEST_F( DemoProcess, TellsWhereTheChildListens )
{
	m_Demo.Start( { "-c", "echo hello; echo 'listening on 127.0.0.1:4321'; echo 'listening on 1.1.1.1:1'; exec cat" } );
	ASSERT_TRUE( WaitFor( [this]() { return !m_Addresses.empty() && m_Lines.size() >= 2; } ) );
	EXPECT_THAT( m_Addresses, ElementsAre( TargetAddress{ "127.0.0.1", 4321 } ) );
	EXPECT_THAT( m_Lines, ElementsAre( "hello", "listening on 1.1.1.1:1" ) );
}

TEST_F( DemoProcess, KeepsTheLinesOfTheChildWholeHoweverTheyArrive )
{
	const QTemporaryDir folder;
	const QByteArray pipe = QFile::encodeName( folder.filePath( "go_on" ) );
	ASSERT_EQ( mkfifo( pipe.constData(), 0600 ), 0 );
	m_Demo.Start( { "-c",
		"printf 'one\\ntw' >&2; echo 'listening on 127.0.0.1:4321'; read line < \"$0\"; printf 'o\\nno end' >&2",
		pipe } );
	ASSERT_TRUE( WaitFor( [this]() { return !m_Addresses.empty() && !m_Lines.isEmpty(); } ) );
	QSignalSpy failed( &m_Demo, &CDemoProcess::Failed );
	QFile goOn( pipe );
	ASSERT_TRUE( goOn.open( QIODevice::WriteOnly ) );
	goOn.write( "\n" );
	goOn.close();
	ASSERT_TRUE( WaitFor( [&]() { return failed.count() > 0; } ) );
	EXPECT_THAT( m_Lines, ElementsAre( "one", "two", "no end" ) );
}

TEST_F( DemoProcess, FailsWithALineWhenTheChildEndsOrDoesNotStart )
{
	QSignalSpy failed( &m_Demo, &CDemoProcess::Failed );
	m_Demo.Start( { "-c", "exit 3" } );
	ASSERT_TRUE( WaitFor( [&]() { return failed.count() > 0; } ) );
	EXPECT_THAT( failed[0][0].toString().toStdString(), HasSubstr( "/bin/sh ended with status 3" ) );
	CDemoProcess absent( "/no/such/engine" );
	QSignalSpy absentFailed( &absent, &CDemoProcess::Failed );
	absent.Start();
	ASSERT_TRUE( WaitFor( [&]() { return absentFailed.count() > 0; } ) );
	EXPECT_THAT( absentFailed[0][0].toString().toStdString(), HasSubstr( "cannot start /no/such/engine" ) );
}

TEST_F( DemoProcess, TakesItsTokenFromTheFileThatTheConsoleWasGiven )
{
	qputenv( "SHOWBUDGET_TOKEN", "from the environment" );
	m_Demo.UseTokenFile( "/some/file" );
	m_Demo.Start( { "-c", "echo \"file=$SHOWBUDGET_TOKEN_FILE token=$SHOWBUDGET_TOKEN\"; exec cat" } );
	qunsetenv( "SHOWBUDGET_TOKEN" );
	ASSERT_TRUE( WaitFor( [this]() { return !m_Lines.isEmpty(); } ) );
	EXPECT_THAT( m_Lines, ElementsAre( "file=/some/file token=" ) );
}

TEST( DemoProcessEnd, EndsTheChildWithTheObject )
{
	qint64 nProcessId = 0;
	{
		CDemoProcess demo( "/bin/sh" );
		bool bListening = false;
		QObject::connect( &demo, &CDemoProcess::Listening, &demo, [&bListening]() { bListening = true; } );
		demo.Start( { "-c", "echo 'listening on 127.0.0.1:4321'; exec cat" } );
		ASSERT_TRUE( WaitFor( [&bListening]() { return bListening; } ) );
		nProcessId = demo.ProcessId();
		ASSERT_GT( nProcessId, 0 );
		EXPECT_EQ( kill( static_cast<pid_t>( nProcessId ), 0 ), 0 );
	}
	EXPECT_NE( kill( static_cast<pid_t>( nProcessId ), 0 ), 0 );
}

TEST( SignalWatcher, MakesAnEventOfASignal )
{
	CSignalWatcher watcher;
	QSignalSpy stopped( &watcher, &CSignalWatcher::Stopped );
	raise( SIGTERM );
	raise( SIGINT );
	ASSERT_TRUE( WaitFor( [&]() { return stopped.count() == 2; } ) );
	EXPECT_EQ( stopped[0][0].toInt(), SIGTERM );
	EXPECT_EQ( stopped[1][0].toInt(), SIGINT );
}
} // namespace
