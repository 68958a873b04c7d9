#include "signalwatcher.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace
{
constexpr std::array watchedSignals = { SIGINT, SIGTERM };
std::array<int, 2> g_Pipe = { -1, -1 };

// All that a signal handler may do here: write a byte and leave errno as it was.
void OnSignal( int nSignal )
{
	const int nErrno = errno;
	const auto nByte = static_cast<unsigned char>( nSignal );
	[[maybe_unused]] const ssize_t nWritten = write( g_Pipe[1], &nByte, 1 );
	errno = nErrno;
}

void SetHandlers( void ( *pHandler )( int ) )
{
	struct sigaction action = {};
	action.sa_handler = pHandler;
	action.sa_flags = SA_RESTART;
	sigemptyset( &action.sa_mask );
	for ( const int nSignal : watchedSignals )
		sigaction( nSignal, &action, nullptr );
}
} // namespace

CSignalWatcher::CSignalWatcher( QObject *pParent )
	: QObject( pParent )
{
	if ( pipe2( g_Pipe.data(), O_CLOEXEC | O_NONBLOCK ) != 0 )
		return; // the signals then end the process as they always do
	m_pNotifier = new QSocketNotifier( g_Pipe[0], QSocketNotifier::Read, this );
	connect( m_pNotifier, &QSocketNotifier::activated, this, &CSignalWatcher::OnReadable );
	SetHandlers( OnSignal );
}

CSignalWatcher::~CSignalWatcher()
{
	if ( !m_pNotifier )
		return;
	SetHandlers( SIG_DFL );
	delete m_pNotifier;
	for ( int &nEnd : g_Pipe )
		close( std::exchange( nEnd, -1 ) );
}

void CSignalWatcher::OnReadable()
{
	unsigned char nSignal = 0;
	while ( read( g_Pipe[0], &nSignal, 1 ) == 1 )
		emit Stopped( nSignal );
}
