// Columns of text, as wide as what stands in them.
#pragma once

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <vector>

// All columns but the last are aligned to the right. The last one (names) is aligned to the left and may hold very
// much, so its texts are not kept but asked for when they are printed. Texts are UTF-8 without line feeds.
class CTextTable
{
public:
	explicit CTextTable( std::vector<std::string> headings ); // at least one

	void AddRow( std::initializer_list<std::string> cells ); // one for each heading but the last

	size_t RowCount() const { return m_nRows; }

	// lastOf gives the last text of a row; the rows count from 0 in the order in which they came.
	void Print( std::ostream &output, const std::function<std::string( size_t nRow )> &lastOf ) const;

private:
	void AddCell( size_t nColumn, const std::string &cell );

	std::string m_LastHeading;
	std::string m_Cells;          // row after row, a line feed behind each
	std::vector<size_t> m_Widths; // characters
	size_t m_nRows = 0;
};
