#include <CLI/CLI.hpp>

#include <limits>
#include <ostream>

#include "tools/accesstoken.h"
#include "tools/budgetsheet.h"
#include "tools/commands.h"
#include "tools/enginesession.h"
#include "tools/errorline.h"
#include "tools/numberoption.h"
#include "tools/progress.h"
#include "tools/text.h"
#include "wire/sessionchunks.h"

namespace
{
struct RecordOptions
{
	std::string m_Address;
	double m_flSeconds = 0.0; // 0 = no limit, as for the next
	int64_t m_nFrames = 0;
	std::string m_Output;
};

class CBudgetRecorder
{
public:
	CBudgetRecorder( CommandContext &context, const RecordOptions &options )
		: m_Context( context )
		, m_Options( options )
		, m_Output( context.m_Output )
		, m_Sheet( m_Output )
		, m_Progress( context.m_pProgress, "Recording " + options.m_Address,
			  static_cast<int64_t>( std::min( options.m_flSeconds, 1e9 ) * 1000.0 ) )
	{
	}

	ExitStatus Run( const EngineAddress &address, const std::string &token )
	{
		if ( !m_Output.Open( m_Options.m_Output ) )
			return FailOutput();
		const double flSeconds =
			m_Options.m_flSeconds > 0.0 ? m_Options.m_flSeconds : std::numeric_limits<double>::max();
		const EngineSessionEnd end = RunEngineSession( address, token, flSeconds,
			[this]( const wire::ChunkHeader &header, std::span<const uint8_t> payload, double flTime )
			{ return OnChunk( header, payload, flTime ); } );
		if ( !m_Output.Problem().empty() )
			return FailOutput();
		if ( !end.m_Problem.empty() )
			Complain( end.m_Problem );
		if ( m_Sheet.FrameCount() == 0 )
		{
			if ( end.m_Problem.empty() )
				Complain( "the engine sent no frames" );
			return ExitStatus::Unusable;
		}
		if ( !m_Output.Commit() )
			return FailOutput();
		TellLosses();
		return m_bComplained ? ExitStatus::Damage : ExitStatus::Fine;
	}

private:
	bool OnChunk( const wire::ChunkHeader &header, std::span<const uint8_t> payload, double flTime )
	{
		m_Progress.Show( static_cast<int64_t>( flTime * 1000.0 ) );
		switch ( header.m_nType )
		{
			case wire::CHUNK_CATEGORIES:
				return m_Sheet.AddCategories( payload );
			case wire::CHUNK_SAMPLE:
				return m_Sheet.AddSample( payload, flTime ) &&
					   ( m_Options.m_nFrames == 0 || m_Sheet.FrameCount() < m_Options.m_nFrames );
			case wire::CHUNK_DROPPED:
				m_nDropped = wire::ReadDropped( payload ).value_or( m_nDropped );
				return true;
			default:
				return true;
		}
	}

	void Complain( const std::string &what )
	{
		m_Context.m_Errors << FormatErrorLine( m_Options.m_Address, {}, what ) << '\n';
		m_bComplained = true;
	}

	ExitStatus FailOutput()
	{
		m_Context.m_Errors << m_Output.Problem() << '\n';
		return ExitStatus::Unusable;
	}

	void TellLosses()
	{
		if ( m_nDropped > 0 )
			Complain( "frames that the engine could not send: " + std::to_string( m_nDropped ) );
		if ( m_Sheet.MalformedCount() > 0 )
			Complain( "chunks that made no sense and were left out: " + std::to_string( m_Sheet.MalformedCount() ) );
		std::string names;
		for ( const std::string &name : m_Sheet.LeftOut() )
			names += ( names.empty() ? "\"" : ", \"" ) + name + '"';
		if ( !names.empty() )
			Complain( "budgets that came later and have no column: " + names +
					  ( m_Sheet.IsMoreLeftOut() ? " and more" : "" ) );
	}

	CommandContext &m_Context;
	const RecordOptions &m_Options;
	COutputFile m_Output;
	CBudgetSheet m_Sheet;
	CProgress m_Progress;
	uint64_t m_nDropped = 0;
	bool m_bComplained = false;
};

ExitStatus Record( CommandContext &context, const RecordOptions &options )
{
	if ( options.m_flSeconds == 0.0 && options.m_nFrames == 0 )
	{
		context.m_Errors << FormatErrorLine( {}, {}, "when to end? Give --seconds or --frames" ) << '\n';
		return ExitStatus::Unusable;
	}
	std::string problem;
	const std::optional<std::string> token = FindAccessToken( problem );
	if ( !token )
	{
		context.m_Errors << FormatErrorLine( {}, {}, problem ) << '\n';
		return ExitStatus::Unusable;
	}
	return CBudgetRecorder( context, options ).Run( *ReadEngineAddress( options.m_Address ), *token );
}

std::string CheckAddress( const std::string &text )
{
	return ReadEngineAddress( text ) ? std::string() : '"' + text + "\" is not HOST[:PORT]";
}

std::string CheckSeconds( const std::string &text )
{
	return ReadAmount( text ).value_or( 0.0 ) > 0.0 ? std::string() : '"' + text + "\" is not a number above 0";
}
} // namespace

void AddRecordCommand( CLI::App &app, CommandContext &context )
{
	const auto pOptions = std::make_shared<RecordOptions>();
	CLI::App &command =
		AddCommand( app, context, "record", "Write the budgets of a running engine to a table, a row per frame",
			"kesto record --connect 127.0.0.1:27190 --seconds 30 budgets.csv",
			[&context, pOptions] { return Record( context, *pOptions ); } );
	command.add_option( "--connect", pOptions->m_Address, "Where the engine listens; port 27190 when none is given" )
		->type_name( "HOST[:PORT]" )
		->required()
		->check( CheckAddress );
	command.add_option( "--seconds", pOptions->m_flSeconds, "End after so long" )
		->type_name( "N" )
		->check( CheckSeconds );
	command.add_option( "--frames", pOptions->m_nFrames, "End after so many frames" )
		->type_name( "N" )
		->check( WholeNumberFrom( 1 ) );
	command.add_option( "OUT", pOptions->m_Output, "File to write (CSV); - is standard output" )->required();
}
