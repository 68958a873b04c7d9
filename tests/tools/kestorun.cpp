#include "tests/tools/kestorun.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "tools/command.h"

namespace
{
std::string ReadWhole( const std::filesystem::path &path )
{
	std::ifstream file( path, std::ios::binary );
	EXPECT_TRUE( file ) << path;
	return { std::istreambuf_iterator<char>( file ), {} };
}

int SpawnAndWait( const std::vector<std::string> &command, const CTestFolder &folder )
{
	posix_spawn_file_actions_t actions;
	posix_spawn_file_actions_init( &actions );
	const std::string input = folder.Path( "input" );
	const std::string output = folder.Path( "output" );
	const std::string errors = folder.Path( "errors" );
	posix_spawn_file_actions_addopen( &actions, 0, input.c_str(), O_RDONLY, 0 );
	posix_spawn_file_actions_addopen( &actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600 );
	posix_spawn_file_actions_addopen( &actions, 2, errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600 );
	std::vector<char *> arguments;
	for ( const std::string &argument : command )
		arguments.push_back( const_cast<char *>( argument.c_str() ) );
	arguments.push_back( nullptr );
	pid_t nProcess = 0;
	const int nError = posix_spawnp( &nProcess, arguments[0], &actions, nullptr, arguments.data(), environ );
	posix_spawn_file_actions_destroy( &actions );
	EXPECT_EQ( nError, 0 ) << command[0];
	int nStatus = 0;
	if ( nError != 0 || waitpid( nProcess, &nStatus, 0 ) != nProcess )
		return -1;
	return WIFEXITED( nStatus ) ? WEXITSTATUS( nStatus ) : 128 + WTERMSIG( nStatus );
}
} // namespace

KestoRun CallKesto( const std::vector<std::string> &arguments )
{
	std::vector<const char *> texts{ "kesto" };
	for ( const std::string &argument : arguments )
		texts.push_back( argument.c_str() );
	std::ostringstream output;
	std::ostringstream errors;
	CommandContext context{ output, errors, nullptr };
	const ExitStatus status = RunKesto( static_cast<int>( texts.size() ), texts.data(), context );
	return { static_cast<int>( status ), output.str(), errors.str() };
}

KestoRun RunProgram( const std::vector<std::string> &command, std::string_view input )
{
	const CTestFolder folder;
	folder.Write( "input", ToBytes( input ) );
	KestoRun run;
	run.m_nStatus = SpawnAndWait( command, folder );
	run.m_Output = folder.Read( "output" );
	run.m_Errors = folder.Read( "errors" );
	return run;
}

KestoRun RunKestoProgram( std::vector<std::string> arguments, std::string_view input )
{
	arguments.insert( arguments.begin(), KESTO_PROGRAM );
	return RunProgram( arguments, input );
}

CTestFolder::CTestFolder()
{
	std::string path = ( std::filesystem::temp_directory_path() / "kesto-test-XXXXXX" ).string();
	EXPECT_NE( mkdtemp( path.data() ), nullptr );
	m_Path = path;
}

CTestFolder::~CTestFolder()
{
	std::error_code error;
	std::filesystem::remove_all( m_Path, error );
}

std::string CTestFolder::Write( const std::string &name, const std::vector<uint8_t> &bytes ) const
{
	std::ofstream file( m_Path / name, std::ios::binary );
	file.write( reinterpret_cast<const char *>( bytes.data() ), static_cast<std::streamsize>( bytes.size() ) );
	file.close();
	EXPECT_TRUE( file ) << name;
	return Path( name );
}

std::string CTestFolder::Read( const std::string &name ) const
{
	return ReadWhole( m_Path / name );
}

std::vector<std::string> CTestFolder::Names() const
{
	std::vector<std::string> names;
	for ( const auto &entry : std::filesystem::directory_iterator( m_Path ) )
		names.push_back( entry.path().filename().string() );
	std::sort( names.begin(), names.end() );
	return names;
}

std::vector<uint8_t> ToBytes( std::string_view text )
{
	return { text.begin(), text.end() };
}

std::vector<std::string> SplitLines( const std::string &text )
{
	std::vector<std::string> lines;
	std::istringstream stream( text );
	for ( std::string line; std::getline( stream, line ); )
		lines.push_back( line );
	return lines;
}
