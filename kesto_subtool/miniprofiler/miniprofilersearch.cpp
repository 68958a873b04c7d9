#include "miniprofiler/miniprofilersearch.h"

#include <algorithm>
#include <iterator>

namespace
{
bool DescriptionMatches( const CMiniProfilerRow &row, const QRegExp &pattern )
{
	const CQMiniProfilerRecord *pRecord = AsRecord( &row );
	if ( !pRecord )
		return false;
	for ( size_t i = 0; i < pRecord->LineCount(); i++ )
	{
		const std::string_view line = pRecord->Line( i );
		if ( pattern.indexIn( QString::fromUtf8( line.data(), static_cast<int>( line.size() ) ) ) >= 0 )
			return true;
	}
	return false;
}
} // namespace

QRegExp MiniProfilerSearchPattern( const QString &text )
{
	QString pattern = text;
	pattern.replace( ' ', '*' );
	return QRegExp( pattern, Qt::CaseInsensitive, QRegExp::Wildcard );
}

std::vector<CMiniProfilerRow *> FindMiniProfilerRows( std::span<CMiniProfilerRow *const> rows, const QString &text )
{
	const QRegExp pattern = MiniProfilerSearchPattern( text );
	std::vector<CMiniProfilerRow *> found;
	std::ranges::copy_if( rows, std::back_inserter( found ),
		[&]( const CMiniProfilerRow *pRow ) { return pattern.indexIn( pRow->Name() ) >= 0; } );
	if ( found.empty() )
		std::ranges::copy_if( rows, std::back_inserter( found ),
			[&]( const CMiniProfilerRow *pRow ) { return DescriptionMatches( *pRow, pattern ); } );
	return found;
}
