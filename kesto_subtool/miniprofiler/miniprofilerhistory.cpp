#include "miniprofiler/miniprofilerhistory.h"

#include <algorithm>

uint32_t CMiniProfilerHistory::Add( bool bAdvanced )
{
	const uint32_t nRecord = RecordCount();
	if ( nRecord % BLOCK_RECORDS == 0 )
	{
		m_Blocks.push_back( nullptr );
		m_Growing.emplace_back();
	}
	m_Births.push_back( bAdvanced ? m_nInterval - 1 : m_nInterval );
	return nRecord;
}

void CMiniProfilerHistory::Advance()
{
	m_nInterval++;
	m_nHead = ( m_nHead + CAPACITY - 1 ) % CAPACITY;
	m_nJoined = 0;
}

void CMiniProfilerHistory::FillGrowing( uint32_t nRecord, MiniProfilerSample sample )
{
	const uint32_t nBlock = nRecord / BLOCK_RECORDS;
	const uint32_t nSegment = m_nHead / SEGMENT_SLOTS;
	std::unique_ptr<Growing> &pGrowing = m_Growing[nBlock];
	if ( !pGrowing || !pGrowing->m_Segments[nSegment] )
	{
		if ( sample == MiniProfilerSample{} ) // as the slot is without a segment
			return;
		if ( !pGrowing )
			pGrowing = std::make_unique<Growing>();
		pGrowing->m_Segments[nSegment] = std::make_unique<Segment>();
		pGrowing->m_nSegments++;
	}
	Fill( ( *pGrowing->m_Segments[nSegment] )[m_nHead % SEGMENT_SLOTS], nRecord, sample );
	if ( pGrowing->m_nSegments == SEGMENTS && m_nJoined < MAX_JOINED )
		Join( nBlock );
}

void CMiniProfilerHistory::CopySegments( const Growing &growing, Rows &rows )
{
	auto to = rows.begin();
	for ( const auto &pSegment : growing.m_Segments )
		to = pSegment ? std::copy( pSegment->begin(), pSegment->end(), to ) : std::fill_n( to, SEGMENT_SLOTS, Row{} );
}

void CMiniProfilerHistory::Join( uint32_t nBlock )
{
	if ( m_nRunUsed == RUN_BLOCKS )
	{
		m_Runs.push_back( std::make_unique<Place[]>( RUN_BLOCKS ) );
		m_nRunUsed = 0;
	}
	Rows &rows = m_Runs.back()[m_nRunUsed++].m_Rows;
	CopySegments( *m_Growing[nBlock], rows );
	m_Growing[nBlock].reset();
	m_Blocks[nBlock] = &rows;
	m_nJoined++;
}

const CMiniProfilerHistory::Row *CMiniProfilerHistory::FindRow( uint32_t nBlock, uint32_t nSlot ) const
{
	if ( m_Blocks[nBlock] )
		return &( *m_Blocks[nBlock] )[nSlot];
	const Growing *pGrowing = m_Growing[nBlock].get();
	const Segment *pSegment = pGrowing ? pGrowing->m_Segments[nSlot / SEGMENT_SLOTS].get() : nullptr;
	return pSegment ? &( *pSegment )[nSlot % SEGMENT_SLOTS] : nullptr;
}

MiniProfilerSample CMiniProfilerHistory::At( uint32_t nRecord, uint32_t nAge ) const
{
	const Row *pRow = FindRow( nRecord / BLOCK_RECORDS, Slot( nAge ) );
	if ( !pRow )
		return {};
	return { pRow->m_Ticks[nRecord % BLOCK_RECORDS], pRow->m_Calls[nRecord % BLOCK_RECORDS] };
}

const CMiniProfilerHistory::Rows &CMiniProfilerHistory::RowsOf( uint32_t nBlock, Rows &room ) const
{
	if ( m_Blocks[nBlock] )
		return *m_Blocks[nBlock];
	if ( m_Growing[nBlock] )
		CopySegments( *m_Growing[nBlock], room );
	else
		room.fill( Row{} );
	return room;
}

uint32_t CMiniProfilerHistory::SegmentCount( uint32_t nBlock ) const
{
	if ( m_Blocks[nBlock] )
		return SEGMENTS;
	return m_Growing[nBlock] ? m_Growing[nBlock]->m_nSegments : 0;
}

void CMiniProfilerHistory::Clear()
{
	*this = CMiniProfilerHistory();
}
