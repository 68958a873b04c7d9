#include "tools/convert/inputstream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace convert
{
CInputStream::CInputStream( size_t nWindowSize )
	: m_nWindowSize( nWindowSize )
{
}

CInputStream::~CInputStream()
{
	if ( m_nFile > STDIN_FILENO )
		close( m_nFile );
}

bool CInputStream::Open( const std::string &path )
{
	m_nFile = path == "-" ? STDIN_FILENO : open( path.c_str(), O_RDONLY | O_CLOEXEC );
	struct stat status;
	if ( m_nFile < 0 || fstat( m_nFile, &status ) != 0 )
	{
		m_Problem = std::strerror( errno );
		return false;
	}
	if ( S_ISDIR( status.st_mode ) )
	{
		m_Problem = std::strerror( EISDIR );
		return false;
	}
	if ( S_ISREG( status.st_mode ) )
		m_nSize = status.st_size;
	m_Buffer.resize( m_nWindowSize + 1 );
	m_pNext = m_pEnd = m_Buffer.data();
	return true;
}

void CInputStream::OpenMemory( std::string_view bytes )
{
	m_Buffer.assign( bytes.begin(), bytes.end() );
	m_Buffer.push_back( '\0' );
	m_nSize = static_cast<int64_t>( bytes.size() );
	m_bEnded = true;
	Rewind();
}

bool CInputStream::Rewind()
{
	m_pNext = m_pEnd = m_Buffer.data();
	m_nWindowEnd = 0;
	if ( m_nFile >= 0 )
	{
		m_bEnded = false;
		return lseek( m_nFile, 0, SEEK_SET ) == 0;
	}
	m_pEnd += m_nSize;
	m_nWindowEnd = m_nSize;
	return true;
}

bool CInputStream::More()
{
	const size_t nLeft = static_cast<size_t>( m_pEnd - m_pNext );
	if ( m_bEnded || IsAtLimit() || nLeft == m_nWindowSize )
		return false;
	std::memmove( m_Buffer.data(), m_pNext, nLeft );
	m_pNext = m_Buffer.data();
	m_pEnd = m_pNext + nLeft;
	const bool bMore = ReadMore();
	m_Buffer[static_cast<size_t>( m_pEnd - m_Buffer.data() )] = '\0';
	return bMore;
}

bool CInputStream::ReadMore()
{
	const size_t nLeft = static_cast<size_t>( m_pEnd - m_pNext );
	ssize_t nRead = 0;
	do
		nRead = read( m_nFile, m_Buffer.data() + nLeft, m_nWindowSize - nLeft );
	while ( nRead < 0 && errno == EINTR );
	if ( nRead < 0 )
		m_Problem = std::strerror( errno );
	if ( nRead <= 0 )
	{
		m_bEnded = true;
		return false;
	}
	m_pEnd += nRead;
	m_nWindowEnd += nRead;
	if ( m_Progress )
		m_Progress( Position() );
	return true;
}
} // namespace convert
