// Texts from outside, made fit to be shown in one line of a widget or a log.
#pragma once

#include <QString>
#include <QStringList>

// One line of plain text: control characters and the ones that change the writing direction become U+FFFD, a tab four
// blanks, and what is longer than nMaxLength is cut with an ellipsis.
QString ToDisplayLine( const QString &text, int nMaxLength );

// A text cut at its line ends ("\n", "\r\n", "\r"); one line end at the very end starts no further line.
QStringList SplitLines( const QString &text );
