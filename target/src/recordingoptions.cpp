// How a recording is asked for: by the engine, by the environment, and what both and the command have in common.
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string_view>

#include "engine.h"
#include "log.h"
#include "recorder.h"

namespace showbudget
{
namespace
{
constexpr uint64_t MEGABYTE = 1000000;

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
} // namespace

bool ReadRecordingOption( std::string_view word, RecordingOptions &options, std::string &error )
{
	const size_t nEquals = word.find( '=' );
	const std::string_view value = nEquals == std::string_view::npos ? "" : word.substr( nEquals + 1 );
	std::string expected;
	if ( ReadOption( word.substr( 0, nEquals ), value, options, expected ) )
		return true;
	error = '"' + std::string( word ) + "\" is not understood: expected " + expected;
	return false;
}

namespace
{
// Options like "frames=100 megabytes=50 slower=20", separated by blanks. False at the first that is wrong.
bool ReadOptions( std::string_view text, RecordingOptions &options, std::string &error )
{
	constexpr std::string_view BLANKS = " \t\n";
	for ( size_t nBegin = text.find_first_not_of( BLANKS ); nBegin != std::string_view::npos; )
	{
		const size_t nEnd = std::min( text.find_first_of( BLANKS, nBegin ), text.size() );
		if ( !ReadRecordingOption( text.substr( nBegin, nEnd - nBegin ), options, error ) )
			return false;
		nBegin = text.find_first_not_of( BLANKS, nEnd );
	}
	return true;
}
} // namespace

void BeginRecordingOfEnvironment()
{
	const char *pPath = secure_getenv( "SHOWBUDGET_RECORD" );
	if ( !pPath || !*pPath )
		return;
	RecordingOptions options;
	options.m_Path = pPath;
	const char *pOptions = secure_getenv( "SHOWBUDGET_RECORD_OPTIONS" );
	std::string error;
	if ( ReadOptions( pOptions ? pOptions : "", options, error ) )
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
} // namespace showbudget
