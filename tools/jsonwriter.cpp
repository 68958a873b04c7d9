#include "tools/jsonwriter.h"

#include <cmath>
#include <ostream>

static void AppendEscaped( std::string &text, unsigned char nByte )
{
	constexpr char DIGITS[] = "0123456789abcdef";
	switch ( nByte )
	{
		case '"':
			text += "\\\"";
			return;
		case '\\':
			text += "\\\\";
			return;
		case '\b':
			text += "\\b";
			return;
		case '\f':
			text += "\\f";
			return;
		case '\n':
			text += "\\n";
			return;
		case '\r':
			text += "\\r";
			return;
		case '\t':
			text += "\\t";
			return;
		default:
			break;
	}
	if ( nByte >= 0x20 && nByte < 0x7F )
	{
		text += static_cast<char>( nByte );
		return;
	}
	text += "\\u00";
	text += DIGITS[nByte >> 4];
	text += DIGITS[nByte & 15];
}

void CJsonWriter::Text( std::string_view latin1 )
{
	Raw( "\"" );
	for ( const char c : latin1 )
		AppendEscaped( m_Buffer, static_cast<unsigned char>( c ) );
	m_Buffer += '"';
}

void CJsonWriter::Number( double flValue )
{
	if ( !std::isfinite( flValue ) )
		return Null();
	std::array<char, 32> digits;
	const auto end = std::to_chars( digits.data(), digits.data() + digits.size(), flValue ).ptr;
	Raw( { digits.data(), end } );
}

void WriteWhenLong( std::ostream &output, std::string &buffer )
{
	constexpr size_t LONG = 1 << 16;
	if ( buffer.size() < LONG )
		return;
	output << buffer;
	buffer.clear();
}
