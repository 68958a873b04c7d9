// Texts of limited length.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace showbudget
{
// The longest start of `text` with at most nRoom bytes that ends between two characters of UTF-8.
std::string_view CutAtCharacter( std::string_view text, size_t nRoom );

std::string_view TextOrEmpty( const char *pText );

// For files of 8-bit text: a character that Latin-1 does not have becomes '?', a byte that is not UTF-8 stays.
std::string ToLatin1( std::string_view utf8 );

// Copies a text into memory that also holds its terminator, cut if need be, as one line: control characters become
// blanks.
void CopyLine( char *pOut, size_t nOutSize, std::string_view text );

template <size_t nSize>
void CopyLine( char ( &out )[nSize], std::string_view text )
{
	CopyLine( out, nSize, text );
}
} // namespace showbudget
