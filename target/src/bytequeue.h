// A ring of bytes that carries blocks from one thread to another without locks.
#pragma once

#include <atomic>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace showbudget
{
// One writer, one reader. A block lies in the ring in one piece, aligned to 8.
template <size_t nSize>
class CByteQueue
{
public:
	// Writer: memory for a block of at most nBytes; null when the reader is that far behind. Nothing is seen by the
	// reader before Commit.
	uint8_t *Reserve( size_t nBytes )
	{
		const size_t nNeeded = sizeof( Link ) + RoundUp( nBytes );
		uint64_t nPosition = m_nWritten.load( std::memory_order_relaxed );
		const uint64_t nLeft = nSize - nPosition % nSize;
		// One more link stays free, so that the mark for "go on at the start" always has its place.
		const bool bWrap = nLeft < nNeeded + sizeof( Link );
		const uint64_t nEnd = nPosition + nNeeded + ( bWrap ? nLeft : 0 );
		if ( nEnd - m_nReadSeen > nSize )
		{
			m_nReadSeen = m_nRead.load( std::memory_order_acquire );
			if ( nEnd - m_nReadSeen > nSize )
				return nullptr;
		}
		if ( bWrap )
		{
			LinkAt( nPosition )->m_nBytes = WRAP;
			nPosition += nLeft;
		}
		m_nReserved = nPosition;
		return m_Memory + nPosition % nSize + sizeof( Link );
	}

	// Writer: publishes the reserved block with the size that it got in the end.
	void Commit( size_t nBytes )
	{
		LinkAt( m_nReserved )->m_nBytes = RoundUp( nBytes );
		m_nWritten.store( m_nReserved + sizeof( Link ) + RoundUp( nBytes ), std::memory_order_release );
	}

	// Reader: the oldest block, valid until Pop; null when there is none.
	const uint8_t *Peek()
	{
		uint64_t nPosition = m_nRead.load( std::memory_order_relaxed );
		if ( nPosition == m_nWritten.load( std::memory_order_acquire ) )
			return nullptr;
		if ( LinkAt( nPosition )->m_nBytes == WRAP )
		{
			nPosition += nSize - nPosition % nSize;
			m_nRead.store( nPosition, std::memory_order_release );
		}
		return m_Memory + nPosition % nSize + sizeof( Link );
	}

	void Pop()
	{
		const uint64_t nPosition = m_nRead.load( std::memory_order_relaxed );
		assert( nPosition != m_nWritten.load( std::memory_order_relaxed ) );
		m_nRead.store( nPosition + sizeof( Link ) + LinkAt( nPosition )->m_nBytes, std::memory_order_release );
	}

	// Reader: throws away everything that is there.
	void Clear() { m_nRead.store( m_nWritten.load( std::memory_order_acquire ), std::memory_order_release ); }

private:
	// In front of every block; WRAP means that the next one begins at the start of the memory.
	struct Link
	{
		uint64_t m_nBytes;
	};
	static constexpr uint64_t WRAP = ~uint64_t( 0 );
	static_assert( ( nSize & ( nSize - 1 ) ) == 0, "positions are taken modulo the size all the time" );

	static constexpr size_t RoundUp( size_t nBytes ) { return ( nBytes + 7 ) & ~size_t( 7 ); }
	Link *LinkAt( uint64_t nPosition ) { return reinterpret_cast<Link *>( m_Memory + nPosition % nSize ); }

	alignas( 64 ) std::atomic<uint64_t> m_nWritten{ 0 }; // positions only grow; modulo the size they are offsets
	uint64_t m_nReserved = 0;                            // writer: where the block being written begins
	uint64_t m_nReadSeen = 0;                            // writer: m_nRead when last looked at
	alignas( 64 ) std::atomic<uint64_t> m_nRead{ 0 };
	alignas( 64 ) uint8_t m_Memory[nSize];
};
} // namespace showbudget
