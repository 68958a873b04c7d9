// Writes JSON piece by piece.
#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

// The text has no spaces and is plain ASCII: other characters are written as \uXXXX. Commas come by themselves; that
// opening and closing match, and that a key stands before each value of an object, is the caller's part. Text goes to
// the buffer, which whoever writes large things empties from time to time.
class CJsonWriter
{
public:
	explicit CJsonWriter( std::string &buffer )
		: m_Buffer( buffer )
	{
	}

	CJsonWriter &Key( std::string_view name ) // Latin-1, as for Text
	{
		Text( name );
		m_Buffer += ':';
		m_bComma = false;
		return *this;
	}

	void BeginObject() { Open( '{' ); }
	void EndObject() { Close( '}' ); }
	void BeginArray() { Open( '[' ); }
	void EndArray() { Close( ']' ); }

	void Bool( bool bValue ) { Raw( bValue ? "true" : "false" ); }
	void Null() { Raw( "null" ); }
	template <typename T>
	void Integer( T nValue )
	{
		std::array<char, 24> digits;
		const auto end = std::to_chars( digits.data(), digits.data() + digits.size(), nValue ).ptr;
		Raw( { digits.data(), end } );
	}
	// The shortest text that reads back as the same number; null for what is not finite.
	void Number( double flValue );
	void Text( std::string_view latin1 ); // each byte is the code point of that number

private:
	void Separate()
	{
		if ( m_bComma )
			m_Buffer += ',';
		m_bComma = true;
	}
	void Raw( std::string_view text )
	{
		Separate();
		m_Buffer += text;
	}
	void Open( char c )
	{
		Separate();
		m_Buffer += c;
		m_bComma = false;
	}
	void Close( char c )
	{
		m_Buffer += c;
		m_bComma = true;
	}

	std::string &m_Buffer;
	bool m_bComma = false; // something stands before the next value
};

// Empties a buffer into the output once it is long: what is large needs not be there as a whole.
void WriteWhenLong( std::ostream &output, std::string &buffer );
