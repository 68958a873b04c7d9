// An hour of samples at 1,000 per second. The sanitizer has an operator new of its own, so there this is left out.
#include "longrun/longrun.h"

#if !LONGRUN_ADDRESS_SANITIZER
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <vector>

#include "showbudget/budgetsamplestore.h"

namespace
{
std::atomic<size_t> g_nAllocations{ 0 };
} // namespace

void *operator new( size_t nBytes )
{
	g_nAllocations.fetch_add( 1, std::memory_order_relaxed );
	if ( void *pBlock = std::malloc( nBytes > 0 ? nBytes : 1 ) )
		return pBlock;
	throw std::bad_alloc();
}

void operator delete( void *pBlock ) noexcept
{
	std::free( pBlock );
}

void operator delete( void *pBlock, size_t ) noexcept
{
	std::free( pBlock );
}

TEST( SampleStoreLongRun, AnHourOfSamplesAllocatesNothing )
{
	constexpr uint32_t SAMPLES_PER_HOUR = 3'600'000;
	constexpr size_t BUDGETS = 64;
	CBudgetSampleStore store;
	store.SetCategories( std::vector<BudgetCategory>( BUDGETS ) );
	std::vector<uint32_t> values( BUDGETS );
	const size_t nBefore = g_nAllocations;
	for ( uint32_t i = 0; i < SAMPLES_PER_HOUR; i++ )
	{
		values[i % BUDGETS] = i;
		store.AddSample( values, 60.0f, false, false );
	}
	EXPECT_EQ( g_nAllocations, nBefore );
	EXPECT_EQ( store.SampleCount(), SAMPLES_PER_HOUR );
}
#endif
