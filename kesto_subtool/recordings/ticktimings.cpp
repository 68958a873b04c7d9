#include <algorithm>

#include "recordings/kestofile.h"

using Entry = CKestoFile::CTickTimings::Entry;

static constexpr uint32_t SHORT_CALLS = 255;                // from here on calls are long
static constexpr uint32_t SHORT_TIME = uint32_t{ 1 } << 24; // likewise, in units

Entry CKestoFile::CTickTimings::Storage::Get( int32_t nSlot ) const
{
	const uint32_t nPacked = m_pPacked[nSlot];
	if ( nPacked != LONG )
		return Unpack( nPacked );
	const auto found = std::lower_bound( m_pLong->begin(), m_pLong->end(), nSlot,
		[]( const LongEntry &entry, int32_t nWanted ) { return entry.m_nSlot < nWanted; } );
	return found->m_Entry;
}

void CKestoFile::CTickTimings::Storage::Put( int32_t nSlot, const Entry &entry )
{
	const uint32_t nTime = entry.m_nTime / wire::RECORDING_TIME_UNIT;
	if ( entry.m_nCalls < SHORT_CALLS && nTime < SHORT_TIME )
	{
		m_pPacked[nSlot] = entry.m_nCalls | nTime << 8;
		return;
	}
	m_pPacked[nSlot] = LONG;
	if ( !m_pLong )
		m_pLong = std::make_unique<std::vector<LongEntry>>();
	m_pLong->push_back( { nSlot, entry } );
}

void CKestoFile::CTickTimings::Storage::SortLong()
{
	if ( m_pLong )
		std::sort( m_pLong->begin(), m_pLong->end(),
			[]( const LongEntry &a, const LongEntry &b ) { return a.m_nSlot < b.m_nSlot; } );
}

void CKestoFile::CTickTimings::Release()
{
	if ( m_nReferences.fetch_sub( 1, std::memory_order_acq_rel ) == 1 )
		delete this;
}

Entry CKestoFile::CTickTimings::GetEntry( int32_t nNode )
{
	if ( nNode >= 0 && nNode < wire::RECORDING_MAX_NODES )
		m_Storage.m_nCount = std::max( m_Storage.m_nCount, nNode + 1 );
	return PeekEntry( nNode );
}

Entry CKestoFile::CTickTimings::PeekEntry( int32_t nNode ) const
{
	if ( nNode < 0 )
		return {};
	if ( !m_Storage.m_pNodes )
		return nNode < m_Storage.m_nStored ? m_Storage.Get( nNode ) : Entry{};
	const std::vector<int32_t> &nodes = *m_Storage.m_pNodes;
	const auto found = std::lower_bound( nodes.begin(), nodes.end(), nNode );
	if ( found == nodes.end() || *found != nNode )
		return {};
	return m_Storage.Get( static_cast<int32_t>( found - nodes.begin() ) );
}
