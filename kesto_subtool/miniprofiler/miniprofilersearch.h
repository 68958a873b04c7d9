// Finds rows by a pattern as the user types it.
#pragma once

#include <QRegExp>
#include <QString>
#include <span>
#include <vector>

#include "miniprofiler/miniprofilerrow.h"

// A pattern in which a blank stands for anything, "*" and "?" and "[…]" are wildcards, and case does not matter. It
// matches anywhere in a text; one of blanks only matches everything, one with a bracket that is not closed nothing.
class CMiniProfilerPattern
{
public:
	explicit CMiniProfilerPattern( const QString &text );

	// Takes a time in proportion to the text's length.
	bool Matches( const QString &text ) const;

private:
	// Between two of them there may be anything. One expression for all would try every way to share a text among its
	// wildcards: hours for a name of a million characters.
	std::vector<QRegExp> m_Pieces;
};

// Of these rows the ones whose name matches, in the same order; when none does, the records one of whose description
// lines matches.
std::vector<CMiniProfilerRow *> FindMiniProfilerRows( std::span<CMiniProfilerRow *const> rows, const QString &text );
