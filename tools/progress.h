// How far long work is, on one line of a terminal.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

// Writes "LABEL 42%" over itself at most ten times a second, nothing in the first half second, and clears the line at
// the end. Without a terminal it does nothing.
class CProgress
{
public:
	// The label is shown as one line, without its middle when it is too long. nTotal is in the unit that Show is given,
	// bytes for instance; 0 or less when it is not known, which shows the label alone.
	CProgress( std::ostream *pTerminal, std::string_view label, int64_t nTotal );
	~CProgress();
	CProgress( const CProgress & ) = delete;
	CProgress &operator=( const CProgress & ) = delete;

	void Show( int64_t nDone );

private:
	void Write( const std::string &text );

	std::ostream *m_pTerminal;
	std::string m_Label;
	int64_t m_nTotal;
	double m_flNextTime; // seconds, when the line may be written again
	size_t m_nShown = 0; // characters on the line
};
