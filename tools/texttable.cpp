#include "tools/texttable.h"

#include <algorithm>
#include <ostream>

// Characters, not bytes.
static size_t WidthOf( const std::string &utf8 )
{
	return static_cast<size_t>(
		std::count_if( utf8.begin(), utf8.end(), []( char c ) { return ( c & 0xC0 ) != 0x80; } ) );
}

void CTextTable::Print( std::ostream &output ) const
{
	std::vector<size_t> widths( m_Rows.front().size() );
	for ( const std::vector<std::string> &row : m_Rows )
		for ( size_t i = 0; i < row.size(); i++ )
			widths[i] = std::max( widths[i], WidthOf( row[i] ) );
	for ( const std::vector<std::string> &row : m_Rows )
	{
		for ( size_t i = 0; i + 1 < row.size(); i++ )
			output << std::string( widths[i] - WidthOf( row[i] ), ' ' ) << row[i] << "  ";
		output << row.back() << '\n';
	}
}
