// The instrumented threads never allocate.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "session.h"

namespace
{
thread_local uint64_t t_nAllocations = 0;
}

// The sanitizers have their own allocator; with them only operator new is counted.
#if !defined( __SANITIZE_ADDRESS__ ) && SHOWBUDGET_PLAIN_COUNTERS
#define COUNT_MALLOC 1
#if defined( __has_feature )
#if __has_feature( address_sanitizer )
#undef COUNT_MALLOC
#endif
#endif
#endif

#if defined( COUNT_MALLOC )
extern "C" void *__libc_malloc( size_t nBytes );
extern "C" void *__libc_calloc( size_t nCount, size_t nBytes );
extern "C" void *__libc_realloc( void *pMemory, size_t nBytes );

extern "C" void *malloc( size_t nBytes )
{
	t_nAllocations++;
	return __libc_malloc( nBytes );
}
extern "C" void *calloc( size_t nCount, size_t nBytes )
{
	t_nAllocations++;
	return __libc_calloc( nCount, nBytes );
}
extern "C" void *realloc( void *pMemory, size_t nBytes )
{
	t_nAllocations++;
	return __libc_realloc( pMemory, nBytes );
}
#else
void *operator new( size_t nBytes )
{
	t_nAllocations++;
	if ( void *pMemory = std::malloc( nBytes ) )
		return pMemory;
	std::abort();
}
void operator delete( void *pMemory ) noexcept
{
	std::free( pMemory );
}
void operator delete( void *pMemory, size_t ) noexcept
{
	std::free( pMemory );
}
#endif

namespace
{
SHOWBUDGET_BUDGET( g_Allocation, "Allocation test", 1, 2, 3 );

class Allocation : public CSession
{
};

TEST_F( Allocation, IsCounted )
{
	const uint64_t nBefore = t_nAllocations;
	delete new std::string( "a text that does not fit into the string itself, which it must not do" );
	EXPECT_GT( t_nAllocations, nBefore );
}

TEST_F( Allocation, ScopesAndFramesMakeNone )
{
	CTestConsole console( showbudget::Port() );
	console.Greet();
	console.WantBudgets( true );
	console.WantScopes( true );
	ASSERT_TRUE( WaitUntilWanted( 3 ) );

	const uint64_t nBefore = t_nAllocations;
	for ( int nFrame = 0; nFrame < 100; nFrame++ )
	{
		for ( int i = 0; i < 100; i++ )
		{
			SHOWBUDGET_SCOPE( g_Allocation, "Outer" );
			SHOWBUDGET_SCOPE( g_Allocation, "Inner" );
		}
		showbudget::EndFrame();
		showbudget::Print( showbudget::Severity::Message, "nor does a line" );
	}
	EXPECT_EQ( t_nAllocations, nBefore );
}
} // namespace
