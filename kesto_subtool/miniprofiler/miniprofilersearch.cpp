#include "miniprofiler/miniprofilersearch.h"

#include <QStringList>
#include <algorithm>
#include <iterator>

namespace
{
// A star between brackets is itself.
QStringList SplitAtStars( const QString &pattern )
{
	QStringList pieces( QString{} );
	bool bInBrackets = false;
	for ( const QChar character : pattern )
	{
		if ( character == '*' && !bInBrackets )
		{
			if ( !pieces.last().isEmpty() )
				pieces << QString();
			continue;
		}
		bInBrackets = bInBrackets ? character != ']' : character == '[';
		pieces.last() += character;
	}
	if ( pieces.last().isEmpty() )
		pieces.removeLast();
	return pieces;
}

bool DescriptionMatches( const CMiniProfilerRow &row, const CMiniProfilerPattern &pattern )
{
	const CQMiniProfilerRecord *pRecord = AsRecord( &row );
	if ( !pRecord )
		return false;
	for ( size_t i = 0; i < pRecord->LineCount(); i++ )
	{
		const std::string_view line = pRecord->Line( i );
		if ( pattern.Matches( QString::fromUtf8( line.data(), static_cast<int>( line.size() ) ) ) )
			return true;
	}
	return false;
}
} // namespace

CMiniProfilerPattern::CMiniProfilerPattern( const QString &text )
{
	for ( const QString &piece : SplitAtStars( QString( text ).replace( ' ', '*' ) ) )
		m_Pieces.emplace_back( piece, Qt::CaseInsensitive, QRegExp::Wildcard );
}

// Every piece has a fixed length, so its leftmost place leaves the most room for those behind it.
bool CMiniProfilerPattern::Matches( const QString &text ) const
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

std::vector<CMiniProfilerRow *> FindMiniProfilerRows( std::span<CMiniProfilerRow *const> rows, const QString &text )
{
	const CMiniProfilerPattern pattern( text );
	std::vector<CMiniProfilerRow *> found;
	std::ranges::copy_if( rows, std::back_inserter( found ),
		[&]( const CMiniProfilerRow *pRow ) { return pattern.Matches( pRow->Name() ); } );
	if ( found.empty() )
		std::ranges::copy_if( rows, std::back_inserter( found ),
			[&]( const CMiniProfilerRow *pRow ) { return DescriptionMatches( *pRow, pattern ); } );
	return found;
}
