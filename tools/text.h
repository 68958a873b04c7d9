// Texts of recordings and numbers, the way the commands print them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Names in a recording are 8-bit texts, taken as Latin-1. Everything that is printed is UTF-8.
std::string Latin1ToUtf8( std::string_view latin1 );

// None when the text is not UTF-8 or has characters that Latin-1 has not.
std::optional<std::string> Utf8ToLatin1( std::string_view utf8 );

// As Latin1ToUtf8, with "?" for control characters: fits in one line of a table.
std::string NameForTable( std::string_view latin1 );

size_t CountCharacters( std::string_view utf8 ); // not bytes

// A text of at most nCharacters (> 5) characters, with "..." in its middle where some were left out.
std::string ShortenMiddle( std::string_view utf8, size_t nCharacters );

// What rounds to 0 has no sign.
std::string FormatFixed( double flValue, int nDecimals );

// "16.667" for 16667 microseconds.
std::string FormatMilliseconds( double flMicroseconds );

// A decimal number that takes the whole text, finite, and 0 or more. None otherwise.
std::optional<double> ReadAmount( std::string_view text );
