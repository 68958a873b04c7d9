#include "tools/texttable.h"

#include <algorithm>
#include <ostream>

#include "tools/text.h"

void CTextTable::Print( std::ostream &output ) const
{
	std::vector<size_t> widths( m_Rows.front().size() );
	for ( const std::vector<std::string> &row : m_Rows )
		for ( size_t i = 0; i < row.size(); i++ )
			widths[i] = std::max( widths[i], CountCharacters( row[i] ) );
	for ( const std::vector<std::string> &row : m_Rows )
	{
		for ( size_t i = 0; i + 1 < row.size(); i++ )
			output << std::string( widths[i] - CountCharacters( row[i] ), ' ' ) << row[i] << "  ";
		output << row.back() << '\n';
	}
}
