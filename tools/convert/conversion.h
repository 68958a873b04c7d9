// A whole conversion, apart from files and the command line.
#pragma once

#include <memory>
#include <string>

#include "recordings/kestofile.h"
#include "tools/convert/format.h"
#include "tools/convert/framecutter.h"
#include "tools/convert/framesink.h"
#include "tools/convert/importers.h"
#include "tools/convert/recordingsink.h"

namespace convert
{
struct ConversionOptions
{
	CutOptions m_Cut;
	ImportOptions m_Import;
	Format m_From = Format::Chrome;
	Format m_To = Format::Kesto;
	std::string m_Title;       // of targets that have one: the input's name
	std::string m_SpoolFolder; // takes a temporary file when there are many events
	size_t m_nRunEvents = CEventSpool::RUN_EVENTS;
	CFrameCutter::Progress m_Progress; // of the second half, when the input is read

	// Entries (frames times nodes) of a recording that are written at most.
	uint64_t m_nMostEntries = CutOptions::MAX_ENTRIES;
};

// What one of the events of a trace is named, for sinks.
class CTraceTexts : public INodeTexts
{
public:
	explicit CTraceTexts( const CNameTable &names )
		: m_Names( names )
	{
	}
	std::string_view Name( const CCallTree::Node &node ) override { return m_Names.Get( node.m_nName ); }

private:
	const CNameTable &m_Names;
};

std::unique_ptr<IFrameSink> MakeSink( const ConversionOptions &options, INodeTexts &texts, CReport &report,
	ByteOutput output, CRecordingSink::NodeRecords records = {} );

// Reads an input that is no recording, and writes the output. False when nothing useful came of it: the problem says
// why, unless it was the output that could not be written.
bool ConvertTrace( CInputStream &input, const ConversionOptions &options, CReport &report, const ByteOutput &output,
	ImportProblem &problem );

// As many entries as a trace of that size (-1 = it is not known) may make: far more than its events make in frames that
// anybody looks at, but no gigabytes of a small file.
uint64_t MostEntriesOfTrace( int64_t nFileBytes );

// As many entries as the file of a recording may make: many times those that it has room for, so that only nodes that
// do not belong to its frames make more.
uint64_t MostEntriesOfRecording( int64_t nFileBytes );

// The same for a recording.
bool ConvertRecording( const CKestoFile &file, const ConversionOptions &options, CReport &report,
	const ByteOutput &output, ImportProblem &problem, const std::function<void( int nFrames )> &progress = {} );
} // namespace convert
