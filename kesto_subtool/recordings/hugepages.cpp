#include "recordings/hugepages.h"

#include <sys/mman.h>

#include <cstdint>

void PreferHugePages( void *pMemory, size_t nBytes )
{
	const auto nBegin = reinterpret_cast<uintptr_t>( pMemory );
	const uintptr_t nFirst = ( nBegin + HUGE_PAGE_SIZE - 1 ) / HUGE_PAGE_SIZE * HUGE_PAGE_SIZE;
	const uintptr_t nEnd = ( nBegin + nBytes ) / HUGE_PAGE_SIZE * HUGE_PAGE_SIZE;
	if ( nFirst < nEnd )
		madvise( reinterpret_cast<void *>( nFirst ), nEnd - nFirst, MADV_HUGEPAGE );
}
