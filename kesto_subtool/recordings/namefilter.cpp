#include "recordings/namefilter.h"

#include <QStringList>

// Those that are not empty. A star between brackets is itself.
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

CNameFilter::CNameFilter( const QString &pattern )
{
	for ( const QString &piece : SplitAtStars( pattern ) )
		m_Pieces.emplace_back( piece, Qt::CaseInsensitive, QRegExp::Wildcard );
}

// What a piece matches has a fixed length, so the first place leaves the most room to those behind it.
bool CNameFilter::Matches( const QString &name ) const
{
	int nFrom = 0;
	for ( const QRegExp &piece : m_Pieces )
	{
		const int nFound = piece.indexIn( name, nFrom );
		if ( nFound < 0 )
			return false;
		nFrom = nFound + piece.matchedLength();
	}
	return true;
}
