// Standard output where it goes to a terminal.
#pragma once

#include <streambuf>
#include <string>

// Hands text on with "?" for each character that a terminal would obey, but line feeds and tabs, and for each byte that
// is not UTF-8: names of recordings and engines are data, and a table of them must not reach into the terminal. What is
// written may be cut anywhere, also inside a character. Needs no flush at the end of its life.
class CTerminalBuffer final : public std::streambuf
{
public:
	// terminal must live as long.
	explicit CTerminalBuffer( std::streambuf &terminal );
	~CTerminalBuffer() override;
	CTerminalBuffer( const CTerminalBuffer & ) = delete;
	CTerminalBuffer &operator=( const CTerminalBuffer & ) = delete;

protected:
	int_type overflow( int_type nCharacter ) override;
	std::streamsize xsputn( const char *pText, std::streamsize nLength ) override;
	int sync() override;

private:
	bool HandOn( bool bAtEnd );

	std::streambuf &m_Terminal;
	std::string m_Waiting; // what was not handed on yet
};
