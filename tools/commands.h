// The commands of the program `kesto`. Each registers itself; its options are its own.
#pragma once

#include "tools/command.h"

void AddInfoCommand( CLI::App &app, CommandContext &context );
void AddDumpCommand( CLI::App &app, CommandContext &context );
void AddFramesCommand( CLI::App &app, CommandContext &context );
void AddNodesCommand( CLI::App &app, CommandContext &context );
void AddConvertCommand( CLI::App &app, CommandContext &context );
void AddCompareCommand( CLI::App &app, CommandContext &context );
void AddCheckCommand( CLI::App &app, CommandContext &context );
void AddRepairCommand( CLI::App &app, CommandContext &context );
void AddRecordCommand( CLI::App &app, CommandContext &context );

// All of them, in the order in which the help lists them.
void AddCommands( CLI::App &app, CommandContext &context );
