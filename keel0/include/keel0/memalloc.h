// The allocator for memory that changes hands between modules.
#pragma once

#include <cstddef>

#include "keel0/api.h"

class KEEL0_API IMemAlloc
{
public:
	// Returns nBytes aligned for any type. Never null for the library's own allocator: running out of memory ends the
	// process through Plat_FatalErrorFunc. A size of 0 gives a block that may be freed.
	virtual void *Alloc( size_t nBytes ) = 0;

	// Takes back a block of this allocator; null is allowed.
	virtual void Free( void *pMem ) = 0;

protected:
	~IMemAlloc() = default;
};

// Never null. A test may put its own allocator here; a block must be freed through the allocator that made it.
KEEL0_API extern IMemAlloc *g_pMemAlloc;
