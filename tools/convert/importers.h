// Reads the formats of other tools.
#pragma once

#include <optional>
#include <string>

#include "tools/convert/inputstream.h"
#include "tools/convert/trace.h"

namespace convert
{
struct ImportOptions
{
	std::optional<double> m_flSampleTime; // microseconds that a sample, or a unit of a weight without one, stands for
};

// All read the whole input into the trace. They repair and count what is damaged; false when the trace cannot take any
// more, the input cannot be read, or nothing of it is what it should be. The problem is one line, with the offset (-1
// for none) that it is about.
struct ImportProblem
{
	std::string m_Text;
	int64_t m_nOffset = -1;
};

bool ImportChrome( CInputStream &input, CTrace &trace, ImportProblem &problem );
bool ImportSpeedscope( CInputStream &input, CTrace &trace, const ImportOptions &options, ImportProblem &problem );
bool ImportPerfScript( CInputStream &input, CTrace &trace, const ImportOptions &options, ImportProblem &problem );
bool ImportFolded( CInputStream &input, CTrace &trace, const ImportOptions &options, ImportProblem &problem );
} // namespace convert
