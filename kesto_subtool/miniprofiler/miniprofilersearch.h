// Finds rows by a pattern as the user types it.
#pragma once

#include <QRegExp>
#include <QString>
#include <span>
#include <vector>

#include "miniprofiler/miniprofilerrow.h"

// The pattern in which a blank stands for anything, "*" and "?" and "[…]" are wildcards, and case does not matter. It
// matches anywhere in a text; one of blanks only matches everything.
QRegExp MiniProfilerSearchPattern( const QString &text );

// Of these rows the ones whose name matches, in the same order; when none does, the records one of whose description
// lines matches.
std::vector<CMiniProfilerRow *> FindMiniProfilerRows( std::span<CMiniProfilerRow *const> rows, const QString &text );
