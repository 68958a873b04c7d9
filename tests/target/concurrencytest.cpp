// Everything at once: for ThreadSanitizer as much as for its own checks.
#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "session.h"
#include "wire/sessionchunks.h"

namespace
{
SHOWBUDGET_BUDGET( g_BudgetA, "Concurrency A", 1, 1, 1 );
SHOWBUDGET_BUDGET( g_BudgetB, "Concurrency B", 2, 2, 2 );

void Work()
{
	SHOWBUDGET_SCOPE( g_BudgetA, "Work" );
	{
		SHOWBUDGET_SCOPE( g_BudgetB, "Detail" );
	}
}

class Concurrency : public CSession
{
};

TEST_F( Concurrency, SessionsEndAndBeginWhileFramesAndScopesGoOn )
{
	std::atomic<bool> bEnd{ false };
	std::atomic<uint64_t> nFrames{ 0 };
	std::thread frames(
		[&]
		{
			while ( !bEnd )
			{
				Work();
				showbudget::EndFrame();
				showbudget::Print( showbudget::Severity::Message, "a frame" );
				nFrames++;
				std::this_thread::yield();
			}
		} );
	std::vector<std::thread> workers;
	for ( int i = 0; i < 3; i++ )
	{
		workers.emplace_back(
			[&]
			{
				while ( !bEnd )
				{
					Work();
					std::this_thread::yield(); // or the session starves where there are few processors
				}
			} );
	}
	for ( int i = 0; i < 20; i++ )
	{
		{
			CTestConsole console( showbudget::Port() );
			console.Greet();
			console.WantBudgets( true );
			console.WantScopes( true );
			console.ReceiveType( wire::CHUNK_SAMPLE );
			console.ReceiveType( wire::CHUNK_MINIPROFILER );
			if ( i % 2 == 0 )
				showbudget::Stop();
		}
		if ( i % 2 != 0 )
			showbudget::Stop();
		EXPECT_EQ( showbudget::detail::g_nWanted.load(), 0u );
		EXPECT_EQ( showbudget::Port(), 0 );
		Start();
	}
	bEnd = true;
	frames.join();
	for ( std::thread &worker : workers )
		worker.join();
	EXPECT_GT( nFrames.load(), 0u );
}

TEST_F( Concurrency, ThreadsThatComeAndGoShareTheRoom )
{
	CTestConsole console( showbudget::Port() );
	console.Greet();
	console.WantScopes( true );
	ASSERT_TRUE( WaitUntilWanted( 2 ) );
	showbudget::EndFrame();
	// More than there is room for at one time.
	constexpr uint64_t THREADS = 300;
	for ( uint64_t i = 0; i < THREADS; i++ )
		std::thread( Work ).join();
	showbudget::EndFrame();
	const ProfilerFrame frame = ReadProfilerFrame( console.ReceiveType( wire::CHUNK_MINIPROFILER ) );
	uint64_t nFull = 0;
	for ( const ProfilerEntry &entry : frame.m_Entries )
		nFull += entry.m_nCalls == THREADS;
	EXPECT_EQ( nFull, 2u ) << "both sites were entered by every thread";
}

TEST_F( Concurrency, AnotherThreadMayTakeTheFramesOver )
{
	CTestConsole console( showbudget::Port() );
	console.Greet();
	console.WantBudgets( true );
	ASSERT_TRUE( WaitUntilWanted( 1 ) );
	showbudget::EndFrame();
	showbudget::EndFrame();
	console.ReceiveType( wire::CHUNK_SAMPLE );
	std::thread(
		[]
		{
			showbudget::EndFrame(); // only a starting line: this thread's frame has no beginning
			Work();
			showbudget::EndFrame();
		} )
		.join();
	const uint64_t nBegin = NowMicroseconds();
	showbudget::EndFrame();
	showbudget::EndFrame();
	const uint64_t nElapsed = NowMicroseconds() - nBegin;
	EXPECT_EQ( ReadSample( console.ReceiveType( wire::CHUNK_SAMPLE ) ).m_nMark, 1u ) << "the other thread's frame";
	// What this thread did since its own last frame is in nobody's frame.
	EXPECT_LE( ReadSample( console.ReceiveType( wire::CHUNK_SAMPLE ) ).Total(), nElapsed + 2 );
}
} // namespace
