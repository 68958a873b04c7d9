// A connection against engines made by the test: greeting, delivery, loss and return.
#include <QSysInfo>

#include "connectionfixture.h"

using testing::ElementsAre;

namespace
{
constexpr uint32_t CATEGORIES = wire::FourCC( "PCAT" );

class Connection : public CConnectionFixture
{
};

TEST_F( Connection, SpeaksFirstAndAtOnceWithItsGreeting )
{
	m_Connection.Connect();
	const QByteArray name = QSysInfo::machineHostName().toUtf8();
	const int nLength = 16 + name.size();
	ASSERT_TRUE( m_Peer.WaitForConnection() );
	ASSERT_TRUE( m_Peer.WaitForBytes( 12 + nLength ) );
	const QByteArray expected =
		QByteArray( "HELO\0\2\0\0", 8 ) + BigEndian32( static_cast<uint32_t>( nLength ) ) + BigEndian32( 2 ) +
		BigEndian32( static_cast<uint32_t>( QCoreApplication::applicationPid() ) ) + QByteArray( 8, '\0' ) + name;
	EXPECT_EQ( m_Peer.Received(), expected );
	EXPECT_EQ( m_Connection.GetState(), CTargetConnection::Connecting );
}

TEST_F( Connection, IsNamedByItsAddressUntilTheEngineGreets )
{
	EXPECT_EQ( m_Connection.GetName(), m_Peer.Address().ToString().toStdString() );
	EXPECT_EQ( m_Connection.GetState(), 0 );
	ASSERT_TRUE( ConnectGreeted() );
	EXPECT_STREQ( m_Connection.GetName(), "engine" );
	EXPECT_EQ( m_Connection.ProcessId(), 4711u );
	EXPECT_THAT( m_States, ElementsAre( 2, 3 ) );
	EXPECT_TRUE( m_Connection.Problem().isEmpty() );
}

TEST_F( Connection, KeepsItsAddressAsNameForAnEngineWithoutAName )
{
	m_Peer.GreetWith( HelloBytes( "  " ) );
	m_Connection.Connect();
	ASSERT_TRUE( WaitFor( [this]() { return m_Connection.IsConnected(); } ) );
	EXPECT_EQ( m_Connection.Name(), m_Peer.Address().ToString() );
}

TEST_F( Connection, ShowsANameWithControlCharactersAndBrokenBytesAsOneLine )
{
	m_Peer.GreetWith( HelloBytes( "a\nb\xff" ) );
	m_Connection.Connect();
	ASSERT_TRUE( WaitFor( [this]() { return m_Connection.IsConnected(); } ) );
	EXPECT_EQ( m_Connection.Name(), QString::fromUtf16( u"a\ufffdb\ufffd" ) );
}

TEST_F( Connection, ShowsANameThatLooksLikePlacesForNumbersAsItIs )
{
	m_Peer.GreetWith( HelloBytes( "100 %1 %2 %3" ) );
	m_Connection.Connect();
	ASSERT_TRUE( WaitFor( [this]() { return m_Connection.IsConnected(); } ) );
	EXPECT_THAT( m_Reports, ElementsAre( "connected to 100 %1 %2 %3 (process 4711)" ) );
}

TEST_F( Connection, HandsChunksToTheReceiverOfTheirTypeAndVersionInOrder )
{
	CRecordingReceiver categories;
	m_Connection.RegisterReceiver( SAMPLE, 2, &m_Receiver );
	m_Connection.RegisterReceiver( CATEGORIES, 2, &categories );
	ASSERT_TRUE( ConnectGreeted() );
	m_Peer.SendChunk( SAMPLE, "first" );
	m_Peer.SendChunk( CATEGORIES, QByteArray() );
	m_Peer.SendChunk( SAMPLE, "second" );
	ASSERT_TRUE( WaitFor( [this]() { return m_Receiver.m_Received.size() == 2; } ) );
	ASSERT_EQ( categories.m_Received.size(), 1u );
	EXPECT_EQ( categories.m_Received[0].m_Block, ChunkBytes( CATEGORIES, QByteArray() ) );
	EXPECT_EQ( m_Receiver.m_Received[0].m_Block, ChunkBytes( SAMPLE, "first" ) );
	EXPECT_EQ( m_Receiver.m_Received[1].m_Block, ChunkBytes( SAMPLE, "second" ) );
	EXPECT_EQ( m_Receiver.m_Received[0].m_pConnection, &m_Connection );
	EXPECT_EQ( m_Receiver.m_Received[0].m_nVersion, 2 );
}

TEST_F( Connection, GivesALaterReceiverOfTheSameTypeTheChunks )
{
	CRecordingReceiver later;
	m_Connection.RegisterReceiver( SAMPLE, 2, &m_Receiver );
	m_Connection.RegisterReceiver( SAMPLE, 2, &later );
	ASSERT_TRUE( ConnectGreeted() );
	m_Peer.SendChunk( SAMPLE, "x" );
	ASSERT_TRUE( WaitFor( [&later]() { return later.m_Received.size() == 1; } ) );
	EXPECT_TRUE( m_Receiver.m_Received.empty() );
}

TEST_F( Connection, PutsTogetherAStreamThatArrivesByteByByte )
{
	m_Connection.RegisterReceiver( SAMPLE, 2, &m_Receiver );
	m_Connection.Connect();
	ASSERT_TRUE( m_Peer.WaitForConnection() );
	m_Peer.Socket()->setSocketOption( QAbstractSocket::LowDelayOption, 1 );
	const QByteArray stream = HelloBytes() + ChunkBytes( SAMPLE, "abc" ) + ChunkBytes( SAMPLE, "defg" );
	for ( const char byte : stream )
	{
		m_Peer.Send( QByteArray( 1, byte ) );
		RunEventTurns( 1 );
	}
	ASSERT_TRUE( WaitFor( [this]() { return m_Receiver.m_Received.size() == 2; } ) );
	EXPECT_EQ( m_Receiver.m_Received[0].m_Block, ChunkBytes( SAMPLE, "abc" ) );
	EXPECT_EQ( m_Receiver.m_Received[1].m_Block, ChunkBytes( SAMPLE, "defg" ) );
}

TEST_F( Connection, DeliversAChunkThatIsLargerThanItsReceiveBuffer )
{
	m_Connection.RegisterReceiver( SAMPLE, 2, &m_Receiver );
	ASSERT_TRUE( ConnectGreeted() );
	QByteArray payload( 5 << 20, '\0' );
	for ( int i = 0; i < payload.size(); i++ )
		payload[i] = static_cast<char>( i * 31 % 251 );
	m_Peer.SendChunk( SAMPLE, payload );
	ASSERT_TRUE( WaitFor( [this]() { return m_Receiver.m_Received.size() == 1; } ) );
	EXPECT_TRUE( m_Receiver.m_Received[0].m_Block == ChunkBytes( SAMPLE, payload ) );
}

TEST_F( Connection, FreesChunksThatNobodyReceives )
{
	m_Connection.RegisterReceiver( SAMPLE, 2, &m_Receiver );
	ASSERT_TRUE( ConnectGreeted() );
	m_Peer.SendChunk( wire::FourCC( "PMPF" ), "nobody" );
	m_Peer.SendChunk( wire::FourCC( "HELO" ), HelloPayload( "again" ) );
	m_Peer.SendChunk( SAMPLE, "end" );
	ASSERT_TRUE( WaitFor( [this]() { return m_Receiver.m_Received.size() == 1; } ) );
	EXPECT_EQ( m_Allocator.Live(), 0u );
	EXPECT_GE( m_Allocator.Allocated(), 4u );
	EXPECT_STREQ( m_Connection.GetName(), "engine" ) << "only the first greeting counts";
}

TEST_F( Connection, SkipsChunksOfAnotherVersionAndSaysSoOnce )
{
	m_Connection.RegisterReceiver( SAMPLE, 2, &m_Receiver );
	ASSERT_TRUE( ConnectGreeted() );
	m_Reports.clear();
	m_Peer.SendChunk( SAMPLE, "old", 1 );
	m_Peer.SendChunk( CATEGORIES, "new", 3 );
	m_Peer.SendChunk( SAMPLE, "good" );
	ASSERT_TRUE( WaitFor( [this]() { return m_Receiver.m_Received.size() == 1; } ) );
	EXPECT_EQ( m_Receiver.m_Received[0].m_Block, ChunkBytes( SAMPLE, "good" ) );
	ASSERT_EQ( m_Reports.size(), 1 );
	EXPECT_THAT(
		m_Reports[0].toStdString(), testing::AllOf( testing::HasSubstr( "PCPU" ), testing::HasSubstr( "version 1" ),
										testing::HasSubstr( "version 2" ) ) );
}

TEST_F( Connection, ShowsAChunkTypeThatLooksLikePlacesForNumbersAsItIs )
{
	ASSERT_TRUE( ConnectGreeted() );
	m_Reports.clear();
	m_Peer.SendChunk( wire::FourCC( "%2%3" ), "x", 7 );
	ASSERT_TRUE( WaitFor( [this]() { return !m_Reports.isEmpty(); } ) );
	EXPECT_THAT( m_Reports[0].toStdString(), testing::HasSubstr( "sent %2%3 in version 7" ) );
}

TEST_F( Connection, PassesLinesOfTheEngineOnWithTheirSeverity )
{
	ASSERT_TRUE( ConnectGreeted() );
	const uint32_t nPrint = wire::FourCC( "PRNT" );
	m_Peer.SendChunk( nPrint, BigEndian32( 0 ) + "plain\n" );
	m_Peer.SendChunk( nPrint, BigEndian32( 1 ) + "careful" );
	m_Peer.SendChunk( nPrint, BigEndian32( 2 ) + "\xc3\xa4rger" );
	m_Peer.SendChunk( nPrint, BigEndian32( 77 ) + "unknown severity" );
	m_Peer.SendChunk( nPrint, "abc" );
	m_Peer.SendChunk( nPrint, BigEndian32( 0 ) );
	m_Peer.SendChunk( nPrint, BigEndian32( 0 ) + "last" );
	ASSERT_TRUE( WaitFor( [this]() { return !m_Prints.empty() && m_Prints.back().second == "last"; } ) );
	using Line = std::pair<LoggingSeverity, QString>;
	EXPECT_THAT(
		m_Prints, ElementsAre( Line( LoggingSeverity::Message, "plain\n" ), Line( LoggingSeverity::Warning, "careful" ),
					  Line( LoggingSeverity::Error, QString::fromUtf16( u"\u00e4rger" ) ),
					  Line( LoggingSeverity::Message, "unknown severity" ), Line( LoggingSeverity::Message, "" ),
					  Line( LoggingSeverity::Message, "last" ) ) );
}

TEST_F( Connection, TakesABoundedPartOfAMillionCharacters )
{
	const QByteArray million( 1000000, 'x' );
	m_Peer.GreetWith( HelloBytes( million.left( 4000 ) ) );
	m_Connection.Connect();
	ASSERT_TRUE( WaitFor( [this]() { return m_Connection.IsConnected(); } ) );
	EXPECT_EQ( m_Connection.Name(), QString( 79, 'x' ) + QChar( 0x2026 ) );
	m_Peer.SendChunk( wire::FourCC( "PRNT" ), BigEndian32( 0 ) + million );
	// The limit lies inside the last character.
	m_Peer.SendChunk(
		wire::FourCC( "PRNT" ), BigEndian32( 0 ) + QByteArray( 16382, 'y' ) + "\xe2\x82\xac\xe2\x82\xac" );
	ASSERT_TRUE( WaitFor( [this]() { return m_Prints.size() == 2; } ) );
	EXPECT_EQ( m_Prints[0].second, QString( 16384, 'x' ) );
	EXPECT_EQ( m_Prints[1].second, QString( 16382, 'y' ) );
}

TEST_F( Connection, CountsTheFramesThatTheEngineDropped )
{
	ASSERT_TRUE( ConnectGreeted() );
	m_Peer.SendChunk( wire::FourCC( "DROP" ), BigEndian32( 1 ) + BigEndian32( 7 ) );
	ASSERT_TRUE( WaitFor( [this]() { return m_Connection.DroppedFrames() == ( 1ull << 32 ) + 7; } ) );
	m_Peer.SendChunk( wire::FourCC( "DROP" ), "short" );
	m_Peer.SendChunk( wire::FourCC( "PRNT" ), BigEndian32( 0 ) + "behind" );
	ASSERT_TRUE( WaitFor( [this]() { return !m_Prints.empty(); } ) );
	EXPECT_EQ( m_Connection.DroppedFrames(), ( 1ull << 32 ) + 7 ) << "a damaged count changes nothing";
	m_Peer.SendChunk( wire::FourCC( "DROP" ), BigEndian32( 2 ) + BigEndian32( 0 ) );
	ASSERT_TRUE( WaitFor( [this]() { return m_Connection.DroppedFrames() == 2ull << 32; } ) );
	EXPECT_THAT( m_Reports, ElementsAre( "connected to engine (process 4711)",
								"leaves frames out, because this console reads too slowly" ) );
}

TEST_F( Connection, PutsTheHeaderInFrontOfWhatItSends )
{
	ASSERT_TRUE( ConnectGreeted() );
	const int nGreeting = 12 + 16 + QSysInfo::machineHostName().toUtf8().size();
	ASSERT_TRUE( m_Peer.WaitForBytes( nGreeting ) );
	EXPECT_TRUE( SendBytes( m_Connection, wire::FourCC( "KSTO" ), QByteArray( "\1\0\0", 3 ) ) );
	EXPECT_TRUE( SendBytes( m_Connection, wire::FourCC( "KMPN" ), QByteArray() ) );
	const QByteArray expected = ChunkBytes( wire::FourCC( "KSTO" ), QByteArray( "\1\0\0", 3 ) ) +
								ChunkBytes( wire::FourCC( "KMPN" ), QByteArray() );
	ASSERT_TRUE( m_Peer.WaitForBytes( nGreeting + expected.size() ) );
	EXPECT_EQ( m_Peer.Received().mid( nGreeting ), expected );
	EXPECT_EQ( m_Allocator.Live(), 0u ) << "the payload is the connection's to free";
}

TEST_F( Connection, SendsNothingWhileItIsNotConnectedButFreesTheBuffer )
{
	EXPECT_FALSE( SendBytes( m_Connection, wire::FourCC( "KSTO" ), "abc" ) );
	m_Connection.Connect();
	ASSERT_TRUE( m_Peer.WaitForConnection() );
	EXPECT_FALSE( SendBytes( m_Connection, wire::FourCC( "KSTO" ), "abc" ) ) << "not greeted yet";
	EXPECT_EQ( m_Allocator.Live(), 0u );
}

TEST_F( Connection, RefusesToPileUpDataForAnEngineThatDoesNotRead )
{
	ASSERT_TRUE( ConnectGreeted() );
	m_Peer.StopReading();
	const QByteArray megabyte( 1 << 20, 'x' );
	int nSent = 0;
	while ( nSent < 100 && SendBytes( m_Connection, wire::FourCC( "CMND" ), megabyte ) )
		nSent++;
	EXPECT_GE( nSent, 1 );
	EXPECT_LT( nSent, 100 );
	EXPECT_TRUE( m_Connection.IsConnected() );
}

TEST_F( Connection, RefusesAnotherProtocolVersionAndNamesBoth )
{
	const std::string problem = ProblemAfter( HelloBytes( "future", 3 ) ).toStdString();
	EXPECT_THAT( problem, testing::AllOf( testing::HasSubstr( "version 3" ), testing::HasSubstr( "version 2" ) ) );
	EXPECT_EQ( m_Reports.size(), 1 );
	EXPECT_THAT( m_States, ElementsAre( 2, 1 ) );
}

TEST_F( Connection, RefusesAFirstChunkThatIsNoGreetingBeforeItIsWhole )
{
	const QByteArray header = ChunkBytes( SAMPLE, QByteArray( 1000, 'x' ) ).left( 12 );
	EXPECT_THAT( ProblemAfter( header ).toStdString(), testing::HasSubstr( "PCPU" ) );
}

TEST_F( Connection, RefusesAServerOfAnotherKind )
{
	EXPECT_EQ( ProblemAfter( "HTTP/1.1 400 Bad Request\r\nServer: x\r\n\r\n" ),
		"its first chunk is HTTP and not 'HELO': this is no engine" );
	EXPECT_GE( m_Connection.MillisecondsToRetry(), 1000 ) << "a peer of another kind is left alone for a while";
}

TEST_F( Connection, RefusesAHeaderWhoseReservedFieldIsNotZero )
{
	QByteArray chunk = HelloBytes();
	chunk[7] = 1;
	EXPECT_THAT( ProblemAfter( chunk ).toStdString(), testing::HasSubstr( "reserved" ) );
}

TEST_F( Connection, RefusesADeclaredLengthOverTheLimitAndNamesIt )
{
	const QByteArray chunk = ChunkBytes( SAMPLE, QByteArray() ).left( 8 ) + BigEndian32( ( 64u << 20 ) + 1 );
	const std::string problem = ProblemAfter( HelloBytes() + chunk ).toStdString();
	EXPECT_THAT( problem, testing::AllOf( testing::HasSubstr( "67108865" ), testing::HasSubstr( "67108864" ) ) );
	RunEventTurns();
	EXPECT_EQ( m_Allocator.Live(), 0u );
}

TEST_F( Connection, AcceptsADeclaredLengthAtTheLimit )
{
	m_Peer.GreetWith( HelloBytes() + ChunkBytes( SAMPLE, QByteArray() ).left( 8 ) + BigEndian32( 64u << 20 ) );
	m_Connection.Connect();
	ASSERT_TRUE( WaitFor( [this]() { return m_Connection.IsConnected(); } ) );
	m_Peer.Send( QByteArray( 100, 'x' ) );
	RunEventTurns();
	EXPECT_TRUE( m_Connection.IsConnected() );
}

TEST_F( Connection, RefusesAGreetingThatIsTooShortOrTooLong )
{
	EXPECT_THAT( ProblemAfter( ChunkBytes( wire::FourCC( "HELO" ), QByteArray( 15, '\0' ) ) ).toStdString(),
		testing::HasSubstr( "15 bytes" ) );
	m_Connection.Disconnect();
	EXPECT_THAT( ProblemAfter( ChunkBytes( wire::FourCC( "HELO" ), QByteArray( 5000, '\0' ) ) ).toStdString(),
		testing::HasSubstr( "5000 bytes" ) );
}

TEST_F( Connection, GivesUpAPeerThatAcceptsButNeverGreets )
{
	m_Connection.SetTimeouts( { .m_nConnectMs = 20000, .m_nGreetingMs = 30 } );
	EXPECT_THAT( ProblemAfter( QByteArray() ).toStdString(), testing::HasSubstr( "no 'HELO' within 0.03 s" ) );
	EXPECT_GE( m_Connection.MillisecondsToRetry(), 0 );
}

TEST_F( Connection, GivesUpAPeerThatGreetsTooSlowly )
{
	m_Connection.SetTimeouts( { .m_nConnectMs = 20000, .m_nGreetingMs = 30 } );
	EXPECT_THAT( ProblemAfter( HelloBytes().left( 20 ) ).toStdString(), testing::HasSubstr( "'HELO'" ) );
	RunEventTurns();
	EXPECT_EQ( m_Allocator.Live(), 0u );
}

TEST_F( Connection, TriesAgainAndAgainWhileNobodyListens )
{
	m_Peer.StopListening();
	m_Connection.Connect();
	ASSERT_TRUE( WaitFor( [this]() { return m_States.size() >= 6; } ) );
	EXPECT_THAT( std::vector<int>( m_States.begin(), m_States.begin() + 6 ), ElementsAre( 2, 1, 2, 1, 2, 1 ) );
	EXPECT_EQ( m_Reports.size(), 1 ) << "the same trouble is told once: " << m_Reports.join( '\n' ).toStdString();
	EXPECT_THAT( m_Reports[0].toStdString(), testing::HasSubstr( "refused" ) );
	m_Peer.GreetWith( HelloBytes( "late" ) );
	ASSERT_TRUE( m_Peer.Listen( m_Peer.Address().m_nPort ) );
	ASSERT_TRUE( WaitFor( [this]() { return m_Connection.IsConnected(); } ) );
	EXPECT_STREQ( m_Connection.GetName(), "late" );
}

TEST_F( Connection, ComesBackByItselfAndKeepsItsReceivers )
{
	m_Connection.RegisterReceiver( SAMPLE, 2, &m_Receiver );
	ASSERT_TRUE( ConnectGreeted() );
	m_Peer.GreetWith( HelloBytes( "restarted" ) );
	m_Peer.Reset();
	ASSERT_TRUE( WaitFor( [this]() { return m_Peer.Accepted() == 2 && m_Connection.IsConnected(); } ) );
	EXPECT_THAT( m_States, ElementsAre( 2, 3, 1, 2, 3 ) );
	EXPECT_STREQ( m_Connection.GetName(), "restarted" );
	m_Peer.SendChunk( SAMPLE, "again" );
	ASSERT_TRUE( WaitFor( [this]() { return m_Receiver.m_Received.size() == 1; } ) );
}

TEST_F( Connection, DeliversWhatArrivedBeforeTheEngineWentAway )
{
	m_Connection.RegisterReceiver( SAMPLE, 2, &m_Receiver );
	std::vector<int> statesSeen;
	m_Receiver.m_OnReceived = [&]( size_t ) { statesSeen.push_back( m_Connection.GetState() ); };
	ASSERT_TRUE( ConnectGreeted() );
	for ( int i = 0; i < 5000; i++ )
		m_Peer.SendChunk( SAMPLE, QByteArray( 100, 'x' ) );
	m_Peer.StopListening();
	m_Peer.Close();
	ASSERT_TRUE( WaitFor( [this]() { return m_Connection.GetState() == CTargetConnection::Waiting; } ) );
	EXPECT_EQ( m_Receiver.m_Received.size(), 5000u );
	EXPECT_THAT( statesSeen, testing::Each( 3 ) );
}

TEST_F( Connection, DropsAnUnfinishedChunkWhenTheEngineGoesAway )
{
	m_Connection.RegisterReceiver( SAMPLE, 2, &m_Receiver );
	ASSERT_TRUE( ConnectGreeted() );
	m_Peer.Send( ChunkBytes( SAMPLE, "unfinished" ).left( 15 ) );
	RunEventTurns();
	m_Peer.Reset();
	ASSERT_TRUE( WaitFor( [this]() { return m_Peer.Accepted() == 2 && m_Connection.IsConnected(); } ) );
	m_Peer.SendChunk( SAMPLE, "whole" );
	ASSERT_TRUE( WaitFor( [this]() { return m_Receiver.m_Received.size() == 1; } ) );
	EXPECT_EQ( m_Receiver.m_Received[0].m_Block, ChunkBytes( SAMPLE, "whole" ) );
	EXPECT_EQ( m_Allocator.Live(), 0u );
}

TEST_F( Connection, StaysAwayOnceTheUserDisconnects )
{
	ASSERT_TRUE( ConnectGreeted() );
	m_Connection.Disconnect();
	EXPECT_EQ( m_Connection.GetState(), 0 );
	EXPECT_FALSE( m_Connection.IsWanted() );
	EXPECT_EQ( m_Connection.MillisecondsToRetry(), -1 );
	ASSERT_TRUE( WaitFor( [this]() { return !m_Peer.IsConnected(); } ) );
	EXPECT_THAT( m_States, ElementsAre( 2, 3, 0 ) );
	EXPECT_FALSE( SendBytes( m_Connection, wire::FourCC( "KSTO" ), "abc" ) );
	m_Connection.Connect();
	EXPECT_TRUE( WaitFor( [this]() { return m_Connection.IsConnected(); } ) );
}

TEST_F( Connection, SendsWhatWasQueuedBeforeTheUserDisconnects )
{
	ASSERT_TRUE( ConnectGreeted() );
	const QByteArray stop = ChunkBytes( wire::FourCC( "KSTO" ), QByteArray( 3, '\0' ) );
	EXPECT_TRUE( SendBytes( m_Connection, wire::FourCC( "KSTO" ), QByteArray( 3, '\0' ) ) );
	m_Connection.Disconnect();
	EXPECT_TRUE( WaitFor( [&]() { return m_Peer.Received().endsWith( stop ); } ) );
}

TEST_F( Connection, LeavesTurnsToOthersDuringABurst )
{
	constexpr int nChunks = 20000;
	m_Connection.RegisterReceiver( SAMPLE, 2, &m_Receiver );
	ASSERT_TRUE( ConnectGreeted() );
	int nSinceOtherWork = 0;
	int nMostAtOnce = 0;
	QTimer otherWork;
	QObject::connect( &otherWork, &QTimer::timeout, &otherWork, [&nSinceOtherWork]() { nSinceOtherWork = 0; } );
	m_Receiver.m_OnReceived = [&]( size_t ) { nMostAtOnce = std::max( nMostAtOnce, ++nSinceOtherWork ); };
	otherWork.start( 0 );
	QByteArray burst;
	for ( int i = 0; i < nChunks; i++ )
		burst += ChunkBytes( SAMPLE, QByteArray() );
	m_Peer.Send( burst );
	ASSERT_TRUE( WaitFor( [this]() { return m_Receiver.m_Received.size() == nChunks; } ) );
	// At most 2,048 chunks are handed over in one turn; a turn of the loop may hold one for bytes that arrived and one
	// that was left over.
	EXPECT_LE( nMostAtOnce, 2 * 2048 );
}

TEST_F( Connection, HoldsTheRestOfABurstBackWhileAReceiverRunsEvents )
{
	// The receiver is busy in a turn that no arriving bytes began: those that arrive meanwhile must not begin another.
	constexpr size_t nBurst = 5000;
	m_Connection.RegisterReceiver( SAMPLE, 2, &m_Receiver );
	ASSERT_TRUE( ConnectGreeted() );
	m_Receiver.m_OnReceived = [this]( size_t nCount )
	{
		if ( nCount != 3000 )
			return;
		m_Peer.SendChunk( SAMPLE, "late" );
		RunEventTurns( 50 );
		EXPECT_EQ( m_Receiver.m_Received.size(), 3000u );
	};
	QByteArray burst;
	for ( size_t i = 0; i < nBurst; i++ )
		burst += ChunkBytes( SAMPLE, BigEndian32( static_cast<uint32_t>( i ) ) );
	m_Peer.Send( burst );
	ASSERT_TRUE( WaitFor( [this]() { return m_Receiver.m_Received.size() == nBurst + 1; } ) );
	EXPECT_EQ( m_Receiver.m_nDeepest, 1 );
	for ( size_t i = 0; i < nBurst; i++ )
		ASSERT_EQ( m_Receiver.m_Received[i].m_Block, ChunkBytes( SAMPLE, BigEndian32( static_cast<uint32_t>( i ) ) ) );
	EXPECT_EQ( m_Receiver.m_Received[nBurst].m_Block, ChunkBytes( SAMPLE, "late" ) );
}

TEST_F( Connection, HoldsTheNextChunkBackWhileAReceiverRunsEvents )
{
	m_Connection.RegisterReceiver( SAMPLE, 2, &m_Receiver );
	ASSERT_TRUE( ConnectGreeted() );
	m_Receiver.m_OnReceived = [this]( size_t nCount )
	{
		if ( nCount != 1 )
			return;
		EXPECT_TRUE( m_Connection.IsDelivering() );
		m_Peer.SendChunk( SAMPLE, "third" );
		RunEventTurns( 50 );
		EXPECT_EQ( m_Receiver.m_Received.size(), 1u );
	};
	m_Peer.Send( ChunkBytes( SAMPLE, "first" ) + ChunkBytes( SAMPLE, "second" ) );
	ASSERT_TRUE( WaitFor( [this]() { return m_Receiver.m_Received.size() == 3; } ) );
	EXPECT_EQ( m_Receiver.m_nDeepest, 1 );
	EXPECT_EQ( m_Receiver.m_Received[2].m_Block, ChunkBytes( SAMPLE, "third" ) );
	EXPECT_FALSE( m_Connection.IsDelivering() );
}

TEST_F( Connection, MayBeDisconnectedByAReceiver )
{
	m_Connection.RegisterReceiver( SAMPLE, 2, &m_Receiver );
	ASSERT_TRUE( ConnectGreeted() );
	m_Receiver.m_OnReceived = [this]( size_t )
	{
		m_Connection.Disconnect();
		RunEventTurns();
	};
	m_Peer.Send( ChunkBytes( SAMPLE, "first" ) + ChunkBytes( SAMPLE, "second" ) );
	ASSERT_TRUE( WaitFor( [this]() { return m_Connection.GetState() == 0 && !m_Connection.IsDelivering(); } ) );
	RunEventTurns();
	EXPECT_EQ( m_Receiver.m_Received.size(), 1u );
}

TEST_F( Connection, DeliversNothingOfANewLinkWhileAReceiverIsBusyWithTheOldOne )
{
	m_Connection.RegisterReceiver( SAMPLE, 2, &m_Receiver );
	ASSERT_TRUE( ConnectGreeted() );
	m_Peer.GreetWith( HelloBytes() + ChunkBytes( SAMPLE, "of the new link" ) );
	m_Receiver.m_OnReceived = [this]( size_t nCount )
	{
		if ( nCount != 1 )
			return;
		m_Connection.Disconnect();
		m_Connection.Connect();
		RunEventTurns( 50 );
		EXPECT_EQ( m_Receiver.m_Received.size(), 1u );
	};
	m_Peer.SendChunk( SAMPLE, "of the old link" );
	ASSERT_TRUE( WaitFor( [this]() { return m_Receiver.m_Received.size() == 2; } ) );
	EXPECT_EQ( m_Receiver.m_Received[1].m_Block, ChunkBytes( SAMPLE, "of the new link" ) );
	EXPECT_EQ( m_Receiver.m_nDeepest, 1 );
}

TEST_F( Connection, MayBeConnectedAgainFromItsOwnStateChange )
{
	int nLosses = 0;
	QObject::connect( &m_Connection, &CTargetConnection::StateChanged, &m_Connection,
		[&]( int nBefore )
		{
			if ( nBefore != CTargetConnection::Connected || nLosses++ > 0 )
				return;
			m_Connection.Disconnect();
			m_Connection.Connect();
		} );
	ASSERT_TRUE( ConnectGreeted() );
	m_Peer.Reset();
	ASSERT_TRUE( WaitFor( [this]() { return m_Peer.Accepted() == 2 && m_Connection.IsConnected(); } ) );
	EXPECT_EQ( nLosses, 1 );
}
} // namespace
