// Recordings to other formats and back: what the format can hold comes back.
#include <gmock/gmock.h>

#include <random>

#include "recordings/kestomemoryreader.h"
#include "support/randomseed.h"
#include "tests/convert/conversions.h"
#include "tests/recordings/recordingcorpus.h"
#include "tests/recordings/recordingwriter.h"
#include "tests/recordings/slowrecordingreader.h"

namespace
{
using convert::Format;
using convert::Note;
using testing::Each;
using testing::Pair;

std::string TextOf( const std::vector<uint8_t> &bytes )
{
	return { bytes.begin(), bytes.end() };
}

// Frames of a tree of random shape whose nodes are never shorter than their children together. Nodes come up over time.
std::string RandomRecording( std::mt19937 &engine )
{
	const auto random = [&engine] { return static_cast<uint32_t>( engine() ); };
	CRecordingWriter writer;
	writer.Header();
	std::vector<int> parents = { -1 };
	std::vector<std::vector<int>> chains( 1 );
	const int nFrames = 1 + static_cast<int>( random() % 8 );
	for ( int nFrame = 0; nFrame < nFrames; nFrame++ )
	{
		writer.BeginFrame();
		for ( int i = static_cast<int>( random() % 12 ); i > 0; i-- )
		{
			const int nNode = static_cast<int>( parents.size() );
			const int nParent = static_cast<int>( random() % parents.size() );
			parents.push_back( nParent );
			chains.emplace_back();
			chains[static_cast<size_t>( nParent )].insert( chains[static_cast<size_t>( nParent )].begin(), nNode );
			writer.Node( nParent, "n\xE9;\"" + std::to_string( nNode ), nNode, random() % 3 );
		}
		std::vector<uint32_t> times( parents.size() );
		std::vector<unsigned> calls( parents.size() );
		for ( size_t i = parents.size(); i-- > 0; )
		{
			const bool bRan = random() % 4 != 0 || times[i] > 0;
			times[i] += bRan ? random() % 70'000 : 0;
			calls[i] = bRan ? random() % 400 : 0;
			if ( i > 0 )
				times[static_cast<size_t>( parents[i] )] += times[i];
		}
		if ( random() % 6 == 0 ) // a frame may have no timings at all
		{
			writer.EndFrame();
			continue;
		}
		writer.BeginTimings();
		std::vector<int> open = { 0 };
		while ( !open.empty() )
		{
			const size_t nNode = static_cast<size_t>( open.back() );
			open.pop_back();
			writer.Entry( calls[nNode], times[nNode] );
			open.insert( open.end(), chains[nNode].rbegin(), chains[nNode].rend() );
		}
		writer.EndFrame();
	}
	return TextOf( writer.m_Bytes );
}

Conversion Back( const Conversion &there, Format format )
{
	convert::ConversionOptions options;
	options.m_From = format;
	const Conversion back = ConvertText( there.m_Bytes, options );
	EXPECT_TRUE( back.m_bDone ) << back.m_Problem.m_Text;
	EXPECT_FALSE( back.m_Report.IsDamaged() ) << back.m_Report.Lines().front();
	return back;
}

// The first thing in which a recording and one made of it differ, read by two readers.
std::string DifferenceOf( const std::string &made, const std::string &recording )
{
	const std::span<const uint8_t> bytes( reinterpret_cast<const uint8_t *>( made.data() ), made.size() );
	CKestoMemoryReader reader( bytes );
	const auto pFile = CRefPtr<CKestoFile>::Adopt( new CKestoFile( reader ) );
	const SlowRecording expected =
		ReadSlowly( { reinterpret_cast<const uint8_t *>( recording.data() ), recording.size() } );
	return FindDifference( *pFile, !reader.m_bGood, reader.GetFailureText(), expected );
}
} // namespace

TEST( RoundTrip, ARecordingOfARecordingIsTheSameModel )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	for ( int i = 0; i < 40; i++ )
	{
		const std::string recording = RandomRecording( random );
		const Conversion same = ConvertRecordingBytes( recording, Format::Kesto );
		EXPECT_EQ( DifferenceOf( same.m_Bytes, recording ), "" );
		EXPECT_TRUE( same.m_Report.Lines().empty() ) << same.m_Report.Lines().front();
	}
}

TEST( RoundTrip, IdsStringsNegativeTimesAndANamedRootAreKept )
{
	CRecordingWriter writer;
	writer.Header( 7 ).BeginFrame().Node( 2, "root \xFF", 7, 70 ).Node( 7, "a", 5, 50 ).Node( 7, "b", 900, 90 );
	writer.String( "text", 3 ).String( "", 4 );
	writer.BeginTimings().Entry( 1, 0x3FFFFFFF ).Entry( 65535, 0x20000000 ).Entry( 254, 0x1FFFFFFF ).EndFrame();
	const std::string recording = TextOf( writer.m_Bytes );
	EXPECT_EQ( DifferenceOf( ConvertRecordingBytes( recording, Format::Kesto ).m_Bytes, recording ), "" );
}

TEST( RoundTrip, ChromeTracesHoldFramesCallsAndTimes )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	for ( int i = 0; i < 40; i++ )
	{
		const std::string recording = RandomRecording( random );
		const Conversion trace = ConvertRecordingBytes( recording, Format::Chrome );
		EXPECT_EQ( trace.m_Report.Get( Note::Widened ), 0u );
		EXPECT_EQ( FramesOf( Back( trace, Format::Chrome ).m_Bytes ), FramesOf( recording ) );
	}
}

TEST( RoundTrip, SpeedscopeFilesHoldFramesAndTimes )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	for ( int i = 0; i < 40; i++ )
	{
		const std::string recording = RandomRecording( random );
		std::vector<FrameFigures> expected = FramesOf( recording );
		size_t nLost = 0;
		for ( FrameFigures &frame : expected )
		{
			frame[""]; // a frame is there whether it has figures or not
			for ( auto &[path, figures] : frame )
			{
				nLost += figures.first != 1;
				figures.first = 1;
			}
		}
		// A node without calls and time that lies around one with calls is there, too.
		const Conversion file = ConvertRecordingBytes( recording, Format::Speedscope );
		std::vector<FrameFigures> found = FramesOf( Back( file, Format::Speedscope ).m_Bytes );
		for ( size_t nFrame = 0; nFrame < found.size() && nFrame < expected.size(); nFrame++ )
			std::erase_if( found[nFrame], [&]( const auto &entry )
				{ return entry.second == Figures( 1, 0 ) && !expected[nFrame].count( entry.first ); } );
		EXPECT_EQ( found, expected );
		EXPECT_GE( file.m_Report.Get( Note::CallsLost ), nLost > 0 ? 1u : 0u );
	}
}

TEST( RoundTrip, FoldedStacksHoldTheSumsOfTheTimes )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	for ( int i = 0; i < 40; i++ )
	{
		const std::string recording = RandomRecording( random );
		std::map<std::string, int64_t> expected;
		for ( const FrameFigures &frame : FramesOf( recording ) )
			for ( const auto &[path, figures] : frame )
			{
				std::string folded = path;
				std::replace( folded.begin(), folded.end(), ';', ':' );
				expected[folded] += figures.second;
			}
		std::erase_if( expected, []( const auto &entry ) { return entry.second == 0; } );
		std::map<std::string, int64_t> found;
		for ( const FrameFigures &frame :
			FramesOf( Back( ConvertRecordingBytes( recording, Format::Folded ), Format::Folded ).m_Bytes ) )
			for ( const auto &[path, figures] : frame )
				if ( figures.second != 0 )
					found[path] += figures.second;
		EXPECT_EQ( found, expected );
	}
}

TEST( RoundTrip, EveryRecordingOfTheCorpusGoesToEveryFormat )
{
	for ( const CorpusRecording &recording : MakeRecordingCorpus() )
	{
		SCOPED_TRACE( recording.m_Name );
		if ( recording.m_Bytes.size() > 100'000 )
			continue; // chains of 500,000 nodes would be written as stacks of names
		for ( const Format format : { Format::Kesto, Format::Chrome, Format::Speedscope, Format::Folded, Format::Csv } )
		{
			const Conversion conversion = ConvertRecordingBytes( TextOf( recording.m_Bytes ), format );
			ASSERT_TRUE( conversion.m_bDone );
			if ( format == Format::Kesto )
			{
				const SlowRecording made = ReadSlowly(
					{ reinterpret_cast<const uint8_t *>( conversion.m_Bytes.data() ), conversion.m_Bytes.size() } );
				EXPECT_FALSE( made.m_bFailed ) << made.m_Failure;
				EXPECT_EQ( made.m_Frames.size(), ReadSlowly( recording.m_Bytes ).m_Frames.size() );
				EXPECT_EQ( ConvertRecordingBytes( conversion.m_Bytes, Format::Kesto ).m_Bytes, conversion.m_Bytes )
					<< "twice is once";
			}
			else if ( format != Format::Csv && format != Format::Folded )
				Back( conversion, format );
		}
	}
}

TEST( RoundTrip, AFrameWithoutTimingsTakesNoMoreRoomThanInItsFile )
{
	CRecordingWriter writer;
	writer.Header().BeginFrame( 0 ).Node( 0, "a", 1 ).BeginTimings().Entry( 1, 25 ).Entry( 1, 10 ).EndFrame();
	for ( int i = 0; i < 3; i++ )
		writer.BeginFrame( 0 ).EndFrame();
	const std::string recording = TextOf( writer.m_Bytes );
	EXPECT_EQ( ConvertRecordingBytes( recording, Format::Kesto ).m_Bytes, recording );
	EXPECT_EQ( ConvertRecordingBytes( recording, Format::Csv ).m_Bytes,
		"frame,node,parent,depth,name,calls,time_us,exclusive_us\n"
		"0,0,,0,,1,100,60\n0,1,0,1,a,1,40,40\n1,0,,0,,0,0,0\n2,0,,0,,0,0,0\n3,0,,0,,0,0,0\n" );
	EXPECT_EQ( ConvertRecordingBytes( recording, Format::Folded ).m_Bytes, "[frame] 60\na 40\n" );
	for ( const Format format : { Format::Chrome, Format::Speedscope } )
		EXPECT_EQ( FramesOf( Back( ConvertRecordingBytes( recording, format ), format ).m_Bytes ).size(), 4u );
}

TEST( RoundTrip, ARootAmongItsOwnChildrenHidesNoneBehindIt )
{
	CRecordingWriter writer;
	writer.Header().BeginFrame().Node( 0, "one", 1 ).BeginTimings().Entry( 1, 4 ).Entry( 2, 2 );
	writer.Node( 0, "two", 0 ).EndFrame(); // the root becomes its own first child, before "one"
	const std::string recording = TextOf( writer.m_Bytes );
	const Conversion conversion = ConvertRecordingBytes( recording, Format::Csv );
	EXPECT_EQ( conversion.m_Bytes,
		"frame,node,parent,depth,name,calls,time_us,exclusive_us\n0,0,,0,,1,16,8\n0,1,0,1,one,2,8,8\n" );
	EXPECT_EQ( conversion.m_Report.Get( Note::UnreachableNode ), 0u );
}

TEST( RoundTrip, WhatATargetCannotHoldIsSaid )
{
	CRecordingWriter writer;
	writer.Header().BeginFrame().Node( 0, "a", 1, 9 ).Node( 1, "b", 2 ).String( "text", 1 );
	writer.BeginTimings().Entry( 1, 25 ).Entry( 3, 10 ).Entry( 1, 0x3FFFFFFF ).EndFrame(); // the last is -4
																						   // microseconds
	writer.BeginFrame().BeginTimings().Entry( 1, 5 ).Entry( 1, 10 ).Entry( 0, 0 ).EndFrame();
	const std::string recording = TextOf( writer.m_Bytes );
	const convert::CReport chrome = ConvertRecordingBytes( recording, Format::Chrome ).m_Report;
	EXPECT_EQ( chrome.Get( Note::StringsLost ), 1u );
	EXPECT_EQ( chrome.Get( Note::NodeValuesLost ), 1u );
	EXPECT_EQ( chrome.Get( Note::NegativeTime ), 1u );
	EXPECT_EQ( chrome.Get( Note::Widened ), 1u ) << "the second frame is shorter than \"a\" in it";
	EXPECT_EQ( ConvertRecordingBytes( recording, Format::Speedscope ).m_Report.Get( Note::CallsLost ), 1u );
	EXPECT_EQ( ConvertRecordingBytes( recording, Format::Folded ).m_Report.Get( Note::FramesMerged ), 2u );
	EXPECT_FALSE( chrome.IsDamaged() );
}

TEST( RoundTrip, CsvHasALineForEachNodeWithFigures )
{
	CRecordingWriter writer;
	writer.Header().BeginFrame().Node( 0, "a,\"b\"", 1 ).Node( 1, "c", 2 );
	writer.BeginTimings().Entry( 1, 25 ).Entry( 3, 10 ).Entry( 0, 0 ).EndFrame();
	writer.BeginFrame().BeginTimings().Entry( 1, 5 ).Entry( 2, 4 ).Entry( 1, 6 ).EndFrame();
	EXPECT_EQ( ConvertRecordingBytes( TextOf( writer.m_Bytes ), Format::Csv ).m_Bytes,
		"frame,node,parent,depth,name,calls,time_us,exclusive_us\n"
		"0,0,,0,,1,100,60\n"
		"0,1,0,1,\"a,\"\"b\"\"\",3,40,40\n"
		"1,0,,0,,1,20,4\n"
		"1,1,0,1,\"a,\"\"b\"\"\",2,16,-8\n"
		"1,2,1,2,c,1,24,24\n" );
}
