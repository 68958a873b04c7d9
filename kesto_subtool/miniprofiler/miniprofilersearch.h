// Finds rows by a pattern as the user types it.
#pragma once

#include <QString>
#include <span>
#include <vector>

#include "miniprofiler/miniprofilerrow.h"
#include "text/wildcardpattern.h"

// The pattern that a user types: a wildcard pattern in which a blank, too, stands for any text.
CWildcardPattern MiniProfilerPattern( const QString &text );

// Of these rows the ones whose name matches, in the same order; when none does, the records one of whose description
// lines matches.
std::vector<CMiniProfilerRow *> FindMiniProfilerRows( std::span<CMiniProfilerRow *const> rows, const QString &text );
