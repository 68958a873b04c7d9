#include "support/watchdog.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>

namespace
{
// Of a fixed place and size, because a signal handler may not allocate.
std::array<char, 400> g_Text{};
size_t g_nLength = 0;

void OnAlarm( int )
{
	if ( write( STDERR_FILENO, g_Text.data(), g_nLength ) >= 0 )
		std::abort();
	_exit( 1 );
}
} // namespace

CWatchdog::CWatchdog( const std::string &text, unsigned nSeconds )
{
	const std::string line = "Hangs: " + text.substr( 0, g_Text.size() - 10 ) + '\n';
	std::ranges::copy( line, g_Text.begin() );
	g_nLength = line.size();
	std::signal( SIGALRM, &OnAlarm );
	alarm( nSeconds );
}

CWatchdog::~CWatchdog()
{
	alarm( 0 );
	std::signal( SIGALRM, SIG_DFL );
}
