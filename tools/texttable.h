// Columns of text, as wide as what stands in them.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

// All columns but the last are aligned to the right, the last one (names) to the left. Texts are UTF-8.
class CTextTable
{
public:
	explicit CTextTable( std::vector<std::string> headings ) { AddRow( std::move( headings ) ); }

	void AddRow( std::vector<std::string> cells ) { m_Rows.push_back( std::move( cells ) ); } // as many as headings
	void Print( std::ostream &output ) const;

private:
	std::vector<std::vector<std::string>> m_Rows;
};
