// What comes to an open port besides consoles.
#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <memory>

#include "session.h"
#include "wire/sessionchunks.h"

namespace
{
using testing::HasSubstr;

SHOWBUDGET_BUDGET( g_StrangersBudget, "Strangers test", 1, 2, 3 );

// A console that watches, to show that none of its frames is harmed.
class Strangers : public CSession
{
protected:
	void Watch()
	{
		m_pConsole = std::make_unique<CTestConsole>( showbudget::Port() );
		m_pConsole->Greet();
		m_pConsole->WantBudgets( true );
		ASSERT_TRUE( WaitUntilWanted( 1 ) );
		showbudget::EndFrame();
	}
	void RunFrame()
	{
		{
			SHOWBUDGET_SCOPE( g_StrangersBudget, "Frame among strangers" );
		}
		showbudget::EndFrame();
		m_nFrames++;
	}
	// Every frame has come, and none was dropped.
	void ExpectAllFrames()
	{
		uint64_t nSamples = 0;
		while ( nSamples < m_nFrames )
		{
			const std::optional<Chunk> chunk = m_pConsole->Receive();
			ASSERT_TRUE( chunk.has_value() );
			nSamples += chunk->m_Header.m_nType == wire::CHUNK_SAMPLE;
			EXPECT_NE( chunk->m_Header.m_nType, wire::CHUNK_DROPPED );
		}
	}

	std::unique_ptr<CTestConsole> m_pConsole;
	uint64_t m_nFrames = 0;
};

TEST_F( Strangers, OneThatSendsItsGreetingTooSlowlyIsHungUpOn )
{
	RestartWith( { .m_Greeting = std::chrono::milliseconds( 100 ) } );
	CTestConsole slow( showbudget::Port() );
	// One byte after another, as long as the engine takes them: were the time counted from the last byte, it would
	// never end.
	const std::string_view begin( "HELO\0\2\0\0\0\0\x0f\xff", 12 );
	uint64_t nSent = 0;
	while ( !slow.WaitForBytes( std::chrono::milliseconds( 5 ) ) && nSent < 4096 )
	{
		slow.SendText( nSent < begin.size() ? begin.substr( nSent, 1 ) : "x" );
		nSent++;
	}
	EXPECT_LT( nSent, 4096u ) << "it was listened to until its greeting was whole";
	EXPECT_FALSE( slow.Receive().has_value() );
	EXPECT_TRUE( WaitForLog( "left: it did not introduce itself in time" ) );
}

TEST_F( Strangers, TenThousandThatComeAndGoHarmNoFrame )
{
	Watch();
	for ( int i = 0; i < 10000; i++ )
	{
		CTestConsole stranger( showbudget::Port() );
		if ( i % 3 == 0 )
			stranger.SendText( "GET / HTTP/1.1\r\n\r\n" );
		stranger.Abort(); // leaves nothing behind in the system's tables either
		if ( i % 10 == 0 )
			RunFrame();
	}
	ExpectAllFrames();
	EXPECT_TRUE( WaitForLog( "left: it hung up" ) );
	EXPECT_TRUE( WaitForLog( "left: it does not speak this protocol" ) );
}

// The most of one kind that the log may name of those who came since then.
size_t MostNamed( std::chrono::steady_clock::time_point since )
{
	constexpr std::chrono::seconds TIME( 10 );
	constexpr size_t LINES = 20;
	return LINES * ( 1 + static_cast<size_t>( ( std::chrono::steady_clock::now() - since ) / TIME ) );
}

TEST_F( Strangers, ManyDoNotFillTheLog )
{
	const auto begin = std::chrono::steady_clock::now();
	constexpr size_t STRANGERS = 100;
	for ( size_t i = 0; i < STRANGERS; i++ )
	{
		CTestConsole stranger( showbudget::Port() );
		stranger.SendText( "GET / HTTP/1.1\r\n\r\n" );
		EXPECT_FALSE( stranger.Receive().has_value() );
	}
	CTestConsole console( showbudget::Port() );
	console.Greet();
	showbudget::Stop();
	size_t nNamed = 0;
	size_t nUnnamed = 0;
	for ( const std::string &line : LogLines() )
	{
		nNamed += line.find( "left: it does not speak this protocol" ) != line.npos;
		if ( line.find( "more connections ended without having been let in" ) != line.npos )
			nUnnamed += std::stoull( line );
	}
	EXPECT_GE( nNamed, 20u );
	EXPECT_LE( nNamed, MostNamed( begin ) );
	EXPECT_EQ( nNamed + nUnnamed, STRANGERS );
	EXPECT_TRUE( WaitForLog( "(test console) connected" ) );
	EXPECT_TRUE( WaitForLog( "(test console) left: the engine ended the session" ) );
}

// An engine without a token lets everybody in who greets.
TEST_F( Strangers, ConsolesThatComeAndGoDoNotFillTheLogEither )
{
	constexpr size_t VISITS = 100;
	const auto begin = std::chrono::steady_clock::now();
	for ( size_t i = 0; i < VISITS; i++ )
	{
		CTestConsole console( showbudget::Port() );
		console.Greet();
	}
	showbudget::Stop();
	size_t nCame = 0;
	size_t nLeft = 0;
	size_t nUnnamed = 0;
	for ( const std::string &line : LogLines() )
	{
		nCame += line.find( "(test console) connected" ) != line.npos;
		nLeft += line.find( "(test console) left: " ) != line.npos;
		if ( line.find( " more consoles connected" ) != line.npos )
			nUnnamed += std::stoull( line );
	}
	EXPECT_GE( nCame, 20u );
	EXPECT_LE( nCame, MostNamed( begin ) );
	EXPECT_EQ( nCame + nUnnamed, VISITS );
	EXPECT_EQ( nLeft, nCame ) << "whoever is told of is told of to the end";
}

// Descriptors over 1,023 do not fit into the sets of select().
class Descriptors
{
public:
	static bool Allow( rlim_t nCount )
	{
		rlimit limit{};
		getrlimit( RLIMIT_NOFILE, &limit );
		limit.rlim_cur = std::max( limit.rlim_cur, std::min( nCount, limit.rlim_max ) );
		return setrlimit( RLIMIT_NOFILE, &limit ) == 0 && limit.rlim_cur >= nCount;
	}
};

TEST_F( Strangers, FiveHundredThatKeepSilentHarmNoFrame )
{
	if ( !Descriptors::Allow( 2048 ) )
		GTEST_SKIP() << "this process may not have 2,048 descriptors";
	Watch();
	std::vector<std::unique_ptr<CTestConsole>> silent;
	for ( int i = 0; i < 500; i++ )
	{
		silent.push_back( std::make_unique<CTestConsole>( showbudget::Port() ) );
		RunFrame();
	}
	// The engine keeps sixteen of them and hangs up on the others, the oldest first.
	for ( size_t i = 0; i < 500 - 16; i++ )
		EXPECT_FALSE( silent[i]->Receive().has_value() ) << i;
	EXPECT_FALSE( silent.back()->HasBytes() );
	EXPECT_TRUE( WaitForLog( "left: too many others wait to introduce themselves" ) );
	for ( int i = 0; i < 100; i++ )
		RunFrame();
	ExpectAllFrames();
	// The youngest may still introduce itself.
	silent.back()->Greet();
}

TEST_F( Strangers, DescriptorsOverAThousandWork )
{
	if ( !Descriptors::Allow( 2048 ) )
		GTEST_SKIP() << "this process may not have 2,048 descriptors";
	showbudget::Stop();
	std::vector<int> taken;
	do
		taken.push_back( open( "/dev/null", O_RDONLY ) );
	while ( taken.back() >= 0 && taken.back() < 1100 );
	Start();
	Watch();
	for ( int i = 0; i < 10; i++ )
		RunFrame();
	ExpectAllFrames();
	showbudget::Stop();
	EXPECT_TRUE( m_pConsole->IsEnded() );
	for ( const int nDescriptor : taken )
		close( nDescriptor );
}

TEST_F( Strangers, WithoutADescriptorLeftTheEngineRunsOnAndTakesConsolesLater )
{
	Watch();
	rlimit before{};
	getrlimit( RLIMIT_NOFILE, &before );
	CTestConsole late;
	rlimit none = before;
	const int nFree = dup( 0 );
	close( nFree );
	none.rlim_cur = static_cast<rlim_t>( nFree ); // all below it are taken
	ASSERT_EQ( setrlimit( RLIMIT_NOFILE, &none ), 0 );
	late.Connect( showbudget::Port() );
	for ( int i = 0; i < 100; i++ )
		RunFrame();
	ExpectAllFrames();
	ASSERT_EQ( setrlimit( RLIMIT_NOFILE, &before ), 0 );
	late.Greet();
}
} // namespace
