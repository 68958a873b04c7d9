#include "linequeue.h"

#include <cstring>

#include "text.h"

namespace showbudget
{
CLineQueue::CLineQueue()
{
	for ( uint64_t i = 0; i < CELLS; i++ )
		m_Cells[i].m_nTurn.store( i, std::memory_order_relaxed );
}

bool CLineQueue::Push( Severity severity, std::string_view text )
{
	uint64_t nPosition = m_nNextWrite.load( std::memory_order_relaxed );
	Cell *pCell;
	for ( ;; )
	{
		pCell = &m_Cells[nPosition % CELLS];
		const uint64_t nTurn = pCell->m_nTurn.load( std::memory_order_acquire );
		if ( nTurn == nPosition )
		{
			if ( m_nNextWrite.compare_exchange_weak( nPosition, nPosition + 1, std::memory_order_relaxed ) )
				break;
		}
		else if ( nTurn < nPosition )
		{
			m_nDropped.fetch_add( 1, std::memory_order_relaxed );
			return false;
		}
		else
			nPosition = m_nNextWrite.load( std::memory_order_relaxed );
	}
	text = CutAtCharacter( text, MAX_PRINT_BYTES );
	pCell->m_Line.m_Severity = severity;
	pCell->m_Line.m_nLength = static_cast<uint32_t>( text.size() );
	std::memcpy( pCell->m_Line.m_Text, text.data(), text.size() );
	pCell->m_nTurn.store( nPosition + 1, std::memory_order_release );
	return true;
}

const CLineQueue::Line *CLineQueue::Peek()
{
	const Cell &cell = m_Cells[m_nNextRead % CELLS];
	return cell.m_nTurn.load( std::memory_order_acquire ) == m_nNextRead + 1 ? &cell.m_Line : nullptr;
}

void CLineQueue::Pop()
{
	m_Cells[m_nNextRead % CELLS].m_nTurn.store( m_nNextRead + CELLS, std::memory_order_release );
	m_nNextRead++;
}
} // namespace showbudget
