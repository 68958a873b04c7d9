#include "tools/terminalbuffer.h"

#include <algorithm>
#include <string_view>

#include "wire/plaintext.h"

namespace
{
constexpr size_t ENOUGH = 1 << 16;          // bytes that are handed on together
constexpr std::string_view LAYOUT = "\n\t"; // characters that are obeyed on purpose

// Bytes at the end of a text that may begin a character whose rest is still to come.
size_t CutOffLength( std::string_view text )
{
	for ( size_t nBack = 1; nBack <= std::min<size_t>( text.size(), 3 ); nBack++ )
	{
		const auto nByte = static_cast<unsigned char>( text[text.size() - nBack] );
		if ( ( nByte & 0xC0 ) == 0x80 )
			continue;
		const size_t nLength = nByte >= 0xF0 ? 4 : nByte >= 0xE0 ? 3 : nByte >= 0xC0 ? 2 : 1;
		return nLength > nBack ? nBack : 0;
	}
	return 0;
}

std::string ToPlainLines( std::string_view text )
{
	std::string plain;
	plain.reserve( text.size() );
	while ( !text.empty() )
	{
		const wire::FrontCharacter front = wire::ReadFrontCharacter( text );
		if ( front.m_bPlain || LAYOUT.find( text.front() ) != LAYOUT.npos )
			plain += text.substr( 0, front.m_nLength );
		else
			plain += '?';
		text.remove_prefix( front.m_nLength );
	}
	return plain;
}
} // namespace

CTerminalBuffer::CTerminalBuffer( std::streambuf &terminal )
	: m_Terminal( terminal )
{
}

CTerminalBuffer::~CTerminalBuffer()
{
	HandOn( true );
	m_Terminal.pubsync();
}

CTerminalBuffer::int_type CTerminalBuffer::overflow( int_type nCharacter )
{
	if ( traits_type::eq_int_type( nCharacter, traits_type::eof() ) )
		return traits_type::not_eof( nCharacter );
	const char c = traits_type::to_char_type( nCharacter );
	return xsputn( &c, 1 ) == 1 ? nCharacter : traits_type::eof();
}

std::streamsize CTerminalBuffer::xsputn( const char *pText, std::streamsize nLength )
{
	m_Waiting.append( pText, static_cast<size_t>( nLength ) );
	return m_Waiting.size() < ENOUGH || HandOn( false ) ? nLength : 0;
}

int CTerminalBuffer::sync()
{
	return HandOn( false ) && m_Terminal.pubsync() == 0 ? 0 : -1;
}

bool CTerminalBuffer::HandOn( bool bAtEnd )
{
	const size_t nTaken = m_Waiting.size() - ( bAtEnd ? 0 : CutOffLength( m_Waiting ) );
	const std::string plain = ToPlainLines( std::string_view( m_Waiting ).substr( 0, nTaken ) );
	m_Waiting.erase( 0, nTaken );
	const auto nLength = static_cast<std::streamsize>( plain.size() );
	return m_Terminal.sputn( plain.data(), nLength ) == nLength;
}
