#include "demoprocess.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace
{
constexpr int OUTPUT_DEADLINE = 60000; // ms; only a fault reaches it

std::vector<char *> PointersTo( std::vector<std::string> &texts )
{
	std::vector<char *> pointers;
	for ( std::string &text : texts )
		pointers.push_back( text.data() );
	pointers.push_back( nullptr );
	return pointers;
}
} // namespace

CDemoProcess::CDemoProcess( const std::vector<std::string> &arguments, const std::vector<std::string> &variables )
{
	std::vector<std::string> command{ DEMO_ENGINE };
	command.insert( command.end(), arguments.begin(), arguments.end() );
	std::vector<std::string> environment = variables;
	for ( char **ppVariable = environ; *ppVariable; ppVariable++ )
		environment.emplace_back( *ppVariable );

	int output[2];
	EXPECT_EQ( pipe2( output, O_CLOEXEC ), 0 );
	m_nOutput = output[0];
	posix_spawn_file_actions_t actions;
	posix_spawn_file_actions_init( &actions );
	posix_spawn_file_actions_adddup2( &actions, output[1], STDOUT_FILENO );
	posix_spawn_file_actions_adddup2( &actions, output[1], STDERR_FILENO );
	EXPECT_EQ( posix_spawn( &m_nProcess, DEMO_ENGINE, &actions, nullptr, PointersTo( command ).data(),
				   PointersTo( environment ).data() ),
		0 );
	posix_spawn_file_actions_destroy( &actions );
	close( output[1] );
}

CDemoProcess::~CDemoProcess()
{
	if ( m_nProcess > 0 )
	{
		Signal( SIGKILL );
		Wait();
	}
	close( m_nOutput );
}

bool CDemoProcess::ReadSome()
{
	pollfd output{ m_nOutput, POLLIN, 0 };
	if ( poll( &output, 1, OUTPUT_DEADLINE ) <= 0 )
	{
		ADD_FAILURE() << "the demo engine prints nothing more after \"" << m_Output << '"';
		return false;
	}
	char piece[4096];
	const ssize_t nRead = read( m_nOutput, piece, sizeof( piece ) );
	if ( nRead > 0 )
		m_Output.append( piece, static_cast<size_t>( nRead ) );
	return nRead > 0;
}

void CDemoProcess::WaitForOutput( const std::string &text )
{
	while ( m_Output.find( text ) == std::string::npos )
	{
		if ( !ReadSome() )
		{
			ADD_FAILURE() << '"' << text << "\" was not printed, but \"" << m_Output << '"';
			return;
		}
	}
}

void CDemoProcess::Signal( int nSignal ) const
{
	kill( m_nProcess, nSignal );
}

int CDemoProcess::Wait()
{
	while ( ReadSome() )
	{
	}
	int nStatus = 0;
	EXPECT_EQ( waitpid( m_nProcess, &nStatus, 0 ), m_nProcess );
	m_nProcess = -1;
	return WIFSIGNALED( nStatus ) ? -WTERMSIG( nStatus ) : WEXITSTATUS( nStatus );
}
