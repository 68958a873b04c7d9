// The commands of the program `kesto`. Each registers itself; its options are its own.
#pragma once

#include "tools/command.h"

void AddDumpCommand( CLI::App &app, CommandContext &context );

// All of them, in the order in which the help lists them.
void AddCommands( CLI::App &app, CommandContext &context );
