#include "tests/convert/conversions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "recordings/kestomemoryreader.h"
#include "tests/recordings/slowrecordingreader.h"

static std::span<const uint8_t> BytesOf( std::string_view text )
{
	return { reinterpret_cast<const uint8_t *>( text.data() ), text.size() };
}

Conversion ConvertText( std::string_view input, convert::ConversionOptions options )
{
	Conversion conversion;
	options.m_SpoolFolder = testing::TempDir();
	convert::CInputStream stream;
	stream.OpenMemory( input );
	const auto output = [&conversion]( std::string_view bytes )
	{
		conversion.m_Bytes += bytes;
		return true;
	};
	conversion.m_bDone = ConvertTrace( stream, options, conversion.m_Report, output, conversion.m_Problem );
	return conversion;
}

Conversion ConvertRecordingBytes( std::string_view recording, convert::Format to )
{
	Conversion conversion;
	CKestoMemoryReader reader( BytesOf( recording ) );
	const auto pFile = CRefPtr<CKestoFile>::Adopt( new CKestoFile( reader ) );
	convert::ConversionOptions options;
	options.m_To = to;
	options.m_Title = "recording";
	const auto output = [&conversion]( std::string_view bytes )
	{
		conversion.m_Bytes += bytes;
		return true;
	};
	conversion.m_bDone = ConvertRecording( *pFile, options, conversion.m_Report, output, conversion.m_Problem );
	return conversion;
}

static std::string PathOf( const SlowRecording &recording, int64_t nNode )
{
	std::string path;
	for ( ; nNode != recording.m_nRoot; nNode = recording.m_Nodes.at( nNode ).m_nParent )
		path = recording.m_Nodes.at( nNode ).m_Name + ( path.empty() ? "" : "/" ) + path;
	return path;
}

std::vector<FrameFigures> FramesOf( std::string_view bytes )
{
	const SlowRecording recording = ReadSlowly( BytesOf( bytes ) );
	EXPECT_FALSE( recording.m_bFailed ) << recording.m_Failure;
	std::vector<FrameFigures> frames;
	for ( const SlowRecording::Frame &frame : recording.m_Frames )
	{
		FrameFigures &figures = frames.emplace_back();
		for ( const auto &[nNode, entry] : frame.m_Entries )
			if ( entry.first != 0 || entry.second != 0 )
			{
				const std::string path = PathOf( recording, nNode );
				EXPECT_EQ( figures.count( path ), 0u ) << "two nodes are " << path;
				figures[path] = { entry.first, static_cast<int32_t>( entry.second ) };
			}
	}
	return frames;
}

std::vector<std::string> TopNodes( std::string_view bytes )
{
	const SlowRecording recording = ReadSlowly( BytesOf( bytes ) );
	std::vector<std::string> names;
	if ( recording.m_Nodes.count( recording.m_nRoot ) == 0 )
		return names;
	for ( int64_t nNode = recording.m_Nodes.at( recording.m_nRoot ).m_nFirstChild; nNode >= 0;
		  nNode = recording.m_Nodes.at( nNode ).m_nNextSibling )
		names.push_back( recording.m_Nodes.at( nNode ).m_Name );
	return names;
}

static std::string Event(
	const char *pPhase, std::string_view name, double flTime, int nThread, const std::string &more )
{
	std::string event = "{";
	if ( !name.empty() )
		event.append( "\"name\":\"" ).append( name ).append( "\"," );
	return event + "\"ph\":\"" + pPhase + "\",\"ts\":" + std::to_string( flTime ) +
		   ",\"pid\":1,\"tid\":" + std::to_string( nThread ) + more + "}";
}

std::string BeginEvent( std::string_view name, double flTime, int nThread )
{
	return Event( "B", name, flTime, nThread, "" );
}

std::string EndEvent( double flTime, int nThread, std::string_view name )
{
	return Event( "E", name, flTime, nThread, "" );
}

std::string CompleteEvent( std::string_view name, double flTime, double flDuration, int nThread )
{
	return Event( "X", name, flTime, nThread, ",\"dur\":" + std::to_string( flDuration ) );
}

std::string Trace( const std::vector<std::string> &events )
{
	std::string text = "[";
	for ( const std::string &event : events )
		text += ( text.size() > 1 ? ",\n" : "" ) + event;
	return text + "]\n";
}
