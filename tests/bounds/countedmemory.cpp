#include "countedmemory.h"

#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <cstddef>

#if defined( __SANITIZE_ADDRESS__ ) || defined( __SANITIZE_THREAD__ )
#define HAS_OTHER_HEAP 1
#elif defined( __has_feature )
#if __has_feature( address_sanitizer ) || __has_feature( thread_sanitizer )
#define HAS_OTHER_HEAP 1
#endif
#endif

namespace
{
std::atomic<int64_t> g_nNow = 0;
std::atomic<int64_t> g_nPeak = 0;
} // namespace

bool countedmemory::IsCounted()
{
#if defined( HAS_OTHER_HEAP )
	return false;
#else
	return true;
#endif
}

int64_t countedmemory::Now()
{
	return g_nNow;
}

int64_t countedmemory::Peak()
{
	return g_nPeak;
}

void countedmemory::ResetPeak()
{
	g_nPeak = g_nNow.load();
}

#if !defined( HAS_OTHER_HEAP )
// The C library's own functions, which those below stand in front of.
extern "C" void *__libc_malloc( size_t nBytes );
extern "C" void *__libc_calloc( size_t nCount, size_t nBytes );
extern "C" void *__libc_realloc( void *pMemory, size_t nBytes );
extern "C" void *__libc_memalign( size_t nAlignment, size_t nBytes );
extern "C" void __libc_free( void *pMemory );

namespace
{
void *Count( void *pMemory )
{
	const int64_t nNow = g_nNow += static_cast<int64_t>( malloc_usable_size( pMemory ) );
	int64_t nPeak = g_nPeak;
	while ( nNow > nPeak && !g_nPeak.compare_exchange_weak( nPeak, nNow ) )
	{
	}
	return pMemory;
}

void Discount( void *pMemory )
{
	g_nNow -= static_cast<int64_t>( malloc_usable_size( pMemory ) );
}
} // namespace

extern "C" void *malloc( size_t nBytes )
{
	return Count( __libc_malloc( nBytes ) );
}

extern "C" void *calloc( size_t nCount, size_t nBytes )
{
	return Count( __libc_calloc( nCount, nBytes ) );
}

extern "C" void *realloc( void *pMemory, size_t nBytes )
{
	Discount( pMemory );
	return Count( __libc_realloc( pMemory, nBytes ) );
}

extern "C" void *aligned_alloc( size_t nAlignment, size_t nBytes )
{
	return Count( __libc_memalign( nAlignment, nBytes ) );
}

extern "C" void *memalign( size_t nAlignment, size_t nBytes )
{
	return Count( __libc_memalign( nAlignment, nBytes ) );
}

extern "C" int posix_memalign( void **ppMemory, size_t nAlignment, size_t nBytes )
{
	*ppMemory = Count( __libc_memalign( nAlignment, nBytes ) );
	return *ppMemory ? 0 : ENOMEM;
}

extern "C" void free( void *pMemory )
{
	Discount( pMemory );
	__libc_free( pMemory );
}
#endif
