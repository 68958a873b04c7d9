#include "tools/csvwriter.h"

#include "tools/text.h"

void CCsvWriter::Text( std::string_view utf8 )
{
	Separate();
	if ( utf8.find_first_of( ",\"\r\n" ) == std::string_view::npos )
	{
		m_Row += utf8;
		return;
	}
	m_Row += '"';
	for ( const char c : utf8 )
		m_Row.append( c == '"' ? 2 : 1, c );
	m_Row += '"';
}

void CCsvWriter::Number( double flValue, int nDecimals )
{
	Separate();
	m_Row += FormatFixed( flValue, nDecimals );
}

bool CCsvWriter::EndRow()
{
	m_Row += '\n';
	const bool bWritten = m_Output.Write( m_Row );
	m_Row.clear();
	m_bComma = false;
	return bWritten;
}
