// Texts from outside, made fit to be shown in one line of a widget or a log.
#pragma once

#include <QString>
#include <QStringList>

// One line of plain text: control characters and the ones that change the writing direction become U+FFFD, a tab four
// blanks, and what is longer than nMaxLength is cut with an ellipsis.
QString ToDisplayLine( const QString &text, int nMaxLength );

// The text itself, or its front with an ellipsis: at most nMaxLength (> 0) characters, and never half of one.
QString CutWithEllipsis( const QString &text, int nMaxLength );

// The text as a tool tip that shows it as it is. A tool tip guesses whether it is markup, and no text may decide that.
QString ToToolTip( const QString &text );

// A text cut at its line ends ("\n", "\r\n", "\r"); one line end at the very end starts no further line.
QStringList SplitLines( const QString &text );
