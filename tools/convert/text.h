// Texts of inputs, which may hold anything, as UTF-8 and as the 8-bit text of recordings.
#pragma once

#include <string>
#include <string_view>

namespace convert
{
bool IsUtf8( std::string_view text ); // shortest forms, no surrogates

// Every byte that belongs to no UTF-8 sequence counts as a Latin-1 character.
std::string ToUtf8( std::string_view text );

// The front of UTF-8 text, at most nBytes long, that ends with a whole character.
std::string_view CutUtf8( std::string_view text, size_t nBytes );

// UTF-8 to Latin-1. What Latin-1 does not have, and NUL, becomes '?' and sets bReplaced.
std::string ToLatin1( std::string_view utf8, bool &bReplaced );
std::string FromLatin1( std::string_view text );
} // namespace convert
