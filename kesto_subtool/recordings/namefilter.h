// Finds nodes by their names.
#pragma once

#include <QRegExp>
#include <QString>
#include <vector>

// A wildcard pattern that is looked for anywhere in a name: * is any text, ? any character, [ab] one of these; upper
// and lower case are the same. An empty pattern is in every name, a wrong one ("[") in none.
class CNameFilter
{
public:
	explicit CNameFilter( const QString &pattern );

	bool Matches( const QString &name ) const;

private:
	std::vector<QRegExp> m_Pieces; // between the stars; as one expression they would be tried in all places together
};
