#include "log.h"

#include <cstdio>
#include <mutex>
#include <new>

namespace showbudget
{
namespace
{
// Recursive, because the engine's function may call the library.
std::recursive_mutex g_Mutex;
LogFunction g_pFunction = nullptr;
void *g_pContext = nullptr;
} // namespace

void SetLog( LogFunction pFunction, void *pContext )
{
	std::lock_guard lock( g_Mutex );
	g_pFunction = pFunction;
	g_pContext = pContext;
}

void ForgetLog()
{
	// The lock may be held by a thread that the child does not have.
	new ( &g_Mutex ) std::recursive_mutex;
	g_pFunction = nullptr;
}

void LogLine( Severity severity, const std::string &line )
{
	std::lock_guard lock( g_Mutex );
	if ( g_pFunction )
		g_pFunction( severity, line.c_str(), g_pContext );
	else
		std::fprintf( stderr, "Show Budget: %s\n", line.c_str() );
}
} // namespace showbudget
