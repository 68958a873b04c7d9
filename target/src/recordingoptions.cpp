#include <charconv>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <string_view>

#include "engine.h"
#include "log.h"
#include "recorder.h"

namespace showbudget
{
namespace
{
constexpr uint64_t MEGABYTE = 1000000;
constexpr size_t MAX_FILE_NAME = 200;
constexpr std::string_view SUFFIX = ".kesto";

template <typename Number>
bool ReadNumber( std::string_view text, Number nLimit, Number &out )
{
	Number nValue{};
	const auto [pEnd, problem] = std::from_chars( text.data(), text.data() + text.size(), nValue );
	if ( problem != std::errc() || pEnd != text.data() + text.size() || !( nValue >= 0 && nValue <= nLimit ) )
		return false;
	out = nValue;
	return true;
}

bool ReadOption( std::string_view name, std::string_view value, RecordingOptions &options, std::string &expected )
{
	constexpr uint64_t MAX_COUNT = 1000000000;
	if ( name == "frames" )
	{
		expected = "a number of frames";
		return ReadNumber( value, MAX_COUNT, options.m_nMaxFrames );
	}
	if ( name == "megabytes" )
	{
		expected = "a size in megabytes";
		const bool bGood = ReadNumber( value, MAX_COUNT, options.m_nMaxBytes );
		options.m_nMaxBytes *= MEGABYTE;
		return bGood;
	}
	if ( name == "slower" )
	{
		expected = "milliseconds";
		return ReadNumber( value, MAX_SLOWER_THAN, options.m_flSlowerThan );
	}
	if ( name == "around" )
	{
		expected = "a number from 0 to " + std::to_string( MAX_FRAMES_AROUND );
		return ReadNumber( value, MAX_FRAMES_AROUND, options.m_nAround );
	}
	if ( name == "threads" )
	{
		expected = "\"frame\" or \"all\"";
		options.m_bOtherThreads = value == "all";
		return value == "all" || value == "frame";
	}
	expected = "one of frames=, megabytes=, slower=, around=, threads=";
	return false;
}

bool ReadOptionWord( std::string_view word, RecordingOptions &options, std::string &error )
{
	const size_t nEquals = word.find( '=' );
	const std::string_view value = nEquals == std::string_view::npos ? "" : word.substr( nEquals + 1 );
	std::string expected;
	if ( ReadOption( word.substr( 0, nEquals ), value, options, expected ) )
		return true;
	error = '"' + std::string( word ) + "\" is not understood: expected " + expected;
	return false;
}

// The folder that consoles may record into; set once.
std::string g_Folder;

std::string DefaultFileName()
{
	const time_t nNow = time( nullptr );
	tm local{};
	localtime_r( &nNow, &local );
	char name[64];
	const size_t nLength = std::strftime( name, sizeof( name ), "recording-%Y%m%d-%H%M%S.kesto", &local );
	return { name, nLength };
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
	bool bGood = ReadFileName( DefaultFileName(), options, error );
	for ( int i = 2; i < nArguments && bGood; i++ )
	{
		const std::string_view word = ppArguments[i];
		bGood = i == 2 && word.find( '=' ) == std::string_view::npos ? ReadFileName( word, options, error )
																	 : ReadOptionWord( word, options, error );
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

bool ReadRecordingOptions( std::string_view text, RecordingOptions &options, std::string &error )
{
	constexpr std::string_view BLANKS = " \t\n";
	for ( size_t nBegin = text.find_first_not_of( BLANKS ); nBegin != std::string_view::npos; )
	{
		const size_t nEnd = std::min( text.find_first_of( BLANKS, nBegin ), text.size() );
		if ( !ReadOptionWord( text.substr( nBegin, nEnd - nBegin ), options, error ) )
			return false;
		nBegin = text.find_first_not_of( BLANKS, nEnd );
	}
	return true;
}

void BeginRecordingOfEnvironment()
{
	const char *pPath = secure_getenv( "SHOWBUDGET_RECORD" );
	if ( !pPath || !*pPath )
		return;
	RecordingOptions options;
	options.m_Path = pPath;
	const char *pOptions = secure_getenv( "SHOWBUDGET_RECORD_OPTIONS" );
	std::string error;
	if ( ReadRecordingOptions( pOptions ? pOptions : "", options, error ) )
		BeginRecording( std::move( options ), true );
	else
		LogLine( Severity::Error, "SHOWBUDGET_RECORD_OPTIONS: " + error + "; nothing is recorded" );
}

bool StartRecording( const RecordingSettings &settings )
{
	RecordingOptions options;
	options.m_Path = settings.m_pFile ? settings.m_pFile : "";
	options.m_nMaxBytes = settings.m_nMaxBytes;
	options.m_nMaxFrames = settings.m_nMaxFrames;
	options.m_flSlowerThan = settings.m_flSlowerThan;
	options.m_nAround = settings.m_nFramesAround;
	options.m_bOtherThreads = settings.m_bOtherThreads;
	const bool bGood = settings.m_flSlowerThan >= 0.0 && settings.m_flSlowerThan <= MAX_SLOWER_THAN &&
					   settings.m_nFramesAround <= MAX_FRAMES_AROUND;
	if ( !bGood )
		LogLine( Severity::Error, "cannot record: m_flSlowerThan or m_nFramesAround is out of range" );
	return bGood && BeginRecording( std::move( options ), true );
}

void StopRecording()
{
	EndRecording( true );
}

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
