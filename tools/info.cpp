#include <CLI/CLI.hpp>

#include <ostream>

#include "tools/commands.h"
#include "tools/jsonwriter.h"
#include "tools/numberoption.h"
#include "tools/summary.h"
#include "tools/text.h"
#include "tools/texttable.h"
#include "wire/plaintext.h"

namespace
{
struct InfoOptions
{
	std::string m_File;
	bool m_bJson = false;
	size_t m_nTop = 10;
	NodeOrder m_Order = NodeOrder::Total;
};

// Without frames there are no times, which is not the same as times of 0.
void WriteFigure( CJsonWriter &json, const char *pKey, bool bKnown, double flValue )
{
	json.Key( pKey );
	bKnown ? json.Number( flValue ) : json.Null();
}

void WriteFrameTimes( CJsonWriter &json, const Summary &summary )
{
	const bool bKnown = summary.m_nFrames > 0;
	json.Key( "frame_time_us" ).BeginObject();
	WriteFigure( json, "mean", bKnown, summary.m_FrameTimes.Mean() );
	WriteFigure( json, "median", bKnown, summary.m_FrameTimes.Median() );
	WriteFigure( json, "p95", bKnown, summary.m_FrameTimes.Percentile( 95.0 ) );
	WriteFigure( json, "p99", bKnown, summary.m_FrameTimes.Percentile( 99.0 ) );
	json.EndObject();
}

void WriteTopNode( CJsonWriter &json, const CNodeTree &tree, const Summary::Node &node )
{
	const CNodeTree::Row &row = tree.Rows()[node.m_nRow];
	json.BeginObject();
	json.Key( "calls" ).Integer( node.m_Totals.m_nCalls );
	json.Key( "id" ).Integer( row.m_nNode );
	json.Key( "name" ).Text( tree.Name( row ) );
	json.Key( "path" ).Text( tree.Path( row ) );
	json.Key( "self_us" ).Integer( node.m_Totals.m_nSelfTime );
	json.Key( "total_us" ).Integer( node.m_Totals.m_nTime );
	json.EndObject();
}

void PrintJson( std::ostream &output, const LoadedRecording &recording, const CNodeTree &tree, const Summary &summary )
{
	std::string text;
	CJsonWriter json( text );
	json.BeginObject();
	json.Key( "depth" ).Integer( summary.m_nLevels );
	json.Key( "duration_us" ).Integer( summary.m_nDuration );
	json.Key( "failed" ).Bool( recording.m_bFailed );
	json.Key( "failure" ).Text( recording.m_Failure );
	WriteFrameTimes( json, summary );
	json.Key( "frames" ).Integer( summary.m_nFrames );
	json.Key( "nodes" ).Integer( summary.m_nNodes );
	json.Key( "size" ).Integer( summary.m_nSize );
	json.Key( "slowest_frame" );
	if ( summary.m_nSlowestFrame < 0 )
		json.Null();
	else
	{
		json.BeginObject();
		json.Key( "frame" ).Integer( summary.m_nSlowestFrame );
		json.Key( "time_us" ).Integer( summary.m_FrameTimes.Maximum() );
		json.EndObject();
	}
	json.Key( "top_nodes" ).BeginArray();
	for ( const Summary::Node &node : summary.m_TopNodes )
	{
		WriteTopNode( json, tree, node );
		WriteWhenLong( output, text );
	}
	json.EndArray();
	json.EndObject();
	output << text << '\n';
}

void PrintFrameTimes( std::ostream &output, const Summary &summary )
{
	if ( summary.m_nFrames == 0 )
		return;
	const CDistribution &times = summary.m_FrameTimes;
	output << "Frame time     mean " << FormatMilliseconds( times.Mean() ) << " ms, median "
		   << FormatMilliseconds( times.Median() ) << " ms, 95th percentile "
		   << FormatMilliseconds( times.Percentile( 95.0 ) ) << " ms, 99th percentile "
		   << FormatMilliseconds( times.Percentile( 99.0 ) ) << " ms\n"
		   << "Slowest frame  " << summary.m_nSlowestFrame << ", " << FormatMilliseconds( times.Maximum() ) << " ms\n";
}

void PrintTopNodes( std::ostream &output, const CNodeTree &tree, const Summary &summary )
{
	if ( summary.m_TopNodes.empty() || summary.m_nFrames == 0 )
		return;
	output << "\nNodes with the most time:\n";
	CTextTable table( { "total ms", "of all", "self ms", "ms/frame", "calls", "node" } );
	for ( const Summary::Node &node : summary.m_TopNodes )
	{
		const auto flTotal = static_cast<double>( node.m_Totals.m_nTime );
		const auto flDuration = static_cast<double>( summary.m_nDuration );
		table.AddRow( { FormatMilliseconds( flTotal ),
			summary.m_nDuration > 0 ? FormatFixed( 100.0 * flTotal / flDuration, 1 ) + "%" : "-",
			FormatMilliseconds( static_cast<double>( node.m_Totals.m_nSelfTime ) ),
			FormatMilliseconds( flTotal / summary.m_nFrames ), std::to_string( node.m_Totals.m_nCalls ) } );
	}
	table.Print( output,
		[&]( size_t nRow ) { return NameForTable( tree.Path( tree.Rows()[summary.m_TopNodes[nRow].m_nRow] ) ); } );
}

void PrintText( std::ostream &output, const LoadedRecording &recording, const CNodeTree &tree, const Summary &summary )
{
	output << "File           " << wire::ToPlainLine( recording.m_Path ) << '\n'
		   << "Size           " << summary.m_nSize << " bytes\n"
		   << "Frames         " << summary.m_nFrames << ( recording.m_bFailed ? " (the file is damaged)" : "" ) << '\n'
		   << "Nodes          " << summary.m_nNodes << ", depth " << summary.m_nLevels << '\n'
		   << "Duration       " << FormatFixed( static_cast<double>( summary.m_nDuration ) / 1e6, 3 ) << " s\n";
	PrintFrameTimes( output, summary );
	PrintTopNodes( output, tree, summary );
}

ExitStatus Info( CommandContext &context, const InfoOptions &options )
{
	const LoadedRecording recording = LoadRecording( context, options.m_File );
	if ( recording.Status() == ExitStatus::Unusable )
		return ExitStatus::Unusable;
	const CNodeTree tree( *recording.m_pFile );
	const Summary summary = Summarise( recording, tree, options.m_nTop, options.m_Order );
	if ( options.m_bJson )
		PrintJson( context.m_Output, recording, tree, summary );
	else
		PrintText( context.m_Output, recording, tree, summary );
	return recording.Status();
}

std::string TellIfNoOrder( const std::string &name )
{
	return name == "total" || name == "self" ? std::string() : '"' + name + "\" is neither total nor self";
}
} // namespace

void AddInfoCommand( CLI::App &app, CommandContext &context )
{
	const auto pOptions = std::make_shared<InfoOptions>();
	CLI::App &command = AddCommand( app, context, "info", "Sum a recording up: frames, times, the costliest nodes",
		"kesto info run.kesto --top 20 --by self", [&context, pOptions] { return Info( context, *pOptions ); } );
	command.add_option( "FILE", pOptions->m_File, "The recording; - is standard input" )->required();
	command.add_flag( "--json", pOptions->m_bJson, "Print JSON" );
	command.add_option( "--top", pOptions->m_nTop, "How many nodes to list (10)" )
		->type_name( "N" )
		->check( WholeNumberFrom( 0 ) );
	command
		.add_option_function<std::string>(
			"--by",
			[pOptions]( const std::string &name )
			{ pOptions->m_Order = name == "self" ? NodeOrder::Self : NodeOrder::Total; },
			"Which nodes: those with the most time in total, or by themselves (total)" )
		->type_name( "total|self" )
		->check( CLI::Validator( TellIfNoOrder, "" ) );
}
