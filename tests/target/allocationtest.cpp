// The instrumented threads never allocate.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "sanitizer.h"
#include "session.h"

namespace
{
thread_local uint64_t t_nAllocations = 0;
}

// The sanitizers have their own allocator, which tells who asks for it.
#if defined( HAS_SANITIZER )
#include <sanitizer/allocator_interface.h>

namespace
{
void OnAllocation( const volatile void *, size_t )
{
	t_nAllocations++;
}
void OnFree( const volatile void * ) {}

const int g_nInstalled = __sanitizer_install_malloc_and_free_hooks( OnAllocation, OnFree );
} // namespace
#else
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
void Shared()
{
	SHOWBUDGET_SCOPE( g_Allocation, "Shared" );
	SHOWBUDGET_SCOPE( g_Allocation, "Inside of shared" );
}

TEST_F( Allocation, ARecordingMakesNoneInScopesAndFramesEither )
{
	showbudget::RecordingSettings settings;
	settings.m_pFile = "/dev/null";
	settings.m_bOtherThreads = true;
	ASSERT_TRUE( showbudget::StartRecording( settings ) );
	const uint64_t nBefore = t_nAllocations;
	for ( int nFrame = 0; nFrame < 100; nFrame++ )
	{
		for ( int i = 0; i < 100; i++ )
		{
			SHOWBUDGET_SCOPE( g_Allocation, "First caller" );
			Shared();
		}
		Shared();
		showbudget::EndFrame();
	}
	EXPECT_EQ( t_nAllocations, nBefore );
	showbudget::StopRecording();
	EXPECT_EQ( showbudget::GetRecordingState().m_nFrames, 99u );
}
} // namespace
