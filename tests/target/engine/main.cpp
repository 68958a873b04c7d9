// The engine of an own build: it listens, measures and records. Its status is 0 when all of that came about.
#include "target/showbudget.h"

#include <cstdio>

SHOWBUDGET_BUDGET( g_Physics, "Physics", 230, 120, 40 );

static void StepWorld()
{
	SHOWBUDGET_FUNCTION( g_Physics );
}

static bool Fail( const char *pWhat )
{
	std::fprintf( stderr, "my_engine: %s\n", pWhat );
	return false;
}

static bool RecordFrames( const char *pFile, int nFrames )
{
	showbudget::RecordingSettings recording;
	recording.m_pFile = pFile;
	if ( !showbudget::StartRecording( recording ) )
		return Fail( "the recording did not start" );
	showbudget::EndFrame(); // of the frame in which the recording was started
	for ( int nFrame = 0; nFrame < nFrames; nFrame++ )
	{
		StepWorld();
		showbudget::EndFrame();
	}
	showbudget::StopRecording();
	const showbudget::RecordingState state = showbudget::GetRecordingState();
	if ( state.m_nFrames != static_cast<uint64_t>( nFrames ) )
		return Fail( "the recording has not the frames of the engine" );
	return true;
}

int main()
{
	showbudget::Settings settings;
	settings.m_nPort = 0;
	const bool bListens = showbudget::Start( settings ) && showbudget::Port() != 0;
	const bool bGood = bListens ? RecordFrames( "my_engine.kesto", 20 ) : Fail( "nothing is listened on" );
	showbudget::Stop();
	return bGood ? 0 : 1;
}
