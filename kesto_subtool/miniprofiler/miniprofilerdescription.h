// What an engine says of a scope beside its name: a text whose lines have meanings.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

class CMiniProfilerDescription
{
public:
	// What the lines mean; the fourth has no use here.
	static constexpr size_t LINE_BUDGET = 0;
	static constexpr size_t LINE_FUNCTION = 1;
	static constexpr size_t LINE_FILE = 2;
	static constexpr size_t LINE_PROJECT = 4;
	static constexpr size_t KNOWN_LINES = 5;

	// Keeps a copy, of less than 4 GiB. A line ends with a line feed; text behind the last one is no line. Line 2, the
	// source file, gets lower-case ASCII letters and slashes in place of backslashes.
	explicit CMiniProfilerDescription( std::string_view text );

	std::string_view Text() const { return std::string_view( m_Text ).substr( 0, m_nTextSize ); } // as it came
	size_t LineCount() const { return m_nLines; }
	std::string_view Line( size_t nIndex ) const; // nIndex < KNOWN_LINES; empty for a missing line

	// Whether any line, known or not, is one of those that are looked for.
	bool HasLine( const std::function<bool( std::string_view )> &matches ) const;

private:
	std::string m_Text; // and behind it the file
	uint32_t m_nTextSize;
	uint32_t m_nLines = 0;
	std::array<uint32_t, KNOWN_LINES> m_Ends{};
};
