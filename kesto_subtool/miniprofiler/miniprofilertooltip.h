// What a description shows when the mouse rests on its record.
#pragma once

#include <QString>

// A description as a tool tip that shows it as it is, with its lines: at most 40 of them and 200 characters of each. A
// tool tip guesses whether a text is markup; this one never is taken for any other than its own.
QString MiniProfilerToolTip( const QString &description );
