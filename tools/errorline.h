// The one line that tells a problem.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// "kesto: FILE: offset N: what". Without a file or an offset (bytes from the file's start) that part is left out. The
// line has no line feed: several lines in `what` are joined by "; ", and other control characters become "?".
std::string FormatErrorLine( std::string_view file, std::optional<int64_t> nOffset, std::string_view what );

// What the system says about the last call that failed ("No such file or directory").
std::string LastSystemError();
