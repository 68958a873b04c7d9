#include "tools/texttable.h"

#include <algorithm>
#include <ostream>
#include <string_view>
#include <utility>

#include "tools/text.h"

CTextTable::CTextTable( std::vector<std::string> headings )
	: m_LastHeading( std::move( headings.back() ) )
	, m_Widths( headings.size() - 1 )
{
	headings.pop_back();
	for ( size_t i = 0; i < headings.size(); i++ )
		AddCell( i, headings[i] );
}

void CTextTable::AddRow( std::initializer_list<std::string> cells )
{
	size_t nColumn = 0;
	for ( const std::string &cell : cells )
		AddCell( nColumn++, cell );
	m_nRows++;
}

void CTextTable::AddCell( size_t nColumn, const std::string &cell )
{
	m_Widths[nColumn] = std::max( m_Widths[nColumn], CountCharacters( cell ) );
	m_Cells += cell;
	m_Cells += '\n';
}

void CTextTable::Print( std::ostream &output, const std::function<std::string( size_t nRow )> &lastOf ) const
{
	std::string_view rest = m_Cells;
	for ( size_t nLine = 0; nLine <= m_nRows; nLine++ )
	{
		for ( const size_t nWidth : m_Widths )
		{
			const std::string_view cell = rest.substr( 0, rest.find( '\n' ) );
			output << std::string( nWidth - CountCharacters( cell ), ' ' ) << cell << "  ";
			rest.remove_prefix( cell.size() + 1 );
		}
		output << ( nLine == 0 ? m_LastHeading : lastOf( nLine - 1 ) ) << '\n';
	}
}
