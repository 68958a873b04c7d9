// KeyValues in files: whole or not at all, and nothing that a user had is overwritten.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "keel0/keyvalues.h"
#include "keel0/logging.h"

namespace
{
// A file descriptor that is closed at the end of its scope.
class CFile
{
public:
	explicit CFile( int nDescriptor )
		: m_nDescriptor( nDescriptor )
	{
	}
	~CFile() { Close(); }
	CFile( const CFile & ) = delete;
	CFile &operator=( const CFile & ) = delete;

	bool IsOpen() const { return m_nDescriptor >= 0; }
	int Get() const { return m_nDescriptor; }
	bool Close() { return m_nDescriptor < 0 || close( std::exchange( m_nDescriptor, -1 ) ) == 0; }

private:
	int m_nDescriptor;
};

std::string LastError( const std::string &what )
{
	return what + ": " + std::strerror( errno );
}

bool Fail( KeyValues::ParseError *pError, std::string message )
{
	if ( pError )
		*pError = { 0, 0, std::move( message ) };
	return false;
}

// Reads a regular file, but no more than one byte over the limit, which the parser then refuses.
bool ReadAll( const CFile &file, std::string &text, std::string &message )
{
	struct stat status
	{
	};
	if ( fstat( file.Get(), &status ) != 0 || !S_ISREG( status.st_mode ) )
	{
		message = "this is not a regular file";
		return false;
	}
	constexpr size_t LIMIT = KeyValues::MAX_TEXT_SIZE + 1;
	constexpr size_t PIECE = size_t{ 1 } << 16;
	while ( text.size() < LIMIT )
	{
		const size_t nBefore = text.size();
		const size_t nWanted = std::min( PIECE, LIMIT - nBefore );
		text.resize( nBefore + nWanted );
		ssize_t nRead = 0;
		do
			nRead = read( file.Get(), text.data() + nBefore, nWanted );
		while ( nRead < 0 && errno == EINTR );
		if ( nRead < 0 )
		{
			message = LastError( "it cannot be read" );
			return false;
		}
		text.resize( nBefore + static_cast<size_t>( nRead ) );
		if ( nRead == 0 )
			break;
	}
	return true;
}

bool WriteAll( const CFile &file, std::string_view text )
{
	while ( !text.empty() )
	{
		const ssize_t nWritten = write( file.Get(), text.data(), text.size() );
		if ( nWritten < 0 && errno == EINTR )
			continue;
		if ( nWritten < 0 )
			return false;
		text.remove_prefix( static_cast<size_t>( nWritten ) );
	}
	return true;
}

// The file that a path names, behind any links; the path itself where there is no such file yet.
std::string ResolveLinks( const char *pPath )
{
	char *pResolved = realpath( pPath, nullptr );
	std::string resolved = pResolved ? pResolved : pPath;
	std::free( pResolved );
	return resolved;
}

// Opens a new file beside `path` under a name that nothing has.
int CreateBeside( const std::string &path, std::string &name )
{
	for ( int nTry = 0; nTry < 1000; nTry++ )
	{
		name = path + ".new-" + std::to_string( getpid() ) + "-" + std::to_string( nTry );
		const int nDescriptor = open( name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666 );
		if ( nDescriptor >= 0 || errno != EEXIST )
			return nDescriptor;
	}
	return -1;
}

// Makes the new name of a file last through a loss of power. Best effort: the file is in its place already.
void SyncFolderOf( const std::string &path )
{
	const size_t nSlash = path.rfind( '/' );
	const std::string folder = nSlash == std::string::npos ? "." : path.substr( 0, nSlash + 1 );
	const CFile file( open( folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC ) );
	if ( file.IsOpen() )
		fsync( file.Get() );
}

int LevelsOf( const KeyValues &tree )
{
	if ( !tree.IsSubTree() )
		return 0;
	int nDeepest = 0;
	for ( int i = 0; i < tree.GetCount(); i++ )
		nDeepest = std::max( nDeepest, LevelsOf( *tree.GetEntry( i ) ) );
	return nDeepest + 1;
}

// Of all levels, the tree itself not counted.
size_t EntriesOf( const KeyValues &tree )
{
	size_t nEntries = 0;
	for ( int i = 0; i < tree.GetCount(); i++ )
		nEntries += 1 + EntriesOf( *tree.GetEntry( i ) );
	return nEntries;
}

// Renames without ever replacing another file. 0, or the error number.
int RenameToFreeName( const char *pFrom, const char *pTo )
{
	if ( renameat2( AT_FDCWD, pFrom, AT_FDCWD, pTo, RENAME_NOREPLACE ) == 0 )
		return 0;
	if ( errno != EINVAL && errno != ENOSYS )
		return errno;
	// A file system that cannot do both in one step.
	struct stat status
	{
	};
	if ( lstat( pTo, &status ) == 0 )
		return EEXIST;
	return std::rename( pFrom, pTo ) == 0 ? 0 : errno;
}

// Renames a broken file to the first free "path.broken-N"; returns the new name, or "" with errno set.
std::string KeepAside( const char *pPath )
{
	for ( int nNumber = 1;; nNumber++ )
	{
		std::string name = std::string( pPath ) + ".broken-" + std::to_string( nNumber );
		const int nProblem = RenameToFreeName( pPath, name.c_str() );
		if ( nProblem == 0 )
			return name;
		if ( nProblem != EEXIST )
		{
			errno = nProblem;
			return {};
		}
	}
}
} // namespace

KeyValues::LoadResult KeyValues::LoadFromFile( const char *pPath, ParseError *pError )
{
	// Without O_NONBLOCK a pipe without a writer would hold the process here.
	const CFile file( open( pPath, O_RDONLY | O_CLOEXEC | O_NONBLOCK ) );
	if ( !file.IsOpen() && errno == ENOENT )
		return LoadResult::NoFile;
	if ( !file.IsOpen() )
	{
		Fail( pError, LastError( "it cannot be opened" ) );
		return LoadResult::Unreadable;
	}
	std::string text;
	std::string message;
	if ( !ReadAll( file, text, message ) )
	{
		Fail( pError, std::move( message ) );
		return LoadResult::Unreadable;
	}
	return LoadFromBuffer( text, pError ) ? LoadResult::Loaded : LoadResult::Unreadable;
}

bool KeyValues::SaveToFile( const char *pPath, ParseError *pError ) const
{
	if ( LevelsOf( *this ) > MAX_LEVELS )
		return Fail( pError, "the tree has more than " + std::to_string( MAX_LEVELS ) + " levels" );
	if ( EntriesOf( *this ) > MAX_ENTRIES )
		return Fail( pError, "the tree has more than " + std::to_string( MAX_ENTRIES ) + " entries" );

	const std::string path = ResolveLinks( pPath );
	std::string newName;
	CFile file( CreateBeside( path, newName ) );
	if ( !file.IsOpen() )
		return Fail( pError, LastError( newName + " cannot be made" ) );

	struct stat old
	{
	};
	const bool bSameMode = stat( path.c_str(), &old ) != 0 || fchmod( file.Get(), old.st_mode & 07777 ) == 0;
	if ( !bSameMode || !WriteAll( file, SaveToBuffer() ) || fsync( file.Get() ) != 0 || !file.Close() )
	{
		const std::string message = LastError( newName + " cannot be written" );
		unlink( newName.c_str() );
		return Fail( pError, message );
	}
	if ( std::rename( newName.c_str(), path.c_str() ) != 0 )
	{
		const std::string message = LastError( newName + " cannot be renamed to " + path );
		unlink( newName.c_str() );
		return Fail( pError, message );
	}
	SyncFolderOf( path );
	return true;
}

KeyValues::LoadResult KeyValues::LoadSettingsFile( const char *pPath, ParseError *pError, std::string *pKeptAs )
{
	if ( pKeptAs )
		pKeptAs->clear();
	ParseError error;
	const LoadResult result = LoadFromFile( pPath, &error );
	if ( result != LoadResult::Unreadable )
		return result;

	std::string where;
	if ( error.m_nLine > 0 )
		where = ", line " + std::to_string( error.m_nLine ) + ", column " + std::to_string( error.m_nColumn );
	const std::string keptAs = KeepAside( pPath );
	if ( keptAs.empty() )
		error.m_Message = LastError( error.m_Message + "; the file could not be renamed" );
	Warning( "Settings file %s%s: %s%s%s\n", pPath, where.c_str(), error.m_Message.c_str(),
		keptAs.empty() ? "" : "; kept as ", keptAs.c_str() );
	if ( pError )
		*pError = error;
	if ( pKeptAs )
		*pKeptAs = keptAs;
	return result;
}
