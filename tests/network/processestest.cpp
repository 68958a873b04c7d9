// The console and an engine as processes of their own that are killed, stopped and cut off from each other.
#include <csignal>

#include "network/namespaces.h"
#include "network/processesfixture.h"

namespace
{
constexpr int END_NOTICED_MS = 1000;       // a process that ends tells its peer at once
constexpr int CUT_NOTICED_MS = 5000;       // a network that is gone tells nobody
constexpr int RECONNECTED_MS = 2000;       // from when the engine listens again
constexpr int CABLE_RECONNECTED_MS = 6000; // an attempt may just have begun to wait for three seconds
constexpr int STOPPED_MS = 10000;          // twice as long as it takes to notice that a network is gone

bool IsLongRun()
{
	return qEnvironmentVariableIsSet( "SHOWBUDGET_LONG" );
}

class Processes : public CProcessesFixture
{
};

TEST_F( Processes, AnEngineThatEndsAtAnyMomentIsMissedAtOnceAndWelcomedBack )
{
	ASSERT_NO_FATAL_FAILURE( StartSampling( DemoEngine() ) );
	qint64 nNoticed = 0;
	qint64 nReconnected = 0;
	const int nRounds = IsLongRun() ? 100 : 4;
	for ( int nRound = 0; nRound < nRounds; nRound++ )
	{
		SCOPED_TRACE( testing::Message() << "round " << nRound );
		// Each line of the console is a moment: connecting, greeting, the first samples and later ones.
		ASSERT_TRUE( m_Console.WaitForLines( m_Console.Count() + Random( 30 ), PROCESS_PATIENCE_MS ) );
		const bool bWasConnected = m_Console.Last( "state " ) == "3";
		const int nSamples = Samples( m_Console );
		const int nFrom = m_Console.Count();
		const qint64 nEnded = CChild::Now();
		ASSERT_TRUE( m_Engine.EndAndWait( nRound % 2 == 0 ? SIGKILL : SIGTERM ) );
		if ( bWasConnected )
		{
			const int nLine = WaitForState( m_Console, "1", nFrom, END_NOTICED_MS );
			ASSERT_GE( nLine, 0 ) << m_Console.Text().toStdString();
			nNoticed = std::max( nNoticed, m_Console.TimeOf( nLine ) - nEnded );
			ASSERT_TRUE( WaitFor( [&]() { return m_Console.Last( "window " ) == "Stopped."; }, PROCESS_PATIENCE_MS ) );
			ASSERT_GE( Samples( m_Console ), nSamples ) << "what was sampled stays";
		}
		const int nAway = m_Console.Count();
		const int nLinesOfEngine = m_Engine.Count();
		m_Engine.Start( DemoEngine( "127.0.0.1", m_Address.section( ':', 1 ) ) );
		ASSERT_EQ( WaitForAddress( m_Engine, nLinesOfEngine ), m_Address );
		const qint64 nListening =
			m_Engine.TimeOf( m_Engine.WaitForLine( "listening", nLinesOfEngine, PROCESS_PATIENCE_MS ) );
		const int nLine = WaitForState( m_Console, "3", nAway, RECONNECTED_MS );
		ASSERT_GE( nLine, 0 ) << m_Console.Text().toStdString();
		nReconnected = std::max( nReconnected, m_Console.TimeOf( nLine ) - nListening );
		m_Console.Write( "start\n" );
		ASSERT_TRUE( WaitFor( [&]() { return m_Console.Last( "window " ) == "Running."; }, PROCESS_PATIENCE_MS ) );
	}
	ASSERT_TRUE( WaitForMoreSamples( m_Console ) );
	EXPECT_TRUE( m_Console.CloseInputAndWait() );
	std::printf( "noticed after at most %lld ms, reconnected after at most %lld ms\n", nNoticed, nReconnected );
}

TEST_F( Processes, AConsoleThatIsKilledAtAnyMomentLeavesTheEngineAndOtherConsolesAlone )
{
	ASSERT_NO_FATAL_FAILURE( StartSampling( DemoEngine() ) );
	const int nDescriptors = m_Engine.OpenDescriptors();
	const int nRounds = IsLongRun() ? 100 : 4;
	for ( int nRound = 0; nRound < nRounds; nRound++ )
	{
		SCOPED_TRACE( testing::Message() << "round " << nRound );
		CChild victim;
		victim.Start( Console( m_Address ) );
		ASSERT_TRUE( victim.WaitForLines( Random( 30 ), PROCESS_PATIENCE_MS ) );
		ASSERT_TRUE( victim.EndAndWait( SIGKILL ) );
		ASSERT_TRUE( WaitForMoreSamples( m_Console ) );
	}
	EXPECT_EQ( m_Console.CountOf( "state 3" ), 1 ) << m_Console.Text().toStdString();
	// More consoles were killed than may be connected at once, and none of them is left.
	EXPECT_TRUE( WaitFor( [&]() { return m_Engine.OpenDescriptors() == nDescriptors; }, PROCESS_PATIENCE_MS ) )
		<< nDescriptors << " descriptors before, " << m_Engine.OpenDescriptors() << " now";
}

TEST_F( Processes, AnEngineThatIsStoppedIsShownAsStalledAndGoesOnInTheSameSession )
{
	ASSERT_NO_FATAL_FAILURE( StartSampling( DemoEngine() ) );
	const int nFrom = m_Console.Count();
	const qint64 nStopped = CChild::Now();
	m_Engine.Signal( SIGSTOP );
	ASSERT_GE( m_Console.WaitForLine( "stalled 1", nFrom, PROCESS_PATIENCE_MS ), 0 ) << m_Console.Text().toStdString();
	const int nSamples = Samples( m_Console );
	ASSERT_TRUE( WaitFor( [&]() { return CChild::Now() - nStopped >= STOPPED_MS; }, PROCESS_PATIENCE_MS ) );
	EXPECT_EQ( Samples( m_Console ), nSamples );
	const qint64 nContinued = CChild::Now();
	m_Engine.Signal( SIGCONT );
	ASSERT_GE( m_Console.WaitForLine( "stalled 0", nFrom, PROCESS_PATIENCE_MS ), 0 ) << m_Console.Text().toStdString();
	ASSERT_TRUE( WaitForMoreSamples( m_Console, 60 ) );
	// The engine runs 60 frames a second and does not hurry afterwards. One frame may have been half done, and one in
	// the queue.
	EXPECT_LE( Samples( m_Console ) - nSamples, ( CChild::Now() - nContinued ) * 60 / 1000 + 3 ) << "no sample twice";
	EXPECT_EQ( m_Console.CountOf( "state", nFrom ), 0 ) << "one session: " << m_Console.Text().toStdString();
	EXPECT_EQ( m_Console.CountOf( "report stalled: nothing came for 3 s" ), 1 );
	EXPECT_EQ( m_Console.CountOf( "report no longer stalled" ), 1 );
}

TEST_F( Processes, AConsoleThatIsStoppedLosesWholeFramesShowsHowManyAndKeepsItsSession )
{
	ASSERT_NO_FATAL_FAILURE( StartSampling( { FLOOD_ENGINE } ) );
	CChild witness;
	witness.Start( Console( m_Address ) );
	ASSERT_TRUE( WaitForMoreSamples( witness ) ) << witness.Text().toStdString();
	const int nFrom = m_Console.Count();
	m_Console.Signal( SIGSTOP );
	// More bytes than fit into the engine's queue and both systems' buffers, over several seconds.
	const int nFrames = IsLongRun() ? 60000 : 16000;
	EXPECT_TRUE( WaitForMoreSamples( witness, nFrames, 10 * PROCESS_PATIENCE_MS ) ) << "the engine does not wait";
	m_Console.Signal( SIGCONT );
	EXPECT_TRUE( WaitFor( [this]() { return m_Console.Last( "dropped " ).toULongLong() > 0; }, PROCESS_PATIENCE_MS ) )
		<< m_Console.Text().toStdString();
	EXPECT_TRUE( WaitForMoreSamples( m_Console ) );
	EXPECT_EQ( m_Console.CountOf( "state", nFrom ), 0 ) << "one session: " << m_Console.Text().toStdString();
}

class Hosts : public Processes
{
protected:
	void SetUp() override
	{
		if ( !m_Hosts.SetUp() )
			GTEST_SKIP() << "this machine does not allow network namespaces: " << m_Hosts.Problem().toStdString();
	}

	CTwoHosts m_Hosts;
};

TEST_F( Hosts, ACutCableIsNoticedByBothAndTheConsoleComesBackWithWhatItHad )
{
	m_Engine.Start( m_Hosts.OnFirst( DemoEngine( CTwoHosts::FirstAddress(), "27190" ) ) );
	ASSERT_FALSE( WaitForAddress( m_Engine ).isEmpty() );
	const int nDescriptors = m_Engine.OpenDescriptors();
	m_Console.Start( m_Hosts.OnSecond( Console( CTwoHosts::FirstAddress() + ":27190" ) ) );
	ASSERT_TRUE( WaitForMoreSamples( m_Console ) ) << m_Console.Text().toStdString();

	const int nFrom = m_Console.Count();
	const qint64 nCut = CChild::Now();
	ASSERT_TRUE( m_Hosts.SetLink( false ) ) << m_Hosts.Problem().toStdString();
	const int nLine = WaitForState( m_Console, "1", nFrom, CUT_NOTICED_MS );
	ASSERT_GE( nLine, 0 ) << m_Console.Text().toStdString();
	EXPECT_TRUE( WaitFor( [this]() { return m_Console.Last( "window " ) == "Stopped."; }, PROCESS_PATIENCE_MS ) );
	std::printf( "noticed after %lld ms\n", m_Console.TimeOf( nLine ) - nCut );
	const int nSamples = Samples( m_Console );
	EXPECT_GT( nSamples, 0 );
	EXPECT_TRUE( WaitFor( [&]() { return m_Engine.OpenDescriptors() == nDescriptors; }, CUT_NOTICED_MS ) )
		<< "the engine keeps a connection to nobody";

	const int nAway = m_Console.Count();
	ASSERT_TRUE( m_Hosts.SetLink( true ) ) << m_Hosts.Problem().toStdString();
	ASSERT_GE( WaitForState( m_Console, "3", nAway, CABLE_RECONNECTED_MS ), 0 ) << m_Console.Text().toStdString();
	EXPECT_EQ( Samples( m_Console ), nSamples );
	m_Console.Write( "start\n" );
	EXPECT_TRUE( WaitForMoreSamples( m_Console ) );
}

TEST_F( Hosts, AConsoleNeverMistakesItselfForTheEngineThatItWaitsFor )
{
	// The system may give an attempt the very port as its own that it tries to reach. Here there is no other.
	constexpr int nPort = 40000;
	ASSERT_TRUE( m_Hosts.SetPortsOfFirst( nPort, nPort + 1 ) ) << m_Hosts.Problem().toStdString();
	const QString address = QString( "127.0.0.1:%1" ).arg( nPort );
	m_Console.Start( m_Hosts.OnFirst( Console( address ) ) );
	ASSERT_GE( m_Console.WaitForLine( "report cannot connect: nobody listens there", 0, PROCESS_PATIENCE_MS ), 0 )
		<< m_Console.Text().toStdString();
	ASSERT_TRUE( WaitFor( [this]() { return m_Console.CountOf( "state 2" ) >= 4; }, PROCESS_PATIENCE_MS ) );
	EXPECT_EQ( m_Console.CountOf( "state 3" ), 0 ) << m_Console.Text().toStdString();
	m_Engine.Start( m_Hosts.OnFirst( DemoEngine( "127.0.0.1", QString::number( nPort ) ) ) );
	EXPECT_EQ( WaitForAddress( m_Engine ).toStdString(), address.toStdString() );
	EXPECT_GE( WaitForState( m_Console, "3", 0, PROCESS_PATIENCE_MS ), 0 ) << m_Console.Text().toStdString();
}
} // namespace
