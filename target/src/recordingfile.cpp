#include "recordingfile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "descriptorlist.h"

namespace showbudget
{
namespace
{
constexpr int FILE_MODE = 0666; // less what the process masks
constexpr int POLL_MILLISECONDS = 20;

std::string LastError()
{
	return std::strerror( errno );
}
} // namespace

CRecordingFile::~CRecordingFile()
{
	Close();
}

bool CRecordingFile::Open( const std::string &path, bool bNew, std::string &error )
{
	// Without O_NONBLOCK a pipe that nobody reads would be waited for here. It means nothing to a plain file.
	const int nFlags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | ( bNew ? O_EXCL : 0 );
	m_nFile = open( path.c_str(), nFlags, FILE_MODE );
	if ( m_nFile < 0 )
	{
		error = errno == ENXIO ? "nobody reads from this pipe" : LastError();
		return false;
	}
	if ( !Lock( error ) )
	{
		close( m_nFile );
		m_nFile = -1;
		return false;
	}
	CutOff();
	KeepDescriptor( m_nFile );
	return true;
}

// File systems that know no locks are fine, too.
bool CRecordingFile::Lock( std::string &error )
{
	if ( flock( m_nFile, LOCK_EX | LOCK_NB ) == 0 || errno != EWOULDBLOCK )
		return true;
	error = "another recording is being written to it";
	return false;
}

// A pipe and a device have no end to cut at.
void CRecordingFile::CutOff() const
{
	[[maybe_unused]] const int nIgnored = ftruncate( m_nFile, static_cast<off_t>( m_nSize ) );
}

bool CRecordingFile::Append( std::span<const uint8_t> piece, const std::function<bool()> &giveUp, std::string &error )
{
	size_t nDone = 0;
	while ( nDone < piece.size() )
	{
		const ssize_t nWritten = write( m_nFile, piece.data() + nDone, piece.size() - nDone );
		if ( nWritten >= 0 )
			nDone += static_cast<size_t>( nWritten );
		else if ( errno == EAGAIN )
		{
			if ( !WaitForRoom( giveUp ) )
				return false;
		}
		else if ( errno != EINTR )
		{
			error = LastError();
			CutOff();
			return false;
		}
	}
	m_nSize += piece.size();
	return true;
}

bool CRecordingFile::WaitForRoom( const std::function<bool()> &giveUp ) const
{
	pollfd file{ m_nFile, POLLOUT, 0 };
	while ( poll( &file, 1, POLL_MILLISECONDS ) <= 0 )
	{
		if ( giveUp() )
			return false;
	}
	return true;
}

void CRecordingFile::Close()
{
	if ( m_nFile < 0 )
		return;
	// A child that was forked just now may hold the file a moment longer, and the lock with it.
	flock( m_nFile, LOCK_UN );
	ForgetDescriptor( m_nFile );
	close( m_nFile );
	m_nFile = -1;
}
} // namespace showbudget
