// Several connections at once, the current one, and how they end.
#include <gmock/gmock.h>

#include "connectionlist.h"
#include "connectionsmodel.h"
#include "displaytext.h"
#include "recordingreceiver.h"
#include "support/countingallocator.h"
#include "support/fakeclock.h"
#include "targetconnection.h"
#include "testpeer.h"

using testing::ElementsAre;

namespace
{

class ConnectionList : public testing::Test
{
protected:
	ConnectionList()
	{
		m_First.GreetWith( HelloBytes( "first" ) );
		m_Second.GreetWith( HelloBytes( "second" ) );
		QObject::connect( &m_List, &CConnectionList::LinkChanged, &m_List,
			[this]( CTargetConnection *p ) {
				m_Links.push_back( { p, p->IsConnected() } );
			} );
		QObject::connect( &m_List, &CConnectionList::Ending, &m_List,
			[this]( CTargetConnection *p )
			{
				m_Endings.push_back( p );
				m_StateAtEnding.push_back( p->GetState() );
				m_bDeliveringAtEnding = m_bDeliveringAtEnding || p->IsDelivering();
			} );
	}

	CTargetConnection *AddConnected( CTestPeer &peer )
	{
		CTargetConnection *pConnection = m_List.Add( peer.Address() );
		EXPECT_TRUE( WaitFor( [&]() { return pConnection->IsConnected() && peer.Accepted() > 0; } ) );
		return pConnection;
	}

	CCountingAllocator m_Allocator;
	CTestPeer m_First;
	CTestPeer m_Second;
	CRecordingReceiver m_Receiver;
	std::vector<std::pair<CTargetConnection *, bool>> m_Links;
	std::vector<CTargetConnection *> m_Endings;
	std::vector<int> m_StateAtEnding;
	bool m_bDeliveringAtEnding = false;
	CConnectionList m_List; // the last one: what it still tells when it ends goes to the others
};

TEST_F( ConnectionList, HasNoCurrentConnectionWhenItIsEmpty )
{
	EXPECT_EQ( m_List.Current(), nullptr );
	EXPECT_EQ( m_List.Count(), 0 );
}

TEST_F( ConnectionList, KeepsSeveralConnectionsUpAtOnce )
{
	CTargetConnection *pFirst = AddConnected( m_First );
	CTargetConnection *pSecond = AddConnected( m_Second );
	EXPECT_EQ( m_List.Count(), 2 );
	EXPECT_TRUE( pFirst->IsConnected() );
	EXPECT_EQ( m_List.Current(), pSecond ) << "what the user asked for last is current";
	m_List.SetCurrent( pFirst );
	EXPECT_EQ( m_List.Current(), pFirst );
	EXPECT_THAT( m_Links, ElementsAre( std::pair( pFirst, true ), std::pair( pSecond, true ) ) );
}

TEST_F( ConnectionList, UsesTheConnectionToAnAddressAgain )
{
	CTargetConnection *pFirst = AddConnected( m_First );
	AddConnected( m_Second );
	pFirst->Disconnect();
	EXPECT_EQ( m_List.Add( m_First.Address() ), pFirst );
	EXPECT_EQ( m_List.Count(), 2 );
	EXPECT_EQ( m_List.Current(), pFirst );
	EXPECT_TRUE( WaitFor( [&]() { return pFirst->IsConnected(); } ) );
}

TEST_F( ConnectionList, TellsOfTheLinkOnlyWhenItComesOrGoes )
{
	CTargetConnection *pFirst = AddConnected( m_First );
	m_First.StopListening();
	m_First.Reset();
	int nStates = 0;
	QObject::connect( pFirst, &CTargetConnection::StateChanged, &m_List, [&nStates]() { nStates++; } );
	ASSERT_TRUE( WaitFor( [&]() { return nStates >= 5; } ) );
	EXPECT_THAT( m_Links, ElementsAre( std::pair( pFirst, true ), std::pair( pFirst, false ) ) )
		<< "attempts in between are nobody's business";
}

TEST_F( ConnectionList, EndsAConnectionWhileItIsStillConnectedWhenItIsRemoved )
{
	CTargetConnection *pFirst = AddConnected( m_First );
	CTargetConnection *pSecond = AddConnected( m_Second );
	m_List.Remove( pSecond );
	EXPECT_THAT( m_Endings, ElementsAre( pSecond ) );
	EXPECT_THAT( m_StateAtEnding, ElementsAre( 3 ) ) << "receivers can still say good-bye to the engine";
	EXPECT_EQ( m_List.Count(), 1 );
	EXPECT_EQ( m_List.Current(), pFirst );
	EXPECT_TRUE( WaitFor( [this]() { return !m_Second.IsConnected(); } ) );
	EXPECT_TRUE( m_First.IsConnected() );
}

TEST_F( ConnectionList, IgnoresAConnectionThatIsNotInIt )
{
	CTargetConnection stranger( m_First.Address() );
	m_List.Remove( &stranger );
	EXPECT_TRUE( m_Endings.empty() );
}

TEST_F( ConnectionList, EndsEveryConnectionOnceWhenItGoes )
{
	CTargetConnection *pFirst = AddConnected( m_First );
	CTargetConnection *pSecond = AddConnected( m_Second );
	m_List.RemoveAll();
	m_List.RemoveAll();
	EXPECT_THAT( m_Endings, testing::UnorderedElementsAre( pFirst, pSecond ) );
	EXPECT_EQ( m_List.Current(), nullptr );
}

TEST_F( ConnectionList, WaitsWithTheEndUntilABusyReceiverReturns )
{
	CTargetConnection *pFirst = AddConnected( m_First );
	pFirst->RegisterReceiver( SAMPLE, 2, &m_Receiver );
	m_Receiver.m_OnReceived = [&]( size_t )
	{
		m_List.Remove( pFirst );
		EXPECT_EQ( m_List.Count(), 0 ) << "it leaves the list at once";
		EXPECT_EQ( m_List.Current(), nullptr );
		RunEventTurns( 50 );
		EXPECT_TRUE( m_Endings.empty() ) << "the receiver is still using it";
	};
	m_First.Send( ChunkBytes( SAMPLE, "first" ) + ChunkBytes( SAMPLE, "second" ) );
	ASSERT_TRUE( WaitFor( [this]() { return !m_Endings.empty(); } ) );
	RunEventTurns( 50 );
	EXPECT_EQ( m_Endings.size(), 1u );
	EXPECT_FALSE( m_bDeliveringAtEnding );
	EXPECT_EQ( m_Receiver.m_Received.size(), 1u ) << "nothing is delivered after the removal";
	EXPECT_EQ( m_Allocator.Live(), 0u );
}

TEST_F( ConnectionList, EndsAConnectionOnceThatTheEngineClosesWhileItIsLeaving )
{
	CTargetConnection *pFirst = AddConnected( m_First );
	pFirst->RegisterReceiver( SAMPLE, 2, &m_Receiver );
	m_Receiver.m_OnReceived = [&]( size_t )
	{
		m_List.Remove( pFirst );
		m_First.Reset();
		RunEventTurns( 50 );
	};
	m_First.SendChunk( SAMPLE, "only" );
	ASSERT_TRUE( WaitFor( [this]() { return !m_Endings.empty(); } ) );
	RunEventTurns( 50 );
	EXPECT_EQ( m_Endings.size(), 1u );
}

TEST_F( ConnectionList, LetsAReceiverRemoveAnotherConnection )
{
	CTargetConnection *pFirst = AddConnected( m_First );
	CTargetConnection *pSecond = AddConnected( m_Second );
	pFirst->RegisterReceiver( SAMPLE, 2, &m_Receiver );
	m_Receiver.m_OnReceived = [&]( size_t nCount )
	{
		if ( nCount == 1 )
			m_List.Remove( pSecond );
		RunEventTurns();
	};
	m_First.Send( ChunkBytes( SAMPLE, "first" ) + ChunkBytes( SAMPLE, "second" ) );
	ASSERT_TRUE( WaitFor( [this]() { return m_Receiver.m_Received.size() == 2; } ) );
	EXPECT_THAT( m_Endings, ElementsAre( pSecond ) );
}

TEST_F( ConnectionList, ForwardsLinesAndReportsWithTheirConnection )
{
	std::vector<std::pair<CTargetConnection *, QString>> prints;
	QStringList reports;
	QObject::connect( &m_List, &CConnectionList::Printed, &m_List,
		[&]( CTargetConnection *p, LoggingSeverity, const QString &text ) {
			prints.push_back( { p, text } );
		} );
	QObject::connect( &m_List, &CConnectionList::Reported, &m_List,
		[&]( CTargetConnection *, LoggingSeverity, const QString &text ) { reports += text; } );
	AddConnected( m_First );
	CTargetConnection *pSecond = AddConnected( m_Second );
	m_Second.SendChunk( wire::FourCC( "PRNT" ), BigEndian32( 0 ) + "hello" );
	ASSERT_TRUE( WaitFor( [&]() { return !prints.empty(); } ) );
	EXPECT_EQ( prints[0], std::pair( pSecond, QString( "hello" ) ) );
	EXPECT_THAT( reports, ElementsAre( "connected to first (process 4711)", "connected to second (process 4711)" ) );
}

QString Cell( const CConnectionsModel &model, int nRow, int nColumn )
{
	return model.index( nRow, nColumn ).data().toString();
}

TEST_F( ConnectionList, IsShownWithNameStateAndTraffic )
{
	CFakeClock clock;
	CConnectionsModel model( m_List );
	CTargetConnection *pFirst = AddConnected( m_First );
	m_First.SendChunk( SAMPLE, QByteArray( 988, 'x' ) );
	m_First.SendChunk( SAMPLE, QByteArray( 988, 'x' ) );
	m_First.SendChunk( wire::FourCC( "DROP" ), BigEndian32( 0 ) + BigEndian32( 1234 ) );
	ASSERT_TRUE( WaitFor( [&]() { return pFirst->DroppedFrames() == 1234; } ) );
	// Three chunks of 1000, 1000 and 20 bytes in two seconds.
	clock.Advance( 2.0 );
	pFirst->MeasureTraffic();
	EXPECT_EQ( Cell( model, 0, CConnectionsModel::NameColumn ), "first" );
	EXPECT_EQ( Cell( model, 0, CConnectionsModel::AddressColumn ), m_First.Address().ToString() );
	EXPECT_EQ( Cell( model, 0, CConnectionsModel::StateColumn ), "Connected" );
	EXPECT_EQ( Cell( model, 0, CConnectionsModel::ChunksColumn ), "2" );
	EXPECT_EQ( Cell( model, 0, CConnectionsModel::BytesColumn ), "1.0 kB/s" );
	EXPECT_EQ( Cell( model, 0, CConnectionsModel::DroppedColumn ), "1234" );
	pFirst->Disconnect();
	EXPECT_EQ( Cell( model, 0, CConnectionsModel::StateColumn ), "Disconnected" );
	EXPECT_EQ( Cell( model, 0, CConnectionsModel::ChunksColumn ), QString() );
	m_List.RemoveAll();
	EXPECT_EQ( model.rowCount(), 0 );
}

TEST_F( ConnectionList, ShowsWhyAnAttemptFailedAndWhenTheNextComes )
{
	CConnectionsModel model( m_List );
	m_First.GreetWith( HelloBytes( "future", 9 ) );
	CTargetConnection *pFirst = m_List.Add( m_First.Address() );
	EXPECT_EQ( Cell( model, 0, CConnectionsModel::StateColumn ), QString::fromUtf16( u"Connecting\u2026" ) );
	ASSERT_TRUE( WaitFor( [&]() { return pFirst->GetState() == CTargetConnection::Waiting; } ) );
	EXPECT_EQ( Cell( model, 0, CConnectionsModel::StateColumn ),
		"Retrying: it speaks protocol version 9, this console speaks version 2" );
	EXPECT_TRUE( model.index( 0, CConnectionsModel::StateColumn )
					 .data( Qt::ToolTipRole )
					 .toString()
					 .contains( "next attempt in " ) );
}

TEST_F( ConnectionList, NeverShowsANameFromOutsideAsMarkup )
{
	CConnectionsModel model( m_List );
	m_First.GreetWith( HelloBytes( "<b>bold</b>" ) );
	AddConnected( m_First );
	EXPECT_EQ( Cell( model, 0, CConnectionsModel::NameColumn ), "<b>bold</b>" );
	EXPECT_EQ( model.index( 0, CConnectionsModel::NameColumn ).data( Qt::ToolTipRole ).toString(),
		ToToolTip( "<b>bold</b>" ) );
}
} // namespace
