// Whom the console talks to, and what it says of an engine that turns it away or falls silent.
#include <QFile>
#include <QTemporaryDir>

#include "accesstoken.h"
#include "connectionfixture.h"
#include "connectionlist.h"
#include "connectionsmodel.h"

using testing::AllOf;
using testing::HasSubstr;

namespace
{
constexpr int LONGEST_BACK_OFF_MS = 30000;

QByteArray TextsOfHello( const QByteArray &name, const QByteArray &token, const QByteArray &refusal = {} )
{
	return name + '\0' + token + ( refusal.isEmpty() ? QByteArray() : '\0' + refusal );
}

class Trust : public CConnectionFixture
{
protected:
	bool IsTurnedAwayFor( const char *pReason )
	{
		const std::string problem = m_Connection.Problem().toStdString();
		EXPECT_THAT( problem, HasSubstr( pReason ) );
		EXPECT_THAT( problem, testing::Not( HasSubstr( "secret" ) ) );
		EXPECT_THAT( m_Reports.join( '\n' ).toStdString(),
			AllOf( HasSubstr( pReason ), testing::Not( HasSubstr( "secret" ) ) ) );
		// The retry timer has begun a moment ago.
		return m_Connection.MillisecondsToRetry() > LONGEST_BACK_OFF_MS / 2;
	}
};

TEST_F( Trust, TheTokenGoesBehindTheNameOfTheGreeting )
{
	m_Connection.SetToken( "secret" );
	m_Connection.Connect();
	ASSERT_TRUE( WaitFor( [this]() { return m_Peer.Received().endsWith( QByteArray( "\0secret", 7 ) ); } ) );
}

TEST_F( Trust, AnEngineWithTheSameTokenIsTaken )
{
	m_Connection.SetToken( "secret" );
	m_Peer.GreetWith( HelloBytes( TextsOfHello( "engine", "secret" ) ) );
	m_Connection.Connect();
	ASSERT_TRUE( WaitFor( [this]() { return m_Connection.IsConnected(); } ) );
	EXPECT_STREQ( m_Connection.GetName(), "engine" );
	EXPECT_THAT( m_Reports.join( '\n' ).toStdString(), testing::Not( HasSubstr( "secret" ) ) );
}

TEST_F( Trust, AnEngineWithoutTheTokenIsRefusedAndLeftAloneForLong )
{
	m_Connection.SetToken( "secret" );
	ProblemAfter( HelloBytes( "engine" ) );
	EXPECT_TRUE( IsTurnedAwayFor( "it has no token" ) );
}

TEST_F( Trust, AnEngineWithAnotherTokenIsRefusedAndNeitherTokenIsTold )
{
	for ( const char *pToken : { "secre", "secret2", "Secret", "other" } )
	{
		m_Connection.SetToken( "secret" );
		ProblemAfter( HelloBytes( TextsOfHello( "engine", pToken ) ) );
		EXPECT_TRUE( IsTurnedAwayFor( "another token" ) ) << pToken;
		m_Connection.Disconnect();
		m_Reports.clear();
	}
}

TEST_F( Trust, AConsoleWithoutATokenTakesEveryEngine )
{
	m_Peer.GreetWith( HelloBytes( TextsOfHello( "engine", "whatever" ) ) );
	m_Connection.Connect();
	ASSERT_TRUE( WaitFor( [this]() { return m_Connection.IsConnected(); } ) );
}

TEST_F( Trust, ARefusalOfTheEngineIsShownAndNotAskedForAgainSoon )
{
	CConnectionList list;
	CConnectionsModel model( list );
	m_Peer.GreetWith( HelloBytes( TextsOfHello( "engine", "", "token required" ) ) );
	const CTargetConnection *pConnection = list.Add( m_Peer.Address() );
	ASSERT_TRUE( WaitFor( [&]() { return pConnection->GetState() == CTargetConnection::Waiting; } ) );
	EXPECT_EQ( model.index( 0, CConnectionsModel::StateColumn ).data().toString(),
		"Retrying: it refuses this console: token required" );
	EXPECT_GT( pConnection->MillisecondsToRetry(), LONGEST_BACK_OFF_MS / 2 );
}

TEST_F( Trust, ARefusalIsALineWhateverTheEngineSends )
{
	ProblemAfter( HelloBytes( TextsOfHello( "engine", "", "<b>no\x1b[31m %1" + QByteArray( 300, 'x' ) ) ) );
	EXPECT_THAT( m_Connection.Problem().toStdString(), HasSubstr( "it refuses this console: <b>no\uFFFD[31m %1xxx" ) );
	EXPECT_LT( m_Connection.Problem().size(), 250 );
}

TEST_F( Trust, AUserWhoConnectsAgainIsNotHeldBackByARefusal )
{
	ProblemAfter( HelloBytes( TextsOfHello( "engine", "", "four consoles are connected" ) ) );
	EXPECT_TRUE( IsTurnedAwayFor( "four consoles" ) );
	m_Peer.GreetWith( HelloBytes() );
	m_Connection.Connect();
	EXPECT_TRUE( WaitFor( [this]() { return m_Connection.IsConnected(); } ) );
}

class TokenSources : public testing::Test
{
protected:
	TokenSources() { Clear(); }
	~TokenSources() override { Clear(); }

	static void Clear()
	{
		qunsetenv( "SHOWBUDGET_TOKEN" );
		qunsetenv( "SHOWBUDGET_TOKEN_FILE" );
	}

	QString FileWith( const QByteArray &text )
	{
		QFile file( m_Folder.filePath( "token" ) );
		EXPECT_TRUE( file.open( QIODevice::WriteOnly ) );
		file.write( text );
		return file.fileName();
	}

	std::string Token( const QString &file = QString() )
	{
		const std::optional<std::string> token = FindAccessToken( file, m_Error );
		EXPECT_TRUE( token ) << m_Error.toStdString();
		return token.value_or( "none" );
	}
	std::string Complaint( const QString &file = QString() )
	{
		EXPECT_FALSE( FindAccessToken( file, m_Error ) );
		EXPECT_FALSE( m_Error.contains( '\n' ) );
		return m_Error.toStdString();
	}

	QTemporaryDir m_Folder;
	QString m_Error;
};

TEST_F( TokenSources, ThereIsNoTokenByItself )
{
	EXPECT_EQ( Token(), "" );
}

TEST_F( TokenSources, TheOptionComesBeforeTheVariableAndThatBeforeTheVariableWithAFile )
{
	qputenv( "SHOWBUDGET_TOKEN_FILE", QFile::encodeName( FileWith( "from the file\nsecond line\n" ) ) );
	EXPECT_EQ( Token(), "from the file" );
	qputenv( "SHOWBUDGET_TOKEN", "from the variable" );
	EXPECT_EQ( Token(), "from the variable" );
	QFile other( m_Folder.filePath( "other" ) );
	ASSERT_TRUE( other.open( QIODevice::WriteOnly ) );
	other.write( "from the option" );
	other.close();
	EXPECT_EQ( Token( other.fileName() ), "from the option" );
	qputenv( "SHOWBUDGET_TOKEN", "" );
	EXPECT_EQ( Token(), "from the file" ) << "an empty variable is none";
}

TEST_F( TokenSources, AFilesFirstLineIsTheTokenWithoutItsLineEnd )
{
	EXPECT_EQ( Token( FileWith( "gr\xc3\xbcn <&> x\r\n" ) ), "gr\xc3\xbcn <&> x" );
	EXPECT_EQ( Token( FileWith( QByteArray( 255, 'x' ) + "\r\nmore" ) ), std::string( 255, 'x' ) );
}

TEST_F( TokenSources, WhatIsNoTokenIsToldWithItsOriginButNotItself )
{
	EXPECT_THAT( Complaint( "/no/such/file" ),
		AllOf( HasSubstr( "cannot read the token file /no/such/file" ), HasSubstr( "No such file" ) ) );
	EXPECT_THAT( Complaint( FileWith( "" ) ), HasSubstr( "/token is no token: it must have 1 to 255 bytes" ) );
	EXPECT_THAT( Complaint( FileWith( "\nsecond" ) ), HasSubstr( "is no token" ) );
	EXPECT_THAT( Complaint( FileWith( QByteArray( 256, 'x' ) + '\n' ) ), testing::Not( HasSubstr( "xxx" ) ) );
	EXPECT_THAT( Complaint( FileWith( QByteArray( 1000, 'x' ) ) ), HasSubstr( "is no token" ) );
	EXPECT_THAT( Complaint( FileWith( QByteArray( "se\0cret", 7 ) ) ), HasSubstr( "is no token" ) );
	qputenv( "SHOWBUDGET_TOKEN", "a\tb" );
	EXPECT_THAT(
		Complaint(), AllOf( HasSubstr( "SHOWBUDGET_TOKEN is no token" ), testing::Not( HasSubstr( "a\tb" ) ) ) );
}

class Silence : public CConnectionFixture
{
protected:
	Silence()
	{
		m_Connection.SetTimeouts( { .m_nConnectMs = 20000, .m_nGreetingMs = 20000, .m_nSilenceMs = 50 } );
		QObject::connect( &m_Connection, &CTargetConnection::StalledChanged, &m_Connection,
			[this]() { m_Changes.push_back( m_Connection.IsStalled() ); } );
	}

	bool WaitUntilStalled()
	{
		return WaitFor( [this]() { return m_Connection.IsStalled(); } );
	}
	// Silent for longer than a stall takes, measured by a second connection that does stall.
	void StaySilent()
	{
		CTestPeer peer;
		peer.GreetWith( HelloBytes() + ChunkBytes( wire::FourCC( "BEAT" ), QByteArray() ) );
		CTargetConnection yardstick( peer.Address() );
		yardstick.SetTimeouts( { .m_nConnectMs = 20000, .m_nGreetingMs = 20000, .m_nSilenceMs = 150 } );
		yardstick.Connect();
		EXPECT_TRUE( WaitFor( [&]() { return yardstick.IsStalled(); } ) );
	}
	void SendBeat() { m_Peer.SendChunk( wire::FourCC( "BEAT" ), QByteArray() ); }

	std::vector<bool> m_Changes;
};

TEST_F( Silence, OfAnEngineThatPromisedSignsOfLifeIsAStallUntilBytesCome )
{
	m_Connection.RegisterReceiver( SAMPLE, 2, &m_Receiver );
	ASSERT_TRUE( ConnectGreeted() );
	SendBeat();
	ASSERT_TRUE( WaitUntilStalled() );
	EXPECT_EQ( m_Connection.GetState(), 3 ) << "the link is still there";
	EXPECT_THAT( m_Reports.last().toStdString(), HasSubstr( "stalled: nothing came for 0.05 s" ) );
	m_Peer.SendChunk( SAMPLE, "first" );
	ASSERT_TRUE( WaitFor( [this]() { return m_Receiver.m_Received.size() == 1; } ) );
	EXPECT_FALSE( m_Connection.IsStalled() );
	EXPECT_EQ( m_Reports.last(), "no longer stalled" );
	EXPECT_EQ( m_Peer.Accepted(), 1 );
	EXPECT_THAT( m_States, testing::ElementsAre( 2, 3 ) );
	EXPECT_THAT( m_Changes, testing::ElementsAre( true, false ) );
}

TEST_F( Silence, EndsWithASingleByte )
{
	ASSERT_TRUE( ConnectGreeted() );
	SendBeat();
	ASSERT_TRUE( WaitUntilStalled() );
	m_Peer.Send( "P" );
	EXPECT_TRUE( WaitFor( [this]() { return m_Changes.size() == 2; } ) );
}

TEST_F( Silence, OfAConsoleThatIsBusyIsNone )
{
	m_Connection.RegisterReceiver( SAMPLE, 2, &m_Receiver );
	m_Receiver.m_OnReceived = [this]( size_t nCount )
	{
		if ( nCount != 1 )
			return;
		// For longer than a stall takes, what the engine sends has to wait.
		m_Peer.SendChunk( SAMPLE, "waits" );
		StaySilent();
		EXPECT_TRUE( m_Changes.empty() );
		EXPECT_EQ( m_Receiver.m_Received.size(), 1u );
	};
	m_Peer.GreetWith(
		HelloBytes() + ChunkBytes( wire::FourCC( "BEAT" ), QByteArray() ) + ChunkBytes( SAMPLE, "first" ) );
	m_Connection.Connect();
	EXPECT_TRUE( WaitFor( [this]() { return m_Receiver.m_Received.size() == 2; } ) );
}

TEST_F( Silence, OfAnIdleEngineThatNeverPromisedAnythingIsNone )
{
	ASSERT_TRUE( ConnectGreeted() );
	m_Peer.SendChunk( SAMPLE, "unasked" );
	StaySilent();
	EXPECT_FALSE( m_Connection.IsStalled() );
	EXPECT_TRUE( m_Changes.empty() );
}

TEST_F( Silence, OfAnyEngineThatIsSamplingIsAStall )
{
	ASSERT_TRUE( ConnectGreeted() );
	EXPECT_TRUE( SendBytes( m_Connection, wire::FourCC( "KSTO" ), QByteArray( "\1\0\0", 3 ) ) );
	m_Peer.SendChunk( SAMPLE, "sample" );
	EXPECT_TRUE( WaitUntilStalled() );
}

TEST_F( Silence, OfAnEngineThatWasToldToStopSamplingIsNone )
{
	ASSERT_TRUE( ConnectGreeted() );
	EXPECT_TRUE( SendBytes( m_Connection, wire::FourCC( "KSTO" ), QByteArray( "\1\0\0", 3 ) ) );
	m_Peer.SendChunk( SAMPLE, "sample" );
	EXPECT_TRUE( SendBytes( m_Connection, wire::FourCC( "KSTO" ), QByteArray( "\0\0\0", 3 ) ) );
	StaySilent();
	EXPECT_TRUE( m_Changes.empty() );
}

TEST_F( Silence, IsOverWhenTheLinkIs )
{
	ASSERT_TRUE( ConnectGreeted() );
	SendBeat();
	ASSERT_TRUE( WaitUntilStalled() );
	m_Peer.Reset();
	ASSERT_TRUE( WaitFor( [this]() { return m_Peer.Accepted() == 2 && m_Connection.IsConnected(); } ) );
	StaySilent();
	EXPECT_FALSE( m_Connection.IsStalled() ) << "the new session has promised nothing yet";
}

TEST_F( Silence, IsShownInTheListWithItsLength )
{
	CConnectionList list;
	CConnectionsModel model( list );
	m_Peer.GreetWith( HelloBytes() + ChunkBytes( wire::FourCC( "BEAT" ), QByteArray() ) );
	CTargetConnection *pConnection = list.Add( m_Peer.Address() );
	ASSERT_TRUE( WaitFor( [&]() { return pConnection->IsConnected(); } ) );
	int nChanges = 0;
	QObject::connect( &model, &QAbstractItemModel::dataChanged, &model, [&]() { nChanges++; } );
	ASSERT_TRUE( WaitFor( [&]() { return pConnection->IsStalled(); } ) );
	EXPECT_GT( nChanges, 0 );
	EXPECT_THAT( model.index( 0, CConnectionsModel::StateColumn ).data().toString().toStdString(),
		testing::MatchesRegex( "Stalled: nothing for [0-9]+ s" ) );
	SendBeat();
	ASSERT_TRUE( WaitFor( [&]() { return !pConnection->IsStalled(); } ) );
	EXPECT_EQ( model.index( 0, CConnectionsModel::StateColumn ).data().toString(), "Connected" );
}
} // namespace
