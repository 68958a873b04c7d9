// Memory stays where it is, however long an engine runs. The sanitizer's allocator keeps what was freed, so there these
// tests could say nothing.
#if !defined( __SANITIZE_ADDRESS__ ) && !( defined( __has_feature ) && __has_feature( address_sanitizer ) )
#include <QCoreApplication>

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "showbudget/windowfixture.h"
#include "views/stampcache.h"

namespace
{
constexpr int SAMPLES_PER_HOUR = 3'600'000; // at 1,000 per second
constexpr int WARM_UP = 5'000;
constexpr size_t BUDGETS = 64;

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

TEST( SampleStoreSoak, AnHourOfSamplesAllocatesNothing )
{
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
	EXPECT_EQ( store.SampleCount(), static_cast<uint32_t>( SAMPLES_PER_HOUR ) );
}

class WindowSoakTest : public WindowTest
{
protected:
	void Feed( int nSamples, int nSamplesPerRepaint )
	{
		for ( int i = 0; i < nSamples; i++ )
		{
			m_Values[static_cast<size_t>( i ) % m_Values.size()] = static_cast<uint32_t>( i % 16 ) * 1000;
			SendSample( m_Values );
			if ( i % nSamplesPerRepaint == 0 )
				QCoreApplication::processEvents();
		}
		QCoreApplication::processEvents();
	}

	std::vector<uint32_t> m_Values{ 1, 2 };
};

TEST_F( WindowSoakTest, AnHourOfSamplesLeavesTheWindowsMemoryWhereItWas )
{
	MakeRunningWindow().show();
	SendCategories( { { "Render", 10, 20, 30 }, { "Audio", 40, 50, 60 } } );
	Feed( WARM_UP, 10 );
	const size_t nBefore = mallinfo2().uordblks;
	Feed( SAMPLES_PER_HOUR - WARM_UP, 2'000 );
	// Repaints keep pictures of texts and lines up to a limit; three bytes a sample would already be more.
	EXPECT_LE( mallinfo2().uordblks, nBefore + CStampCache::LIMIT );
	EXPECT_EQ( m_pWindow->Samples().SampleCount(), static_cast<uint32_t>( SAMPLES_PER_HOUR ) );
}
#endif
