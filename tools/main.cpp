#include <unistd.h>

#include <iostream>

#include "tools/command.h"
#include "tools/outputfile.h"
#include "tools/terminalbuffer.h"

int main( int nArguments, char **ppArguments )
{
	std::ios::sync_with_stdio( false );
	RemoveTemporaryFileOnSignals();
	const bool bOutputIsShown = isatty( STDOUT_FILENO );
	CTerminalBuffer terminalBuffer( *std::cout.rdbuf() );
	std::ostream terminal( &terminalBuffer );
	CommandContext context{
		bOutputIsShown ? terminal : std::cout, std::cerr, isatty( STDERR_FILENO ) ? &std::cerr : nullptr };
	context.m_bOutputIsShown = bOutputIsShown;
	return static_cast<int>( RunKesto( nArguments, ppArguments, context ) );
}
