// What the commands of the program `kesto` share: how one is registered, where it writes and how it ends.
#pragma once

#include <functional>
#include <iosfwd>
#include <string_view>

namespace CLI
{
class App;
}

// The program's exit status.
enum class ExitStatus
{
	Fine = 0,
	Damage = 1,  // done, but the input was damaged or something that was checked is not so
	Unusable = 2 // nothing could be done: the input cannot be used, or the command line is wrong
};

// Outlives the app that commands were added to.
struct CommandContext
{
	std::ostream &m_Output;                 // standard output
	std::ostream &m_Errors;                 // standard error: one line per problem, see errorline.h
	std::ostream *m_pProgress;              // the terminal on which progress is shown; null where nobody watches
	ExitStatus m_Status = ExitStatus::Fine; // of the command that ran
	bool m_bOutputIsShown = false;          // standard output goes to a terminal, too

	// Where the progress of writing to that file is shown: what goes to a terminal itself is progress enough.
	std::ostream *WritingProgress( std::string_view path ) const
	{
		return path == "-" && m_bOutputIsShown ? nullptr : m_pProgress;
	}
};

// Adds a command. `run` is called once after its arguments were read; pExample is shown below the options of --help,
// as it would be typed, one command line per line.
CLI::App &AddCommand( CLI::App &app, CommandContext &context, const char *pName, const char *pDescription,
	const char *pExample, std::function<ExitStatus()> run );

// The whole program. ppArguments[0] is the program's name.
ExitStatus RunKesto( int nArguments, const char *const *ppArguments, CommandContext &context );
