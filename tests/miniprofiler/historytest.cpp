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

uint32_t SegmentCount( const CMiniProfilerHistory &history )
{
	uint32_t nCount = 0;
	for ( uint32_t nBlock = 0; nBlock < history.BlockCount(); nBlock++ )
		nCount += history.SegmentCount( nBlock );
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

TEST( MiniProfilerHistory, WholeBlocksAreJoinedAFewInEachInterval )
{
	constexpr uint32_t BLOCKS = 2 * CMiniProfilerHistory::MAX_JOINED + 1;
	CMiniProfilerHistory history;
	for ( uint32_t i = 0; i < BLOCKS * CMiniProfilerHistory::BLOCK_RECORDS; i++ )
		history.Add( true );
	const auto FillInterval = [&history]
	{
		history.Advance();
		for ( uint32_t i = 0; i < history.RecordCount(); i++ )
			history.SetNewest( i, { i + 1, i + 2 } );
		uint32_t nJoined = 0;
		for ( uint32_t nBlock = 0; nBlock < BLOCKS; nBlock++ )
			nJoined += history.IsWhole( nBlock );
		return nJoined;
	};
	for ( uint32_t i = 1; i <= CMiniProfilerHistory::CAPACITY - CMiniProfilerHistory::SEGMENT_SLOTS; i++ )
		ASSERT_EQ( FillInterval(), 0u );
	EXPECT_EQ( FillInterval(), CMiniProfilerHistory::MAX_JOINED );
	EXPECT_EQ( FillInterval(), 2 * CMiniProfilerHistory::MAX_JOINED );
	EXPECT_EQ( FillInterval(), BLOCKS );
	for ( uint32_t i = 0; i < history.RecordCount(); i++ )
		for ( const uint32_t nAge : { 0u, 1u, 60u, 126u } )
			ASSERT_EQ( history.At( i, nAge ), ( MiniProfilerSample{ i + 1, i + 2 } ) );
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
	CMiniProfilerHistory::Rows room;
	for ( uint32_t i = 0; i < model.size(); i++ )
	{
		ASSERT_EQ( history.Count( i ), model[i].m_nCount );
		const CMiniProfilerHistory::Rows &rows = history.RowsOf( i / CMiniProfilerHistory::BLOCK_RECORDS, room );
		for ( uint32_t nAge = 0; nAge < model[i].m_nCount; nAge++ )
		{
			SCOPED_TRACE( testing::Message() << "record " << i << ", age " << nAge );
			const uint32_t nLane = i % CMiniProfilerHistory::BLOCK_RECORDS;
			ASSERT_EQ( history.At( i, nAge ), model[i].m_Slots[nAge] );
			const CMiniProfilerHistory::Row &row = rows[history.Slot( nAge )];
			ASSERT_EQ( row.m_Ticks[nLane], model[i].m_Slots[nAge].m_nTicks );
			ASSERT_EQ( row.m_Calls[nLane], model[i].m_Slots[nAge].m_nCalls );
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
