#include "miniprofiler/miniprofilerhistory.h"

uint32_t CMiniProfilerHistory::Add( bool bAdvanced )
{
	const uint32_t nRecord = RecordCount();
	if ( nRecord % BLOCK_RECORDS == 0 )
		m_Blocks.push_back( std::make_unique<Block>() );
	m_Births.push_back( bAdvanced ? m_nInterval - 1 : m_nInterval );
	return nRecord;
}

void CMiniProfilerHistory::Advance()
{
	m_nInterval++;
	m_nHead = ( m_nHead + CAPACITY - 1 ) % CAPACITY;
}

MiniProfilerSample CMiniProfilerHistory::At( uint32_t nRecord, uint32_t nAge ) const
{
	const Row &row = m_Blocks[nRecord / BLOCK_RECORDS]->m_Rows[Slot( nAge )];
	return { row.m_Ticks[nRecord % BLOCK_RECORDS], row.m_Calls[nRecord % BLOCK_RECORDS] };
}

void CMiniProfilerHistory::Clear()
{
	*this = CMiniProfilerHistory();
}
