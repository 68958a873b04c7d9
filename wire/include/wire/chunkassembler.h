// Cuts a stream of bytes into chunks.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "wire/chunkheader.h"

namespace wire
{
// Where an assembler takes its blocks from and gives them back to; both functions must be given.
// m_pAlloc may return null, which refuses the chunk.
struct BlockAllocator
{
	void *( *m_pAlloc )( size_t nBytes );
	void ( *m_pFree )( void *pBlock );
};

// Takes bytes as they come, in pieces of any size, and hands out whole chunks in order. A block grows with the bytes
// that really arrive, so a peer that only announces a long chunk costs nothing.
class CChunkAssembler
{
public:
	enum class Result
	{
		NeedMore, // every byte was taken, no chunk is whole yet
		Chunk,    // a chunk is whole: TakeBlock() before the next Feed, which takes nothing otherwise
		Refused   // the header at hand cannot be: Problem() and Header() say why; nothing is taken any more
	};

	explicit CChunkAssembler( const BlockAllocator &allocator );
	~CChunkAssembler();
	CChunkAssembler( const CChunkAssembler & ) = delete;
	CChunkAssembler &operator=( const CChunkAssembler & ) = delete;

	// Takes bytes from the front of `bytes` (which shrinks by them) up to the end of the current chunk.
	Result Feed( std::span<const uint8_t> &bytes );

	// The whole chunk: CHUNK_HEADER_SIZE bytes of header, then Header().m_nLength bytes. The caller owns the block from
	// now on and frees it with the allocator.
	uint8_t *TakeBlock();

	// Of the chunk at hand, and of the last one until the next header is whole.
	const ChunkHeader &Header() const { return m_Header; }
	HeaderProblem Problem() const { return m_Problem; }
	size_t Pending() const { return m_nFilled; } // bytes of an unfinished chunk

private:
	size_t ChunkSize() const { return CHUNK_HEADER_SIZE + m_Header.m_nLength; } // once the header is whole
	void FeedHeader( std::span<const uint8_t> &bytes );
	bool ReserveBlock( size_t nBytes );

	BlockAllocator m_Allocator;
	std::array<uint8_t, CHUNK_HEADER_SIZE> m_HeaderBytes{};
	ChunkHeader m_Header;
	HeaderProblem m_Problem = HeaderProblem::None;
	uint8_t *m_pBlock = nullptr; // null until the payload begins
	size_t m_nCapacity = 0;
	size_t m_nFilled = 0; // bytes of the current chunk, its header included
};
} // namespace wire
