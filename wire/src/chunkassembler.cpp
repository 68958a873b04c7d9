#include "wire/chunkassembler.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

namespace wire
{
CChunkAssembler::CChunkAssembler( const BlockAllocator &allocator )
	: m_Allocator( allocator )
{
	assert( allocator.m_pAlloc && allocator.m_pFree );
}

CChunkAssembler::~CChunkAssembler()
{
	if ( m_pBlock )
		m_Allocator.m_pFree( m_pBlock );
}

CChunkAssembler::Result CChunkAssembler::Feed( std::span<const uint8_t> &bytes )
{
	if ( m_Problem == HeaderProblem::None && m_nFilled < CHUNK_HEADER_SIZE )
		FeedHeader( bytes );
	if ( m_Problem != HeaderProblem::None )
		return Result::Refused;
	if ( m_nFilled < CHUNK_HEADER_SIZE )
		return Result::NeedMore;

	const size_t nTaken = std::min( bytes.size(), ChunkSize() - m_nFilled );
	const bool bWhole = m_nFilled + nTaken == ChunkSize();
	if ( ( nTaken > 0 || bWhole ) && !ReserveBlock( m_nFilled + nTaken ) )
	{
		m_Problem = HeaderProblem::NoMemory;
		return Result::Refused;
	}
	if ( nTaken > 0 )
		std::memcpy( m_pBlock + m_nFilled, bytes.data(), nTaken );
	m_nFilled += nTaken;
	bytes = bytes.subspan( nTaken );
	return bWhole ? Result::Chunk : Result::NeedMore;
}

void CChunkAssembler::FeedHeader( std::span<const uint8_t> &bytes )
{
	const size_t nTaken = std::min( bytes.size(), CHUNK_HEADER_SIZE - m_nFilled );
	std::copy_n( bytes.begin(), nTaken, m_HeaderBytes.begin() + static_cast<ptrdiff_t>( m_nFilled ) );
	m_nFilled += nTaken;
	bytes = bytes.subspan( nTaken );
	if ( m_nFilled == CHUNK_HEADER_SIZE )
		m_Problem = ReadChunkHeader( m_HeaderBytes, m_Header );
}

uint8_t *CChunkAssembler::TakeBlock()
{
	assert( m_pBlock && m_nFilled == ChunkSize() );
	m_nFilled = 0;
	m_nCapacity = 0;
	return std::exchange( m_pBlock, nullptr );
}

// Makes the block hold at least nBytes. It at most doubles, so that its size follows what has arrived, and never grows
// past the chunk.
bool CChunkAssembler::ReserveBlock( size_t nBytes )
{
	constexpr size_t SMALLEST_BLOCK = 4096;
	if ( nBytes <= m_nCapacity )
		return true;
	const size_t nCapacity = std::min( ChunkSize(), std::max( { nBytes, 2 * m_nCapacity, SMALLEST_BLOCK } ) );
	uint8_t *pBlock = static_cast<uint8_t *>( m_Allocator.m_pAlloc( nCapacity ) );
	if ( !pBlock )
		return false;
	if ( m_pBlock )
	{
		std::memcpy( pBlock, m_pBlock, m_nFilled );
		m_Allocator.m_pFree( m_pBlock );
	}
	else
	{
		std::copy( m_HeaderBytes.begin(), m_HeaderBytes.end(), pBlock );
	}
	m_pBlock = pBlock;
	m_nCapacity = nCapacity;
	return true;
}
} // namespace wire
