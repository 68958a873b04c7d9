// A process that forks without exec. ThreadSanitizer does not support what such a child does when its parent had
// threads, so this is left out there.
#include <gmock/gmock.h>

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <barrier>
#include <thread>

#include "session.h"
#include "wire/sessionchunks.h"

#if SHOWBUDGET_PLAIN_COUNTERS
namespace
{
SHOWBUDGET_BUDGET( g_ForkBudget, "Fork test", 1, 1, 1 );

int g_nForkCalls = 0;

// A child that lives until it is told to end, and what it found out.
class CChild
{
public:
	// The child runs the function and reports what it returns; 0 is good.
	explicit CChild( const std::function<int( int nToParent )> &function )
	{
		EXPECT_EQ( pipe( m_ToChild ), 0 );
		EXPECT_EQ( pipe( m_ToParent ), 0 );
		m_nProcess = fork();
		if ( m_nProcess != 0 )
			return;
		close( m_ToChild[1] );
		const int nResult = function( m_ToParent[1] );
		char nByte;
		[[maybe_unused]] const ssize_t nRead = read( m_ToChild[0], &nByte, 1 );
		_exit( nResult );
	}
	~CChild()
	{
		for ( const int nEnd : { m_ToChild[0], m_ToParent[0], m_ToParent[1] } )
			close( nEnd );
	}
	CChild( const CChild & ) = delete;
	CChild &operator=( const CChild & ) = delete;

	uint16_t ReceivePort() const
	{
		uint16_t nPort = 0;
		EXPECT_EQ( read( m_ToParent[0], &nPort, sizeof( nPort ) ), ssize_t{ sizeof( nPort ) } );
		return nPort;
	}
	pid_t Process() const { return m_nProcess; }
	int End()
	{
		close( m_ToChild[1] );
		int nStatus = -1;
		EXPECT_EQ( waitpid( m_nProcess, &nStatus, 0 ), m_nProcess );
		return nStatus;
	}

private:
	int m_ToChild[2]{};
	int m_ToParent[2]{};
	pid_t m_nProcess = -1;
};

// In the child: begins a session of its own.
bool StartAndSendPort( int nToParent )
{
	showbudget::Settings settings;
	settings.m_nPort = 0;
	settings.m_pLog = []( showbudget::Severity, const char *, void * ) {};
	if ( !showbudget::Start( settings ) )
		return false;
	const uint16_t nPort = showbudget::Port();
	return write( nToParent, &nPort, sizeof( nPort ) ) == sizeof( nPort );
}

class Fork : public CSession
{
	showbudget::Settings MakeSettings() override
	{
		showbudget::Settings settings = CSession::MakeSettings();
		settings.m_nPort = m_nPort;
		settings.m_bCommands = true;
		return settings;
	}

protected:
	uint16_t m_nPort = 0;
};

TEST_F( Fork, TheChildIsNoPartOfTheSession )
{
	CTestConsole console( showbudget::Port() );
	console.Greet();
	console.WantBudgets( true );
	ASSERT_TRUE( WaitUntilWanted( 1 ) );
	showbudget::EndFrame();
	CChild child(
		[]( int )
		{
			{
				SHOWBUDGET_SCOPE( g_ForkBudget, "In the child" );
			}
			showbudget::EndFrame();
			showbudget::Print( showbudget::Severity::Error, "from the child" );
			showbudget::Stop();
			return showbudget::detail::g_nWanted.load() == 0 && showbudget::Port() == 0 ? 0 : 1;
		} );
	showbudget::EndFrame();
	console.ReceiveType( wire::CHUNK_SAMPLE );
	showbudget::Print( showbudget::Severity::Message, "from the parent" );
	EXPECT_EQ( console.ReceiveLine(), "from the parent\n" );
	showbudget::Stop();
	EXPECT_TRUE( console.IsEnded() ) << "the child keeps the connection open";
	EXPECT_EQ( child.End(), 0 );
}

TEST_F( Fork, TheChildDoesNotHoldThePort )
{
	m_nPort = showbudget::Port();
	CChild child( []( int ) { return 0; } );
	showbudget::Stop();
	Start();
	EXPECT_EQ( showbudget::Port(), m_nPort );
	CTestConsole console( m_nPort );
	console.Greet();
	EXPECT_EQ( child.End(), 0 );
}

TEST_F( Fork, TheChildMayHaveASessionOfItsOwn )
{
	CTestConsole ofParent( showbudget::Port() );
	ofParent.Greet();
	CChild child( []( int nToParent ) { return StartAndSendPort( nToParent ) ? 0 : 1; } );
	CTestConsole ofChild( child.ReceivePort() );
	const std::optional<wire::Hello> hello = wire::ReadHello( ofChild.Greet().m_Payload );
	ASSERT_TRUE( hello.has_value() );
	EXPECT_EQ( hello->m_nProcessId, static_cast<uint32_t>( child.Process() ) );
	// Nothing else wakes this process's session, so a wake that the child took would be missed.
	for ( int i = 0; i < 200; i++ )
	{
		showbudget::PrintFormat( showbudget::Severity::Message, "line %d", i );
		EXPECT_EQ( ofParent.ReceiveLine(), "line " + std::to_string( i ) + '\n' );
	}
	EXPECT_EQ( child.End(), 0 );
}

TEST_F( Fork, TheChildDoesNotRunTheParentsCommands )
{
	g_nForkCalls = 0;
	ASSERT_TRUE( showbudget::RegisterCommand(
		"fork_test", "", []( int, const char *const *, void * ) { g_nForkCalls++; }, nullptr ) );
	CTestConsole console( showbudget::Port() );
	console.Greet();
	// More than can wait: when the rest is refused, the first ones are waiting.
	for ( int i = 0; i < 20; i++ )
		console.Command( "fork_test" );
	console.ReceiveLine();
	CChild child(
		[]( int )
		{
			showbudget::EndFrame();
			return g_nForkCalls;
		} );
	EXPECT_EQ( child.End(), 0 );
	showbudget::EndFrame();
	EXPECT_GT( g_nForkCalls, 0 );
}

TEST_F( Fork, TheChildHasRoomForThreadsOfItsOwn )
{
	// As many as there is room for at one time, all of them alive at the fork.
	CTestConsole console( showbudget::Port() );
	console.Greet();
	console.WantScopes( true );
	ASSERT_TRUE( WaitUntilWanted( 2 ) );
	std::atomic<int> nIn{ 0 };
	std::atomic<bool> bEnd{ false };
	std::vector<std::thread> threads;
	for ( int i = 0; i < 126; i++ )
	{
		threads.emplace_back(
			[&]
			{
				{
					SHOWBUDGET_SCOPE( g_ForkBudget, "Many threads" );
				}
				nIn++;
				bEnd.wait( false );
			} );
	}
	ASSERT_TRUE( WaitUntil( [&] { return nIn == 126; } ) );
	CChild child(
		[]( int nToParent )
		{
			if ( !StartAndSendPort( nToParent ) )
				return 1;
			while ( showbudget::detail::g_nWanted.load() == 0 )
				std::this_thread::yield();
			std::barrier together( 5 );
			const auto work = [&together]( bool bWait )
			{
				SHOWBUDGET_SCOPE( g_ForkBudget, "In the child's thread" );
				if ( bWait )
					together.arrive_and_wait();
			};
			work( false ); // a site's very first call is made alone, or others at that moment would not be counted
			showbudget::EndFrame();
			std::vector<std::thread> ofChild;
			for ( int i = 0; i < 5; i++ )
				ofChild.emplace_back( work, true );
			for ( std::thread &thread : ofChild )
				thread.join();
			showbudget::EndFrame();
			return 0;
		} );
	CTestConsole ofChild( child.ReceivePort() );
	ofChild.Greet();
	ofChild.WantScopes( true );
	const ProfilerFrame frame = ReadProfilerFrame( ofChild.ReceiveType( wire::CHUNK_MINIPROFILER ) );
	uint64_t nCalls = 0;
	for ( const ProfilerEntry &entry : frame.m_Entries )
		nCalls += entry.m_nCalls;
	EXPECT_EQ( nCalls, 5u );
	EXPECT_EQ( child.End(), 0 );
	bEnd = true;
	bEnd.notify_all();
	for ( std::thread &thread : threads )
		thread.join();
}
} // namespace
#endif
