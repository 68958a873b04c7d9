#include "tools/commands.h"

void AddCommands( CLI::App &app, CommandContext &context )
{
	AddDumpCommand( app, context );
}
