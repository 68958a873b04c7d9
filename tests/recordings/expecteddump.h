// What `kesto dump` is to print, in the plainest way.
#pragma once

#include <string>

#include "tests/recordings/slowrecordingreader.h"

// From the slow reader's model, so that neither the parser nor the command's own writer is asked.
std::string ExpectedDump( const SlowRecording &model );
