// The program as a user starts it.
#include <gmock/gmock.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>

#include "testpeer.h"

using testing::HasSubstr;

namespace
{
class Program : public testing::Test
{
protected:
	Program()
	{
		// For a build with sanitizers: whole stacks, by which allocations of the platform's start-up are known.
		m_Environment.insert( "ASAN_OPTIONS", "fast_unwind_on_malloc=0" );
		m_Process.setProcessEnvironment( m_Environment );
	}
	void HideDisplay()
	{
		for ( const char *pName : { "DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM" } )
			m_Environment.remove( pName );
		m_Process.setProcessEnvironment( m_Environment );
	}

	bool Run( const QStringList &arguments )
	{
		m_Process.start( TESSEL_PROGRAM, arguments );
		return WaitUntilEnded();
	}
	bool WaitUntilEnded()
	{
		return WaitFor( [this]() { return m_Process.state() == QProcess::NotRunning; }, 60000 );
	}
	std::string Output() { return m_Process.readAllStandardOutput().toStdString(); }
	std::string ErrorOutput() { return m_Process.readAllStandardError().toStdString(); }

	QTemporaryDir m_Folder;
	QProcessEnvironment m_Environment = QProcessEnvironment::systemEnvironment();
	QProcess m_Process;
};

TEST_F( Program, PrintsHelpAndVersionWithStatus0 )
{
	ASSERT_TRUE( Run( { "--help" } ) );
	EXPECT_EQ( m_Process.exitCode(), 0 );
	EXPECT_THAT( Output(), HasSubstr( "Usage: tessel" ) );
	ASSERT_TRUE( Run( { "--version" } ) );
	EXPECT_EQ( m_Process.exitCode(), 0 );
	EXPECT_THAT( Output(), testing::StartsWith( "tessel " ) );
}

TEST_F( Program, EndsWithStatus2AndOneLineForAWrongValue )
{
	ASSERT_TRUE( Run( { "--style", "pink" } ) );
	EXPECT_EQ( m_Process.exitStatus(), QProcess::NormalExit );
	EXPECT_EQ( m_Process.exitCode(), 2 );
	const std::string error = ErrorOutput();
	EXPECT_THAT( error, testing::StartsWith( "tessel: --style" ) );
	EXPECT_EQ( std::count( error.begin(), error.end(), '\n' ), 1 );
}

TEST_F( Program, EndsWithStatus2ForASubToolThatThereIsNot )
{
	// The toolkit complains of that, which is no matter here.
	m_Environment.remove( "XDG_RUNTIME_DIR" );
	m_Process.setProcessEnvironment( m_Environment );
	ASSERT_TRUE( Run( { "--open", "Nothing", "--settings", m_Folder.filePath( "s" ) } ) );
	EXPECT_EQ( m_Process.exitCode(), 2 );
	EXPECT_EQ( ErrorOutput(), "tessel: there is no sub-tool \"Nothing\" (loaded: \"Show Budget\")\n" );
}

TEST_F( Program, EndsWithStatus2ForATokenFileThatCannotBeRead )
{
	ASSERT_TRUE( Run( { "--token-file", "/no/such/token", "--settings", m_Folder.filePath( "s" ) } ) );
	EXPECT_EQ( m_Process.exitCode(), 2 );
	EXPECT_THAT( ErrorOutput(), HasSubstr( "tessel: cannot read the token file /no/such/token" ) );
}

TEST_F( Program, EndsWithStatus1AndALineWithoutADisplay )
{
	HideDisplay();
	ASSERT_TRUE( Run( {} ) );
	EXPECT_EQ( m_Process.exitCode(), 1 );
	EXPECT_THAT( ErrorOutput(), HasSubstr( "tessel: there is no display" ) );
}

TEST_F( Program, TakesAPictureWithoutADisplay )
{
	HideDisplay();
	const QString picture = m_Folder.filePath( "console.png" );
	ASSERT_TRUE( Run(
		{ "--screenshot", picture, "--what", "console", "--after", "0", "--settings", m_Folder.filePath( "s" ) } ) );
	EXPECT_EQ( m_Process.exitCode(), 0 ) << ErrorOutput();
	EXPECT_TRUE( QFile::exists( picture ) );
}

TEST_F( Program, SaysOnTheErrorOutputThatItCouldNotSaveItsSettings )
{
	// Once the console is closed nobody reads it.
	ASSERT_TRUE( Run( { "--screenshot", m_Folder.filePath( "console.png" ), "--what", "console", "--after", "0",
		"--settings", "/proc/nowhere/tessel.settings" } ) );
	EXPECT_EQ( m_Process.exitCode(), 0 );
	EXPECT_THAT( ErrorOutput(), testing::StartsWith( "tessel: The settings are not saved: /proc/nowhere/" ) );
}

TEST_F( Program, EndsCleanlyAndSavesWhenItIsAskedToStop )
{
	for ( const int nSignal : { SIGTERM, SIGINT } )
	{
		CTestPeer peer;
		peer.GreetWith( HelloBytes() );
		const QString settings = m_Folder.filePath( QString::number( nSignal ) );
		m_Process.start( TESSEL_PROGRAM, { "--connect", peer.Address().ToString(), "--settings", settings } );
		ASSERT_TRUE( peer.WaitForConnection() );
		kill( static_cast<pid_t>( m_Process.processId() ), nSignal );
		ASSERT_TRUE( WaitUntilEnded() );
		EXPECT_EQ( m_Process.exitStatus(), QProcess::NormalExit );
		EXPECT_EQ( m_Process.exitCode(), 0 ) << ErrorOutput();
		EXPECT_TRUE( QFile::exists( settings ) );
	}
}
} // namespace
