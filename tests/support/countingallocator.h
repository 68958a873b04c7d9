// Counts the blocks that go through g_pMemAlloc, to show that every received and sent buffer is freed once.
#pragma once

#include <cstddef>
#include <set>

#include "keel0/memalloc.h"

// Takes g_pMemAlloc's place while it lives. A block that is freed twice or was never allocated here fails the test, as
// do blocks that are left at the end.
class CCountingAllocator final : public IMemAlloc
{
public:
	CCountingAllocator();
	~CCountingAllocator();
	CCountingAllocator( const CCountingAllocator & ) = delete;
	CCountingAllocator &operator=( const CCountingAllocator & ) = delete;

	void *Alloc( size_t nBytes ) override;
	void Free( void *pMem ) override;

	size_t Live() const { return m_Live.size(); }
	size_t Allocated() const { return m_nAllocated; }

private:
	IMemAlloc *m_pBefore;
	std::set<void *> m_Live;
	size_t m_nAllocated = 0;
};
