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
#include <new>
#include <string_view>

#include "clock.h"
#include "descriptorlist.h"
#include "engine.h"
#include "log.h"
#include "recorder.h"
#include "server.h"
#include "text.h"
#include "threadcounters.h"
#include "token.h"

namespace showbudget
{
EngineState g_Engine;

namespace
{
std::unique_ptr<CServer> g_pServer;
std::atomic<uint16_t> g_nPort{ 0 };
std::once_flag g_ForkHandled;
std::once_flag g_EnvironmentRead;

// A forked child has one thread and none of the library: for it, the session never was.
void ForgetSession()
{
	ForgetLog();
	ForgetRecording();
	ForgetOtherThreads();
	g_Engine.m_Commands.ForgetQueued();
	new ( &g_Engine.m_Lines ) CLineQueue; // a thread that the child does not have may have been writing a line
	detail::g_nWanted.store( 0, std::memory_order_relaxed );
	g_Engine.m_nConsoles.store( 0, std::memory_order_relaxed );
	g_nPort.store( 0, std::memory_order_relaxed );
	CloseDescriptorsOfParent();
	// Both processes would wake each other and take each other's wakes.
	close( g_Engine.m_nWakeDescriptor.exchange( -1 ) );
	// Its locks may be held by a thread that the child does not have, so it cannot be ended, only left alone.
	[[maybe_unused]] const CServer *pLeft = g_pServer.release();
}

bool MakeWakeDescriptor()
{
	if ( g_Engine.m_nWakeDescriptor < 0 )
		g_Engine.m_nWakeDescriptor = eventfd( 0, EFD_CLOEXEC | EFD_NONBLOCK );
	if ( g_Engine.m_nWakeDescriptor < 0 )
		LogLine( Severity::Error, std::string( "cannot make an event descriptor: " ) + std::strerror( errno ) );
	return g_Engine.m_nWakeDescriptor >= 0;
}

bool StartServer( const Settings &settings )
{
	try
	{
		std::string token, error;
		if ( !FindToken( settings.m_pToken, token, error ) )
		{
			LogLine( Severity::Error, error + "; the port is not opened, the engine runs on without it" );
			return false;
		}
		auto pServer = std::make_unique<CServer>( settings, std::move( token ) );
		if ( !pServer->Start() )
			return false;
		g_pServer = std::move( pServer );
		return true;
	}
	catch ( const std::exception &failure )
	{
		LogLine( Severity::Error, std::string( "cannot start: " ) + failure.what() );
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

void HandleForks()
{
	std::call_once( g_ForkHandled, [] { pthread_atfork( nullptr, nullptr, ForgetSession ); } );
}

bool Start( const Settings &settings )
{
	if ( g_pServer )
	{
		LogLine( Severity::Warning, "already started" );
		return false;
	}
	SetLog( settings.m_pLog, settings.m_pLogContext );
	HandleForks();
	ChooseClock( settings.m_Clock );
	std::call_once( g_EnvironmentRead, BeginRecordingOfEnvironment );
	if ( !MakeWakeDescriptor() || !StartServer( settings ) )
	{
		SetLog( nullptr, nullptr );
		return false;
	}
	g_nPort.store( g_pServer->Port(), std::memory_order_relaxed );
	return true;
}

void Stop()
{
	EndRecording( true );
	g_nPort.store( 0, std::memory_order_relaxed );
	g_pServer.reset();
	SetLog( nullptr, nullptr );
}

uint16_t Port()
{
	return g_nPort.load( std::memory_order_relaxed );
}

namespace
{
void TakeFrame( Tick tick, uint32_t nWanted )
{
	detail::CSiteCounters *pOwn = AttachThread();
	if ( !pOwn )
		return;
	const uint64_t nNow = ReadTicks();
	SplitOpenScopes( pOwn, nNow );
	if ( !( nWanted & WANT_LIVE ) )
		g_Engine.m_Collector.Idle();
	else if ( !g_Engine.m_Collector.EndFrame( pOwn, nNow, tick, nWanted & WANT_LIVE ) )
		detail::AddOwned( g_Engine.m_nFramesLost, 1 );
	if ( nWanted & WANT_RECORDING )
		g_Engine.m_RecordTree.EndFrame( pOwn, nNow );
	else
		g_Engine.m_RecordTree.Idle();
}
} // namespace

void EndFrame( Tick tick )
{
	if ( const uint32_t nWanted = detail::g_nWanted.load( std::memory_order_relaxed ) )
		TakeFrame( tick, nWanted );
	else
	{
		g_Engine.m_Collector.Idle();
		g_Engine.m_RecordTree.Idle();
	}
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
