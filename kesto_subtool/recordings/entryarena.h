// Memory for the entries of many frames.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

// Gives out pieces of large slabs, which cost one page fault where single frames would cost hundreds: parsing is so
// fast that this is half of its time. A slab goes when the last frame goes that has a piece of it.
class CEntryArena
{
public:
	// Room for nCount (> 0) packed entries, with any contents.
	std::shared_ptr<uint32_t[]> Allocate( size_t nCount );

private:
	void AddSlab( size_t nAtLeast );

	std::shared_ptr<uint32_t[]> m_pSlab;
	size_t m_nSlab = 0; // entries of m_pSlab
	size_t m_nUsed = 0;
	size_t m_nTotal = 0; // entries of all slabs
};
