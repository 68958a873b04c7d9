#include <gmock/gmock.h>

#include <cmath>

#include "miniprofiler/miniprofilerwidget.h"
#include "showbudget/windowfixture.h"
#include "support/logguard.h"

using testing::ElementsAre;
using testing::StrEq;

namespace
{
class ChunkTest : public WindowTest
{
protected:
	const CBudgetSampleStore &Samples() const { return m_pWindow->Samples(); }

	std::vector<std::string> Names() const
	{
		std::vector<std::string> names;
		for ( const BudgetCategory &category : Samples().Categories() )
			names.push_back( category.m_Name.Get() );
		return names;
	}

	uint32_t Value( size_t nCategory, uint32_t nSlot ) const
	{
		return m_pWindow->GetViewData().Value( nCategory, nSlot );
	}

	// Delivers a chunk that must be dropped with exactly this warning, and changes nothing.
	void ExpectDropped( uint32_t nType, const Payload &payload, const char *pWarning )
	{
		const std::vector<std::string> namesBefore = Names();
		const uint32_t nCountBefore = Samples().SampleCount();
		CExpectWarnings warnings;
		EXPECT_TRUE( m_Connection.Deliver( nType, payload ) );
		EXPECT_THAT( warnings.Take(), ElementsAre( StrEq( pWarning ) ) );
		EXPECT_EQ( Names(), namesBefore );
		EXPECT_EQ( Samples().SampleCount(), nCountBefore );
	}
};
} // namespace

TEST_F( ChunkTest, TheWindowRegistersForItsThreeChunksInVersionTwo )
{
	MakeWindow();
	ASSERT_EQ( m_Connection.m_Receivers.size(), 3u );
	const uint32_t expected[] = { CHUNK_PCAT, CHUNK_PCPU, CHUNK_PMPF };
	for ( size_t i = 0; i < 3; i++ )
	{
		EXPECT_EQ( m_Connection.m_Receivers[i].m_nType, expected[i] );
		EXPECT_EQ( m_Connection.m_Receivers[i].m_nVersion, 2 );
		EXPECT_EQ( m_Connection.m_Receivers[i].m_pReceiver, static_cast<ITesselDataReceived *>( m_pWindow.get() ) );
	}
}

TEST_F( ChunkTest, CategoriesReplaceTheStoresAndColourTheMiniProfiler )
{
	MakeRunningWindow();
	SendCategories( { { "Physics", 1, 2, 3 }, { "Render", 4, 5, 6 } } );
	EXPECT_THAT( Names(), ElementsAre( "Physics", "Render", "Totals" ) );
	EXPECT_EQ( Samples().Categories()[0].m_Colour, QColor( 1, 2, 3, 255 ) );
	const auto *pMiniProfiler = m_pWindow->findChild<CQMiniProfilerWidget *>();
	EXPECT_EQ( pMiniProfiler->BudgetColour( "Physics" ), QColor( 1, 2, 3 ) );
	EXPECT_EQ( pMiniProfiler->BudgetColour( "Render" ), QColor( 4, 5, 6 ) ) << "a known name gets its new colour";
	EXPECT_EQ( pMiniProfiler->BudgetColour( "Audio" ), QColor( 40, 50, 60 ) ) << "a name that is gone is kept";
	EXPECT_FALSE( pMiniProfiler->BudgetColour( "Totals" ).isValid() );
}

TEST_F( ChunkTest, ANameThatFillsItsFieldIsTakenWhole )
{
	MakeRunningWindow();
	SendCategories( { { std::string( 64, 'x' ) } } );
	EXPECT_EQ( Names()[0], std::string( 64, 'x' ) );
}

TEST_F( ChunkTest, NoCategoriesLeaveTotalsAlone )
{
	MakeRunningWindow();
	SendCategories( {} );
	EXPECT_THAT( Names(), ElementsAre( "Totals" ) );
	SendSample( {} );
	EXPECT_EQ( Samples().SampleCount(), 1u );
	EXPECT_EQ( Value( 0, 0 ), 0u );
}

TEST_F( ChunkTest, NewCategoriesClearTheSamples )
{
	MakeRunningWindow();
	SendSample( { 1, 2 } );
	SendCategories( { { "Physics" } } );
	EXPECT_EQ( Samples().SampleCount(), 0u );
	EXPECT_THAT( StatusTexts(), ElementsAre( "Running.", "No Samples.", "FPS:", "Frame:" ) );
}

TEST_F( ChunkTest, ASampleIsStoredWithItsFrameRate )
{
	MakeRunningWindow();
	SendSample( { 1000, 0x01020304 }, 59.5f );
	EXPECT_EQ( Value( 0, 0 ), 1000u );
	EXPECT_EQ( Value( 1, 0 ), 0x01020304u );
	EXPECT_EQ( Value( 2, 0 ), 0x01020304u + 1000u );
	EXPECT_EQ( m_pWindow->GetViewData().m_FrameRates[0], 59.5f );
}

TEST_F( ChunkTest, AFrameRateThatIsNotFiniteIsStoredAsZero )
{
	MakeRunningWindow();
	SendSample( { 1, 2 }, std::nanf( "" ) );
	EXPECT_EQ( m_pWindow->GetViewData().m_FrameRates[0], 0.0f );
}

TEST_F( ChunkTest, ASampleAccumulatesOnlyWithAZeroMarkAndTickSampling )
{
	MakeRunningWindow();
	SendSample( { 1, 1 }, 60.0f, 0 );
	SendSample( { 1, 1 }, 60.0f, 0 );
	EXPECT_EQ( Samples().SampleCount(), 2u ) << "\"Tick Sampling\" is off";
	Action( "Tick Sampling" )->setChecked( true );
	SendSample( { 1, 1 }, 60.0f, 0x00000100 );
	EXPECT_EQ( Samples().SampleCount(), 3u ) << "any mark but zero opens a frame";
	SendSample( { 10, 20 }, 60.0f, 0 );
	EXPECT_EQ( Samples().SampleCount(), 3u );
	EXPECT_EQ( Value( 0, 2 ), 11u );
	EXPECT_EQ( Value( 2, 2 ), 32u );
}

TEST_F( ChunkTest, ChunksAreIgnoredWhileSamplingIsStopped )
{
	MakeRunningWindow();
	SendSample( { 1, 2 } );
	m_pWindow->StopSampling();
	SendCategories( { { "Physics" } } );
	SendSample( { 3 } );
	EXPECT_THAT( Names(), ElementsAre( "Render", "Audio", "Totals" ) );
	EXPECT_EQ( Samples().SampleCount(), 1u );
}

TEST_F( ChunkTest, MalformedChunksAreNotEvenLookedAtWhileStopped )
{
	MakeWindow();
	EXPECT_TRUE( m_Connection.Deliver( CHUNK_PCAT, Payload{ 0xFF } ) );
	EXPECT_TRUE( m_Connection.Deliver( CHUNK_PCPU, {} ) );
}

TEST_F( ChunkTest, AnyOtherVersionIsDroppedWithResultFalse )
{
	MakeRunningWindow();
	for ( const uint16_t nVersion : { uint16_t{ 0 }, uint16_t{ 1 }, uint16_t{ 3 }, uint16_t{ 0xFFFF } } )
		EXPECT_FALSE( DeliverChunk( *m_pWindow, &m_Connection, CHUNK_PCPU, nVersion, SamplePayload( { 1, 2 } ) ) );
	EXPECT_EQ( Samples().SampleCount(), 0u );
	EXPECT_EQ( m_Allocator.Live(), 0u );
}

TEST_F( ChunkTest, OtherTypesAreFreedAndChangeNothing )
{
	MakeRunningWindow();
	for ( const uint32_t nType : { CHUNK_KSTO, 0u, 0xFFFFFFFFu } )
		EXPECT_TRUE( DeliverChunk( *m_pWindow, &m_Connection, nType, 2, SamplePayload( { 1, 2 } ) ) );
	EXPECT_EQ( Samples().SampleCount(), 0u );
	EXPECT_EQ( m_Allocator.Live(), 0u );
}

TEST_F( ChunkTest, EveryBufferIsFreedOnce )
{
	MakeRunningWindow();
	const size_t nBefore = m_Allocator.Allocated();
	SendSample( { 1, 2 } );
	SendCategories( { { "Physics" } } );
	EXPECT_EQ( m_Allocator.Allocated(), nBefore + 2 );
	EXPECT_EQ( m_Allocator.Live(), 0u );
}

TEST_F( ChunkTest, CategoriesWhoseCountDoesNotFitAreDropped )
{
	MakeRunningWindow();
	Payload payload = CategoriesPayload( { { "Physics" }, { "Script" } } );
	payload.pop_back();
	ExpectDropped(
		CHUNK_PCAT, payload, "Malformed PCAT chunk, count 2, length 139: the chunk is too short for the count\n" );
}

TEST_F( ChunkTest, AHugeCategoryCountIsDroppedBeforeAnythingIsAllocated )
{
	MakeRunningWindow();
	ExpectDropped( CHUNK_PCAT, { 0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3 },
		"Malformed PCAT chunk, count 4294967295, length 7: the chunk is too short for the count\n" );
}

TEST_F( ChunkTest, CategoriesWithoutRoomForACountAreDropped )
{
	MakeRunningWindow();
	ExpectDropped(
		CHUNK_PCAT, { 0, 0, 0 }, "Malformed PCAT chunk, count 0, length 3: the chunk is too short to hold a count\n" );
	ExpectDropped(
		CHUNK_PCAT, {}, "Malformed PCAT chunk, count 0, length 0: the chunk is too short to hold a count\n" );
}

TEST_F( ChunkTest, UpToTheLimitCategoriesAreTakenAndOneMoreIsRefused )
{
	MakeRunningWindow();
	const std::vector<TestCategory> categories( 4097 );
	const Payload tooMany = CategoriesPayload( categories );
	ExpectDropped(
		CHUNK_PCAT, tooMany, "Malformed PCAT chunk, count 4097, length 278600: the count is over the limit\n" );
	SendCategories( std::vector<TestCategory>( 4096 ) );
	EXPECT_EQ( Samples().Categories().size(), 4097u );
}

TEST_F( ChunkTest, ASampleWhoseCountDoesNotFitIsDropped )
{
	MakeRunningWindow();
	Payload payload = SamplePayload( { 1, 2 } );
	payload.pop_back();
	ExpectDropped(
		CHUNK_PCPU, payload, "Malformed PCPU chunk, count 2, length 19: the chunk is too short for the count\n" );
	ExpectDropped( CHUNK_PCPU, Payload( 11 ),
		"Malformed PCPU chunk, count 0, length 11: the chunk is too short to hold a count\n" );
}

TEST_F( ChunkTest, ASampleWithTooFewValuesIsDropped )
{
	MakeRunningWindow();
	ExpectDropped( CHUNK_PCPU, SamplePayload( { 1 } ),
		"Malformed PCPU chunk, count 1, length 16: fewer values than categories\n" );
}

TEST_F( ChunkTest, ASampleMayCarryMoreValuesThanThereAreCategories )
{
	MakeRunningWindow();
	SendSample( { 1, 2, 1000 } );
	EXPECT_EQ( Value( 2, 0 ), 3u );
}

TEST_F( ChunkTest, BytesBehindTheRecordsAreIgnored )
{
	MakeRunningWindow();
	Payload payload = CategoriesPayload( { { "Physics" } } );
	payload.push_back( 0xAA );
	EXPECT_TRUE( m_Connection.Deliver( CHUNK_PCAT, payload ) );
	EXPECT_THAT( Names(), ElementsAre( "Physics", "Totals" ) );
}

TEST_F( ChunkTest, ASampleBeforeAnyCategoriesIsCountedAndShowsNothing )
{
	MakeWindow().StartSampling();
	SendSample( { 5 } );
	EXPECT_THAT( StatusTexts(), ElementsAre( "Running.", "Samples: 1", "FPS: 0.00", "Frame: 0.00" ) );
}
