// What the mini-profiler is sent.
#include <gmock/gmock.h>

#include <functional>
#include <thread>

#include "session.h"
#include "wire/sessionchunks.h"

namespace
{
using testing::HasSubstr;

SHOWBUDGET_BUDGET( g_Scopes, "Scope test", 1, 2, 3 );

void Inner()
{
	SHOWBUDGET_SCOPE( g_Scopes, "Inner scope" );
}

constexpr int OUTER_LINE = __LINE__ + 3;
void Outer( int nInner )
{
	SHOWBUDGET_SCOPE( g_Scopes, "Outer scope" );
	for ( int i = 0; i < nInner; i++ )
		Inner();
}

class Scopes : public CSession
{
protected:
	void SetUp() override
	{
		CSession::SetUp();
		m_pConsole = std::make_unique<CTestConsole>( showbudget::Port() );
		const std::optional<wire::Hello> hello = wire::ReadHello( m_pConsole->Greet().m_Payload );
		ASSERT_TRUE( hello.has_value() );
		m_nFrequency = hello->m_nTickFrequency;
		m_pConsole->WantScopes( true );
		ASSERT_TRUE( WaitUntilWanted( 2 ) );
		showbudget::EndFrame();
	}

	ProfilerFrame Next() { return ReadProfilerFrame( m_pConsole->ReceiveType( wire::CHUNK_MINIPROFILER ) ); }

	// The names of all entries of the frame, asked for and received; a further frame is ended for that.
	std::map<std::string, ProfilerEntry> ByName( const ProfilerFrame &frame )
	{
		std::vector<uint64_t> ids;
		for ( const ProfilerEntry &entry : frame.m_Entries )
			ids.push_back( entry.m_nId );
		m_pConsole->WantNames( ids );
		std::map<std::string, ProfilerEntry> entries;
		while ( entries.size() < ids.size() && !HasFailure() )
		{
			showbudget::EndFrame();
			const ProfilerFrame answer = Next();
			for ( const ProfilerName &name : answer.m_Names )
			{
				m_Names[name.m_Name] = name;
				m_nNamesFrequency = answer.m_nFrequency;
				for ( const ProfilerEntry &entry : frame.m_Entries )
				{
					if ( entry.m_nId == name.m_nId )
						entries[name.m_Name] = entry;
				}
			}
		}
		return entries;
	}

	std::unique_ptr<CTestConsole> m_pConsole;
	uint64_t m_nFrequency = 0;
	uint64_t m_nNamesFrequency = 0;
	std::map<std::string, ProfilerName> m_Names;
};

TEST_F( Scopes, AFrameCarriesCallsTicksAndCallersUnderTheMark )
{
	const uint64_t nBegin = showbudget::detail::ReadCounter();
	Outer( 3 );
	Outer( 4 );
	showbudget::EndFrame();
	const uint64_t nElapsed = showbudget::detail::ReadCounter() - nBegin;
	const ProfilerFrame frame = Next();
	EXPECT_EQ( frame.m_nMark, 0x4B4D5331u );
	EXPECT_EQ( frame.m_nLayout, 1u );
	EXPECT_EQ( frame.m_nZero, 0u );
	EXPECT_EQ( frame.m_nTransmitted, frame.m_Entries.size() );
	EXPECT_GE( frame.m_nRegistered, frame.m_nTransmitted );
	EXPECT_GT( frame.m_nServiceTicks, 0u );
	EXPECT_LT( frame.m_nServiceTicks, nElapsed );
	EXPECT_FALSE( frame.m_bNames );

	std::map<std::string, ProfilerEntry> entries = ByName( frame );
	ASSERT_TRUE( entries.contains( "Outer scope" ) && entries.contains( "Inner scope" ) );
	const ProfilerEntry outer = entries["Outer scope"];
	const ProfilerEntry inner = entries["Inner scope"];
	EXPECT_EQ( outer.m_nCalls, 2u );
	EXPECT_EQ( inner.m_nCalls, 7u );
	EXPECT_EQ( outer.m_nCaller, 0u );
	EXPECT_EQ( inner.m_nCaller, outer.m_nId );
	EXPECT_GT( inner.m_nTicks, 0u );
	EXPECT_GE( outer.m_nTicks, inner.m_nTicks );
	EXPECT_LT( outer.m_nTicks, nElapsed );
}

TEST_F( Scopes, ANameHasFiveLinesThatAllEnd )
{
	Outer( 1 );
	showbudget::EndFrame();
	ByName( Next() );
	const ProfilerName &name = m_Names["Outer scope"];
	EXPECT_EQ( name.m_nParent, 0u );
	EXPECT_EQ( m_nNamesFrequency, m_nFrequency );

	std::vector<std::string> lines;
	std::string line;
	for ( const char c : name.m_Description )
	{
		if ( c == '\n' )
			lines.push_back( std::exchange( line, {} ) );
		else
			line += c;
	}
	EXPECT_EQ( line, "" ) << "a text after the last line feed";
	ASSERT_EQ( lines.size(), 5u );
	EXPECT_EQ( lines[0], "Scope test" );
	EXPECT_THAT( lines[1], testing::EndsWith( "Outer" ) );
	EXPECT_THAT( lines[2], testing::EndsWith( "tests/target/scopestest.cpp" ) );
	EXPECT_EQ( lines[3], std::to_string( OUTER_LINE ) );
	EXPECT_EQ( lines[4], "" );
}

TEST_F( Scopes, ASiteThatIsNotCalledSendsZerosUntilTheConsolesHistoryHoldsNothingElse )
{
	Outer( 0 );
	showbudget::EndFrame();
	const ProfilerFrame first = Next();
	const auto outer =
		std::ranges::find_if( first.m_Entries, []( const ProfilerEntry &e ) { return e.m_nCalls == 1; } );
	ASSERT_NE( outer, first.m_Entries.end() );
	const auto Has = [id = outer->m_nId]( const ProfilerFrame &frame )
	{ return std::ranges::count( frame.m_Entries, id, &ProfilerEntry::m_nId ); };
	for ( int i = 0; i < 128; i++ )
	{
		showbudget::EndFrame();
		const ProfilerFrame frame = Next();
		ASSERT_EQ( Has( frame ), 1 ) << "in frame " << i;
		for ( const ProfilerEntry &entry : frame.m_Entries )
			EXPECT_EQ( entry.m_nCalls + entry.m_nTicks, 0u );
	}
	showbudget::EndFrame();
	EXPECT_EQ( Has( Next() ), 0 );
	Outer( 0 );
	showbudget::EndFrame();
	EXPECT_EQ( Has( Next() ), 1 );
}

TEST_F( Scopes, PausingEndsTheFramesAndNamesStillCome )
{
	Outer( 1 );
	showbudget::EndFrame();
	const ProfilerFrame frame = Next();
	ASSERT_FALSE( frame.m_Entries.empty() );
	m_pConsole->WantScopes( false );
	ASSERT_TRUE( WaitUntilWanted( 0 ) );
	showbudget::EndFrame();
	const uint64_t nId = frame.m_Entries.front().m_nId;
	m_pConsole->WantNames( { &nId, 1 } );
	const ProfilerFrame names = Next();
	EXPECT_FALSE( names.m_bData );
	ASSERT_EQ( names.m_Names.size(), 1u );
	EXPECT_EQ( names.m_Names[0].m_nId, nId );
}

TEST_F( Scopes, IdsThatNobodyHasAreIgnored )
{
	Outer( 1 );
	showbudget::EndFrame();
	const ProfilerFrame frame = Next();
	ASSERT_FALSE( frame.m_Entries.empty() );
	const uint64_t nGood = frame.m_Entries.front().m_nId;
	const uint64_t ids[] = { 0, 1, nGood + 1, ~uint64_t( 0 ), nGood, nGood };
	m_pConsole->WantScopes( false );
	m_pConsole->WantNames( ids );
	const ProfilerFrame names = Next();
	ASSERT_EQ( names.m_Names.size(), 1u );
	EXPECT_EQ( names.m_Names[0].m_nId, nGood );
}

TEST_F( Scopes, RecursionCountsCallsButNoTimeTwice )
{
	struct Local
	{
		static void Recurse( int nDepth )
		{
			SHOWBUDGET_SCOPE( g_Scopes, "Recursive scope" );
			if ( nDepth > 0 )
				Recurse( nDepth - 1 );
		}
	};
	const uint64_t nBegin = showbudget::detail::ReadCounter();
	Local::Recurse( 99 );
	const uint64_t nElapsed = showbudget::detail::ReadCounter() - nBegin;
	showbudget::EndFrame();
	const std::map<std::string, ProfilerEntry> entries = ByName( Next() );
	ASSERT_TRUE( entries.contains( "Recursive scope" ) );
	EXPECT_EQ( entries.at( "Recursive scope" ).m_nCalls, 100u );
	EXPECT_LE( entries.at( "Recursive scope" ).m_nTicks, nElapsed );
}

TEST_F( Scopes, AScopeThatIsOpenWhenTheFrameEndsShowsItsTimeSoFar )
{
	uint64_t nAtLeast = 0;
	{
		SHOWBUDGET_SCOPE( g_Scopes, "Open scope" );
		const uint64_t nBegin = showbudget::detail::ReadCounter();
		BeBusy( 500 );
		nAtLeast = showbudget::detail::ReadCounter() - nBegin;
		showbudget::EndFrame();
	}
	const std::map<std::string, ProfilerEntry> entries = ByName( Next() );
	ASSERT_TRUE( entries.contains( "Open scope" ) );
	EXPECT_GE( entries.at( "Open scope" ).m_nTicks, nAtLeast );
}

// What many threads do at once, and the calls that frames tell of it. The site is that of `Call`.
template <typename Call>
uint64_t CountCallsOfManyThreads( int nThreads, uint64_t nCalls, Call call, const std::function<ProfilerFrame()> &next )
{
	std::vector<std::thread> threads;
	std::atomic<int> nReady{ 0 };
	std::atomic<int> nRunning{ nThreads };
	for ( int i = 0; i < nThreads; i++ )
	{
		threads.emplace_back(
			[&]
			{
				nReady++;
				while ( nReady < nThreads )
					std::this_thread::yield();
				for ( uint64_t n = 0; n < nCalls; n++ )
					call();
				nRunning--;
			} );
	}
	std::map<uint64_t, uint64_t> calls;
	const auto TakeFrame = [&]
	{
		showbudget::EndFrame();
		for ( const ProfilerEntry &entry : next().m_Entries )
			calls[entry.m_nId] += entry.m_nCalls;
	};
	while ( nRunning > 0 )
		TakeFrame();
	for ( std::thread &thread : threads )
		thread.join();
	TakeFrame();
	const auto most = std::ranges::max_element( calls, {}, []( const auto &pair ) { return pair.second; } );
	return most == calls.end() ? 0 : most->second;
}

TEST_F( Scopes, CallsOfAllThreadsAreSummed )
{
	const auto call = [] { SHOWBUDGET_SCOPE( g_Scopes, "On many threads" ); };
	call(); // see the next test
	showbudget::EndFrame();
	Next();
	EXPECT_EQ( CountCallsOfManyThreads( 64, 500, call, [this] { return Next(); } ), 64u * 500u );
}

TEST_F( Scopes, OfCallsThatMeetWhileASiteIsNewThoseOfTheThreadThatBroughtItCount )
{
	const auto call = [] { SHOWBUDGET_SCOPE( g_Scopes, "First on many threads" ); };
	const uint64_t nCalls = CountCallsOfManyThreads( 64, 500, call, [this] { return Next(); } );
	EXPECT_LE( nCalls, 64u * 500u );
	EXPECT_GE( nCalls, 500u );
}
} // namespace
