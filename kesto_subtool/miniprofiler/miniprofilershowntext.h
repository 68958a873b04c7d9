// Texts of engines, made fit to be shown: literally, in one line, and no longer than can be drawn. Kept texts stay
// whole.
#pragma once

#include <QString>
#include <limits>

// A name is drawn up to this length, which is wider than a column; what is told beside a name up to the other one.
constexpr int MINIPROFILER_MAX_DRAWN_NAME = 256;
constexpr int MINIPROFILER_MAX_DRAWN_ANNOTATION = 64;

// One line of plain text: a tab becomes four blanks, every other control character and every one that changes the
// writing direction U+FFFD. A longer text than nMaxLength (> 0) is cut and ends with an ellipsis, never with half a
// character.
QString MiniProfilerShownText( const QString &text, int nMaxLength = std::numeric_limits<int>::max() );

// A description as a tool tip that shows it as it is, with its lines: at most 40 of them and 200 characters of each. A
// tool tip guesses whether a text is markup; this one never is taken for any other than its own.
QString MiniProfilerToolTip( const QString &description );
