#include "wire/chunkheader.h"

#include "keel0/strtools.h"
#include "wire/bytewriter.h"

namespace wire
{
void WriteChunkHeader( std::span<uint8_t, CHUNK_HEADER_SIZE> bytes, const ChunkHeader &header )
{
	CByteWriter writer( bytes );
	writer.U32BigEndian( header.m_nType );
	writer.U16BigEndian( header.m_nVersion );
	writer.U16BigEndian( 0 );
	writer.U32BigEndian( header.m_nLength );
}

HeaderProblem ReadChunkHeader( std::span<const uint8_t, CHUNK_HEADER_SIZE> bytes, ChunkHeader &header )
{
	header.m_nType = V_ReadBigEndian32( bytes.data() );
	header.m_nVersion = V_ReadBigEndian16( bytes.data() + 4 );
	header.m_nLength = V_ReadBigEndian32( bytes.data() + 8 );
	if ( V_ReadBigEndian16( bytes.data() + 6 ) != 0 )
		return HeaderProblem::ReservedNotZero;
	return header.m_nLength > MAX_CHUNK_LENGTH ? HeaderProblem::TooLong : HeaderProblem::None;
}

ChunkTypeText DescribeChunkType( uint32_t nType )
{
	static constexpr char DIGITS[] = "0123456789ABCDEF";
	ChunkTypeText text{};
	bool bPrintable = true;
	for ( unsigned i = 0; i < 4; i++ )
	{
		const uint32_t nByte = nType >> ( 24 - 8 * i ) & 0xFF;
		bPrintable = bPrintable && nByte >= 0x20 && nByte < 0x7F;
		text.m_Text[i] = static_cast<char>( nByte );
	}
	if ( bPrintable )
		return text;

	text.m_Text[0] = '0';
	text.m_Text[1] = 'x';
	for ( unsigned i = 0; i < 8; i++ )
		text.m_Text[2 + i] = DIGITS[nType >> ( 28 - 4 * i ) & 15];
	return text;
}
} // namespace wire
