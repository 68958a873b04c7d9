// The console command "record".
#include <cstdio>
#include <ctime>
#include <string_view>

#include "engine.h"
#include "recorder.h"

namespace showbudget
{
namespace
{
constexpr size_t MAX_FILE_NAME = 200;
constexpr std::string_view SUFFIX = ".kesto";

// The folder that consoles may record into; set once.
std::string g_Folder;

// Down to the millisecond, so that no two recordings get the same. Whether a file has the name is not asked here: this
// is the frame's thread.
std::string MadeUpFileName()
{
	timespec now{};
	clock_gettime( CLOCK_REALTIME, &now );
	tm local{};
	localtime_r( &now.tv_sec, &local );
	char second[32];
	const size_t nLength = std::strftime( second, sizeof( second ), "%Y%m%d-%H%M%S", &local );
	char millisecond[16];
	std::snprintf( millisecond, sizeof( millisecond ), ".%03d", static_cast<int>( now.tv_nsec / 1000000 ) );
	return "recording-" + std::string( second, nLength ) + millisecond;
}

// A name in the folder and nothing else: whoever can reach the engine's port may send commands.
bool ReadFileName( std::string_view name, RecordingOptions &options, std::string &error )
{
	if ( name.empty() || name[0] == '.' || name.size() > MAX_FILE_NAME || name.find( '/' ) != std::string_view::npos )
	{
		error = '"' + std::string( name ) + "\" is no plain file name";
		return false;
	}
	options.m_Path = g_Folder + '/' + std::string( name );
	if ( !name.ends_with( SUFFIX ) )
		options.m_Path += SUFFIX;
	return true;
}

void StartOnCommand( int nArguments, const char *const *ppArguments )
{
	RecordingOptions options;
	options.m_bNewFile = true;
	std::string error;
	bool bGood = ReadFileName( MadeUpFileName(), options, error );
	for ( int i = 2; i < nArguments && bGood; i++ )
	{
		const std::string_view word = ppArguments[i];
		bGood = i == 2 && word.find( '=' ) == std::string_view::npos ? ReadFileName( word, options, error )
																	 : ReadRecordingOption( word, options, error );
	}
	if ( bGood )
		BeginRecording( std::move( options ), false );
	else
		PrintFormat( Severity::Warning, "record: %s.", error.c_str() );
}

void PrintState()
{
	const RecordingState state = GetRecordingState();
	PrintFormat( Severity::Message, "%s: %llu frames, %.1f MB, %llu frames not written.",
		state.m_bRunning ? "Recording" : "Not recording; the last recording",
		static_cast<unsigned long long>( state.m_nFrames ), static_cast<double>( state.m_nBytes ) * 1.0e-6,
		static_cast<unsigned long long>( state.m_nDropped ) );
}

void StopOnCommand()
{
	if ( GetRecordingState().m_bRunning )
		EndRecording( false );
	else
		Print( Severity::Warning, "record: nothing is being recorded." );
}

void OnRecord( int nArguments, const char *const *ppArguments, void * )
{
	const std::string_view what = nArguments > 1 ? ppArguments[1] : "";
	if ( what == "start" )
		StartOnCommand( nArguments, ppArguments );
	else if ( what == "stop" && nArguments == 2 )
		StopOnCommand();
	else if ( nArguments == 1 )
		PrintState();
	else
		Print( Severity::Warning, "record takes \"start\" with a file name and options, or \"stop\"." );
}
} // namespace

bool RegisterRecordCommand( const char *pFolder )
{
	const std::string folder = pFolder && *pFolder ? pFolder : ".";
	if ( !RegisterCommand( "record",
			 "start [NAME] [frames=N] [megabytes=N] [slower=MS] [around=N] [threads=all], stop, or nothing to see how "
			 "it goes: records frames into a file",
			 OnRecord, nullptr ) )
		return false;
	g_Folder = folder;
	return true;
}
} // namespace showbudget
