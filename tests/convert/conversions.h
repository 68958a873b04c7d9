// Runs conversions in memory, and reads what came of them.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/convert/conversion.h"

struct Conversion
{
	bool m_bDone = false;
	convert::ImportProblem m_Problem;
	convert::CReport m_Report;
	std::string m_Bytes; // of the target
};

// A Chrome trace to a recording, unless the options say otherwise.
Conversion ConvertText( std::string_view input, convert::ConversionOptions options = {} );
Conversion ConvertRecordingBytes( std::string_view recording, convert::Format to );

// Frames as maps from a node's path ("a/b"; the root's is empty) to its calls and microseconds, without nodes that have
// neither. Read by the tests' own reader. Fails the test when the bytes are no whole recording.
using Figures = std::pair<uint32_t, int32_t>;
using FrameFigures = std::map<std::string, Figures>;
std::vector<FrameFigures> FramesOf( std::string_view recording );

// The children of the root in the order in which a player shows them.
std::vector<std::string> TopNodes( std::string_view recording );

// Events of Chrome traces, of process 1.
std::string BeginEvent( std::string_view name, double flTime, int nThread = 1 );
std::string EndEvent( double flTime, int nThread = 1, std::string_view name = {} );
std::string CompleteEvent( std::string_view name, double flTime, double flDuration, int nThread = 1 );
std::string Trace( const std::vector<std::string> &events ); // the array form
