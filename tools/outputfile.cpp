#include "tools/outputfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <utility>

#include "tools/errorline.h"

namespace
{
constexpr size_t BUFFER_SIZE = 1 << 16;

// What a signal handler is to remove. It points into a COutputFile, which sets it back before the text goes away.
std::atomic<const char *> g_pTemporaryPath = nullptr;
static_assert( std::atomic<const char *>::is_always_lock_free );

extern "C" void OnEndingSignal( int nSignal )
{
	if ( const char *pPath = g_pTemporaryPath.load() )
		unlink( pPath );
	signal( nSignal, SIG_DFL );
	raise( nSignal );
}

// Where a chain of links leads that ends at nothing, as the one that is to come into being there. The system has
// counted the links already: it follows no more than these.
std::filesystem::path EndOfLinks( std::filesystem::path path )
{
	constexpr int MOST_LINKS = 40;
	for ( int i = 0; i < MOST_LINKS; i++ )
	{
		std::error_code error;
		const std::filesystem::path next = std::filesystem::read_symlink( path, error );
		if ( error )
			break;
		path = path.parent_path() / next;
	}
	return path;
}

// The permissions that an ordinary new file gets.
mode_t NewFileMode()
{
	const mode_t nMask = umask( 0 );
	umask( nMask );
	return 0666 & ~nMask;
}
} // namespace

void RemoveTemporaryFileOnSignals()
{
	for ( const int nSignal : { SIGINT, SIGTERM, SIGHUP } )
		if ( signal( nSignal, OnEndingSignal ) == SIG_IGN )
			signal( nSignal, SIG_IGN ); // nohup and the like
	signal( SIGXFSZ, SIG_IGN );
}

COutputFile::COutputFile( std::ostream &standardOutput )
	: m_StandardOutput( standardOutput )
{
}

COutputFile::~COutputFile()
{
	Discard();
}

bool COutputFile::Open( const std::string &path )
{
	m_Path = path;
	m_bStandardOutput = path == "-";
	if ( m_bStandardOutput )
		return true;
	if ( path.empty() )
		return Fail( "the output has no name" );
	struct stat status;
	const bool bExists = stat( path.c_str(), &status ) == 0;
	if ( !bExists && errno != ENOENT )
		return Fail( LastSystemError() );
	if ( bExists && S_ISDIR( status.st_mode ) )
		return Fail( "is a directory" );
	if ( bExists && !S_ISREG( status.st_mode ) )
	{
		m_nFile = open( path.c_str(), O_WRONLY | O_CLOEXEC );
		return m_nFile >= 0 || Fail( LastSystemError() );
	}
	// A new file would come into being even where the old one must not be written.
	if ( bExists && access( path.c_str(), W_OK ) != 0 )
		return Fail( LastSystemError() );
	std::error_code error;
	m_Target = ( bExists ? std::filesystem::canonical( path, error ) : EndOfLinks( path ) ).string();
	if ( error )
		return Fail( error.message() );
	if ( !OpenTemporary() )
		return false;
	fchmod( m_nFile, bExists ? status.st_mode & 07777 : NewFileMode() );
	return true;
}

bool COutputFile::OpenTemporary()
{
	m_TemporaryPath = m_Target + ".XXXXXX";
	m_nFile = mkostemp( m_TemporaryPath.data(), O_CLOEXEC );
	if ( m_nFile >= 0 )
	{
		g_pTemporaryPath = m_TemporaryPath.c_str();
		return true;
	}
	const std::string reason = LastSystemError();
	m_TemporaryPath.clear();
	std::error_code error;
	const bool bLink = std::filesystem::is_symlink( m_Path, error );
	return Fail( bLink ? reason + " (a link to \"" + m_Target + "\")" : reason );
}

bool COutputFile::Write( std::string_view bytes )
{
	if ( !m_Problem.empty() )
		return false;
	if ( m_bStandardOutput )
		return m_StandardOutput.write( bytes.data(), static_cast<std::streamsize>( bytes.size() ) ) ||
			   Fail( "cannot be written" );
	m_Buffer += bytes;
	return m_Buffer.size() < BUFFER_SIZE || WriteBuffer();
}

bool COutputFile::WriteBuffer()
{
	std::string_view rest = m_Buffer;
	while ( !rest.empty() )
	{
		const ssize_t nWritten = write( m_nFile, rest.data(), rest.size() );
		if ( nWritten >= 0 )
			rest.remove_prefix( static_cast<size_t>( nWritten ) );
		else if ( errno != EINTR )
			return Fail( LastSystemError() );
	}
	m_Buffer.clear();
	return true;
}

// Before the new file takes the place of the old one: were the machine to stop in between, neither would be whole. What
// goes straight out replaces nothing, and some file systems do not know how.
bool COutputFile::WriteToDisk()
{
	return m_TemporaryPath.empty() || fsync( m_nFile ) == 0 || errno == EINVAL || errno == ENOSYS ||
		   Fail( LastSystemError() );
}

bool COutputFile::Commit()
{
	if ( !m_Problem.empty() )
		return false;
	if ( m_bStandardOutput )
		return m_StandardOutput.flush() || Fail( "cannot be written" );
	if ( !WriteBuffer() || !WriteToDisk() )
		return false;
	// Some file systems report only here that there was no room.
	if ( close( std::exchange( m_nFile, -1 ) ) != 0 )
		return Fail( LastSystemError() );
	if ( !m_TemporaryPath.empty() && rename( m_TemporaryPath.c_str(), m_Target.c_str() ) != 0 )
		return Fail( LastSystemError() );
	g_pTemporaryPath = nullptr;
	m_TemporaryPath.clear();
	return true;
}

bool COutputFile::Fail( const std::string &what )
{
	m_Problem = FormatErrorLine( m_bStandardOutput ? "standard output" : m_Path, {}, what );
	Discard();
	return false;
}

void COutputFile::Discard()
{
	if ( m_nFile >= 0 )
		close( std::exchange( m_nFile, -1 ) );
	if ( m_TemporaryPath.empty() )
		return;
	unlink( m_TemporaryPath.c_str() );
	g_pTemporaryPath = nullptr;
	m_TemporaryPath.clear();
}
