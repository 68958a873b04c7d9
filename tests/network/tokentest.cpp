// Engines and consoles, as processes, that know a token, do not know it, or know another one.
#include <memory>

#include "network/processesfixture.h"

namespace
{
constexpr int SOON_MS = 10000; // a console that was turned away waits longer than that

class Tokens : public CProcessesFixture
{
protected:
	void StartEngine( const QString &token )
	{
		SetToken( m_Engine, token );
		m_Engine.Start( DemoEngine() );
		m_Address = WaitForAddress( m_Engine );
		ASSERT_FALSE( m_Address.isEmpty() ) << "the engine does not listen";
	}

	// A console that knows that token; empty for none.
	std::unique_ptr<CChild> StartConsole( const QString &token )
	{
		auto pConsole = std::make_unique<CChild>();
		SetToken( *pConsole, token );
		pConsole->Start( Console( m_Address ) );
		return pConsole;
	}

	static testing::AssertionResult IsTurnedAway( CChild &console, const QString &reason )
	{
		if ( console.WaitForLine( "report cannot connect: " + reason, 0, PROCESS_PATIENCE_MS ) < 0 ||
			 console.WaitForLine( "state 1", 0, PROCESS_PATIENCE_MS ) < 0 || console.CountOf( "state 3" ) > 0 )
			return testing::AssertionFailure() << console.Text().toStdString();
		if ( console.Text().contains( "sesame" ) )
			return testing::AssertionFailure() << "a token is shown: " << console.Text().toStdString();
		return testing::AssertionSuccess();
	}

private:
	static void SetToken( CChild &child, const QString &token )
	{
		child.SetVariable( "SHOWBUDGET_TOKEN_FILE", QString() );
		child.SetVariable( "SHOWBUDGET_TOKEN", token );
	}
};

TEST_F( Tokens, AnEngineThatHasOneTakesOnlyConsolesThatKnowIt )
{
	ASSERT_NO_FATAL_FAILURE( StartEngine( "open sesame" ) );
	const auto pStranger = StartConsole( QString() );
	EXPECT_TRUE( IsTurnedAway( *pStranger, "it refuses this console: token required" ) );
	const auto pMistaken = StartConsole( "close sesame" );
	EXPECT_TRUE( IsTurnedAway( *pMistaken, "it refuses this console: wrong token" ) );
	const auto pFriend = StartConsole( "open sesame" );
	EXPECT_TRUE( WaitForMoreSamples( *pFriend ) ) << pFriend->Text().toStdString();
}

TEST_F( Tokens, AConsoleThatHasOneTakesOnlyEnginesThatKnowIt )
{
	ASSERT_NO_FATAL_FAILURE( StartEngine( QString() ) );
	const auto pCareful = StartConsole( "open sesame" );
	EXPECT_TRUE( IsTurnedAway( *pCareful, "it has no token" ) );
	const auto pCareless = StartConsole( QString() );
	EXPECT_TRUE( WaitForMoreSamples( *pCareless ) ) << pCareless->Text().toStdString();
}

TEST_F( Tokens, AConsoleTooManyLearnsWhyAndDoesNotKnockAgainSoon )
{
	ASSERT_NO_FATAL_FAILURE( StartEngine( QString() ) );
	std::vector<std::unique_ptr<CChild>> consoles;
	for ( int i = 0; i < 4; i++ )
	{
		consoles.push_back( StartConsole( QString() ) );
		ASSERT_TRUE( WaitForMoreSamples( *consoles.back() ) ) << consoles.back()->Text().toStdString();
	}
	const auto pFifth = StartConsole( QString() );
	EXPECT_TRUE( IsTurnedAway( *pFifth, "it refuses this console: " ) );
	// The others go on meanwhile, and one attempt a second would show by now. On a busy machine 300 frames may take so
	// long that the next one comes, half a minute later.
	ASSERT_TRUE( WaitForMoreSamples( *consoles.front(), 300 ) );
	const int nFirst = pFifth->WaitForLine( "state 2", 0, 0 );
	ASSERT_GE( nFirst, 0 );
	const int nSecond = pFifth->WaitForLine( "state 2", nFirst + 1, 0 );
	EXPECT_TRUE( nSecond < 0 || pFifth->TimeOf( nSecond ) - pFifth->TimeOf( nFirst ) > SOON_MS )
		<< pFifth->Text().toStdString();
}
} // namespace
