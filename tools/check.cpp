#include <CLI/CLI.hpp>

#include <ostream>

#include "tools/commands.h"
#include "tools/errorline.h"
#include "tools/limits.h"
#include "tools/loadedrecording.h"
#include "tools/nodechoice.h"
#include "tools/nodefigures.h"
#include "tools/numberoption.h"
#include "tools/text.h"
#include "tools/texttable.h"
#include "wire/plaintext.h"

namespace
{
struct CheckOptions
{
	std::string m_File;
	std::vector<std::string> m_Budgets;
	std::vector<std::string> m_FrameLimits;
	double m_flPercentile = 99.0;
};

// The limits in the order of the frame's first, then the budgets'.
std::vector<TimeLimit> ReadLimits( const CheckOptions &options )
{
	std::vector<TimeLimit> limits;
	for ( const std::vector<std::string> *pTexts : { &options.m_FrameLimits, &options.m_Budgets } )
		for ( const std::string &text : *pTexts )
			limits.push_back( ReadTimeLimit( text ).value_or( TimeLimit() ) );
	return limits;
}

CDistribution Measure( const CKestoFile &file, const std::vector<int32_t> &nodes )
{
	CNodeGroups group;
	for ( const int32_t nNode : nodes )
		group.Add( nNode, 0 );
	CDistribution result;
	VisitGroupTimes( file, group, [&]( int32_t, const CDistribution &times ) { result = times; } );
	return result;
}

class CCheck
{
public:
	CCheck( CommandContext &context, const LoadedRecording &recording, double flPercentile )
		: m_Context( context )
		, m_Recording( recording )
		, m_Tree( *recording.m_pFile )
		, m_flPercentile( flPercentile )
	{
	}

	void Add( const TimeLimit &limit )
	{
		std::vector<int32_t> nodes{ m_Recording.m_pFile->GetRootNode() };
		if ( !limit.m_Name.empty() )
			nodes = ChooseNodes( m_Tree, limit.m_Name );
		if ( nodes.empty() )
		{
			m_Context.m_Errors << FormatErrorLine(
									  m_Recording.m_Path, {}, "there is no node \"" + limit.m_Name + "\" to check" )
							   << '\n';
			m_Status = ExitStatus::Unusable;
			return;
		}
		// Divided, a whole number of microseconds is exactly the number that its text in milliseconds reads as; the
		// limit multiplied might miss it by a rounding.
		const double flMeasured = Measure( *m_Recording.m_pFile, nodes ).Percentile( m_flPercentile ) / 1000.0;
		const bool bKept = flMeasured <= limit.m_flMilliseconds;
		if ( !bKept )
			m_Status = std::max( m_Status, ExitStatus::Damage );
		m_Table.AddRow( { bKept ? "ok" : "BROKEN", FormatFixed( flMeasured, 3 ), limit.m_Text } );
		m_Names.push_back( limit.m_Name.empty() ? "(frame)" : wire::ToPlainLine( limit.m_Name ) );
	}

	ExitStatus Finish()
	{
		if ( !m_Names.empty() )
		{
			m_Context.m_Output << "Percentile " << m_flPercentile << " of " << m_Recording.FrameCount() << " frames\n";
			m_Table.Print( m_Context.m_Output, [this]( size_t nRow ) { return m_Names[nRow]; } );
		}
		return std::max( m_Status, m_Recording.Status() );
	}

private:
	CommandContext &m_Context;
	const LoadedRecording &m_Recording;
	const CNodeTree m_Tree;
	const double m_flPercentile;
	CTextTable m_Table{ { "result", "measured ms", "limit ms", "node" } };
	std::vector<std::string> m_Names; // of the table's rows
	ExitStatus m_Status = ExitStatus::Fine;
};

ExitStatus Check( CommandContext &context, const CheckOptions &options )
{
	const std::vector<TimeLimit> limits = ReadLimits( options );
	if ( limits.empty() )
	{
		context.m_Errors << FormatErrorLine( {}, {}, "no limit to check: give --budget or --frame" ) << '\n';
		return ExitStatus::Unusable;
	}
	const LoadedRecording recording = LoadRecording( context, options.m_File );
	if ( recording.Status() == ExitStatus::Unusable )
		return ExitStatus::Unusable;
	if ( recording.FrameCount() == 0 )
	{
		context.m_Errors << FormatErrorLine( options.m_File, {}, "there are no frames to check" ) << '\n';
		return ExitStatus::Unusable;
	}
	CCheck check( context, recording, options.m_flPercentile );
	for ( const TimeLimit &limit : limits )
		check.Add( limit );
	return check.Finish();
}

// A budget has a name, the frame has none.
CLI::Validator LimitValidator( bool bNamed )
{
	return CLI::Validator(
		[bNamed]( const std::string &text )
		{
			const std::optional<TimeLimit> limit = ReadTimeLimit( text );
			if ( limit && limit->m_Name.empty() != bNamed )
				return std::string();
			return '"' + text + "\" is not of the form " + ( bNamed ? "NAME<=MS" : "<=MS" );
		},
		"" );
}
} // namespace

void AddCheckCommand( CLI::App &app, CommandContext &context )
{
	const auto pOptions = std::make_shared<CheckOptions>();
	CLI::App &command = AddCommand( app, context, "check",
		"Check that times stay within limits; status 1 when one does not",
		"kesto check run.kesto --budget 'Physics<=4' --budget 'Render/Shadows<=2.5' --frame '<=16.6' --percentile 99",
		[&context, pOptions] { return Check( context, *pOptions ); } );
	command.add_option( "FILE", pOptions->m_File, "The recording; - is standard input" )->required();
	command
		.add_option( "--budget", pOptions->m_Budgets,
			"Time per frame of the nodes of that name or path, in milliseconds; may be repeated" )
		->type_name( "NAME<=MS" )
		->take_all()
		->expected( 1 )
		->allow_extra_args( false )
		->check( LimitValidator( true ) );
	command.add_option( "--frame", pOptions->m_FrameLimits, "Time of a frame, in milliseconds" )
		->type_name( "<=MS" )
		->take_all()
		->expected( 1 )
		->allow_extra_args( false )
		->check( LimitValidator( false ) );
	command
		.add_option(
			"--percentile", pOptions->m_flPercentile, "Which of the times must be within the limit, 0 to 100 (99)" )
		->type_name( "P" )
		->check( NumberBetween( 0.0, 100.0 ) );
}
