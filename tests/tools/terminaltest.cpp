// The built program with a terminal as its standard error.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <vector>

namespace
{
// kesto, which reads what is sent here as its standard input and complains to a terminal whose other end is here, too.
class CKestoOnATerminal
{
public:
	explicit CKestoOnATerminal( std::vector<std::string> words )
	{
		m_nTerminal = posix_openpt( O_RDWR | O_NOCTTY | O_CLOEXEC );
		int sockets[2];
		EXPECT_EQ( grantpt( m_nTerminal ) | unlockpt( m_nTerminal ), 0 );
		EXPECT_EQ( socketpair( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets ), 0 );
		m_nInput = sockets[0];
		posix_spawn_file_actions_t actions;
		posix_spawn_file_actions_init( &actions );
		posix_spawn_file_actions_adddup2( &actions, sockets[1], STDIN_FILENO );
		posix_spawn_file_actions_addopen( &actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0 );
		posix_spawn_file_actions_addopen( &actions, STDERR_FILENO, ptsname( m_nTerminal ), O_RDWR | O_NOCTTY, 0 );
		words.insert( words.begin(), KESTO_PROGRAM );
		std::vector<char *> arguments;
		for ( std::string &word : words )
			arguments.push_back( word.data() );
		arguments.push_back( nullptr );
		EXPECT_EQ( posix_spawn( &m_nProcess, KESTO_PROGRAM, &actions, nullptr, arguments.data(), environ ), 0 );
		posix_spawn_file_actions_destroy( &actions );
		close( sockets[1] );
	}
	~CKestoOnATerminal()
	{
		EndInput();
		close( m_nTerminal );
	}
	CKestoOnATerminal( const CKestoOnATerminal & ) = delete;
	CKestoOnATerminal &operator=( const CKestoOnATerminal & ) = delete;

	void Send( const std::string &bytes ) const
	{
		EXPECT_EQ( send( m_nInput, bytes.data(), bytes.size(), MSG_NOSIGNAL ), static_cast<ssize_t>( bytes.size() ) );
	}

	void EndInput()
	{
		if ( m_nInput >= 0 )
			close( m_nInput );
		m_nInput = -1;
	}

	// Waits a moment for more of what is on the terminal.
	void Look()
	{
		pollfd waiting{ m_nTerminal, POLLIN, 0 };
		char text[4096];
		if ( poll( &waiting, 1, 10 ) > 0 && ( waiting.revents & POLLIN ) )
			if ( const ssize_t nRead = read( m_nTerminal, text, sizeof( text ) ); nRead > 0 )
				m_Text.append( text, static_cast<size_t>( nRead ) );
	}

	int WaitForEnd()
	{
		int nStatus = -1;
		while ( waitpid( m_nProcess, &nStatus, WNOHANG ) == 0 )
			Look();
		Look();
		return WIFEXITED( nStatus ) ? WEXITSTATUS( nStatus ) : -1;
	}

	std::string m_Text;

private:
	int m_nTerminal = -1;
	int m_nInput = -1;
	pid_t m_nProcess = 0;
};
} // namespace

// Sends pieces until there is progress to be seen, however fast the machine is, and expects it cleared at the end.
static void ExpectProgress( const std::vector<std::string> &words, const std::string &front, const std::string &piece )
{
	SCOPED_TRACE( words[0] );
	CKestoOnATerminal kesto( words );
	kesto.Send( front );
	const auto end = std::chrono::steady_clock::now() + std::chrono::seconds( 60 );
	while ( kesto.m_Text.find( "Reading -" ) == std::string::npos )
	{
		ASSERT_LT( std::chrono::steady_clock::now(), end ) << "there is no progress to be seen: " << kesto.m_Text;
		kesto.Send( piece );
		kesto.Look();
	}
	kesto.EndInput();
	EXPECT_EQ( kesto.WaitForEnd(), 0 );
	EXPECT_TRUE( kesto.m_Text.ends_with( "\r         \r" ) ) << "nine blanks over it";
	EXPECT_EQ( kesto.m_Text.find( '\n' ), std::string::npos );
}

TEST( KestoProgram, ShowsProgressOnATerminalAndClearsItAtTheEnd )
{
	const std::string header( "\1\0\0\0\0\0\0\0", 8 );
	const std::string frame( "\0\0\0\0\0\4", 6 );
	for ( const char *pCommand : { "info", "dump", "frames", "nodes" } )
		ExpectProgress( { pCommand, "-" }, header, frame );
	ExpectProgress( { "repair", "-", "-" }, header, frame );
	ExpectProgress( { "check", "-", "--frame", "<=1" }, header, frame );
	ExpectProgress( { "convert", "-", "-", "--to", "csv" }, header, frame );
	ExpectProgress( { "convert", "-", "-", "--to", "kesto" }, "a 4\n", "b;c 8\n" );
}
