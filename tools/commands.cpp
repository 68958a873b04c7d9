#include "tools/commands.h"

void AddCommands( CLI::App &app, CommandContext &context )
{
	AddInfoCommand( app, context );
	AddDumpCommand( app, context );
	AddFramesCommand( app, context );
	AddNodesCommand( app, context );
	AddConvertCommand( app, context );
	AddCompareCommand( app, context );
	AddCheckCommand( app, context );
	AddRepairCommand( app, context );
	AddRecordCommand( app, context );
}
