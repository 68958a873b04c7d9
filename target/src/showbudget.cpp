#include "target/showbudget.h"

#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <string_view>

#include "clock.h"
#include "engine.h"
#include "server.h"
#include "socketlist.h"
#include "text.h"

namespace showbudget
{
EngineState g_Engine;

namespace
{
std::unique_ptr<CServer> g_pServer;
std::atomic<uint16_t> g_nPort{ 0 };
std::once_flag g_ForkHandled;

// A forked child has no server thread: for it, the session never was.
void ForgetSession()
{
	detail::g_nWanted.store( 0, std::memory_order_relaxed );
	g_Engine.m_nConsoles.store( 0, std::memory_order_relaxed );
	g_nPort.store( 0, std::memory_order_relaxed );
	CloseSocketsOfParent();
	// Its locks may be held by a thread that the child does not have, so it cannot be ended, only left alone.
	[[maybe_unused]] const CServer *pLeft = g_pServer.release();
}

bool MakeWakeDescriptor( const Log &log )
{
	if ( g_Engine.m_nWakeDescriptor < 0 )
		g_Engine.m_nWakeDescriptor = eventfd( 0, EFD_CLOEXEC | EFD_NONBLOCK );
	if ( g_Engine.m_nWakeDescriptor < 0 )
		log.Line( Severity::Error, std::string( "cannot make an event descriptor: " ) + std::strerror( errno ) );
	return g_Engine.m_nWakeDescriptor >= 0;
}

bool StartServer( const Settings &settings, const Log &log )
{
	try
	{
		auto pServer = std::make_unique<CServer>( settings );
		if ( !pServer->Start() )
			return false;
		g_pServer = std::move( pServer );
		return true;
	}
	catch ( const std::exception &failure )
	{
		log.Line( Severity::Error, std::string( "cannot start: " ) + failure.what() );
		return false;
	}
}
} // namespace

void EngineState::Wake() const
{
	const uint64_t nOne = 1;
	// Full only when nobody has read for 2^64 - 1 wakes; then there is one to come in any case.
	[[maybe_unused]] const ssize_t nWritten = write( m_nWakeDescriptor, &nOne, sizeof( nOne ) );
}

void Log::Line( Severity severity, const std::string &line ) const
{
	if ( m_pFunction )
		m_pFunction( severity, line.c_str(), m_pContext );
	else
		std::fprintf( stderr, "Show Budget: %s\n", line.c_str() );
}

bool Start( const Settings &settings )
{
	const Log log{ settings.m_pLog, settings.m_pLogContext };
	if ( g_pServer )
	{
		log.Line( Severity::Warning, "already started" );
		return false;
	}
	std::call_once( g_ForkHandled, [] { pthread_atfork( nullptr, nullptr, ForgetSession ); } );
	ChooseClock( settings.m_Clock );
	if ( !MakeWakeDescriptor( log ) || !StartServer( settings, log ) )
		return false;
	g_nPort.store( g_pServer->Port(), std::memory_order_relaxed );
	return true;
}

void Stop()
{
	g_nPort.store( 0, std::memory_order_relaxed );
	g_pServer.reset();
}

uint16_t Port()
{
	return g_nPort.load( std::memory_order_relaxed );
}

void EndFrame( Tick tick )
{
	const uint32_t nWanted = detail::g_nWanted.load( std::memory_order_relaxed );
	if ( nWanted == 0 )
		g_Engine.m_Collector.Idle();
	else if ( !g_Engine.m_Collector.EndFrame( tick, nWanted ) )
		detail::AddOwned( g_Engine.m_nFramesLost, 1 );
	g_Engine.m_Commands.Run();
}

void Print( Severity severity, const char *pText )
{
	if ( g_Engine.m_nConsoles.load( std::memory_order_relaxed ) == 0 )
		return;
	g_Engine.m_Lines.Push( severity, TextOrEmpty( pText ) );
	g_Engine.Wake();
}

void PrintFormat( Severity severity, const char *pFormat, ... )
{
	if ( g_Engine.m_nConsoles.load( std::memory_order_relaxed ) == 0 )
		return;
	char text[MAX_PRINT_BYTES + 1];
	va_list arguments;
	va_start( arguments, pFormat );
	std::vsnprintf( text, sizeof( text ), pFormat, arguments );
	va_end( arguments );
	Print( severity, text );
}

bool RegisterCommand( const char *pName, const char *pHelp, CommandFunction pFunction, void *pContext )
{
	return g_Engine.m_Commands.Register( pName, pHelp, pFunction, pContext );
}
} // namespace showbudget
