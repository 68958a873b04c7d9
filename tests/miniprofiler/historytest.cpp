#include <gtest/gtest.h>

#include <deque>

#include "miniprofiler/miniprofilerhistory.h"
#include "miniprofiler/miniprofileroverhead.h"
#include "support/randomseed.h"

namespace
{
TEST( MiniProfilerHistory, ARecordThatTookPartHasOneSampleAtOnce )
{
	CMiniProfilerHistory history;
	EXPECT_EQ( history.Count( history.Add( true ) ), 1u );
	EXPECT_EQ( history.Count( history.Add( false ) ), 0u );
	history.Advance();
	EXPECT_EQ( history.Count( 0 ), 2u );
	EXPECT_EQ( history.Count( 1 ), 1u );
}

TEST( MiniProfilerHistory, AnExposedSlotKeepsTheSampleOf128IntervalsBefore )
{
	CMiniProfilerHistory history;
	history.Add( true );
	history.SetNewest( 0, { 77, 7 } );
	for ( int i = 0; i < 127; i++ )
	{
		history.Advance();
		EXPECT_EQ( history.At( 0, 0 ), MiniProfilerSample{} );
	}
	EXPECT_EQ( history.At( 0, 127 ), ( MiniProfilerSample{ 77, 7 } ) );
	history.Advance();
	EXPECT_EQ( history.Count( 0 ), 128u );
	EXPECT_EQ( history.At( 0, 0 ), ( MiniProfilerSample{ 77, 7 } ) );
}

TEST( MiniProfilerHistory, ASampleWithoutASlotIsDropped )
{
	CMiniProfilerHistory history;
	history.Add( false );
	history.SetNewest( 0, { 5, 5 } );
	for ( int i = 0; i < 300; i++ )
	{
		history.Advance();
		EXPECT_EQ( history.At( 0, 0 ), MiniProfilerSample{} );
	}
}

// Of all blocks' segments, how many there are.
uint32_t SegmentCount( const CMiniProfilerHistory &history )
{
	uint32_t nCount = 0;
	for ( uint32_t nBlock = 0; nBlock < history.BlockCount(); nBlock++ )
		for ( uint32_t nSegment = 0; nSegment < CMiniProfilerHistory::SEGMENTS; nSegment++ )
			nCount += history.SegmentAt( nBlock, nSegment ) != nullptr;
	return nCount;
}

TEST( MiniProfilerHistory, RoomIsMadeWithTheFirstSampleThatNeedsIt )
{
	CMiniProfilerHistory history;
	for ( int i = 0; i < 24; i++ ) // three blocks
		history.Add( true );
	for ( int i = 0; i < 1000; i++ )
		history.Advance();
	EXPECT_EQ( SegmentCount( history ), 0u );
	EXPECT_EQ( history.At( 0, 100 ), MiniProfilerSample{} );
	history.SetNewest( 20, {} );
	EXPECT_EQ( SegmentCount( history ), 0u ); // a slot is 0 as it is
	history.SetNewest( 20, { 1, 1 } );
	EXPECT_EQ( SegmentCount( history ), 1u );
	history.SetNewest( 23, { 2, 2 } ); // a neighbour
	EXPECT_EQ( SegmentCount( history ), 1u );
	history.SetNewest( 0, { 3, 3 } );
	EXPECT_EQ( SegmentCount( history ), 2u );
	for ( int i = 0; i < 1000; i++ )
	{
		history.Advance();
		history.SetNewest( 8, { 4, 4 } );
	}
	EXPECT_EQ( SegmentCount( history ), 2u + CMiniProfilerHistory::SEGMENTS );
	history.Clear();
	history.Add( true );
	EXPECT_EQ( SegmentCount( history ), 0u );
}

TEST( MiniProfilerHistory, ASampleMakesNoMoreThan16BytesForEachByteOfItsEntry )
{
	EXPECT_LE( CMiniProfilerHistory::SEGMENT_BYTES, 16u * 36 );
}

// The dumb model: a deque of 128 slots per record that really moves.
TEST( MiniProfilerHistory, BehavesLikeADequePerRecord )
{
	struct Ring
	{
		std::deque<MiniProfilerSample> m_Slots = std::deque<MiniProfilerSample>( 128 );
		uint32_t m_nCount = 0;

		void Advance()
		{
			m_Slots.push_front( m_Slots.back() );
			m_Slots.pop_back();
			m_nCount = m_nCount < 128 ? m_nCount + 1 : 128;
		}
	};
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	CMiniProfilerHistory history;
	std::vector<Ring> model;
	for ( int nStep = 0; nStep < 20000; nStep++ )
	{
		const auto nChoice = static_cast<uint32_t>( random() % 100 );
		if ( nChoice < 2 )
		{
			const bool bAdvanced = random() % 2 == 0;
			EXPECT_EQ( history.Add( bAdvanced ), model.size() );
			model.emplace_back();
			if ( bAdvanced )
				model.back().Advance();
		}
		else if ( nChoice < 10 )
		{
			history.Advance();
			for ( Ring &ring : model )
				ring.Advance();
		}
		else if ( !model.empty() )
		{
			const auto nRecord = static_cast<uint32_t>( random() % model.size() );
			const MiniProfilerSample sample{ random(), random() };
			history.SetNewest( nRecord, sample );
			if ( model[nRecord].m_nCount > 0 )
				model[nRecord].m_Slots.front() = sample;
		}
	}
	std::vector<CMiniProfilerHistory::Row> rows( CMiniProfilerHistory::CAPACITY );
	for ( uint32_t i = 0; i < model.size(); i++ )
	{
		ASSERT_EQ( history.Count( i ), model[i].m_nCount );
		history.CopyNewest( i / CMiniProfilerHistory::BLOCK_RECORDS, rows );
		for ( uint32_t nAge = 0; nAge < model[i].m_nCount; nAge++ )
		{
			SCOPED_TRACE( testing::Message() << "record " << i << ", age " << nAge );
			const uint32_t nLane = i % CMiniProfilerHistory::BLOCK_RECORDS;
			ASSERT_EQ( history.At( i, nAge ), model[i].m_Slots[nAge] );
			ASSERT_EQ( rows[nAge].m_Ticks[nLane], model[i].m_Slots[nAge].m_nTicks );
			ASSERT_EQ( rows[nAge].m_Calls[nLane], model[i].m_Slots[nAge].m_nCalls );
		}
	}
}

TEST( MiniProfilerCostHistory, KeepsTheNewest64 )
{
	CMiniProfilerCostHistory history;
	EXPECT_EQ( history.Count(), 0u );
	for ( uint64_t i = 1; i <= 100; i++ )
		history.Push( i );
	ASSERT_EQ( history.Count(), 64u );
	for ( uint32_t i = 0; i < 64; i++ )
		EXPECT_EQ( history.At( i ), 100u - i );
}
} // namespace
