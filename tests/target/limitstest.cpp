// The tables that are there from the start, filled up; in a program of their own, because they only grow.
#include <gmock/gmock.h>

#include <deque>
#include <set>
#include <thread>

#include "session.h"
#include "target/src/registry.h"
#include "target/src/tablesizes.h"
#include "target/src/threadcounters.h"
#include "wire/sessionchunks.h"

namespace
{
SHOWBUDGET_BUDGET( g_Budget, "Limits test", 1, 2, 3 );

// Call sites live as long as the process.
std::deque<showbudget::detail::CSite> &MakeSites( size_t nCount )
{
	static std::deque<std::deque<showbudget::detail::CSite>> s_Sites;
	std::deque<showbudget::detail::CSite> &sites = s_Sites.emplace_back();
	while ( sites.size() < nCount )
		sites.emplace_back( "One of many", "", "", 0u, &g_Budget, "" );
	return sites;
}

class Limits : public CSession
{
protected:
	void SetUp() override
	{
		CSession::SetUp();
		m_pConsole = std::make_unique<CTestConsole>( showbudget::Port() );
		m_pConsole->Greet();
		m_pConsole->WantBudgets( true );
		m_pConsole->WantScopes( true );
		ASSERT_TRUE( WaitUntilWanted( 3 ) );
		showbudget::EndFrame();
	}
	size_t CountLines( const std::string &part )
	{
		size_t nCount = 0;
		for ( const std::string &line : LogLines() )
			nCount += line.find( part ) != std::string::npos;
		return nCount;
	}
	// A frame, and its entries.
	ProfilerFrame EndFrame()
	{
		showbudget::EndFrame();
		return ReadProfilerFrame( m_pConsole->ReceiveType( wire::CHUNK_MINIPROFILER ) );
	}

	std::unique_ptr<CTestConsole> m_pConsole;
};

TEST_F( Limits, CommandsWithoutRoomAreRefused )
{
	const auto nothing = []( int, const char *const *, void * ) {};
	uint32_t nTaken = 0;
	while ( nTaken <= showbudget::MAX_COMMANDS &&
			showbudget::RegisterCommand( ( "command" + std::to_string( nTaken ) ).c_str(), "", nothing, nullptr ) )
		nTaken++;
	EXPECT_EQ( nTaken, 256u );
	EXPECT_FALSE( showbudget::RegisterRecordCommand( "." ) );
}

TEST_F( Limits, PathsWithoutRoomAreLeftOutOfARecordingAndThatIsReported )
{
	showbudget::RecordingSettings settings;
	settings.m_pFile = "/dev/null";
	ASSERT_TRUE( showbudget::StartRecording( settings ) );
	showbudget::EndFrame();
	std::deque<showbudget::detail::CSite> &sites = MakeSites( 260 );
	for ( showbudget::detail::CSite &outer : sites )
	{
		const showbudget::detail::CScope outerScope( outer );
		for ( showbudget::detail::CSite &inner : sites )
			const showbudget::detail::CScope innerScope( inner );
	}
	showbudget::EndFrame();
	EXPECT_TRUE( WaitForLog( "more than 65535 paths of scopes: the rest is not recorded" ) );
	showbudget::EndFrame();
	showbudget::StopRecording();
	EXPECT_EQ( CountLines( "paths of scopes" ), 1u );
	EXPECT_EQ( showbudget::GetRecordingState().m_nFrames, 2u );
}

TEST_F( Limits, BudgetsWithoutRoomAreOtherAndThatIsOneLine )
{
	static std::deque<showbudget::CBudget> s_Budgets;
	for ( int i = 0; i < 300; i++ )
		s_Budgets.emplace_back( ( "Budget " + std::to_string( i ) ).c_str(), 1, 2, 3 );
	EXPECT_EQ( s_Budgets.back().Index(), showbudget::BUDGET_OTHER );
	EXPECT_NE( s_Budgets.front().Index(), showbudget::BUDGET_OTHER );
	EXPECT_EQ( showbudget::CBudget( "Budget 0", 9, 9, 9 ).Index(), s_Budgets.front().Index() ) << "not a new one";
	EXPECT_EQ( showbudget::BudgetCount(), 256u );
	EndFrame();
	EXPECT_TRUE( WaitForLog( "more than 255 budgets: the rest counts as \"Other\"" ) );
	EndFrame();
	EndFrame();
	EXPECT_EQ( CountLines( "budgets: the rest" ), 1u );
}

TEST_F( Limits, ThreadsWithoutRoomAreNotMeasuredAndThatIsOneLine )
{
	constexpr int MORE = 5;
	static std::deque<showbudget::detail::CSite> &s_Site = MakeSites( 1 );
	const auto call = [] { const showbudget::detail::CScope scope( s_Site[0] ); };
	call();
	EndFrame();
	constexpr auto THREADS = static_cast<int>( showbudget::MAX_THREADS ) - 1 + MORE;
	std::atomic<int> nDone{ 0 };
	std::atomic<bool> bEnd{ false };
	std::vector<std::thread> threads;
	for ( int i = 0; i < THREADS; i++ )
	{
		threads.emplace_back(
			[&]
			{
				call();
				nDone++;
				while ( !bEnd ) // all at one time
					std::this_thread::yield();
			} );
	}
	WaitUntil( [&] { return nDone == THREADS; } );
	bEnd = true;
	for ( std::thread &thread : threads )
		thread.join();
	uint64_t nCalls = 0;
	for ( const ProfilerEntry &entry : EndFrame().m_Entries )
		nCalls += entry.m_nCalls;
	EXPECT_EQ( nCalls, showbudget::MAX_THREADS - 1 );
	EXPECT_TRUE( WaitForLog( "more than 128 threads: the scopes of the rest are not measured" ) );
	EndFrame();
	EXPECT_EQ( CountLines( "threads: the scopes" ), 1u );
	// There is room again.
	std::thread( call ).join();
	nCalls = 0;
	for ( const ProfilerEntry &entry : EndFrame().m_Entries )
		nCalls += entry.m_nCalls;
	EXPECT_EQ( nCalls, 1u );
}

TEST_F( Limits, SitesWithoutRoomAreOneTogetherAndThatIsOneLine )
{
	constexpr size_t MORE = 7;
	const size_t nRoom = showbudget::SITE_OVERFLOW - showbudget::SiteCount();
	std::deque<showbudget::detail::CSite> &sites = MakeSites( nRoom + MORE );
	for ( showbudget::detail::CSite &site : sites )
		const showbudget::detail::CScope scope( site );
	const ProfilerFrame frame = EndFrame();
	std::multiset<uint64_t> calls;
	uint64_t nOverflow = 0;
	for ( const ProfilerEntry &entry : frame.m_Entries )
	{
		calls.insert( entry.m_nCalls );
		if ( entry.m_nCalls == MORE )
			nOverflow = entry.m_nId;
	}
	EXPECT_EQ( calls.count( 1 ), nRoom );
	EXPECT_EQ( calls.count( MORE ), 1u );
	EXPECT_TRUE( WaitForLog( "more than 4094 scopes: the rest counts as \"(more scopes)\"" ) );
	m_pConsole->WantNames( { &nOverflow, 1 } );
	std::vector<ProfilerName> names;
	while ( names.empty() && !HasFailure() )
		names = EndFrame().m_Names;
	ASSERT_EQ( names.size(), 1u );
	EXPECT_EQ( names[0].m_Name, "(more scopes)" );
	EXPECT_EQ( CountLines( "scopes: the rest counts" ), 1u );
}
} // namespace
