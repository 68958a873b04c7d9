// The 12 bytes in front of every chunk's payload.
#pragma once

#include <cstdint>
#include <span>

#include "wire/chunks.h"

namespace wire
{
// On the wire, all big-endian: u32 type, u16 version, u16 zero, u32 payload length.
struct ChunkHeader
{
	uint32_t m_nType = 0;
	uint16_t m_nVersion = CHUNK_VERSION;
	uint32_t m_nLength = 0; // of the payload, bytes

	friend bool operator==( const ChunkHeader &, const ChunkHeader & ) = default;
};

enum class HeaderProblem
{
	None,
	ReservedNotZero, // the two bytes that must be zero are not: this is no chunk stream
	TooLong,         // the declared length is over MAX_CHUNK_LENGTH
	NoMemory         // the header is right, but an assembler's allocator had no block for the chunk
};

void WriteChunkHeader( std::span<uint8_t, CHUNK_HEADER_SIZE> bytes, const ChunkHeader &header );

// Fills header whatever the result, for messages. The result is never NoMemory.
HeaderProblem ReadChunkHeader( std::span<const uint8_t, CHUNK_HEADER_SIZE> bytes, ChunkHeader &header );

// "PCAT", or "0x00000001" for a code that is not four printable characters. For messages.
struct ChunkTypeText
{
	char m_Text[11];
};
ChunkTypeText DescribeChunkType( uint32_t nType );
} // namespace wire
