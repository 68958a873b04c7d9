// The built program with a terminal.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/recordings/recordingwriter.h"
#include "tests/tools/kestorun.h"
#include "tools/terminalbuffer.h"

namespace
{
// kesto, which reads what is sent here as its standard input and has a terminal, whose other end is here, too, as its
// standard output or error; the other one goes nowhere.
class CKestoOnATerminal
{
public:
	CKestoOnATerminal( std::vector<std::string> words, int nShown )
	{
		m_nTerminal = posix_openpt( O_RDWR | O_NOCTTY | O_CLOEXEC );
		int sockets[2];
		EXPECT_EQ( grantpt( m_nTerminal ) | unlockpt( m_nTerminal ), 0 );
		EXPECT_EQ( socketpair( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets ), 0 );
		m_nInput = sockets[0];
		posix_spawn_file_actions_t actions;
		posix_spawn_file_actions_init( &actions );
		posix_spawn_file_actions_adddup2( &actions, sockets[1], STDIN_FILENO );
		for ( const int nOutput : { STDOUT_FILENO, STDERR_FILENO } )
			posix_spawn_file_actions_addopen(
				&actions, nOutput, nOutput == nShown ? ptsname( m_nTerminal ) : "/dev/null", O_RDWR | O_NOCTTY, 0 );
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
	CKestoOnATerminal kesto( words, STDERR_FILENO );
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

TEST( KestoProgram, ShowsNamesOnATerminalThatDoesNotObeyThem )
{
	const CTestFolder folder;
	const std::string path = folder.Path( "hostile.kesto" );
	const CRecordingWriter recording = CRecordingWriter()
										   .Header( 0 )
										   .BeginFrame()
										   .Node( 0,
											   "a\x1B[2Jb\x9B"
											   "1m\tc\xE9",
											   1 )
										   .BeginTimings()
										   .Entry( 1, 10 )
										   .Entry( 1, 10 )
										   .EndFrame();
	folder.Write( "hostile.kesto", recording.m_Bytes );
	for ( const std::vector<std::string> &words : { std::vector<std::string>{ "nodes", path },
			  { "convert", path, "-", "--to", "folded" }, { "convert", path, "-", "--to", "csv" } } )
	{
		SCOPED_TRACE( words[0] + " " + words.back() );
		CKestoOnATerminal kesto( words, STDOUT_FILENO );
		EXPECT_EQ( kesto.WaitForEnd(), 0 );
		EXPECT_NE( kesto.m_Text.find( "a?[2Jb?1m" ), std::string::npos ) << kesto.m_Text;
		EXPECT_NE( kesto.m_Text.find( "c\xC3\xA9" ), std::string::npos ) << kesto.m_Text;
		EXPECT_EQ( kesto.m_Text.find( '\x1B' ), std::string::npos );
		// Elsewhere they stay as they are.
		EXPECT_NE( RunKestoProgram( words ).m_Output.find( "a\x1B[2Jb\xC2\x9B"
														   "1m\tc\xC3\xA9" ),
			std::string::npos );
	}
}

TEST( TerminalBuffer, GivesTheSameWhereverTheTextIsCut )
{
	const std::string text = "1\t\x1B[2J\n\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xC2\x9B\xE2\x80\xAE\xE2\x82"
							 "x\xFF\xE2";
	const std::string expected = "1\t?[2J\n\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80????x??";
	for ( size_t nFirst = 0; nFirst <= text.size(); nFirst++ )
		for ( size_t nSecond = nFirst; nSecond <= text.size(); nSecond++ )
		{
			std::stringbuf shown;
			{
				CTerminalBuffer buffer( shown );
				std::ostream output( &buffer );
				output << text.substr( 0, nFirst ) << std::flush << text.substr( nFirst, nSecond - nFirst )
					   << std::flush;
				for ( const char c : text.substr( nSecond ) )
					output.put( c );
				EXPECT_TRUE( output.good() );
			}
			ASSERT_EQ( shown.str(), expected ) << nFirst << ' ' << nSecond;
		}
}

TEST( TerminalBuffer, ShowsWholeCharactersWhenItIsFlushed )
{
	std::stringbuf shown;
	CTerminalBuffer buffer( shown );
	std::ostream output( &buffer );
	output << "\xC3\xA9" << std::flush;
	EXPECT_EQ( shown.str(), "\xC3\xA9" );
	output << "\xE2\x82" << std::flush;
	EXPECT_EQ( shown.str(), "\xC3\xA9" ) << "the rest may come";
	output << "\xAC" << std::flush;
	EXPECT_EQ( shown.str(), "\xC3\xA9\xE2\x82\xAC" );
}

TEST( TerminalBuffer, FailsWhereTheTerminalDoes )
{
	class CBroken final : public std::streambuf
	{
	} broken;
	CTerminalBuffer buffer( broken );
	std::ostream output( &buffer );
	output << "text";
	EXPECT_FALSE( output.flush().good() );
}
