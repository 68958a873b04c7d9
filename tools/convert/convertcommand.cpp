#include <CLI/CLI.hpp>

#include <cstdlib>
#include <filesystem>
#include <ostream>

#include "tools/commands.h"
#include "tools/convert/conversion.h"
#include "tools/convert/text.h"
#include "tools/errorline.h"
#include "tools/loadedrecording.h"
#include "tools/numberoption.h"
#include "tools/outputfile.h"
#include "tools/progress.h"

namespace
{
using namespace convert;

struct ConvertArguments
{
	std::string m_Input;
	std::string m_Output;
	std::string m_From;
	std::string m_To;
	std::string m_FrameName;
	double m_flPeriod = 0;     // milliseconds; 0 = not given
	double m_flSampleTime = 0; // microseconds; 0 = not given
	std::vector<std::string> m_Threads;
	std::vector<std::string> m_Processes;
};

// One run of the command.
class CConvert
{
public:
	CConvert( const ConvertArguments &arguments, CommandContext &context )
		: m_Arguments( arguments )
		, m_Context( context )
		, m_Output( context.m_Output )
	{
	}

	ExitStatus Run()
	{
		if ( !m_Input.Open( m_Arguments.m_Input ) )
			return Refuse( m_Arguments.m_Input, {}, m_Input.Problem() );
		BeginReading();
		if ( const ExitStatus status = ChooseFormats(); status != ExitStatus::Fine )
			return status;
		if ( !m_Output.Open( m_Arguments.m_Output ) )
			return RefuseOutput();
		SetOptions();
		const ExitStatus status = m_Options.m_From == Format::Kesto ? FromRecording() : FromTrace();
		if ( status == ExitStatus::Unusable )
			return status;
		if ( !m_Output.Commit() )
			return RefuseOutput();
		EndProgress();
		for ( const std::string &line : m_Report.Lines() )
			m_Context.m_Errors << FormatErrorLine( m_Arguments.m_Input, {}, line ) << '\n';
		return status;
	}

private:
	// Before anything else goes to the terminal.
	void EndProgress()
	{
		m_Reading.reset();
		m_Writing.reset();
	}

	ExitStatus Refuse( std::string_view file, std::optional<int64_t> nOffset, std::string_view what )
	{
		EndProgress();
		m_Context.m_Errors << FormatErrorLine( file, nOffset, what ) << '\n';
		return ExitStatus::Unusable;
	}

	ExitStatus RefuseOutput()
	{
		EndProgress();
		m_Context.m_Errors << m_Output.Problem() << '\n';
		return ExitStatus::Unusable;
	}

	ExitStatus ChooseFormats()
	{
		while ( m_Input.More() )
		{
		}
		if ( !m_Input.Problem().empty() )
			return Refuse( m_Arguments.m_Input, m_Input.Position(), m_Input.Problem() );
		const std::optional<Format> from =
			m_Arguments.m_From.empty() ? FormatOfContent( m_Input.Window() ) : FormatOfName( m_Arguments.m_From );
		if ( !from )
			return Refuse( m_Arguments.m_Input, 0, WhyUnknown( m_Input.Window() ) );
		const std::optional<Format> to =
			m_Arguments.m_To.empty() ? FormatOfPath( m_Arguments.m_Output ) : FormatOfName( m_Arguments.m_To );
		if ( !to )
			return Refuse(
				m_Arguments.m_Output, {}, "no known format has a name that ends like this (--to names one)" );
		m_Options.m_From = *from;
		m_Options.m_To = *to;
		const bool bCuts = !m_Arguments.m_FrameName.empty() || m_Arguments.m_flPeriod > 0 ||
						   !m_Arguments.m_Threads.empty() || !m_Arguments.m_Processes.empty();
		if ( *from == Format::Kesto && bCuts )
			return Refuse( m_Arguments.m_Input, {},
				"a recording has its frames and no threads: --frame, --period, --thread and --process do not apply" );
		return ExitStatus::Fine;
	}

	static const char *WhyUnknown( std::string_view head )
	{
		if ( head.empty() )
			return "the file is empty";
		if ( head.starts_with( "\x1F\x8B" ) )
			return "this is packed (gzip): unpack it first";
		return "no known format begins like this (--from names one)";
	}

	void SetOptions()
	{
		constexpr double NANOSECONDS_PER_MILLISECOND = 1e6;
		m_Options.m_Cut.m_FrameName = m_Arguments.m_FrameName;
		m_Options.m_Cut.m_nPeriod = static_cast<int64_t>( m_Arguments.m_flPeriod * NANOSECONDS_PER_MILLISECOND );
		m_Options.m_Cut.m_Threads = m_Arguments.m_Threads;
		m_Options.m_Cut.m_Processes = m_Arguments.m_Processes;
		m_Options.m_Cut.m_nMostEntries = MostEntriesOfTrace( m_Input.Size() );
		if ( m_Arguments.m_flSampleTime > 0 )
			m_Options.m_Import.m_flSampleTime = m_Arguments.m_flSampleTime;
		m_Options.m_Title = ToUtf8( std::filesystem::path( m_Arguments.m_Input ).filename().string() );
		m_Options.m_SpoolFolder = SpoolFolder();
	}

	// Beside the output there is room for what is as large as the output.
	std::string SpoolFolder() const
	{
		std::error_code error;
		const std::filesystem::path output( m_Arguments.m_Output );
		const bool bFile = m_Arguments.m_Output != "-" && ( !std::filesystem::exists( output, error ) ||
															  std::filesystem::is_regular_file( output, error ) );
		if ( bFile )
			return output.has_parent_path() ? output.parent_path().string() : ".";
		return std::filesystem::temp_directory_path( error ).string();
	}

	// Already the first bytes, which tell the format, may be long in coming.
	void BeginReading()
	{
		m_Reading.emplace( m_Context.m_pProgress, "Reading " + m_Arguments.m_Input, m_Input.Size() );
		m_Input.SetProgress(
			[this]( int64_t nPosition )
			{
				if ( m_Reading )
					m_Reading->Show( nPosition );
			} );
	}

	void BeginWriting( int64_t nTotal )
	{
		m_Writing.emplace(
			m_Context.WritingProgress( m_Arguments.m_Output ), "Writing " + m_Arguments.m_Output, nTotal );
	}

	ByteOutput OutputBytes()
	{
		return [this]( std::string_view bytes ) { return m_Output.Write( bytes ); };
	}

	ExitStatus FromTrace()
	{
		m_Options.m_Progress = [&]( uint64_t nDone, uint64_t nTotal )
		{
			m_Reading.reset();
			if ( !m_Writing )
				BeginWriting( static_cast<int64_t>( nTotal ) );
			m_Writing->Show( static_cast<int64_t>( nDone ) );
		};
		ImportProblem problem;
		if ( ConvertTrace( m_Input, m_Options, m_Report, OutputBytes(), problem ) )
			return m_Report.IsDamaged() ? ExitStatus::Damage : ExitStatus::Fine;
		if ( problem.m_Text.empty() )
			return RefuseOutput();
		const std::optional<int64_t> nOffset =
			problem.m_nOffset < 0 ? std::nullopt : std::optional( problem.m_nOffset );
		return Refuse( m_Arguments.m_Input, nOffset, problem.m_Text );
	}

	std::vector<uint8_t> ReadRecording()
	{
		std::vector<uint8_t> bytes;
		do
		{
			bytes.insert( bytes.end(), m_Input.Window().begin(), m_Input.Window().end() );
			m_Input.Skip( m_Input.Window().size() );
		} while ( m_Input.More() );
		m_Reading.reset();
		return bytes;
	}

	ExitStatus FromRecording()
	{
		const std::vector<uint8_t> bytes = ReadRecording();
		if ( !m_Input.Problem().empty() )
			return Refuse( m_Arguments.m_Input, m_Input.Position(), m_Input.Problem() );
		const LoadedRecording recording = DecodeRecording( m_Context, m_Arguments.m_Input, bytes );
		if ( recording.m_bFailed )
			m_Context.m_Errors << FormatErrorLine( m_Arguments.m_Input, recording.m_nOffset,
									  recording.m_Failure +
										  "; frames kept: " + std::to_string( recording.FrameCount() ) )
							   << '\n';
		if ( recording.Status() == ExitStatus::Unusable )
			return ExitStatus::Unusable;
		BeginWriting( recording.FrameCount() );
		ImportProblem problem;
		m_Options.m_nMostEntries = MostEntriesOfRecording( recording.m_nSize );
		if ( ConvertRecording( *recording.m_pFile, m_Options, m_Report, OutputBytes(), problem,
				 [this]( int nFrames ) { m_Writing->Show( nFrames ); } ) )
			return recording.Status();
		return problem.m_Text.empty() ? RefuseOutput() : Refuse( m_Arguments.m_Input, {}, problem.m_Text );
	}

	const ConvertArguments &m_Arguments;
	CommandContext &m_Context;
	std::optional<CProgress> m_Reading;
	std::optional<CProgress> m_Writing;
	CInputStream m_Input;
	COutputFile m_Output;
	CReport m_Report;
	ConversionOptions m_Options;
};

CLI::Validator FormatValidator( bool ( *pMay )( Format ) )
{
	std::string names;
	for ( const Format format : ALL_FORMATS )
		if ( pMay( format ) )
			names += ( names.empty() ? "" : ", " ) + std::string( NameOf( format ) );
	return CLI::Validator(
		[pMay, names]( const std::string &name )
		{
			const std::optional<Format> format = FormatOfName( name );
			return format && pMay( *format ) ? std::string() : '"' + name + "\" is none of " + names;
		},
		names );
}
} // namespace

void AddConvertCommand( CLI::App &app, CommandContext &context )
{
	const auto pArguments = std::make_shared<ConvertArguments>();
	CLI::App &command =
		AddCommand( app, context, "convert", "Make a recording of a trace of another tool, or the other way round",
			"kesto convert trace.json game.kesto --frame Frame --thread Main\n"
			"kesto convert perf.txt perf.kesto --period 100\n"
			"kesto convert game.kesto game.speedscope.json",
			[pArguments, &context] { return CConvert( *pArguments, context ).Run(); } );
	command
		.add_option( "IN", pArguments->m_Input,
			"A recording, Chrome trace-event JSON, a speedscope file, the text of perf script, or folded stacks; "
			"\"-\" is standard input" )
		->required();
	command
		.add_option( "OUT", pArguments->m_Output,
			"Ends in .kesto, .speedscope.json, .json (Chrome), .folded or .csv; \"-\" is standard output (with --to)" )
		->required();
	command.add_option( "--from", pArguments->m_From, "What IN is, where its first bytes do not tell" )
		->type_name( "FORMAT" )
		->check( FormatValidator( CanRead ) );
	command.add_option( "--to", pArguments->m_To, "What OUT is, where its name does not tell" )
		->type_name( "FORMAT" )
		->check( FormatValidator( CanWrite ) );
	CLI::Option *pFrame =
		command.add_option( "--frame", pArguments->m_FrameName, "Each scope of this name begins a frame" )
			->type_name( "NAME" );
	command.add_option( "--period", pArguments->m_flPeriod, "Frames of so many milliseconds" )
		->type_name( "MS" )
		->check( NumberBetween( 0.001, 1e12 ) )
		->excludes( pFrame );
	command
		.add_option( "--thread", pArguments->m_Threads, "Take only this thread, named by name or id; may be repeated" )
		->type_name( "THREAD" )
		->expected( 1 )
		->take_all();
	command
		.add_option(
			"--process", pArguments->m_Processes, "Take only this process, named by name or id; may be repeated" )
		->type_name( "PROCESS" )
		->expected( 1 )
		->take_all();
	command
		.add_option( "--sample-time", pArguments->m_flSampleTime,
			"How many microseconds a sample stands for, where the input does not say so" )
		->type_name( "US" )
		->check( NumberBetween( 0.001, 1e12 ) );
}
