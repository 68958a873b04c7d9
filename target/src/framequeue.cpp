#include "framequeue.h"

#include <cassert>

namespace showbudget
{
namespace
{
constexpr size_t RoundUp( size_t nBytes )
{
	return ( nBytes + 7 ) & ~size_t( 7 );
}
} // namespace

CFrameQueue::Link *CFrameQueue::LinkAt( uint64_t nPosition )
{
	return reinterpret_cast<Link *>( m_Memory + nPosition % FRAME_QUEUE_BYTES );
}

uint8_t *CFrameQueue::Reserve( size_t nBytes )
{
	const size_t nNeeded = sizeof( Link ) + RoundUp( nBytes );
	uint64_t nPosition = m_nWritten.load( std::memory_order_relaxed );
	const uint64_t nLeft = FRAME_QUEUE_BYTES - nPosition % FRAME_QUEUE_BYTES;
	// One more link stays free, so that the mark for "go on at the start" always has its place.
	const bool bWrap = nLeft < nNeeded + sizeof( Link );
	const uint64_t nEnd = nPosition + nNeeded + ( bWrap ? nLeft : 0 );
	if ( nEnd - m_nReadSeen > FRAME_QUEUE_BYTES )
	{
		m_nReadSeen = m_nRead.load( std::memory_order_acquire );
		if ( nEnd - m_nReadSeen > FRAME_QUEUE_BYTES )
			return nullptr;
	}
	if ( bWrap )
	{
		LinkAt( nPosition )->m_nBytes = WRAP;
		nPosition += nLeft;
	}
	m_nReserved = nPosition;
	return m_Memory + nPosition % FRAME_QUEUE_BYTES + sizeof( Link );
}

void CFrameQueue::Commit( size_t nBytes )
{
	LinkAt( m_nReserved )->m_nBytes = RoundUp( nBytes );
	m_nWritten.store( m_nReserved + sizeof( Link ) + RoundUp( nBytes ), std::memory_order_release );
}

bool CFrameQueue::Peek( Frame &frame )
{
	uint64_t nPosition = m_nRead.load( std::memory_order_relaxed );
	if ( nPosition == m_nWritten.load( std::memory_order_acquire ) )
		return false;
	if ( LinkAt( nPosition )->m_nBytes == WRAP )
	{
		nPosition += FRAME_QUEUE_BYTES - nPosition % FRAME_QUEUE_BYTES;
		m_nRead.store( nPosition, std::memory_order_release );
	}
	const uint8_t *pFrame = m_Memory + nPosition % FRAME_QUEUE_BYTES + sizeof( Link );
	frame.m_Header = *reinterpret_cast<const FrameHeader *>( pFrame );
	const uint8_t *pBudgets = pFrame + sizeof( FrameHeader );
	frame.m_BudgetTicks = { reinterpret_cast<const uint64_t *>( pBudgets ), frame.m_Header.m_nBudgets };
	const uint8_t *pEntries = pBudgets + frame.m_BudgetTicks.size_bytes();
	frame.m_Entries = { reinterpret_cast<const FrameEntry *>( pEntries ), frame.m_Header.m_nEntries };
	return true;
}

void CFrameQueue::Pop()
{
	const uint64_t nPosition = m_nRead.load( std::memory_order_relaxed );
	assert( nPosition != m_nWritten.load( std::memory_order_relaxed ) );
	m_nRead.store( nPosition + sizeof( Link ) + LinkAt( nPosition )->m_nBytes, std::memory_order_release );
}

void CFrameQueue::Clear()
{
	m_nRead.store( m_nWritten.load( std::memory_order_acquire ), std::memory_order_release );
}
} // namespace showbudget
