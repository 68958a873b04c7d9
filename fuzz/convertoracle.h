// What holds of a conversion to a recording whatever its input is.
#pragma once

#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "recordings/kestomemoryreader.h"
#include "tests/recordings/recordingoracle.h"
#include "tools/convert/conversion.h"

namespace fuzz
{
// Converts the bytes; the first one chooses how frames are cut. What comes out is a whole recording that two readers
// agree on, that is the same when it is converted again, and whose frames come back from a Chrome trace unless one of
// them had to be widened.
inline void CheckConversion( std::string_view input, convert::Format from )
{
	if ( input.empty() )
		return;
	using namespace convert;
	ConversionOptions options;
	options.m_From = from;
	options.m_SpoolFolder = "/tmp";
	const unsigned nChoice = static_cast<unsigned char>( input[0] );
	options.m_Cut.m_FrameName = nChoice % 4 == 1 ? "F" : "";
	options.m_Cut.m_nPeriod = nChoice % 4 == 2 ? int64_t{ 1'000'000 } << nChoice / 8 : 0;
	options.m_nRunEvents = nChoice % 8 < 4 ? 4 : CEventSpool::RUN_EVENTS;
	if ( nChoice % 16 == 3 )
		options.m_Import.m_flSampleTime = 250.5;

	std::string recording;
	CReport report;
	ImportProblem problem;
	CInputStream stream;
	stream.OpenMemory( input.substr( 1 ) );
	const auto into = []( std::string &text )
	{
		return [&text]( std::string_view bytes )
		{
			text += bytes;
			return text.size() < ( 8u << 20 ); // more says nothing more
		};
	};
	if ( !ConvertTrace( stream, options, report, into( recording ), problem ) )
	{
		Require( !problem.m_Text.empty() || recording.size() >= ( 8u << 20 ), "what is refused has a reason" );
		return;
	}
	const std::span<const uint8_t> bytes( reinterpret_cast<const uint8_t *>( recording.data() ), recording.size() );
	Require( CompareAllReaders( bytes ).empty(), "the readers agree on the recording" );
	CKestoMemoryReader reader( bytes );
	const auto pFile = CRefPtr<CKestoFile>::Adopt( new CKestoFile( reader ) );
	Require( reader.m_bGood, "the recording is whole" );

	std::string again;
	CReport againReport;
	options.m_To = Format::Kesto;
	Require( ConvertRecording( *pFile, options, againReport, into( again ), []( int ) {} ), "it can be written again" );
	CKestoMemoryReader againReader( { reinterpret_cast<const uint8_t *>( again.data() ), again.size() } );
	const auto pAgain = CRefPtr<CKestoFile>::Adopt( new CKestoFile( againReader ) );
	const std::string difference =
		FindDifference( *pAgain, !againReader.m_bGood, againReader.GetFailureText(), ReadSlowly( bytes ) );
	Require( difference.empty(), ( "written again it is the same: " + difference ).c_str() );

	std::string trace;
	CReport traceReport;
	ConversionOptions there;
	there.m_To = Format::Chrome;
	if ( !ConvertRecording( *pFile, there, traceReport, into( trace ), []( int ) {} ) )
		return;
	ConversionOptions back;
	back.m_SpoolFolder = "/tmp";
	std::string returned;
	CReport backReport;
	CInputStream traceStream;
	traceStream.OpenMemory( trace );
	Require( ConvertTrace( traceStream, back, backReport, into( returned ), problem ), "the Chrome trace can be read" );
	Require( !backReport.IsDamaged(), "the Chrome trace is whole" );
	CKestoMemoryReader returnedReader( { reinterpret_cast<const uint8_t *>( returned.data() ), returned.size() } );
	const auto pReturned = CRefPtr<CKestoFile>::Adopt( new CKestoFile( returnedReader ) );
	Require( pReturned->GetFrameCount() == pFile->GetFrameCount(), "all frames come back" );
	if ( traceReport.Get( Note::Widened ) > 0 || traceReport.Get( Note::NegativeTime ) > 0 )
		return;
	for ( int i = 0; i < pFile->GetFrameCount(); i++ )
		Require( pReturned->GetFrame( i )->PeekEntry( 0 ) == pFile->GetFrame( i )->PeekEntry( 0 ),
			"frames are as long as before" );
}
} // namespace fuzz
