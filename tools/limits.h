// Limits that a recording must keep.
#pragma once

#include <optional>
#include <string>
#include <string_view>

struct TimeLimit
{
	std::string m_Name; // of a node, or the path to it, as it was typed; empty for the whole frame
	double m_flMilliseconds = 0.0;
	std::string m_Text; // the number as it was typed
};

// Reads "NAME<=MS"; the last "<=" counts, so a name may have one. Blanks around the name and the number do not count.
// None when it is not of that form. An empty name is the whole frame.
std::optional<TimeLimit> ReadTimeLimit( std::string_view text );
