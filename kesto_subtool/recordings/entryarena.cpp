#include "recordings/entryarena.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "recordings/hugepages.h"

static constexpr size_t MIN_SLAB_SIZE = size_t{ 64 } << 10; // bytes
static constexpr size_t MAX_SLAB_SIZE = size_t{ 32 } << 20;

std::shared_ptr<uint32_t[]> CEntryArena::Allocate( size_t nCount )
{
	if ( nCount > m_nSlab - m_nUsed )
		AddSlab( nCount );
	std::shared_ptr<uint32_t[]> pEntries( m_pSlab, m_pSlab.get() + m_nUsed );
	m_nUsed += nCount;
	return pEntries;
}

// Slabs are as large as all before them together, so that a short recording takes little.
void CEntryArena::AddSlab( size_t nAtLeast )
{
	size_t nSize = std::clamp( m_nTotal * sizeof( uint32_t ), MIN_SLAB_SIZE, MAX_SLAB_SIZE );
	nSize = std::max( nSize, nAtLeast * sizeof( uint32_t ) );
	const bool bHugePages = nSize >= HUGE_PAGE_SIZE;
	const size_t nAlignment = bHugePages ? HUGE_PAGE_SIZE : alignof( std::max_align_t );
	nSize = ( nSize + nAlignment - 1 ) / nAlignment * nAlignment;
	void *pMemory = std::aligned_alloc( nAlignment, nSize );
	if ( !pMemory )
		throw std::bad_alloc(); // as new would
	PreferHugePages( pMemory, nSize );
	m_nSlab = nSize / sizeof( uint32_t );
	m_nUsed = 0;
	m_nTotal += m_nSlab;
	m_pSlab = std::shared_ptr<uint32_t[]>( new ( pMemory ) uint32_t[m_nSlab], []( uint32_t *p ) { std::free( p ); } );
}
