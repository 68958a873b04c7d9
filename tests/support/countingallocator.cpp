#include "support/countingallocator.h"

#include <gtest/gtest.h>

CCountingAllocator::CCountingAllocator()
	: m_pBefore( g_pMemAlloc )
{
	g_pMemAlloc = this;
}

CCountingAllocator::~CCountingAllocator()
{
	EXPECT_TRUE( m_Live.empty() ) << m_Live.size() << " blocks were not freed";
	g_pMemAlloc = m_pBefore;
	for ( void *pBlock : m_Live )
		m_pBefore->Free( pBlock );
}

void *CCountingAllocator::Alloc( size_t nBytes )
{
	void *pBlock = m_pBefore->Alloc( nBytes );
	m_Live.insert( pBlock );
	m_nAllocated++;
	return pBlock;
}

void CCountingAllocator::Free( void *pMem )
{
	if ( !pMem )
		return;
	if ( m_Live.erase( pMem ) == 0 )
	{
		ADD_FAILURE() << "freed a block that is not live: " << pMem;
		return;
	}
	m_pBefore->Free( pMem );
}
