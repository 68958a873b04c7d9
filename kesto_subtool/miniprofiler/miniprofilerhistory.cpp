#include "miniprofiler/miniprofilerhistory.h"

uint32_t CMiniProfilerHistory::Add( bool bAdvanced )
{
	m_Births.push_back( bAdvanced ? m_nInterval - 1 : m_nInterval );
	return RecordCount() - 1;
}

void CMiniProfilerHistory::Advance()
{
	m_nInterval++;
	m_nHead = ( m_nHead + CAPACITY - 1 ) % CAPACITY;
}

void CMiniProfilerHistory::MakeSegment( uint32_t nBlock )
{
	std::vector<Segment *> &segments = m_Segments[m_nHead / SEGMENT_SLOTS];
	if ( nBlock >= segments.size() )
		segments.resize( BlockCount() );
	if ( m_nBatchUsed == BATCH_SEGMENTS )
	{
		m_Batches.push_back( std::make_unique<Segment[]>( BATCH_SEGMENTS ) );
		m_nBatchUsed = 0;
	}
	segments[nBlock] = &m_Batches.back()[m_nBatchUsed++];
}

MiniProfilerSample CMiniProfilerHistory::At( uint32_t nRecord, uint32_t nAge ) const
{
	const uint32_t nSlot = ( m_nHead + nAge ) % CAPACITY;
	const Segment *pSegment = SegmentAt( nRecord / BLOCK_RECORDS, nSlot / SEGMENT_SLOTS );
	if ( !pSegment )
		return {};
	const Row &row = pSegment->m_Rows[nSlot % SEGMENT_SLOTS];
	return { row.m_Ticks[nRecord % BLOCK_RECORDS], row.m_Calls[nRecord % BLOCK_RECORDS] };
}

void CMiniProfilerHistory::CopyNewest( uint32_t nBlock, std::span<Row> rows ) const
{
	uint32_t nSlot = m_nHead;
	while ( !rows.empty() )
	{
		const uint32_t nFirst = nSlot % SEGMENT_SLOTS;
		const size_t nRows = std::min<size_t>( SEGMENT_SLOTS - nFirst, rows.size() );
		if ( const Segment *pSegment = SegmentAt( nBlock, nSlot / SEGMENT_SLOTS ) )
			std::copy_n( pSegment->m_Rows.begin() + nFirst, nRows, rows.begin() );
		else
			std::fill_n( rows.begin(), nRows, Row{} );
		rows = rows.subspan( nRows );
		nSlot = ( nSlot + SEGMENT_SLOTS - nFirst ) % CAPACITY;
	}
}

void CMiniProfilerHistory::Clear()
{
	*this = CMiniProfilerHistory();
}
