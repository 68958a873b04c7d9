#include "keel0/memalloc.h"

#include <cstdlib>

#include "keel0/platform.h"

namespace
{
class CMallocAllocator final : public IMemAlloc
{
public:
	void *Alloc( size_t nBytes ) override
	{
		if ( void *pMem = std::malloc( nBytes > 0 ? nBytes : 1 ) )
			return pMem;
		Plat_FatalErrorFunc( "out of memory: a block of %zu bytes could not be allocated\n", nBytes );
		std::abort(); // callers rely on a block, so a fatal error function that returns cannot save them
	}

	void Free( void *pMem ) override { std::free( pMem ); }
};

CMallocAllocator g_MallocAllocator;
} // namespace

IMemAlloc *g_pMemAlloc = &g_MallocAllocator;
