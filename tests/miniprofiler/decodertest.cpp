#include <gmock/gmock.h>

#include <cstdlib>
#include <new>

#include "framebuilder.h"
#include "miniprofiler/miniprofilerdecoder.h"
#include "miniprofiler/miniprofilermodel.h"
#include "support/logguard.h"

namespace
{
size_t g_nAllocations = 0;
} // namespace

// Every operator new of this program counts.
void *operator new( size_t nBytes )
{
	g_nAllocations++;
	if ( void *pBlock = std::malloc( nBytes ) )
		return pBlock;
	throw std::bad_alloc();
}
void *operator new( size_t nBytes, const std::nothrow_t & ) noexcept
{
	g_nAllocations++;
	return std::malloc( nBytes );
}
void *operator new( size_t nBytes, std::align_val_t alignment )
{
	g_nAllocations++;
	const auto nAlignment = static_cast<size_t>( alignment );
	if ( void *pBlock = std::aligned_alloc( nAlignment, ( nBytes + nAlignment - 1 ) / nAlignment * nAlignment ) )
		return pBlock;
	throw std::bad_alloc();
}
void operator delete( void *pBlock ) noexcept
{
	std::free( pBlock );
}
void operator delete( void *pBlock, std::align_val_t ) noexcept
{
	std::free( pBlock );
}
void operator delete( void *pBlock, size_t, std::align_val_t ) noexcept
{
	std::free( pBlock );
}
void operator delete( void *pBlock, size_t ) noexcept
{
	std::free( pBlock );
}

namespace
{
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char DATA_WARNING[] = "Misaligned Miniprofiler data stream\n";
constexpr char NAMES_WARNING[] = "Misaligned Miniprofiler name data stream\n";
constexpr char TEXT_WARNING[] = "no end of string in Miniprofiler name data stream\n";

class MiniProfilerDecoder : public testing::Test
{
protected:
	bool Decode( const CFrameBuilder &frame ) { return DecodeMiniProfilerChunk( frame.Payload(), m_Model ); }
	uint32_t SampleCount( size_t nRecord ) const { return m_Model.History().Count( static_cast<uint32_t>( nRecord ) ); }
	MiniProfilerSample Newest( size_t nRecord ) const
	{
		return m_Model.History().At( static_cast<uint32_t>( nRecord ), 0 );
	}

	CMiniProfilerModel m_Model{ 1000 };
	CExpectWarnings m_Warnings;
};

TEST_F( MiniProfilerDecoder, APayloadOfEightBytesIsOnlyACost )
{
	const CFrameBuilder frame( 1234 );
	EXPECT_FALSE( Decode( frame ) );
	EXPECT_EQ( m_Model.CostHistory().Count(), 1u );
	EXPECT_EQ( m_Model.CostHistory().At( 0 ), 1234u );
	EXPECT_EQ( m_Model.Counters().m_nPacketSize, 8u );
}

TEST_F( MiniProfilerDecoder, AShorterPayloadIsRefused )
{
	const std::vector<uint8_t> payload( 7 );
	EXPECT_FALSE( DecodeMiniProfilerChunk( payload, m_Model ) );
	EXPECT_EQ( m_Model.CostHistory().Count(), 0u );
	EXPECT_EQ( m_Warnings.Take().size(), 1u );
}

TEST_F( MiniProfilerDecoder, EntriesBecomeRecordsAndCallersToo )
{
	CFrameBuilder frame;
	frame.BeginData( false, 70, 2 ).Entry( 0x10, 0x20 ).Entry( 0x30 ).End();
	EXPECT_TRUE( Decode( frame ) );
	ASSERT_EQ( m_Model.Records().size(), 3u );
	EXPECT_EQ( m_Model.Records()[0]->Id(), 0x10u );
	EXPECT_EQ( m_Model.Records()[0]->m_pCaller, m_Model.Records()[1].get() );
	EXPECT_EQ( m_Model.Records()[1]->Id(), 0x20u );
	EXPECT_EQ( m_Model.Counters().m_nRegistered, 70u );
	EXPECT_EQ( m_Model.Counters().m_nTransmitted, 2u );
	EXPECT_EQ( SampleCount( 0 ), 1u );
	EXPECT_EQ( SampleCount( 1 ), 0u ); // a caller takes part only with an entry of its own
	EXPECT_THAT( m_Model.TakeWantedIds(), ElementsAre( 0x10u, 0x20u, 0x30u ) );
}

TEST_F( MiniProfilerDecoder, WithTheMarkSamplesAreTaken )
{
	CFrameBuilder frame;
	frame.BeginData( true ).Entry( 1, 0, 500, 4 ).End();
	Decode( frame );
	EXPECT_EQ( Newest( 0 ), ( MiniProfilerSample{ 500, 4 } ) );
}

TEST_F( MiniProfilerDecoder, WithoutTheMarkTheSlotKeepsWhatItHeld )
{
	CFrameBuilder marked, plain;
	marked.BeginData( true ).Entry( 1, 0, 500, 4 ).End();
	plain.BeginData( false ).Entry( 1, 0, 900, 9 ).End();
	Decode( marked );
	for ( int i = 0; i < 127; i++ )
	{
		Decode( plain );
		ASSERT_EQ( Newest( 0 ), MiniProfilerSample{} );
	}
	Decode( plain );
	EXPECT_EQ( Newest( 0 ), ( MiniProfilerSample{ 500, 4 } ) ); // of 128 intervals before
}

TEST_F( MiniProfilerDecoder, OnlyTheExactMarkCounts )
{
	const auto Header = []( uint32_t nMark, uint32_t nVersion, uint64_t nRest )
	{
		CFrameBuilder frame;
		frame.Begin( 0 ).U32( nMark ).U32( nVersion ).U64( nRest ).U32( 0 ).U32( 0 ).Entry( 1, 0, 500, 4 ).End();
		return frame;
	};
	for ( const CFrameBuilder &frame : { Header( 0x4B4D5332, 1, 0 ), Header( 0x4B4D5331, 2, 0 ),
			  Header( 0x4B4D5331, 1, 1 ), Header( 0x4B4D5331, 1, 1ull << 63 ) } )
	{
		Decode( frame );
		EXPECT_EQ( Newest( 0 ), MiniProfilerSample{} );
	}
	Decode( Header( 0x4B4D5331, 1, 0 ) );
	EXPECT_EQ( Newest( 0 ), ( MiniProfilerSample{ 500, 4 } ) );
}

TEST_F( MiniProfilerDecoder, AnEntryWithoutAnIdIsSkippedWhole )
{
	CFrameBuilder frame;
	frame.BeginData( true ).Entry( 0, 55, 1, 1 ).Entry( 2 ).End();
	Decode( frame );
	ASSERT_EQ( m_Model.Records().size(), 1u );
	EXPECT_EQ( m_Model.Records()[0]->Id(), 2u );
}

TEST_F( MiniProfilerDecoder, ABlockWithoutEntriesOpensItsSlots )
{
	CFrameBuilder first, empty;
	first.BeginData( false ).Entry( 1 ).End();
	empty.BeginData( false, 5, 6 ).End();
	Decode( first );
	EXPECT_TRUE( Decode( empty ) );
	EXPECT_EQ( SampleCount( 0 ), 2u );
	EXPECT_EQ( m_Model.Counters().m_nRegistered, 5u );
}

TEST_F( MiniProfilerDecoder, TheLastEntryIsReadWholeThoughItsBlockEndsBefore )
{
	CFrameBuilder frame;
	frame.BeginData( true ).Entry( 1, 0, 10, 1 ).Entry( 2, 0, 20, 2 ).End( -16 );
	Decode( frame );
	ASSERT_EQ( m_Model.Records().size(), 2u );
	EXPECT_EQ( Newest( 1 ), ( MiniProfilerSample{ 20, 2 } ) );
	// The 16 bytes behind the block's end are then read as the next sub-record, of a kind that nobody knows.
	EXPECT_EQ( m_Warnings.Take().front(), DATA_WARNING );
}

TEST_F( MiniProfilerDecoder, AnEntryThatReachesPastThePayloadIsNotRead )
{
	CFrameBuilder frame;
	frame.BeginData( true ).Entry( 1 ).U32( 0 ).U64( 2 ).U64( 0 ).End();
	Decode( frame );
	EXPECT_EQ( m_Model.Records().size(), 1u );
	EXPECT_THAT( m_Warnings.Take(), ElementsAre( DATA_WARNING ) );
}

TEST_F( MiniProfilerDecoder, ABlockTooShortForItsCountsIsMisaligned )
{
	CFrameBuilder frame;
	frame.Begin( 0 ).U64( 0 ).U64( 0 ).U32( 9 ).End();
	EXPECT_TRUE( Decode( frame ) );
	EXPECT_EQ( m_Model.Counters().m_nRegistered, 0u );
	EXPECT_THAT( m_Warnings.Take(), ElementsAre( DATA_WARNING ) );
}

TEST_F( MiniProfilerDecoder, TwoBlocksOpenOneSlotForRecordsButTwoForTheCost )
{
	CFrameBuilder first, twice;
	first.BeginData( false ).Entry( 1 ).End();
	twice.BeginData( false ).Entry( 1 ).End().BeginData( false ).Entry( 1 ).End();
	Decode( first );
	m_Model.ComputeStatistics( true );
	Decode( twice );
	EXPECT_EQ( SampleCount( 0 ), 2u );
	EXPECT_EQ( m_Model.CostSampleCount(), 3u );
}

TEST_F( MiniProfilerDecoder, WhilePausedOnlyNamesAndCostsAreTaken )
{
	CFrameBuilder frame( 7 );
	frame.BeginData( false, 3, 3 ).Entry( 1 ).End().BeginNames( 50, 1 ).Name( 9, 0, "nine", "" ).End();
	m_Model.SetPaused( true );
	EXPECT_FALSE( Decode( frame ) );
	ASSERT_EQ( m_Model.Records().size(), 1u );
	EXPECT_EQ( m_Model.Records()[0]->Name(), "nine" );
	EXPECT_EQ( m_Model.Counters().m_nRegistered, 0u );
	EXPECT_EQ( m_Model.CostHistory().At( 0 ), 7u );
}

TEST_F( MiniProfilerDecoder, NamesBringParentsAndTheFrequency )
{
	CFrameBuilder frame;
	frame.BeginNames( 2500, 2 ).Name( 1, 2, "child", "a\nb\nc\n" ).Name( 2, 0, "parent", "" ).End();
	EXPECT_FALSE( Decode( frame ) ); // no data: nothing to regenerate, nothing to ask for
	EXPECT_EQ( m_Model.TickFrequency(), 2500u );
	EXPECT_EQ( m_Model.Counters().m_nNamesSent, 2 );
	ASSERT_EQ( m_Model.Records().size(), 2u );
	EXPECT_EQ( m_Model.Records()[0]->m_pStaticParent, m_Model.Records()[1].get() );
	EXPECT_EQ( m_Model.Records()[0]->Line( 2 ), "c" );
	EXPECT_EQ( m_Model.Records()[1]->Name(), "parent" );
	EXPECT_EQ( SampleCount( 0 ), 0u );
	EXPECT_THAT( m_Model.TakeWantedIds(), ElementsAre( 1u, 2u ) );
}

TEST_F( MiniProfilerDecoder, ANameWithoutAnIdIsSkippedWhole )
{
	CFrameBuilder frame;
	frame.BeginNames( 1, 2 ).Name( 0, 5, "x", "y" ).Name( 7, 0, "seven", "" ).End();
	Decode( frame );
	ASSERT_EQ( m_Model.Records().size(), 1u );
	EXPECT_EQ( m_Model.Records()[0]->Name(), "seven" );
}

TEST_F( MiniProfilerDecoder, AFrequencyOfZeroIsNotTaken )
{
	CFrameBuilder frame;
	frame.BeginNames( 0, 0 ).End();
	Decode( frame );
	EXPECT_EQ( m_Model.TickFrequency(), 1000u );
}

TEST_F( MiniProfilerDecoder, FewerNamesThanAnnouncedEndQuietly )
{
	CFrameBuilder frame;
	frame.BeginNames( 1, 5 ).Name( 1, 0, "one", "" ).End();
	Decode( frame );
	EXPECT_EQ( m_Model.Counters().m_nNamesSent, 5 );
}

TEST_F( MiniProfilerDecoder, MoreNamesThanAnnouncedAreMisaligned )
{
	CFrameBuilder frame;
	frame.BeginNames( 1, 1 ).Name( 1, 0, "one", "" ).Name( 2, 0, "two", "" ).End();
	Decode( frame );
	EXPECT_EQ( m_Model.Records().size(), 1u );
	EXPECT_THAT( m_Warnings.Take(), ElementsAre( NAMES_WARNING ) );
}

TEST_F( MiniProfilerDecoder, ANegativeCountOfNamesReadsNone )
{
	CFrameBuilder frame;
	frame.BeginNames( 1, -1 ).Name( 1, 0, "one", "" ).End();
	Decode( frame );
	EXPECT_THAT( m_Model.Records(), IsEmpty() );
	EXPECT_EQ( m_Model.Counters().m_nNamesSent, -1 );
	EXPECT_THAT( m_Warnings.Take(), ElementsAre( NAMES_WARNING ) );
}

TEST_F( MiniProfilerDecoder, ATextWithoutItsEndStopsTheNamesButKeepsThoseBefore )
{
	CFrameBuilder frame;
	frame.BeginNames( 1, 2 ).Name( 1, 0, "one", "" ).Name( 2, 0, "two", "text" ).End( -1 );
	Decode( frame );
	ASSERT_EQ( m_Model.Records().size(), 1u );
	EXPECT_EQ( m_Model.Records()[0]->Name(), "one" );
	EXPECT_EQ( m_Model.Counters().m_nNamesSent, 0 );
	EXPECT_THAT( m_Warnings.Take(), ElementsAre( TEXT_WARNING ) );
}

TEST_F( MiniProfilerDecoder, ANameEntryCutInItsIdsHasNoTextsEither )
{
	CFrameBuilder frame;
	frame.BeginNames( 1, 1 ).U64( 1 ).U32( 0 ).End();
	Decode( frame );
	EXPECT_THAT( m_Model.Records(), IsEmpty() );
	EXPECT_THAT( m_Warnings.Take(), ElementsAre( TEXT_WARNING ) );
}

TEST_F( MiniProfilerDecoder, ASubrecordPastThePayloadEndsTheChunkAndKeepsWhatWasRead )
{
	CFrameBuilder frame( 3 );
	frame.BeginData( false ).Entry( 1 ).End().Begin( 1 ).U64( 0 ).End( 5 );
	EXPECT_TRUE( Decode( frame ) );
	EXPECT_EQ( m_Model.Records().size(), 1u );
	EXPECT_EQ( m_Model.CostHistory().At( 0 ), 3u );
	EXPECT_THAT( m_Warnings.Take(),
		ElementsAre( "Malformed KESTO_MINIPROFILERS chunk 1, length 13 over expected length <= 8\n" ) );
}

TEST_F( MiniProfilerDecoder, AnEndThatDoesNotMoveForwardEndsTheChunk )
{
	for ( const int nEnd : { 0, 8, 15 } )
	{
		CFrameBuilder frame;
		frame.Begin( 2 ).End( nEnd - 16 );
		EXPECT_FALSE( Decode( frame ) );
		EXPECT_EQ( m_Warnings.Take().size(), 1u ) << nEnd;
	}
}

TEST_F( MiniProfilerDecoder, OnlyTheFirstOfManyProblemsAreToldOneByOne )
{
	const auto Problems = [this]( int nBlocks )
	{
		CFrameBuilder frame;
		for ( int i = 0; i < nBlocks; i++ )
			frame.Begin( 0 ).End();
		EXPECT_TRUE( Decode( frame ) );
		return m_Warnings.Take();
	};
	EXPECT_THAT( Problems( 16 ), testing::AllOf( testing::SizeIs( 16 ), testing::Each( DATA_WARNING ) ) );
	const auto many = Problems( 1000 );
	ASSERT_EQ( many.size(), 17u );
	EXPECT_EQ( many[15], DATA_WARNING );
	EXPECT_EQ( many[16], "984 more problems in the same KESTO_MINIPROFILERS chunk\n" );
	EXPECT_EQ( m_Model.CostSampleCount(), 128u ); // all blocks were decoded
}

TEST_F( MiniProfilerDecoder, UnknownKindsAreSkipped )
{
	CFrameBuilder frame;
	frame.Begin( 77 ).U64( 1 ).U32( 2 ).End().BeginData( false ).Entry( 1 ).End();
	EXPECT_TRUE( Decode( frame ) );
	EXPECT_EQ( m_Model.Records().size(), 1u );
}

TEST_F( MiniProfilerDecoder, KnownRecordsAllocateNothingButTheirRings )
{
	constexpr uint64_t RECORDS = 100;
	CFrameBuilder frame, bare, idle;
	frame.BeginData( true );
	bare.BeginData( false );
	idle.BeginData( true );
	for ( uint64_t nId = 1; nId <= RECORDS; nId++ )
	{
		frame.Entry( nId * 64, 64, nId, 1 );
		bare.Entry( nId * 64, 64 );
		idle.Entry( nId * 64, 64 );
	}
	frame.End();
	bare.End();
	idle.End();
	const auto Allocations = [this]( const CFrameBuilder &chunk, int nTimes )
	{
		const size_t nBefore = g_nAllocations;
		for ( int i = 0; i < nTimes; i++ )
			Decode( chunk );
		return g_nAllocations - nBefore;
	};
	EXPECT_GT( Allocations( bare, 1 ), RECORDS ); // new ones; so the count counts
	EXPECT_EQ( Allocations( bare, 1000 ), 0u );   // no samples, no rings
	EXPECT_EQ( Allocations( idle, 1000 ), 0u );   // nor any that are 0
	EXPECT_GT( Allocations( frame, 128 ), 0u );
	EXPECT_EQ( Allocations( frame, 1000 ), 0u ); // every slot was filled once
	EXPECT_EQ( m_Model.Records().size(), RECORDS );
}
} // namespace
