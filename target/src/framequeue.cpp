#include "framequeue.h"

namespace showbudget
{
bool CFrameQueue::Peek( Frame &frame )
{
	const uint8_t *pFrame = m_Bytes.Peek();
	if ( !pFrame )
		return false;
	frame.m_Header = *reinterpret_cast<const FrameHeader *>( pFrame );
	const uint8_t *pBudgets = pFrame + sizeof( FrameHeader );
	frame.m_BudgetTicks = { reinterpret_cast<const uint64_t *>( pBudgets ), frame.m_Header.m_nBudgets };
	const uint8_t *pEntries = pBudgets + frame.m_BudgetTicks.size_bytes();
	frame.m_Entries = { reinterpret_cast<const FrameEntry *>( pEntries ), frame.m_Header.m_nEntries };
	return true;
}
} // namespace showbudget
