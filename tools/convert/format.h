// The formats that are read and written.
#pragma once

#include <optional>
#include <string_view>

namespace convert
{
enum class Format
{
	Kesto,
	Chrome,
	Speedscope,
	Folded,
	Perf,
	Csv
};

constexpr Format ALL_FORMATS[] = {
	Format::Kesto, Format::Chrome, Format::Speedscope, Format::Folded, Format::Perf, Format::Csv };

const char *NameOf( Format format ); // as --from and --to take it
std::optional<Format> FormatOfName( std::string_view name );
bool CanRead( Format format );
bool CanWrite( Format format );

// By the end of a file's name: .kesto, .speedscope.json, .json (Chrome), .folded, .csv.
std::optional<Format> FormatOfPath( std::string_view path );

// By what a file begins with; none when that looks like nothing that can be read.
std::optional<Format> FormatOfContent( std::string_view head );
} // namespace convert
