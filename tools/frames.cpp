#include <CLI/CLI.hpp>

#include <algorithm>
#include <ostream>

#include "tools/commands.h"
#include "tools/csvwriter.h"
#include "tools/errorline.h"
#include "tools/loadedrecording.h"
#include "tools/nodechoice.h"
#include "tools/nodefigures.h"

namespace
{
struct FramesOptions
{
	std::string m_File;
	std::vector<std::string> m_Nodes;
	std::string m_Output = "-";
	bool m_bCsv = true;
};

struct Column
{
	std::string m_Heading;        // UTF-8
	std::vector<int32_t> m_Nodes; // ascending
};

// All entries of a frame that is stored.
struct FrameFigures
{
	uint64_t m_nCalls = 0;
	int32_t m_nActiveNodes = 0; // called, or with a time
};

// The time of a column's nodes in a frame. The nodes are as many as have the name, the entries as many as the frame
// has.
int64_t SumColumn( const CKestoFile::CTickTimings &frame, const Column &column )
{
	int64_t nTime = 0;
	const CKestoFile::CTickTimings::Storage &storage = frame.GetStorage();
	if ( column.m_Nodes.size() < static_cast<size_t>( storage.m_nStored ) )
	{
		for ( const int32_t nNode : column.m_Nodes )
			nTime += static_cast<int32_t>( frame.PeekEntry( nNode ).m_nTime );
		return nTime;
	}
	VisitEntries( frame,
		[&]( int32_t nNode, const CKestoFile::CTickTimings::Entry &entry )
		{
			if ( std::binary_search( column.m_Nodes.begin(), column.m_Nodes.end(), nNode ) )
				nTime += static_cast<int32_t>( entry.m_nTime );
		} );
	return nTime;
}

FrameFigures SumFrame( const CKestoFile::CTickTimings &frame )
{
	FrameFigures figures;
	VisitEntries( frame,
		[&]( int32_t, const CKestoFile::CTickTimings::Entry &entry )
		{
			figures.m_nCalls += entry.m_nCalls;
			figures.m_nActiveNodes++;
		} );
	return figures;
}

bool WriteHeadings( CCsvWriter &csv, const std::vector<Column> &columns )
{
	for ( const char *pHeading : { "frame", "start_us", "time_us", "calls", "active_nodes" } )
		csv.Text( pHeading );
	for ( const Column &column : columns )
		csv.Text( column.m_Heading + "_us" );
	return csv.EndRow();
}

bool WriteFrames( const CKestoFile &file, const std::vector<Column> &columns, COutputFile &output )
{
	CCsvWriter csv( output );
	if ( !WriteHeadings( csv, columns ) )
		return false;
	const std::vector<int32_t> times = FrameTimes( file );
	int64_t nStart = 0;
	for ( int i = 0; i < file.GetFrameCount(); i++ )
	{
		const CKestoFile::CTickTimings &frame = *file.GetFrame( i );
		const int32_t nTime = times[static_cast<size_t>( i )];
		const FrameFigures figures = SumFrame( frame );
		csv.Integer( i );
		csv.Integer( nStart );
		csv.Integer( nTime );
		csv.Integer( figures.m_nCalls );
		csv.Integer( figures.m_nActiveNodes );
		for ( const Column &column : columns )
			csv.Integer( SumColumn( frame, column ) );
		if ( !csv.EndRow() )
			return false;
		nStart += nTime;
	}
	return true;
}

ExitStatus Frames( CommandContext &context, const FramesOptions &options )
{
	const LoadedRecording recording = LoadRecording( context, options.m_File );
	if ( recording.Status() == ExitStatus::Unusable )
		return ExitStatus::Unusable;
	const CNodeTree tree( *recording.m_pFile );
	std::vector<Column> columns;
	for ( const std::string &name : options.m_Nodes )
	{
		columns.push_back( { name, ChooseNodes( tree, name ) } );
		std::sort( columns.back().m_Nodes.begin(), columns.back().m_Nodes.end() );
		if ( columns.back().m_Nodes.empty() )
		{
			context.m_Errors << FormatErrorLine( options.m_File, {}, "there is no node \"" + name + '"' ) << '\n';
			return ExitStatus::Unusable;
		}
	}
	COutputFile output( context.m_Output );
	if ( output.Open( options.m_Output ) && WriteFrames( *recording.m_pFile, columns, output ) && output.Commit() )
		return recording.Status();
	context.m_Errors << output.Problem() << '\n';
	return ExitStatus::Unusable;
}
} // namespace

void AddFramesCommand( CLI::App &app, CommandContext &context )
{
	const auto pOptions = std::make_shared<FramesOptions>();
	CLI::App &command = AddCommand( app, context, "frames", "Print a line of figures for each frame",
		"kesto frames run.kesto --csv --node Physics > frames.csv",
		[&context, pOptions] { return Frames( context, *pOptions ); } );
	command.add_option( "FILE", pOptions->m_File, "The recording; - is standard input" )->required();
	command.add_flag( "--csv", pOptions->m_bCsv, "Comma-separated values (the only form)" );
	command.add_option( "--node", pOptions->m_Nodes, "Add a column with the time of the nodes of that name or path" )
		->type_name( "NAME" )
		->take_all()
		->expected( 1 )
		->allow_extra_args( false );
	command.add_option( "-o,--output", pOptions->m_Output, "File to write; - is standard output (the default)" );
}
