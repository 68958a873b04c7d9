// Finds texts by a pattern that a user types.
#pragma once

#include <QRegExp>
#include <QString>
#include <vector>

// A wildcard pattern that is looked for anywhere in a text: * is any text, ? any character, [ab] one of these (a star
// between brackets is itself); upper and lower case are the same. An empty pattern, or one of stars only, is in every
// text, one with a bracket that is not closed in none.
class CWildcardPattern
{
public:
	explicit CWildcardPattern( const QString &pattern );

	// Takes a time in proportion to the text's length.
	bool Matches( const QString &text ) const;

private:
	// Between the stars. One expression for all would try every way to share a text among its stars: hours for a text
	// of a million characters.
	std::vector<QRegExp> m_Pieces;
};
