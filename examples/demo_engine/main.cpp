// Runs the demo engine until it is told to end. It is also the example of how an engine uses the library: budgets.cpp
// declares where time may go, the subsystems say where it went, and this file starts and stops the session.
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

#include "engine.h"
#include "options.h"
#include "target/showbudget.h"

namespace
{
// Any thread may be the one that a signal interrupts.
std::atomic<bool> g_bEnd = false;
static_assert( std::atomic<bool>::is_always_lock_free );

void OnSignal( int )
{
	g_bEnd = true;
}

void InstallSignals()
{
	struct sigaction action
	{
	};
	action.sa_handler = OnSignal;
	sigaction( SIGTERM, &action, nullptr );
	sigaction( SIGINT, &action, nullptr );
}

// Consoles may record, too, into the folder that the engine was started in.
bool StartRecording( const demo::Options &options )
{
	showbudget::RegisterRecordCommand( "." );
	if ( options.m_Recording.empty() )
		return true;
	showbudget::RecordingSettings settings;
	settings.m_pFile = options.m_Recording.c_str();
	return showbudget::StartRecording( settings );
}

bool Run( const demo::Options &options )
{
	demo::CEngine engine( options.m_nBodies );
	engine.RegisterCommands();
	uint64_t nFrames = 0;
	while ( !g_bEnd && ( !options.m_nFrames || nFrames++ < *options.m_nFrames ) )
		engine.RunFrame();
	showbudget::Stop();
	if ( options.m_Picture.empty() || engine.WritePicture( options.m_Picture.c_str() ) )
		return true;
	std::fprintf( stderr, "demo_engine: cannot write %s: %s\n", options.m_Picture.c_str(), std::strerror( errno ) );
	return false;
}
} // namespace

int main( int nArguments, char **ppArguments )
{
	std::string error;
	const std::optional<demo::Options> options = demo::ParseOptions( nArguments, ppArguments, error );
	if ( !options )
	{
		std::fprintf( stderr, "demo_engine: %s\n", error.c_str() );
		return 2;
	}
	if ( options->m_bHelp )
	{
		std::fputs( demo::Usage(), stdout );
		return 0;
	}
	InstallSignals();

	showbudget::Settings settings;
	settings.m_pName = options->m_Name.c_str();
	settings.m_pAddress = options->m_Address.c_str();
	settings.m_nPort = options->m_nPort;
	settings.m_bCommands = true;
	// Without a port the engine runs all the same; only nobody can watch it.
	if ( showbudget::Start( settings ) )
	{
		std::printf( "listening on %s:%u\n", options->m_Address.c_str(), unsigned{ showbudget::Port() } );
		std::fflush( stdout );
	}
	// Who asks for a recording on the command line wants nothing without it.
	if ( !StartRecording( *options ) )
		return 1;
	return Run( *options ) ? 0 : 1;
}
