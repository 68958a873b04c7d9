#include "text/wildcardpattern.h"

#include <QStringList>

// The pieces that are not empty.
static QStringList SplitAtStars( const QString &pattern )
{
	QStringList pieces( QString{} );
	bool bInBrackets = false;
	for ( const QChar c : pattern )
	{
		if ( c == '*' && !bInBrackets )
		{
			pieces << QString();
			continue;
		}
		bInBrackets = bInBrackets ? c != ']' : c == '[';
		pieces.last() += c;
	}
	pieces.removeAll( QString() );
	return pieces;
}

CWildcardPattern::CWildcardPattern( const QString &pattern )
{
	for ( const QString &piece : SplitAtStars( pattern ) )
		m_Pieces.emplace_back( piece, Qt::CaseInsensitive, QRegExp::Wildcard );
}

// What a piece matches has a fixed length, so its first place leaves the most room to those behind it.
bool CWildcardPattern::Matches( const QString &text ) const
{
	int nFrom = 0;
	for ( const QRegExp &piece : m_Pieces )
	{
		const int nFound = piece.indexIn( text, nFrom );
		if ( nFound < 0 )
			return false;
		nFrom = nFound + piece.matchedLength();
	}
	return true;
}
