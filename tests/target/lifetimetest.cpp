// What a process goes through in a long life.
#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "session.h"
#include "wire/sessionchunks.h"

namespace
{
SHOWBUDGET_BUDGET( g_LifetimeBudget, "Lifetime test", 1, 2, 3 );

size_t OpenDescriptors()
{
	using Iterator = std::filesystem::directory_iterator;
	return static_cast<size_t>( std::distance( Iterator( "/proc/self/fd" ), Iterator() ) );
}

class Lifetime : public CSession
{
};

TEST_F( Lifetime, AThousandStartsAndStopsLeaveNothingBehind )
{
	showbudget::Stop();
	showbudget::Settings settings = MakeSettings();
	settings.m_pLog = []( showbudget::Severity, const char *, void * ) {};
	size_t nBytes = 0;
	size_t nDescriptors = 0;
	for ( int i = 0; i < 1000; i++ )
	{
		ASSERT_TRUE( showbudget::Start( settings ) );
		if ( i % 10 == 0 )
			CTestConsole( showbudget::Port() ).Greet();
		showbudget::Stop();
		if ( i == 100 )
		{
			nBytes = AllocatedBytes();
			nDescriptors = OpenDescriptors();
		}
	}
	EXPECT_LT( AllocatedBytes(), nBytes + 65536 );
	EXPECT_EQ( OpenDescriptors(), nDescriptors );
}

TEST_F( Lifetime, TenMillionFramesThatNobodyWatchesLeaveNothingBehind )
{
	const auto run = []( int nFrames )
	{
		for ( int i = 0; i < nFrames; i++ )
		{
			SHOWBUDGET_SCOPE( g_LifetimeBudget, "Unwatched" );
			showbudget::EndFrame();
		}
	};
	run( 1000 );
	const size_t nBytes = AllocatedBytes();
	run( 10000000 );
	EXPECT_LE( AllocatedBytes(), nBytes + 4096 );
	// And none of them waits for the first console.
	CTestConsole console( showbudget::Port() );
	console.Greet();
	console.WantBudgets( true );
	ASSERT_TRUE( WaitUntilWanted( 1 ) );
	showbudget::Print( showbudget::Severity::Message, "from here on" );
	for ( const Chunk &chunk : console.ReceiveUntilLine( "from here on" ) )
		EXPECT_NE( chunk.m_Header.m_nType, wire::CHUNK_SAMPLE );
}

TEST_F( Lifetime, ScopesOfSixtyFourThreadsAreCountedToTheLastOne )
{
	CTestConsole console( showbudget::Port() );
	console.Greet();
	console.WantScopes( true );
	ASSERT_TRUE( WaitUntilWanted( 2 ) );
	showbudget::EndFrame();

	constexpr uint64_t THREADS = 64;
	constexpr uint64_t CALLS = 10000;
	std::atomic<uint64_t> nDone{ 0 };
	std::vector<std::thread> threads;
	const auto work = []
	{
		SHOWBUDGET_SCOPE( g_LifetimeBudget, "Sixty-four" );
		SHOWBUDGET_SCOPE( g_LifetimeBudget, "Inside" );
	};
	work(); // the first call of a site is not counted while another thread makes the first one, too
	for ( uint64_t i = 0; i < THREADS; i++ )
	{
		threads.emplace_back(
			[&]
			{
				for ( uint64_t n = 0; n < CALLS; n++ )
					work();
				nDone++;
			} );
	}
	std::map<uint64_t, uint64_t> calls;
	const auto runFrame = [&]
	{
		showbudget::EndFrame();
		// Waiting for the frame keeps the frame rate to what the console can follow.
		for ( const ProfilerEntry &entry :
			ReadProfilerFrame( console.ReceiveType( wire::CHUNK_MINIPROFILER ) ).m_Entries )
			calls[entry.m_nId] += entry.m_nCalls;
	};
	while ( nDone < THREADS )
		runFrame();
	for ( std::thread &thread : threads )
		thread.join();
	runFrame();

	uint64_t nWhole = 0;
	for ( const auto &[nId, nCalls] : calls )
		nWhole += nCalls == THREADS * CALLS + 1;
	EXPECT_EQ( nWhole, 2u ) << "both sites";
}
} // namespace
