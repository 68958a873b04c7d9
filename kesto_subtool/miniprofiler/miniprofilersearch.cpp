#include "miniprofiler/miniprofilersearch.h"

#include <algorithm>
#include <iterator>

namespace
{
bool DescriptionMatches( const CMiniProfilerRow &row, const CWildcardPattern &pattern )
{
	const CQMiniProfilerRecord *pRecord = AsRecord( &row );
	return pRecord &&
		   pRecord->HasLine( [&]( std::string_view line )
			   { return pattern.Matches( QString::fromUtf8( line.data(), static_cast<int>( line.size() ) ) ); } );
}
} // namespace

CWildcardPattern MiniProfilerPattern( const QString &text )
{
	return CWildcardPattern( QString( text ).replace( ' ', '*' ) );
}

std::vector<CMiniProfilerRow *> FindMiniProfilerRows( std::span<CMiniProfilerRow *const> rows, const QString &text )
{
	const CWildcardPattern pattern = MiniProfilerPattern( text );
	std::vector<CMiniProfilerRow *> found;
	std::ranges::copy_if( rows, std::back_inserter( found ),
		[&]( const CMiniProfilerRow *pRow ) { return pattern.Matches( pRow->Name() ); } );
	if ( found.empty() )
		std::ranges::copy_if( rows, std::back_inserter( found ),
			[&]( const CMiniProfilerRow *pRow ) { return DescriptionMatches( *pRow, pattern ); } );
	return found;
}
