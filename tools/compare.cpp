#include <CLI/CLI.hpp>

#include <cmath>
#include <ostream>

#include "tools/commands.h"
#include "tools/comparison.h"
#include "tools/errorline.h"
#include "tools/jsonwriter.h"
#include "tools/loadedrecording.h"
#include "tools/progress.h"
#include "tools/text.h"
#include "tools/texttable.h"
#include "wire/plaintext.h"

namespace
{
// The smallest change that is listed.
struct MinChange
{
	double m_flAmount = 0.0;
	bool m_bPercent = false; // else milliseconds

	bool Passes( const ComparedNode &node ) const
	{
		if ( !m_bPercent )
			return std::fabs( node.Change() ) / 1000.0 >= m_flAmount;
		// A node that took nothing before has no percentage; any time at all is more than every one.
		const std::optional<double> flPercent = node.ChangePercent();
		return flPercent ? std::fabs( *flPercent ) >= m_flAmount : m_flAmount == 0.0 || node.Change() != 0.0;
	}
};

struct CompareOptions
{
	std::string m_A;
	std::string m_B;
	std::string m_MinChange = "0";
	bool m_bJson = false;
};

std::optional<MinChange> ReadMinChange( std::string_view text )
{
	MinChange result;
	result.m_bPercent = text.ends_with( '%' );
	if ( result.m_bPercent )
		text.remove_suffix( 1 );
	const std::optional<double> flAmount = ReadAmount( text );
	if ( !flAmount )
		return std::nullopt;
	result.m_flAmount = *flAmount;
	return result;
}

void WriteFigures( CJsonWriter &json, const char *pKey, const std::optional<NodeFigures> &figures )
{
	json.Key( pKey );
	if ( !figures )
		return json.Null();
	json.BeginObject();
	json.Key( "mean_us" ).Number( figures->m_flMean );
	json.Key( "p95_us" ).Number( figures->m_flPercentile95 );
	json.EndObject();
}

void WriteOptional( CJsonWriter &json, const char *pKey, const std::optional<double> &flValue )
{
	json.Key( pKey );
	flValue ? json.Number( *flValue ) : json.Null();
}

void WriteRecording( CJsonWriter &json, const char *pKey, const LoadedRecording &recording )
{
	json.Key( pKey ).BeginObject();
	json.Key( "failed" ).Bool( recording.m_bFailed );
	json.Key( "frames" ).Integer( recording.FrameCount() );
	json.EndObject();
}

void PrintJson( std::ostream &output, const LoadedRecording &a, const LoadedRecording &b, const Comparison &comparison )
{
	std::string text;
	CJsonWriter json( text );
	json.BeginObject();
	WriteRecording( json, "a", a );
	WriteRecording( json, "b", b );
	json.Key( "nodes" ).BeginArray();
	for ( const ComparedNode &node : comparison.m_Nodes )
	{
		json.BeginObject();
		WriteFigures( json, "a", node.m_A );
		WriteFigures( json, "b", node.m_B );
		WriteOptional( json, "change_percent", node.ChangePercent() );
		json.Key( "change_us" ).Number( node.Change() );
		WriteOptional( json, "p", node.m_flProbability );
		json.Key( "path" ).Text( comparison.Path( node ) );
		json.EndObject();
		WriteWhenLong( output, text );
	}
	json.EndArray();
	json.EndObject();
	output << text << '\n';
}

std::string WithSign( const std::string &text )
{
	return text.starts_with( '-' ) ? text : '+' + text;
}

std::string FormatProbability( const std::optional<double> &flProbability )
{
	if ( !flProbability )
		return "-";
	return *flProbability < 0.0001 ? "<0.0001" : FormatFixed( *flProbability, 4 );
}

void PrintText( std::ostream &output, const LoadedRecording &a, const LoadedRecording &b, const Comparison &comparison )
{
	output << "A  " << wire::ToPlainLine( a.m_Path ) << ", frames: " << a.FrameCount() << '\n'
		   << "B  " << wire::ToPlainLine( b.m_Path ) << ", frames: " << b.FrameCount() << "\n\n";
	CTextTable table( { "A mean ms", "B mean ms", "change ms", "change", "p", "A p95 ms", "B p95 ms", "node" } );
	const auto time = []( const std::optional<NodeFigures> &figures, double NodeFigures::*pTime )
	{ return figures ? FormatMilliseconds( ( *figures ).*pTime ) : std::string( "-" ); };
	for ( const ComparedNode &node : comparison.m_Nodes )
	{
		const std::optional<double> flPercent = node.ChangePercent();
		table.AddRow( { time( node.m_A, &NodeFigures::m_flMean ), time( node.m_B, &NodeFigures::m_flMean ),
			WithSign( FormatMilliseconds( node.Change() ) ),
			flPercent ? WithSign( FormatFixed( *flPercent, 1 ) ) + '%' : "-", FormatProbability( node.m_flProbability ),
			time( node.m_A, &NodeFigures::m_flPercentile95 ), time( node.m_B, &NodeFigures::m_flPercentile95 ) } );
	}
	table.Print( output, [&]( size_t nRow ) { return NameForTable( comparison.Path( comparison.m_Nodes[nRow] ) ); } );
}

Comparison CompareWithProgress( CommandContext &context, const LoadedRecording &a, const LoadedRecording &b )
{
	constexpr int64_t STEPS = 1000;
	CProgress progress( context.m_pProgress, "Comparing with " + b.m_Path, STEPS );
	return CompareRecordings( *a.m_pFile, *b.m_pFile,
		[&progress]( double flDone ) { progress.Show( static_cast<int64_t>( flDone * STEPS ) ); } );
}

ExitStatus Compare( CommandContext &context, const CompareOptions &options )
{
	const MinChange minChange = ReadMinChange( options.m_MinChange ).value_or( MinChange() );
	const LoadedRecording a = LoadRecording( context, options.m_A );
	const LoadedRecording b = LoadRecording( context, options.m_B );
	for ( const LoadedRecording *pRecording : { &a, &b } )
	{
		if ( pRecording->Status() == ExitStatus::Unusable )
			return ExitStatus::Unusable;
		if ( pRecording->FrameCount() > 0 )
			continue;
		context.m_Errors << FormatErrorLine( pRecording->m_Path, {}, "there are no frames to compare" ) << '\n';
		return ExitStatus::Unusable;
	}
	Comparison comparison = CompareWithProgress( context, a, b );
	std::erase_if( comparison.m_Nodes, [&]( const ComparedNode &node ) { return !minChange.Passes( node ); } );
	if ( options.m_bJson )
		PrintJson( context.m_Output, a, b, comparison );
	else
		PrintText( context.m_Output, a, b, comparison );
	return std::max( a.Status(), b.Status() );
}
} // namespace

void AddCompareCommand( CLI::App &app, CommandContext &context )
{
	const auto pOptions = std::make_shared<CompareOptions>();
	CLI::App &command =
		AddCommand( app, context, "compare", "Compare two recordings node by node, the largest change first",
			"kesto compare before.kesto after.kesto --min-change 0.05",
			[&context, pOptions] { return Compare( context, *pOptions ); } );
	command.add_option( "A", pOptions->m_A, "The recording to compare with" )->required();
	command.add_option( "B", pOptions->m_B, "The recording that may be faster or slower" )->required();
	command.add_flag( "--json", pOptions->m_bJson, "Print JSON" );
	command
		.add_option( "--min-change", pOptions->m_MinChange,
			"Leave out nodes whose mean changed by less: milliseconds per frame, or percent (5%)" )
		->type_name( "MS" )
		->check(
			[]( const std::string &text ) {
				return ReadMinChange( text ) ? std::string()
											 : '"' + text + "\" is neither milliseconds nor a percentage";
			} );
}
