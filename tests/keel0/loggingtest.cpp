#include "keel0/logging.h"

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "support/logguard.h"

namespace
{
using testing::ElementsAre;
using testing::IsEmpty;

// A listener while it lives; keeps what it hears.
class CListener
{
public:
	CListener() { Logging_AddListener( OnText, this ); }
	virtual ~CListener() { Logging_RemoveListener( OnText, this ); }
	CListener( const CListener & ) = delete;
	CListener &operator=( const CListener & ) = delete;

	static void OnText( LoggingSeverity severity, const char *pText, void *pContext )
	{
		CListener *pThis = static_cast<CListener *>( pContext );
		pThis->m_Severities.push_back( severity );
		pThis->m_Texts.emplace_back( pText );
		pThis->Heard( pText );
	}

	std::vector<std::string> m_Texts;
	std::vector<LoggingSeverity> m_Severities;

protected:
	virtual void Heard( const char * ) {}
};

std::string StderrOfProbe( const std::string &what )
{
	FILE *pPipe = popen( ( STDERR_PROBE " " + what + " 2>&1 >/dev/null" ).c_str(), "r" );
	if ( !pPipe )
		return "the probe could not be started";
	std::string text;
	std::array<char, 256> piece{};
	while ( const size_t nRead = std::fread( piece.data(), 1, piece.size(), pPipe ) )
		text.append( piece.data(), nRead );
	const int nStatus = pclose( pPipe );
	return nStatus == 0 ? text : "the probe ended with " + std::to_string( nStatus ) + ": " + text;
}

TEST( Logging, AListenerHearsTheFormattedTextAndItsSeverity )
{
	CExpectWarnings warnings;
	CListener listener;
	Msg( "a %d %s\n", 1, "b" );
	Warning( "no line feed" );
	Logging_Error( "%c", 'e' );
	EXPECT_THAT( listener.m_Texts, ElementsAre( "a 1 b\n", "no line feed", "e" ) );
	EXPECT_THAT( listener.m_Severities,
		ElementsAre( LoggingSeverity::Message, LoggingSeverity::Warning, LoggingSeverity::Error ) );
	EXPECT_THAT( warnings.Take(), ElementsAre( "no line feed", "e" ) );
}

TEST( Logging, ATextOfAnyLengthArrivesWhole )
{
	CListener listener;
	const std::string text( 100'000, 'x' );
	Msg( "%s", text.c_str() );
	EXPECT_THAT( listener.m_Texts, ElementsAre( text ) );
}

TEST( Logging, WithoutAListenerTextGoesToStderr )
{
	EXPECT_EQ( StderrOfProbe( "log" ), "one 1\ntwo 2\nthree\n" );
}

TEST( Logging, AfterTheLastListenerIsRemovedTextGoesToStderrAgain )
{
	EXPECT_EQ( StderrOfProbe( "removed" ), "nobody listens\n" );
}

TEST( Logging, AListenerThatAnswersEveryTextIsCutOffAtStderr )
{
	// It hears the text and LOGGING_MAX_DEPTH answers; its answer to the last of them has one '!' more.
	EXPECT_EQ( StderrOfProbe( "answers" ), "text" + std::string( LOGGING_MAX_DEPTH + 1, '!' ) );
}

TEST( Logging, ListenersAreCalledInTheOrderInWhichTheyWereAdded )
{
	static std::vector<int> s_Order;
	s_Order.clear();
	static int s_One = 1;
	static int s_Two = 2;
	const LoggingListenerFn pNote = []( LoggingSeverity, const char *, void *pContext )
	{ s_Order.push_back( *static_cast<int *>( pContext ) ); };
	Logging_AddListener( pNote, &s_Two );
	Logging_AddListener( pNote, &s_One );
	Msg( "x" );
	Logging_RemoveListener( pNote, &s_One );
	Logging_RemoveListener( pNote, &s_Two );
	EXPECT_THAT( s_Order, ElementsAre( 2, 1 ) );
}

TEST( Logging, AListenerThatIsAddedTwiceIsCalledOnceAndRemovedAtOnce )
{
	CListener listener;
	Logging_AddListener( CListener::OnText, &listener );
	Msg( "x" );
	EXPECT_THAT( listener.m_Texts, ElementsAre( "x" ) );
	Logging_RemoveListener( CListener::OnText, &listener );
	Logging_RemoveListener( CListener::OnText, &listener );
	Msg( "y" );
	EXPECT_THAT( listener.m_Texts, ElementsAre( "x" ) );
}

TEST( Logging, ANullListenerIsIgnored )
{
	CListener listener;
	Logging_AddListener( nullptr, nullptr );
	Msg( "x" );
	EXPECT_THAT( listener.m_Texts, ElementsAre( "x" ) );
}

TEST( Logging, WhatAListenerLogsIsHandedOnToAllAfterThePresentText )
{
	class CAnswering : public CListener
	{
		void Heard( const char *pText ) override
		{
			if ( std::string( pText ) == "question" )
				Msg( "answer" );
		}
	} first;
	CListener second;
	Msg( "question" );
	Msg( "next" );
	EXPECT_THAT( first.m_Texts, ElementsAre( "question", "answer", "next" ) );
	EXPECT_THAT( second.m_Texts, ElementsAre( "question", "answer", "next" ) );
}

TEST( Logging, AListenerMayRemoveItselfAndOthersDuringACall )
{
	class CRemoving : public CListener
	{
	public:
		CListener *m_pOther = nullptr;

	private:
		void Heard( const char * ) override
		{
			Logging_RemoveListener( OnText, this );
			Logging_RemoveListener( OnText, m_pOther );
		}
	} removing;
	CListener removed;
	CListener other;
	removing.m_pOther = &removed;
	Msg( "x" );
	Msg( "y" );
	EXPECT_THAT( removing.m_Texts, ElementsAre( "x" ) );
	EXPECT_THAT( removed.m_Texts, IsEmpty() );
	EXPECT_THAT( other.m_Texts, ElementsAre( "x", "y" ) );
}

TEST( Logging, AListenerThatIsAddedDuringACallHearsTheNextText )
{
	class CAdding : public CListener
	{
	public:
		CListener *m_pOther = nullptr;

	private:
		void Heard( const char * ) override { Logging_AddListener( OnText, m_pOther ); }
	};
	CListener added;
	Logging_RemoveListener( CListener::OnText, &added );
	CAdding adding;
	adding.m_pOther = &added;
	Msg( "x" );
	Msg( "y" );
	EXPECT_THAT( added.m_Texts, ElementsAre( "y" ) );
}

TEST( Logging, TextsOfManyThreadsArriveOnceOneAtATimeAndInOrder )
{
	constexpr int THREADS = 4;
	constexpr int TEXTS = 500;
	class CExclusive : public CListener
	{
	public:
		std::atomic<int> m_nInside{ 0 };
		bool m_bOverlapped = false;

	private:
		void Heard( const char * ) override
		{
			m_bOverlapped = m_nInside.fetch_add( 1 ) != 0 || m_bOverlapped;
			m_nInside.fetch_sub( 1 );
		}
	} listener;

	std::vector<std::thread> threads;
	for ( int nThread = 0; nThread < THREADS; nThread++ )
		threads.emplace_back(
			[nThread]
			{
				for ( int i = 0; i < TEXTS; i++ )
					Msg( "%d %d", nThread, i );
			} );
	for ( std::thread &thread : threads )
		thread.join();

	EXPECT_FALSE( listener.m_bOverlapped );
	ASSERT_EQ( listener.m_Texts.size(), size_t{ THREADS } * TEXTS );
	std::array<int, THREADS> nextOfThread{};
	for ( const std::string &text : listener.m_Texts )
	{
		int nThread = -1;
		int nText = -1;
		ASSERT_EQ( std::sscanf( text.c_str(), "%d %d", &nThread, &nText ), 2 ) << text;
		ASSERT_EQ( nText, nextOfThread.at( static_cast<size_t>( nThread ) )++ );
	}
}

TEST( Logging, ARemovedListenerIsNotCalledByAnotherThreadAnyMore )
{
	std::atomic<bool> bEnd = false;
	std::thread logging(
		[&bEnd]
		{
			while ( !bEnd )
				Msg( "x" );
		} );
	// A listener's context ends right after its removal; a sanitizer sees a late call.
	for ( int i = 0; i < 200; i++ )
	{
		auto pHeard = std::make_unique<std::atomic<int>>( 0 );
		const LoggingListenerFn pCount = []( LoggingSeverity, const char *, void *pContext )
		{ static_cast<std::atomic<int> *>( pContext )->fetch_add( 1 ); };
		Logging_AddListener( pCount, pHeard.get() );
		while ( pHeard->load() == 0 )
			std::this_thread::yield();
		Logging_RemoveListener( pCount, pHeard.get() );
		const int nHeard = pHeard->load();
		std::this_thread::yield();
		EXPECT_EQ( pHeard->load(), nHeard );
	}
	bEnd = true;
	logging.join();
}
} // namespace
