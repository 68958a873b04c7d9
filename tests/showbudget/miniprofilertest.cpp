// The mini-profiler inside the window: its chunks, the names asked for, pause and tick sampling.
#include "miniprofiler/framebuilder.h"
#include "miniprofiler/miniprofilerbardelegate.h"
#include "miniprofiler/miniprofilerwidget.h"
#include "showbudget/chunksender.h"
#include "windowfixture.h"

#include <gmock/gmock.h>

#include <QTimer>
#include <QTreeWidget>

namespace
{
using testing::IsEmpty;

constexpr uint32_t CHUNK_KMPN = 0x4B4D504E;

class WindowMiniProfilerTest : public WindowTest
{
protected:
	CQMiniProfilerWidget &Panel() const { return *m_pWindow->findChild<CQMiniProfilerWidget *>(); }
	void Deliver( const CFrameBuilder &frame ) { EXPECT_TRUE( m_Connection.Deliver( CHUNK_PMPF, frame.Payload() ) ); }

	static CFrameBuilder Data( std::initializer_list<uint64_t> ids )
	{
		CFrameBuilder frame;
		frame.BeginData( true );
		for ( const uint64_t nId : ids )
			frame.Entry( nId );
		return frame.End();
	}
	static std::vector<uint64_t> Ids( const CFakeConnection::Chunk &chunk )
	{
		std::vector<uint64_t> ids( chunk.m_Payload.size() / 8 );
		for ( size_t i = 0; i < chunk.m_Payload.size(); i++ )
			ids[i / 8] |= uint64_t{ chunk.m_Payload[i] } << ( 8 * ( i % 8 ) );
		return ids;
	}
};

TEST_F( WindowMiniProfilerTest, ItsChunksAreDecodedWhetherSamplingRunsOrNot )
{
	MakeWindow();
	ASSERT_FALSE( m_pWindow->IsRunning() );
	Deliver( Data( { 1 } ) );
	m_pWindow->StartSampling();
	Deliver( Data( { 2 } ) );
	EXPECT_EQ( Panel().Model().Records().size(), 2u );
	EXPECT_EQ( Panel().findChild<QTreeWidget *>()->topLevelItemCount(), 2 );
	EXPECT_EQ( m_Allocator.Live(), 0u );
}

TEST_F( WindowMiniProfilerTest, ItsPaletteFollowsTheHost )
{
	for ( const bool bDark : { true, false } )
	{
		m_Host.m_bDark = bDark;
		MakeWindow();
		EXPECT_EQ( Panel().findChild<CQMiniProfilerBarDelegate *>()->Display().m_bDark, bDark );
	}
}

TEST_F( WindowMiniProfilerTest, ACostAloneStartsNothingAndAsksForNothing )
{
	MakeWindow();
	Deliver( CFrameBuilder().BeginNames( 1, 1 ).Name( 7, 0, "seven", "" ).End() ); // an id that is wanted
	m_Connection.TakeSent();
	Deliver( CFrameBuilder( 1234 ) );
	EXPECT_EQ( Panel().Model().CostHistory().At( 0 ), 1234u );
	EXPECT_EQ( Panel().Model().Counters().m_nPacketSize, 8u );
	EXPECT_FALSE( Panel().findChild<QTimer *>( "RegenerationTimer" )->isActive() );
	EXPECT_THAT( m_Connection.TakeSent(), IsEmpty() );
}

TEST_F( WindowMiniProfilerTest, UnknownIdsAreAskedForOnce )
{
	MakeWindow();
	m_Connection.TakeSent();
	Deliver( Data( { 0x123456789ABCDEF0, 2 } ) );
	const auto sent = m_Connection.TakeSent();
	ASSERT_EQ( sent.size(), 1u );
	EXPECT_EQ( sent[0].m_nType, CHUNK_KMPN );
	EXPECT_EQ( sent[0].m_nVersion, 2 );
	EXPECT_THAT( Ids( sent[0] ), testing::ElementsAre( 0x123456789ABCDEF0, 2u ) );
	Deliver( Data( { 0x123456789ABCDEF0, 2 } ) );
	EXPECT_THAT( m_Connection.TakeSent(), IsEmpty() );
}

TEST_F( WindowMiniProfilerTest, AnIdFromANameIsAskedForWithTheNextData )
{
	MakeWindow();
	m_Connection.TakeSent();
	Deliver( CFrameBuilder().BeginNames( 1, 1 ).Name( 7, 0, "seven", "" ).End() );
	EXPECT_THAT( m_Connection.TakeSent(), IsEmpty() );
	Deliver( Data( {} ) );
	const auto sent = m_Connection.TakeSent( CHUNK_KMPN );
	ASSERT_EQ( sent.size(), 1u );
	EXPECT_THAT( Ids( sent[0] ), testing::ElementsAre( 7u ) );
}

TEST_F( WindowMiniProfilerTest, ManyIdsAreAskedForInChunksUnderOneMebibyte )
{
	MakeWindow();
	m_Connection.TakeSent();
	constexpr uint64_t IDS = 131072;
	CFrameBuilder frame;
	frame.BeginData( false );
	for ( uint64_t nId = 1; nId <= IDS; nId++ )
		frame.Entry( nId );
	Deliver( frame.End() );
	uint64_t nNext = 1;
	const auto sent = m_Connection.TakeSent( CHUNK_KMPN );
	EXPECT_EQ( sent.size(), 2u );
	for ( const auto &chunk : sent )
	{
		EXPECT_LT( chunk.m_Payload.size(), size_t{ 1 } << 20 );
		for ( const uint64_t nId : Ids( chunk ) )
			ASSERT_EQ( nId, nNext++ );
	}
	EXPECT_EQ( nNext, IDS + 1 );
	EXPECT_EQ( m_Allocator.Live(), 0u );
}

TEST_F( WindowMiniProfilerTest, AConnectionThatEndsWhileNamesAreAskedForIsLeftAlone )
{
	MakeWindow();
	m_Connection.m_OnSend = [this]( const CFakeConnection::Chunk &chunk )
	{
		if ( chunk.m_nType == CHUNK_KMPN )
		{
			m_pWindow->OnConnectionEnded();
			m_Connection.End();
		}
	};
	CFrameBuilder frame;
	frame.BeginData( false );
	for ( uint64_t nId = 1; nId <= MAX_NAMES_PER_REQUEST + 1; nId++ )
		frame.Entry( nId );
	Deliver( frame.End() ); // a second request would fail the test
	EXPECT_EQ( m_Allocator.Live(), 0u );
}

TEST_F( WindowMiniProfilerTest, WhilePausedNothingIsRecordedOrAskedFor )
{
	MakeWindow();
	Panel().SetPaused( true );
	m_Connection.TakeSent();
	Deliver( Data( { 1 } ) );
	EXPECT_THAT( Panel().Model().Records(), IsEmpty() );
	EXPECT_THAT( m_Connection.TakeSent(), IsEmpty() );
}

TEST_F( WindowMiniProfilerTest, ANewConnectionAndClearSamplesEmptyThePanel )
{
	MakeWindow();
	Deliver( Data( { 1 } ) );
	m_pWindow->OnConnectionStateChanged();
	EXPECT_THAT( Panel().Model().Records(), IsEmpty() );
	Deliver( Data( { 1 } ) );
	m_pWindow->OnClearSamples();
	EXPECT_THAT( Panel().Model().Records(), IsEmpty() );
	EXPECT_EQ( Panel().findChild<QTreeWidget *>()->topLevelItemCount(), 0 );
}

TEST_F( WindowMiniProfilerTest, TickSamplingSwitchesTheIntervalWord )
{
	MakeWindow();
	const auto Header = [this] { return Panel().findChild<QTreeWidget *>()->headerItem()->text( 1 ); };
	Action( "Tick Sampling" )->setChecked( true );
	EXPECT_NE( Action( "Bar: Inclusive, per tick" ), nullptr );
	EXPECT_NE( Action( "Bar: Exclusive, per tick" ), nullptr );
	EXPECT_EQ( Header(), "Calls per frame" ); // until the next regeneration
	Panel().RegenerateDataView();
	EXPECT_EQ( Header(), "Calls per tick" );
	Action( "Tick Sampling" )->setChecked( false );
	EXPECT_NE( Action( "Bar: Inclusive, per frame" ), nullptr );
}
} // namespace
