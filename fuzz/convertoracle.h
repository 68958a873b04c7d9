// What holds of a conversion to a recording whatever its input is.
#pragma once

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

#include "fuzz/memoryfile.h"
#include "fuzz/memorylimit.h"
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

// Converts the bytes behind the first one. What comes out is a whole recording that two readers agree on, that is the
// same when it is converted again or when the input is read in other pieces, and whose frames come back from a Chrome
// trace unless one of them had to be widened.
inline void CheckConversion( std::string_view input, convert::Format from )
{
	if ( input.empty() )
		return;
	const convert::ConversionOptions options = ChooseOptions( static_cast<unsigned char>( input[0] ), from );
	input.remove_prefix( 1 );
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
