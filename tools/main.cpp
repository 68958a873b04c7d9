#include <unistd.h>

#include <iostream>

#include "tools/command.h"
#include "tools/outputfile.h"

int main( int nArguments, char **ppArguments )
{
	std::ios::sync_with_stdio( false );
	RemoveTemporaryFileOnSignals();
	CommandContext context{ std::cout, std::cerr, isatty( STDERR_FILENO ) ? &std::cerr : nullptr };
	context.m_bOutputIsShown = isatty( STDOUT_FILENO );
	return static_cast<int>( RunKesto( nArguments, ppArguments, context ) );
}
