// Runs every command of kesto that reads a recording, in this process, on whatever bytes come. What they print of the
// same file must agree with the model and with each other.
#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/memoryfile.h"
#include "fuzz/printedtext.h"
#include "fuzz/require.h"
#include "recordings/kestomemoryreader.h"
#include "tests/recordings/expecteddump.h"
#include "tools/command.h"
#include "tools/nodetree.h"

namespace
{
// What is printed of all nodes of all frames may be gigabytes, however short the file is.
constexpr int64_t MAX_ENTRIES = 200000;

struct Model
{
	explicit Model( std::span<const uint8_t> bytes )
		: m_Reader( bytes )
		, m_pFile( CRefPtr<CKestoFile>::Adopt( new CKestoFile( m_Reader ) ) )
	{
	}

	int FrameCount() const { return m_pFile->GetFrameCount(); }
	bool IsWhole() const { return m_Reader.m_bGood; }
	ExitStatus Status() const
	{
		if ( IsWhole() )
			return ExitStatus::Fine;
		return FrameCount() > 0 ? ExitStatus::Damage : ExitStatus::Unusable;
	}
	int64_t EntryCount() const
	{
		int64_t nEntries = m_pFile->GetNodeCount() + m_pFile->GetStatisticsCount();
		for ( int i = 0; i < FrameCount(); i++ )
			nEntries += m_pFile->GetFrame( i )->GetCount();
		return nEntries;
	}

	CKestoMemoryReader m_Reader;
	CRefPtr<CKestoFile> m_pFile;
};

struct Run
{
	ExitStatus m_Status;
	std::string m_Output;
};

Run Call( std::vector<const char *> arguments )
{
	arguments.insert( arguments.begin(), "kesto" );
	std::ostringstream output;
	std::ostringstream errors;
	CommandContext context{ output, errors, nullptr };
	const ExitStatus status = RunKesto( static_cast<int>( arguments.size() ), arguments.data(), context );
	const std::string problems = errors.str();
	Require( problems.empty() || problems.back() == '\n', "problems are lines" );
	Require( !problems.empty() || status == ExitStatus::Fine, "a problem is told" );
	const bool bTellsLosses = std::string_view( arguments[1] ) == "convert";
	Require( problems.empty() || bTellsLosses || status != ExitStatus::Fine, "and only a problem" );
	return { status, output.str() };
}

void CheckFigures( const Model &model, const char *pPath )
{
	Require( Call( { "info", pPath } ).m_Status == model.Status(), "info judges as the model does" );
	const Run info = Call( { "info", pPath, "--json", "--by", "self", "--top", "100000" } );
	Require( info.m_Status == model.Status(), "info --json does, too" );
	const Run frames = Call( { "frames", pPath } );
	Require( frames.m_Status == model.Status(), "frames judges as the model does" );
	const Run nodes = Call( { "nodes", pPath } );
	Require( nodes.m_Status == model.Status(), "nodes judges as the model does" );
	if ( model.Status() == ExitStatus::Unusable )
		return;
	const CNodeTree tree( *model.m_pFile );
	const rapidjson::Document summary = fuzz::ReadJson( info.m_Output );
	Require( summary["frames"].GetInt() == model.FrameCount(), "info counts the frames" );
	Require( summary["nodes"].GetUint() == tree.Rows().size(), "and the nodes" );
	Require( summary["top_nodes"].Size() == std::min<size_t>( tree.Rows().size(), 100000 ), "and lists them" );
	Require( fuzz::ReadTable( nodes.m_Output ).size() == tree.Rows().size() + 1, "nodes has a row for each" );
	const auto rows = fuzz::ReadTable( frames.m_Output );
	Require( rows.size() == static_cast<size_t>( model.FrameCount() ) + 1, "frames has a row for each frame" );
	if ( model.FrameCount() == 0 )
		return;
	const Run ofRoot = Call( { "frames", pPath, "--node", "(root)" } );
	const auto rowsOfRoot = fuzz::ReadTable( ofRoot.m_Output );
	for ( size_t i = 1; i < rowsOfRoot.size(); i++ )
		Require( rowsOfRoot[i][2] == rowsOfRoot[i].back(), "whose time is the root's" );
}

void CheckDump( const Model &model, std::span<const uint8_t> bytes, const char *pPath )
{
	if ( model.EntryCount() > MAX_ENTRIES )
		return;
	const Run dump = Call( { "dump", pPath } );
	Require( dump.m_Status == model.Status(), "dump judges as the model does" );
	Require( dump.m_Output == ExpectedDump( ReadSlowly( bytes ) ), "and prints what another reader reads" );
}

void CheckComparison( const Model &model, const char *pPath )
{
	const Run run = Call( { "compare", pPath, pPath, "--json", "--min-change", "0.000001" } );
	const bool bFrames = model.FrameCount() > 0;
	Require( run.m_Status == ( bFrames ? model.Status() : ExitStatus::Unusable ), "compare judges as the model does" );
	Require( !bFrames || fuzz::ReadJson( run.m_Output )["nodes"].Empty(), "a recording does not differ from itself" );
	const Run all = Call( { "compare", pPath, pPath } );
	Require( all.m_Status == run.m_Status, "compare judges the same without JSON" );
	const Run check = Call( { "check", pPath, "--frame", "<=2147483.647", "--percentile", "100" } );
	Require( check.m_Status == ( bFrames ? model.Status() : ExitStatus::Unusable ), "no frame is longer than can be" );
	const Run broken = Call( { "check", pPath, "--budget", "no such node<=1" } );
	Require( broken.m_Status == ExitStatus::Unusable, "a limit that checks nothing is an error" );
	const Run half = Call( { "compare", pPath, "/no/such/file" } );
	Require( half.m_Status == ExitStatus::Unusable && half.m_Output.empty(), "half of two recordings is none" );
}

// Of the output of a command that writes a recording.
void RequireSameFrames( const Model &model, const std::string &output, bool bOnlyOfTheTree )
{
	const Model other( { reinterpret_cast<const uint8_t *>( output.data() ), output.size() } );
	Require( other.IsWhole(), "what was written is whole" );
	Require( other.FrameCount() == model.FrameCount(), "and has the same frames" );
	if ( model.EntryCount() > MAX_ENTRIES )
		return;
	const CNodeTree tree( *model.m_pFile );
	for ( int i = 0; i < model.FrameCount(); i++ )
	{
		const CKestoFile::CTickTimings &a = *model.m_pFile->GetFrame( i );
		const CKestoFile::CTickTimings &b = *other.m_pFile->GetFrame( i );
		for ( const CNodeTree::Row &row : tree.Rows() )
			Require( a.PeekEntry( row.m_nNode ) == b.PeekEntry( row.m_nNode ), "with the same entries" );
		for ( int32_t nNode = 0; !bOnlyOfTheTree && nNode < a.GetCount(); nNode++ )
			Require( a.PeekEntry( nNode ) == b.PeekEntry( nNode ), "all of them" );
	}
}

void CheckRepair( const Model &model, const char *pPath )
{
	const Run run = Call( { "repair", pPath, "-" } );
	Require( run.m_Status == model.Status(), "repair judges as the model does" );
	if ( run.m_Status != ExitStatus::Unusable )
		RequireSameFrames( model, run.m_Output, false );
}

// A conversion writes an entry for each node of the tree and each frame, however short the file is.
bool IsSmallEnoughToConvert( const Model &model )
{
	const auto nNodes = static_cast<int64_t>( CNodeTree( *model.m_pFile ).Rows().size() );
	return nNodes * model.FrameCount() <= MAX_ENTRIES;
}

void CheckConversions( const Model &model, const char *pPath )
{
	if ( !IsSmallEnoughToConvert( model ) )
		return;
	const auto convert = [&]( const char *pFormat )
	{
		const Run run = Call( { "convert", "--from", "kesto", "--to", pFormat, pPath, "-" } );
		Require( run.m_Status == model.Status(), "convert judges as the model does" );
		return run.m_Output;
	};
	const std::string recording = convert( "kesto" );
	const std::string chrome = convert( "chrome" );
	const std::string speedscope = convert( "speedscope" );
	const std::string csv = convert( "csv" );
	const std::string folded = convert( "folded" );
	if ( model.Status() == ExitStatus::Unusable )
		return;
	RequireSameFrames( model, recording, true );
	Require( fuzz::ReadJson( chrome )["traceEvents"].IsArray(), "a Chrome trace has events" );
	Require( fuzz::ReadJson( speedscope )["profiles"].IsArray(), "a speedscope file has profiles" );
	fuzz::ReadTable( csv );
	for ( size_t nBegin = 0; nBegin < folded.size(); nBegin = folded.find( '\n', nBegin ) + 1 )
	{
		const std::string_view line = std::string_view( folded ).substr( nBegin, folded.find( '\n', nBegin ) - nBegin );
		const size_t nBlank = line.rfind( ' ' );
		Require( nBlank != line.npos && line.find_first_not_of( "0123456789.", nBlank + 1 ) == line.npos,
			"a folded stack ends with its time" );
	}
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *pData, size_t nSize )
{
	const std::span<const uint8_t> bytes( pData, nSize );
	const Model model( bytes );
	const fuzz::CMemoryFile file( bytes );
	CheckFigures( model, file.Path() );
	CheckDump( model, bytes, file.Path() );
	CheckComparison( model, file.Path() );
	CheckRepair( model, file.Path() );
	CheckConversions( model, file.Path() );
	return 0;
}
