#include "memorylimit.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// Of the sanitizers' allocator; null where the program is built without it.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C"
{
	__attribute__( ( weak ) ) int __sanitizer_install_malloc_and_free_hooks(
		void ( *pAllocated )( const volatile void *, size_t ), void ( *pFreed )( const volatile void * ) );
	__attribute__( ( weak ) ) size_t __sanitizer_get_allocated_size( const volatile void * );
}
// NOLINTEND(bugprone-reserved-identifier)

namespace
{
std::atomic<bool> g_bWatching = false;
std::atomic<int64_t> g_nLive = 0; // bytes since watching began; below 0 when older blocks were freed
std::atomic<int64_t> g_nPeak = 0;

void OnAllocated( const volatile void *, size_t nBytes )
{
	if ( !g_bWatching )
		return;
	const int64_t nLive = g_nLive += static_cast<int64_t>( nBytes );
	int64_t nPeak = g_nPeak;
	while ( nLive > nPeak && !g_nPeak.compare_exchange_weak( nPeak, nLive ) )
		continue;
}

void OnFreed( const volatile void *pBlock )
{
	if ( g_bWatching && pBlock )
		g_nLive -= static_cast<int64_t>( __sanitizer_get_allocated_size( pBlock ) );
}

int64_t Allowed( size_t nInputBytes )
{
	constexpr int64_t MEBIBYTE = 1024 * 1024;
	return nInputBytes <= 100 ? 16 * MEBIBYTE : 64 * MEBIBYTE + 16 * static_cast<int64_t>( nInputBytes );
}
} // namespace

CMemoryLimit::CMemoryLimit( size_t nInputBytes )
	: m_nInputBytes( nInputBytes )
{
	static const bool s_bHooked = __sanitizer_install_malloc_and_free_hooks &&
								  __sanitizer_install_malloc_and_free_hooks( OnAllocated, OnFreed ) > 0;
	g_nLive = 0;
	g_nPeak = 0;
	g_bWatching = s_bHooked;
}

CMemoryLimit::~CMemoryLimit()
{
	g_bWatching = false;
	if ( g_nPeak <= Allowed( m_nInputBytes ) )
		return;
	std::fprintf(
		stderr, "%zu bytes of input made %lld bytes of memory\n", m_nInputBytes, static_cast<long long>( g_nPeak ) );
	std::abort();
}
