// Texts of engines and recordings, made fit to be shown: literally, on one line, and no longer than can be drawn. Kept
// texts stay whole.
#pragma once

#include <QString>
#include <limits>

// One line of plain text in the order of its characters: a tab becomes four blanks; every other control character and
// the invisible ones that end a line, turn the writing direction or hide in a word become U+FFFD. Those that join
// characters, as in pictures of several persons, stay. A longer text than nMaxLength (> 0, UTF-16 units) is cut and
// ends with an ellipsis, never with half a character; of such a text no more is read.
QString ShownText( const QString &text, int nMaxLength = std::numeric_limits<int>::max() );
