#include "wire/sessionchunks.h"

#include <algorithm>

#include "keel0/strtools.h"
#include "utf8.h"
#include "wire/bytewriter.h"

namespace wire
{
namespace
{
constexpr size_t HELLO_TEXTS_BEGIN = 16;
constexpr size_t PRINT_TEXT_BEGIN = 4;

std::string_view TextFrom( std::span<const uint8_t> payload, size_t nBegin )
{
	return AsText( payload.data() + nBegin, payload.size() - nBegin );
}

// Takes the text up to the next NUL, or the last one, from the front.
std::string_view TakeText( std::string_view &texts )
{
	const std::string_view text = UpToTerminator( texts );
	texts.remove_prefix( std::min( texts.size(), text.size() + 1 ) );
	return text;
}

std::string_view OneLine( std::string_view refusal )
{
	refusal = UpToTerminator( refusal );
	return CutText( refusal.substr( 0, refusal.find( '\n' ) ), MAX_HELLO_REFUSAL );
}
} // namespace

bool IsToken( std::string_view text )
{
	const auto isControl = []( unsigned char c ) { return c < 0x20 || c == 0x7F; };
	return !text.empty() && text.size() <= MAX_HELLO_TOKEN && std::ranges::none_of( text, isControl );
}

std::vector<uint8_t> WriteHello( const Hello &hello )
{
	std::string texts( CutText( UpToTerminator( hello.m_Name ), MAX_HELLO_NAME ) );
	const std::string_view token = IsToken( hello.m_Token ) ? hello.m_Token : std::string_view();
	const std::string_view refusal = OneLine( hello.m_Refusal );
	if ( !token.empty() || !refusal.empty() )
		texts.append( 1, '\0' ).append( token );
	if ( !refusal.empty() )
		texts.append( 1, '\0' ).append( refusal );

	std::vector<uint8_t> payload( HELLO_TEXTS_BEGIN + texts.size() );
	CByteWriter writer( payload );
	writer.U32BigEndian( hello.m_nProtocol );
	writer.U32BigEndian( hello.m_nProcessId );
	writer.U64BigEndian( hello.m_nTickFrequency );
	writer.Text( texts );
	return payload;
}

std::optional<Hello> ReadHello( std::span<const uint8_t> payload )
{
	if ( payload.size() < HELLO_TEXTS_BEGIN )
		return std::nullopt;
	Hello hello;
	hello.m_nProtocol = V_ReadBigEndian32( payload.data() );
	hello.m_nProcessId = V_ReadBigEndian32( payload.data() + 4 );
	hello.m_nTickFrequency = V_ReadBigEndian64( payload.data() + 8 );
	std::string_view texts = TextFrom( payload, HELLO_TEXTS_BEGIN );
	hello.m_Name = CutText( TakeText( texts ), MAX_HELLO_NAME );
	hello.m_Token = TakeText( texts );
	hello.m_Refusal = OneLine( TakeText( texts ) );
	return hello;
}

std::vector<uint8_t> WritePrint( PrintSeverity severity, std::string_view text )
{
	const std::string_view cut = CutText( text, MAX_PRINT_TEXT );
	std::vector<uint8_t> payload( PRINT_TEXT_BEGIN + cut.size() );
	CByteWriter writer( payload );
	writer.U32BigEndian( static_cast<uint32_t>( severity ) );
	writer.Text( cut );
	return payload;
}

std::optional<PrintLine> ReadPrint( std::span<const uint8_t> payload )
{
	if ( payload.size() < PRINT_TEXT_BEGIN )
		return std::nullopt;
	const uint32_t nSeverity = V_ReadBigEndian32( payload.data() );
	const bool bKnown = nSeverity <= static_cast<uint32_t>( PrintSeverity::Error );
	return PrintLine{ bKnown ? static_cast<PrintSeverity>( nSeverity ) : PrintSeverity::Message,
		TextFrom( payload, PRINT_TEXT_BEGIN ) };
}

std::vector<uint8_t> WriteDropped( uint64_t nFrames )
{
	std::vector<uint8_t> payload( DROPPED_SIZE );
	CByteWriter writer( payload );
	writer.U64BigEndian( nFrames );
	return payload;
}

std::optional<uint64_t> ReadDropped( std::span<const uint8_t> payload )
{
	if ( payload.size() < DROPPED_SIZE )
		return std::nullopt;
	return V_ReadBigEndian64( payload.data() );
}
} // namespace wire
