// What holds of a conversion to a recording whatever its input is.
#pragma once

#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "fuzz/memoryfile.h"
#include "fuzz/memorylimit.h"
#include "fuzz/printedtext.h"
#include "fuzz/require.h"
#include "recordings/kestomemoryreader.h"
#include "tests/recordings/recordingoracle.h"
#include "tools/convert/conversion.h"

namespace fuzz
{
constexpr size_t MOST = 8u << 20; // bytes of a target; more says nothing more

inline convert::ByteOutput Into( std::string &text )
{
	return [&text]( std::string_view bytes )
	{
		text += bytes;
		return text.size() < MOST;
	};
}

// A recording in memory with what was parsed of it.
struct Parsed
{
	explicit Parsed( std::string_view recording )
		: m_Reader( { reinterpret_cast<const uint8_t *>( recording.data() ), recording.size() } )
		, m_pFile( CRefPtr<CKestoFile>::Adopt( new CKestoFile( m_Reader ) ) )
	{
	}

	CKestoMemoryReader m_Reader;
	CRefPtr<CKestoFile> m_pFile;
};

// Values of the first byte, modulo 32, that ask for more than a conversion.
constexpr int BAD_FILES = 20;
constexpr int ONE_THREAD = 28; // and every target

// What the first byte of an input chooses.
inline convert::ConversionOptions ChooseOptions( unsigned char nChoice, convert::Format from )
{
	using namespace convert;
	ConversionOptions options;
	options.m_From = from;
	options.m_SpoolFolder = nChoice % 32 == 24 ? "/no/such/folder" : "/tmp";
	options.m_Cut.m_FrameName = nChoice % 4 == 1 ? "F" : "";
	options.m_Cut.m_nPeriod = nChoice % 4 == 2 ? int64_t{ 1'000'000 } << nChoice / 8 : 0;
	options.m_nRunEvents = nChoice % 8 < 4 ? 4 : CEventSpool::RUN_EVENTS;
	if ( nChoice % 16 == 3 )
		options.m_Import.m_flSampleTime = 250.5;
	if ( nChoice % 32 == ONE_THREAD )
		options.m_Cut.m_Threads = options.m_Cut.m_Processes = { "1" };
	options.m_Progress = []( uint64_t nDone, uint64_t nTotal )
	{ Require( nDone < nTotal, "there is something left to do when progress is told" ); };
	return options;
}

// A line is read whole when a window holds it, and a JSON text whatever its windows are.
inline bool IsSameInPieces( std::string_view input, convert::Format from, size_t nWindow )
{
	if ( from == convert::Format::Chrome || from == convert::Format::Speedscope )
		return true;
	size_t nLine = 0;
	for ( const char c : input )
	{
		nLine = c == '\n' ? 0 : nLine + 1;
		if ( nLine + 1 >= nWindow )
			return false;
	}
	return true;
}

// The same conversion of a file that is read a little at a time.
inline void CheckInPieces( std::string_view input, const convert::ConversionOptions &options, bool bDone,
	const convert::CReport &report, const std::string &recording )
{
	constexpr size_t WINDOW = 64; // bytes
	const CMemoryFile file( { reinterpret_cast<const uint8_t *>( input.data() ), input.size() } );
	convert::CInputStream stream( WINDOW );
	Require( stream.Open( file.Path() ), "the input can be opened as a file" );
	std::string inPieces;
	convert::CReport itsReport;
	convert::ImportProblem problem;
	const bool bDoneInPieces = ConvertTrace( stream, options, itsReport, Into( inPieces ), problem );
	if ( !IsSameInPieces( input, options.m_From, WINDOW ) )
		return;
	Require( bDoneInPieces == bDone, "it does not matter in which pieces the input comes: whether it can be read" );
	Require( inPieces == recording, "it does not matter in which pieces the input comes: what is written" );
	Require( itsReport.Lines() == report.Lines(), "it does not matter in which pieces the input comes: what is said" );
}

inline void CheckWrittenAgain( const Parsed &parsed, std::string_view recording, convert::ConversionOptions options )
{
	std::string again;
	convert::CReport report;
	options.m_To = convert::Format::Kesto;
	convert::ImportProblem problem;
	Require( ConvertRecording( *parsed.m_pFile, options, report, Into( again ), problem ), "it can be written again" );
	const Parsed parsedAgain( again );
	const std::span<const uint8_t> bytes( reinterpret_cast<const uint8_t *>( recording.data() ), recording.size() );
	const std::string difference = FindDifference( *parsedAgain.m_pFile, !parsedAgain.m_Reader.m_bGood,
		parsedAgain.m_Reader.GetFailureText(), ReadSlowly( bytes ) );
	Require( difference.empty(), ( "written again it is the same: " + difference ).c_str() );
}

// To a Chrome trace and back.
inline void CheckThereAndBack( const CKestoFile &file )
{
	std::string trace;
	convert::CReport report;
	convert::ConversionOptions there;
	there.m_To = convert::Format::Chrome;
	convert::ImportProblem problem;
	if ( !ConvertRecording( file, there, report, Into( trace ), problem ) )
		return;
	convert::ConversionOptions back;
	back.m_SpoolFolder = "/tmp";
	std::string returned;
	convert::CReport backReport;
	convert::CInputStream stream;
	stream.OpenMemory( trace );
	Require( ConvertTrace( stream, back, backReport, Into( returned ), problem ), "the Chrome trace can be read" );
	Require( !backReport.IsDamaged(), "the Chrome trace is whole" );
	const Parsed parsed( returned );
	Require( parsed.m_pFile->GetFrameCount() == file.GetFrameCount(), "all frames come back" );
	if ( report.Get( convert::Note::Widened ) > 0 || report.Get( convert::Note::NegativeTime ) > 0 )
		return;
	for ( int i = 0; i < file.GetFrameCount(); i++ )
		Require( parsed.m_pFile->GetFrame( i )->PeekEntry( 0 ) == file.GetFrame( i )->PeekEntry( 0 ),
			"frames are as long as before" );
}

// What begins with a mark of its encoding is known all the same.
inline void CheckDetection( std::string_view input )
{
	const std::optional<convert::Format> format = convert::FormatOfContent( input );
	Require( !format || convert::CanRead( *format ), "what is known can be read" );
	if ( format == convert::Format::Kesto || input.starts_with( "\xEF\xBB\xBF" ) )
		return;
	const std::string marked = "\xEF\xBB\xBF" + std::string( input );
	Require( convert::FormatOfContent( marked ) == format, "a byte order mark changes nothing" );
}

// A file whose bytes cannot be had, and one that can be read only once.
inline void CheckBadFiles( std::string_view input, const convert::ConversionOptions &options, bool bDone )
{
	std::string ignored;
	convert::CReport report;
	convert::ImportProblem problem;
	convert::CInputStream unreadable;
	Require( unreadable.Open( "/proc/self/mem" ), "the file can be opened" ); // nothing lies at address 0
	Require( !ConvertTrace( unreadable, options, report, Into( ignored ), problem ), "what cannot be read is refused" );
	Require( !unreadable.Problem().empty() && !problem.m_Text.empty(), "with a reason" );
	convert::CInputStream folder;
	Require( !folder.Open( "/" ) && !folder.Problem().empty(), "a folder is no file" );
	convert::CInputStream nothing;
	Require( !nothing.Open( "/no/such/file" ) && !nothing.Problem().empty(), "neither is what is not there" );

	int pipeEnds[2];
	Require( pipe( pipeEnds ) == 0, "there are pipes" );
	const ssize_t nWritten = write( pipeEnds[1], input.data(), input.size() ); // as much as an input has, it holds
	Require( nWritten == static_cast<ssize_t>( input.size() ), "the pipe takes the input" );
	close( pipeEnds[1] );
	convert::CInputStream once;
	Require( once.Open( "/dev/fd/" + std::to_string( pipeEnds[0] ) ), "a pipe can be opened" );
	close( pipeEnds[0] );
	problem = {};
	const bool bDoneOnce = ConvertTrace( once, options, report, Into( ignored ), problem );
	if ( options.m_From == convert::Format::Speedscope )
		Require( !bDoneOnce, "what has to be read twice is refused" );
	else
		Require( bDoneOnce == bDone, "a pipe is as good as a file" );
	Require( bDoneOnce || !problem.m_Text.empty() || ignored.size() >= MOST, "or there is a reason" );
}

// What every other target is written as can be read again.
inline void CheckTargets( std::string_view input, convert::ConversionOptions options )
{
	for ( const convert::Format to :
		{ convert::Format::Chrome, convert::Format::Speedscope, convert::Format::Csv, convert::Format::Folded } )
	{
		std::string text;
		convert::CReport report;
		convert::ImportProblem problem;
		convert::CInputStream stream;
		stream.OpenMemory( input );
		options.m_To = to;
		if ( !ConvertTrace( stream, options, report, Into( text ), problem ) )
			continue;
		if ( to == convert::Format::Chrome )
			Require( ReadJson( text )["traceEvents"].IsArray(), "a Chrome trace has events" );
		else if ( to == convert::Format::Speedscope )
			Require( ReadJson( text )["profiles"].IsArray(), "a speedscope file has profiles" );
		else if ( to == convert::Format::Csv )
			ReadTable( text );
		else
			Require( text.empty() || text.back() == '\n', "folded stacks are lines" );
	}
}

// Converts the bytes behind the first one. What comes out is a whole recording that two readers agree on, that is the
// same when it is converted again or when the input is read in other pieces, and whose frames come back from a Chrome
// trace unless one of them had to be widened.
inline void CheckConversion( std::string_view input, convert::Format from )
{
	if ( input.empty() )
		return;
	const int nChoice = static_cast<unsigned char>( input[0] );
	const convert::ConversionOptions options = ChooseOptions( static_cast<unsigned char>( nChoice ), from );
	input.remove_prefix( 1 );
	CheckDetection( input );
	static std::string recording; // keeps its place, so that only the conversion's own memory counts below
	recording.clear();
	recording.reserve( 2 * MOST );
	convert::CReport report;
	convert::ImportProblem problem;
	convert::CInputStream stream;
	stream.OpenMemory( input );
	bool bDone = false;
	{
		const CMemoryLimit limit( input.size() );
		bDone = ConvertTrace( stream, options, report, Into( recording ), problem );
	}
	CheckInPieces( input, options, bDone, report, recording );
	if ( nChoice % 32 == BAD_FILES && input.size() <= PIPE_BUF )
		CheckBadFiles( input, options, bDone );
	if ( nChoice % 32 == ONE_THREAD )
		CheckTargets( input, options );
	if ( !bDone )
	{
		Require( !problem.m_Text.empty() || recording.size() >= MOST, "what is refused has a reason" );
		return;
	}
	const std::span<const uint8_t> bytes( reinterpret_cast<const uint8_t *>( recording.data() ), recording.size() );
	Require( CompareAllReaders( bytes ).empty(), "the readers agree on the recording" );
	const Parsed parsed( recording );
	Require( parsed.m_Reader.m_bGood, "the recording is whole" );
	CheckWrittenAgain( parsed, recording, options );
	CheckThereAndBack( *parsed.m_pFile );
}
} // namespace fuzz
