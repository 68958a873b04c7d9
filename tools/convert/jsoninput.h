// RapidJSON's reader on an input stream.
#pragma once

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <array>
#include <cstring>

#include "tools/convert/inputstream.h"

namespace convert
{
// The stream that the reader reads. The reader works on copies of it, which it takes back: what there is to know of a
// position is the input's business, and only where the window ends does a copy talk to the input.
class CJsonInput
{
public:
	using Ch = char;

	explicit CJsonInput( CInputStream &input )
		: m_pInput( &input )
	{
		Follow();
	}

	[[gnu::always_inline]] Ch Peek() const { return *m_pNext; } // 0 at the end
	[[gnu::always_inline]] Ch Take()
	{
		const char c = *m_pNext;
		if ( ++m_pNext >= m_pEnd ) [[unlikely]]
			Refill();
		return c;
	}
	// What is ahead in a string up to its end, an escape, an error, or where the window ends.
	std::string_view PlainText() const
	{
		const char *p = m_pNext;
		while ( p != m_pEnd && IS_PLAIN[static_cast<unsigned char>( *p )] )
			p++;
		return { m_pNext, static_cast<size_t>( p - m_pNext ) };
	}
	void TakePlainText( size_t nBytes )
	{
		m_pNext += nBytes;
		if ( m_pNext >= m_pEnd )
			Refill();
	}

	size_t Tell() const { return static_cast<size_t>( Position() ); }
	Ch *PutBegin() { return nullptr; } // nothing is written back
	void Put( Ch ) {}
	void Flush() {}
	size_t PutEnd( Ch * ) { return 0; }

	int64_t Position() const { return m_pInput->Position() + ( m_pNext - m_pInput->Window().data() ); }
	bool AtEnd() const { return m_pNext == m_pEnd; } // of the input, or of what its limit lets be read
	bool IsCut() const { return AtEnd() && !m_pInput->IsAtLimit(); }

	// The reader keeps a value whole, so that a value that goes on for longer than this ends the input.
	static constexpr int64_t MAX_VALUE = 32 << 20; // bytes
	void LimitValue() { m_pInput->SetLimit( Position() + MAX_VALUE ); }
	void LiftLimit()
	{
		m_pInput->SetLimit( INT64_MAX );
		if ( AtEnd() )
			Refill();
	}

	bool Rewind()
	{
		const bool bDone = m_pInput->Rewind();
		Follow();
		return bDone;
	}

private:
	static constexpr std::array<bool, 256> IS_PLAIN = []
	{
		std::array<bool, 256> isPlain{};
		for ( size_t i = 0x20; i < isPlain.size(); i++ )
			isPlain[i] = i != '"' && i != '\\';
		return isPlain;
	}();

	void Follow()
	{
		if ( m_pInput->Window().empty() )
			m_pInput->More();
		constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
		if ( m_pInput->Position() == 0 && m_pInput->Window().starts_with( BYTE_ORDER_MARK ) )
			m_pInput->Skip( BYTE_ORDER_MARK.size() );
		m_pNext = m_pInput->Window().data();
		m_pEnd = m_pNext + m_pInput->Window().size();
	}
	[[gnu::noinline]] void Refill()
	{
		m_pInput->Skip( m_pInput->Window().size() );
		Follow();
	}

	// In this order: a copy reads the first two at once, and would wait for the last one where it has just been
	// written.
	CInputStream *m_pInput;
	const char *m_pEnd = nullptr;  // of the input's window, which has a 0 behind it
	const char *m_pNext = nullptr; // in it
};

// Numbers come as they are written, so that none is rounded. The reader calls itself for nested values, so handlers
// refuse what is nested deeper than MAX_JSON_DEPTH.
constexpr unsigned JSON_FLAGS =
	rapidjson::kParseNumbersAsStringsFlag | rapidjson::kParseTrailingCommasFlag | rapidjson::kParseStopWhenDoneFlag;
constexpr int MAX_JSON_DEPTH = 256;
} // namespace convert

template <>
struct rapidjson::StreamTraits<convert::CJsonInput>
{
	enum
	{
		copyOptimization = 1
	};
};

// Strings are most of a trace. What of them is not escaped is copied at once; the reader by itself does so only for
// texts that are in memory as a whole.
template <>
template <>
inline void rapidjson::Reader::ScanCopyUnescapedString(
	convert::CJsonInput &input, rapidjson::Reader::StackStream<char> &output )
{
	const std::string_view text = input.PlainText();
	if ( text.empty() )
		return;
	std::memcpy( output.Push( static_cast<rapidjson::SizeType>( text.size() ) ), text.data(), text.size() );
	input.TakePlainText( text.size() );
}

// Copying the stream and taking it back costs more than there usually is to skip.
template <>
inline void rapidjson::SkipWhitespace( convert::CJsonInput &input )
{
	for ( char c = input.Peek(); c == ' ' || c == '\n' || c == '\r' || c == '\t'; c = input.Peek() )
		input.Take();
}
