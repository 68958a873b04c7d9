#include "tools/command.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <new>

#include "tools/commands.h"
#include "tools/errorline.h"

namespace
{
constexpr const char *ABOUT = "Looks at, checks, repairs and makes recordings (.kesto) of engine frames.";
constexpr const char *STATUSES =
	"Status: 0 fine; 1 done, with damaged input or a failed check; 2 unusable input or wrong usage.\n"
	"kesto COMMAND --help tells more about a command and shows an example.";

std::string MakeFooter( const char *pExample )
{
	std::string footer = "Example:";
	std::string_view rest = pExample;
	while ( !rest.empty() )
	{
		const size_t nEnd = rest.find( '\n' );
		footer += "\n  ";
		footer += rest.substr( 0, nEnd );
		rest = nEnd == std::string_view::npos ? std::string_view() : rest.substr( nEnd + 1 );
	}
	return footer;
}

// The command whose arguments were being read, as it is typed.
std::string ChosenCommand( const CLI::App &app )
{
	const std::vector<const CLI::App *> chosen = app.get_subcommands( {} );
	for ( const CLI::App *pCommand : chosen )
		if ( pCommand->count() > 0 )
			return "kesto " + pCommand->get_name();
	return "kesto";
}

ExitStatus ParseAndRun( CLI::App &app, int nArguments, const char *const *ppArguments, CommandContext &context )
{
	try
	{
		app.parse( nArguments, ppArguments );
		return context.m_Status;
	}
	catch ( const CLI::Success &asked ) // help and version
	{
		app.exit( asked, context.m_Output, context.m_Errors );
		return ExitStatus::Fine;
	}
	catch ( const CLI::ParseError &error )
	{
		const std::string command = ChosenCommand( app );
		const std::vector<std::string> unknown = app.remaining();
		const std::string problem =
			command == "kesto" && !unknown.empty() ? "there is no command \"" + unknown.front() + '"' : error.what();
		context.m_Errors << FormatErrorLine( {}, {}, problem + " (see " + command + " --help)" ) << '\n';
	}
	catch ( const std::bad_alloc & )
	{
		context.m_Errors << FormatErrorLine( {}, {}, "not enough memory" ) << '\n';
	}
	return ExitStatus::Unusable;
}
} // namespace

CLI::App &AddCommand( CLI::App &app, CommandContext &context, const char *pName, const char *pDescription,
	const char *pExample, std::function<ExitStatus()> run )
{
	CLI::App &command = *app.add_subcommand( pName, pDescription );
	command.footer( MakeFooter( pExample ) );
	command.callback( [&context, run = std::move( run )] { context.m_Status = run(); } );
	return command;
}

ExitStatus RunKesto( int nArguments, const char *const *ppArguments, CommandContext &context )
{
	CLI::App app( ABOUT, "kesto" );
	app.footer( STATUSES );
	app.set_version_flag( "--version", "kesto " SHOWBUDGET_VERSION, "Print the version and end" );
	app.require_subcommand( 1 );
	AddCommands( app, context );
	const ExitStatus status = ParseAndRun( app, nArguments, ppArguments, context );
	context.m_Output.flush();
	if ( context.m_Output || status == ExitStatus::Unusable )
		return status;
	context.m_Errors << FormatErrorLine( "standard output", {}, "cannot be written" ) << '\n';
	return ExitStatus::Unusable;
}
