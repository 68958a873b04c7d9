#include "tools/inputfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "tools/errorline.h"
#include "tools/progress.h"

namespace
{
constexpr size_t PIECE = 1 << 20; // bytes

// Closes what it opened; standard input stays open.
class CInput
{
public:
	explicit CInput( const std::string &path )
		: m_nFile( path == "-" ? STDIN_FILENO : open( path.c_str(), O_RDONLY | O_CLOEXEC ) )
	{
	}
	~CInput()
	{
		if ( m_nFile > STDIN_FILENO )
			close( m_nFile );
	}
	CInput( const CInput & ) = delete;
	CInput &operator=( const CInput & ) = delete;

	int m_nFile;
};

std::string ReadToEnd( int nFile, CProgress &progress, std::vector<uint8_t> &bytes )
{
	size_t nSize = 0;
	for ( ;; )
	{
		if ( bytes.size() < nSize + PIECE )
			bytes.resize( std::max( nSize + PIECE, bytes.size() + bytes.size() / 2 ) );
		const ssize_t nRead = read( nFile, bytes.data() + nSize, PIECE );
		if ( nRead < 0 && errno == EINTR )
			continue;
		if ( nRead < 0 )
			return LastSystemError();
		if ( nRead == 0 )
			break;
		nSize += static_cast<size_t>( nRead );
		progress.Show( static_cast<int64_t>( nSize ) );
	}
	bytes.resize( nSize );
	return {};
}
} // namespace

std::string ReadInputFile( CommandContext &context, const std::string &path, std::vector<uint8_t> &bytes )
{
	const CInput input( path );
	struct stat status;
	if ( input.m_nFile < 0 || fstat( input.m_nFile, &status ) != 0 )
		return LastSystemError();
	// The size is only a hint: a pipe has none, and a file may grow meanwhile.
	const int64_t nSize = S_ISREG( status.st_mode ) ? status.st_size : 0;
	bytes.clear();
	bytes.resize( static_cast<size_t>( nSize ) + PIECE );
	CProgress progress( context.m_pProgress, "Reading " + path, nSize );
	return ReadToEnd( input.m_nFile, progress, bytes );
}
