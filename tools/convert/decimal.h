// Decimal numbers as texts write them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace convert
{
constexpr int NANOSECONDS = 0; // exponents of ten
constexpr int MICROSECONDS = 3;
constexpr int MILLISECONDS = 6;
constexpr int SECONDS = 9;

// A number of 10^nUnit nanoseconds as nanoseconds, rounded to the nearest. Digits with a point and an exponent are
// understood; none when the text is something else (NaN, for instance) or the result does not fit. Exact for 18 digits,
// which a double would not be: times since 1970 in nanoseconds have 19.
std::optional<int64_t> ParseTime( std::string_view text, int nUnit );

// A finite number.
std::optional<double> ParseNumber( std::string_view text );
} // namespace convert
