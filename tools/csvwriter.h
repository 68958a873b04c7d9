// Rows of comma-separated values (RFC 4180, with line feeds as line ends).
#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

#include "tools/outputfile.h"

class CCsvWriter
{
public:
	explicit CCsvWriter( COutputFile &output )
		: m_Output( output )
	{
	}

	void Text( std::string_view utf8 ); // in quotes where it needs them
	void Number( double flValue, int nDecimals );
	template <typename T>
	void Integer( T nValue )
	{
		char digits[24];
		Separate();
		m_Row.append( digits, std::to_chars( digits, digits + sizeof( digits ), nValue ).ptr );
	}
	void Empty() { Separate(); }

	bool EndRow(); // false when it could not be written

private:
	void Separate()
	{
		if ( m_bComma )
			m_Row += ',';
		m_bComma = true;
	}

	COutputFile &m_Output;
	std::string m_Row;
	bool m_bComma = false;
};
