#include "wire/sessionchunks.h"

#include "keel0/strtools.h"
#include "utf8.h"
#include "wire/bytewriter.h"

namespace wire
{
namespace
{
constexpr size_t HELLO_NAME_BEGIN = 16;
constexpr size_t PRINT_TEXT_BEGIN = 4;

std::string_view TextFrom( std::span<const uint8_t> payload, size_t nBegin )
{
	return AsText( payload.data() + nBegin, payload.size() - nBegin );
}
} // namespace

std::vector<uint8_t> WriteHello( const Hello &hello )
{
	const std::string_view name = CutText( UpToTerminator( hello.m_Name ), MAX_HELLO_NAME );
	std::vector<uint8_t> payload( HELLO_NAME_BEGIN + name.size() );
	CByteWriter writer( payload );
	writer.U32BigEndian( hello.m_nProtocol );
	writer.U32BigEndian( hello.m_nProcessId );
	writer.U64BigEndian( hello.m_nTickFrequency );
	writer.Text( name );
	return payload;
}

std::optional<Hello> ReadHello( std::span<const uint8_t> payload )
{
	if ( payload.size() < HELLO_NAME_BEGIN )
		return std::nullopt;
	Hello hello;
	hello.m_nProtocol = V_ReadBigEndian32( payload.data() );
	hello.m_nProcessId = V_ReadBigEndian32( payload.data() + 4 );
	hello.m_nTickFrequency = V_ReadBigEndian64( payload.data() + 8 );
	hello.m_Name = CutText( UpToTerminator( TextFrom( payload, HELLO_NAME_BEGIN ) ), MAX_HELLO_NAME );
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
