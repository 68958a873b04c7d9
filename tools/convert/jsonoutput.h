// RapidJSON's writer on an output buffer.
#pragma once

#include <rapidjson/writer.h>

#include <string_view>

#include "tools/convert/framesink.h"

namespace convert
{
// The stream that the writer writes to.
class CJsonOutput
{
public:
	using Ch = char;

	explicit CJsonOutput( ByteOutput output )
		: m_Buffer( std::move( output ) )
	{
	}
	void Put( char c ) { m_Buffer.m_Text += c; }
	void Flush() {} // the writer would do it behind every document

	COutputBuffer m_Buffer;
};

class CJsonTextWriter : public rapidjson::Writer<CJsonOutput>
{
public:
	using rapidjson::Writer<CJsonOutput>::Writer;

	void KeyOf( std::string_view text ) { Key( text.data(), static_cast<rapidjson::SizeType>( text.size() ) ); }
	void Text( std::string_view text ) { String( text.data(), static_cast<rapidjson::SizeType>( text.size() ) ); }
	void Number( std::string_view digits ) { RawValue( digits.data(), digits.size(), rapidjson::kNumberType ); }
};
} // namespace convert
