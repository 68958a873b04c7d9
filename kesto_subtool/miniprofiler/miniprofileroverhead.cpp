#include "miniprofiler/miniprofileroverhead.h"

#include <algorithm>

void CMiniProfilerCostHistory::Push( uint64_t nTicks )
{
	m_nHead = ( m_nHead + CAPACITY - 1 ) % CAPACITY;
	m_Ticks[m_nHead] = nTicks;
	m_nCount = std::min( m_nCount + 1, CAPACITY );
}
