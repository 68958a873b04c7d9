#include "thread.h"

#include <pthread.h>

#include <csignal>
#include <exception>
#include <string>
#include <utility>

#include "log.h"

namespace showbudget
{
std::thread StartThread( std::function<void()> function )
{
	sigset_t all, before;
	sigfillset( &all );
	pthread_sigmask( SIG_SETMASK, &all, &before );
	std::thread thread;
	try
	{
		thread = std::thread( std::move( function ) );
	}
	catch ( const std::exception &failure )
	{
		LogLine( Severity::Error, std::string( "cannot start a thread: " ) + failure.what() );
	}
	pthread_sigmask( SIG_SETMASK, &before, nullptr );
	return thread;
}
} // namespace showbudget
