#include "tools/convert/conversion.h"

#include <algorithm>

#include "tools/convert/chromesink.h"
#include "tools/convert/recordingfeed.h"
#include "tools/convert/speedscopesink.h"
#include "tools/convert/textsinks.h"

namespace convert
{
std::unique_ptr<IFrameSink> MakeSink( const ConversionOptions &options, INodeTexts &texts, CReport &report,
	ByteOutput output, CRecordingSink::NodeRecords records )
{
	switch ( options.m_To )
	{
		case Format::Chrome:
			return std::make_unique<CChromeSink>( texts, report, std::move( output ), options.m_Title );
		case Format::Speedscope:
			return std::make_unique<CSpeedscopeSink>( texts, report, std::move( output ), options.m_Title );
		case Format::Folded:
			return std::make_unique<CFoldedSink>( texts, report, std::move( output ) );
		case Format::Csv:
			return std::make_unique<CCsvSink>( texts, std::move( output ) );
		case Format::Kesto:
		case Format::Perf:
			break;
	}
	return std::make_unique<CRecordingSink>( texts, report, std::move( output ), std::move( records ) );
}

static bool Import( CInputStream &input, const ConversionOptions &options, CTrace &trace, ImportProblem &problem )
{
	switch ( options.m_From )
	{
		case Format::Speedscope:
			return ImportSpeedscope( input, trace, options.m_Import, problem );
		case Format::Folded:
			return ImportFolded( input, trace, options.m_Import, problem );
		case Format::Perf:
			return ImportPerfScript( input, trace, options.m_Import, problem );
		case Format::Chrome:
		case Format::Kesto:
		case Format::Csv:
			break;
	}
	return ImportChrome( input, trace, problem );
}

bool ConvertTrace( CInputStream &input, const ConversionOptions &options, CReport &report, const ByteOutput &output,
	ImportProblem &problem )
{
	CTrace trace( report, options.m_SpoolFolder, options.m_nRunEvents );
	trace.m_Spool.Expect( input.Size() );
	if ( !Import( input, options, trace, problem ) )
		return false;
	CTraceTexts texts( trace.m_Names );
	const std::unique_ptr<IFrameSink> pSink = MakeSink( options, texts, report, output );
	CFrameCutter cutter( trace, options.m_Cut, *pSink );
	if ( !cutter.Run( options.m_Progress ) )
	{
		problem.m_Text = cutter.Problem();
		return false;
	}
	if ( options.m_To == Format::Chrome || options.m_To == Format::Speedscope )
		report.Add( Note::AddedUp, cutter.ScopeCount() );
	return pSink->Finish();
}

uint64_t MostEntriesOfTrace( int64_t nFileBytes )
{
	constexpr uint64_t PER_BYTE = 64;
	constexpr uint64_t ALWAYS = 1u << 28;
	const uint64_t nBytes = static_cast<uint64_t>( std::max<int64_t>( nFileBytes, 0 ) );
	const bool bAny = nFileBytes < 0 || nBytes > CutOptions::MAX_ENTRIES / PER_BYTE;
	return bAny ? CutOptions::MAX_ENTRIES : std::min( nBytes * PER_BYTE + ALWAYS, CutOptions::MAX_ENTRIES );
}

uint64_t MostEntriesOfRecording( int64_t nFileBytes )
{
	constexpr uint64_t PER_BYTE = 4; // a file has room for one in 3 bytes
	constexpr uint64_t ALWAYS = 1u << 24;
	return static_cast<uint64_t>( nFileBytes ) * PER_BYTE + ALWAYS;
}

bool ConvertRecording( const CKestoFile &file, const ConversionOptions &options, CReport &report,
	const ByteOutput &output, ImportProblem &problem, const std::function<void( int nFrames )> &progress )
{
	CRecordingFeed feed( file, report );
	if ( const uint64_t nEntries = feed.EntryCount(); nEntries > options.m_nMostEntries )
	{
		problem.m_Text = "the nodes are not those of the frames: together they would make " +
						 std::to_string( nEntries ) + " entries, far more than the file holds";
		return false;
	}
	const auto record = [&feed]( const CCallTree::Node &node ) { return feed.Record( node ); };
	const std::unique_ptr<IFrameSink> pSink = MakeSink( options, feed, report, output, record );
	if ( auto *pRecording = dynamic_cast<CRecordingSink *>( pSink.get() ) )
		for ( const CKestoFile::TableString &string : file.GetStringTable() )
			pRecording->AddString( string.m_pText, string.m_nValue );
	else
		feed.CountLosses();
	return feed.Run( *pSink, progress ) && pSink->Finish();
}
} // namespace convert
