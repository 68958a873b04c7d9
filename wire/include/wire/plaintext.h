// Texts that somebody else wrote (the other side of a connection, a file), made fit for a log or a terminal: no
// character of theirs is obeyed.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace wire
{
// What a text begins with.
struct FrontCharacter
{
	size_t m_nLength; // bytes; 1 where they are not UTF-8
	bool m_bPlain;    // false: a control character, one that ends a line or turns the direction of text, or not UTF-8
};

// utf8 is not empty. A sequence that the end of the text cuts off is not UTF-8.
FrontCharacter ReadFrontCharacter( std::string_view utf8 );

// The text as one line of UTF-8, with "?" for each character that is not plain.
std::string ToPlainLine( std::string_view utf8 );
} // namespace wire
