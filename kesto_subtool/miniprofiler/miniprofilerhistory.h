// The newest 128 samples of every mini-profiler record.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

struct MiniProfilerSample
{
	uint64_t m_nTicks = 0; // inclusive time
	uint64_t m_nCalls = 0;

	friend bool operator==( const MiniProfilerSample &, const MiniProfilerSample & ) = default;
};

// Every record has a ring of CAPACITY samples. All rings advance together, so they share one head: opening an interval
// costs the same for one record and for a hundred thousand.
//
// Eight neighbouring records make a block, and four neighbouring slots of a block's rings a segment, which is made with
// the first sample other than 0 that falls into it. So a record costs next to nothing before it has samples, a sample
// never makes more than SEGMENT_BYTES, and once every slot was filled nothing is made any more. A block's samples of
// one interval fill two cache lines, and those of the next block mostly lie behind: that is how a chunk writes them.
class CMiniProfilerHistory
{
public:
	static constexpr uint32_t CAPACITY = 128;
	static constexpr uint32_t BLOCK_RECORDS = 8;
	static constexpr uint32_t SEGMENT_SLOTS = 4;
	static constexpr uint32_t SEGMENTS = CAPACITY / SEGMENT_SLOTS; // of a block

	struct Row // one interval of a block's records
	{
		std::array<uint64_t, BLOCK_RECORDS> m_Ticks{};
		std::array<uint64_t, BLOCK_RECORDS> m_Calls{};
	};
	struct alignas( 64 ) Segment
	{
		std::array<Row, SEGMENT_SLOTS> m_Rows;
	};
	static constexpr size_t SEGMENT_BYTES = sizeof( Segment );

	// Makes the empty ring of a new record; its index is the number of records before. With bAdvanced it takes part in
	// the present interval.
	uint32_t Add( bool bAdvanced );

	// Opens an interval: the newest slot of every ring becomes the second newest, and the one exposed instead keeps
	// what it held, which is 0 or the sample of CAPACITY intervals before.
	void Advance();

	// Fills the newest slot. A ring that has taken part in no interval has none, and the sample is dropped.
	void SetNewest( uint32_t nRecord, const MiniProfilerSample &sample )
	{
		if ( m_Births[nRecord] == m_nInterval )
			return;
		const uint32_t nBlock = nRecord / BLOCK_RECORDS;
		std::vector<Segment *> &segments = m_Segments[m_nHead / SEGMENT_SLOTS];
		if ( nBlock >= segments.size() || !segments[nBlock] )
		{
			if ( sample == MiniProfilerSample{} ) // which the slot holds as it is
				return;
			MakeSegment( nBlock );
		}
		Row &row = segments[nBlock]->m_Rows[m_nHead % SEGMENT_SLOTS];
		row.m_Ticks[nRecord % BLOCK_RECORDS] = sample.m_nTicks;
		row.m_Calls[nRecord % BLOCK_RECORDS] = sample.m_nCalls;
	}

	uint32_t RecordCount() const { return static_cast<uint32_t>( m_Births.size() ); }
	uint32_t BlockCount() const { return ( RecordCount() + BLOCK_RECORDS - 1 ) / BLOCK_RECORDS; }
	uint32_t Count( uint32_t nRecord ) const // samples, at most CAPACITY
	{
		const uint64_t nIntervals = m_nInterval - m_Births[nRecord];
		return nIntervals < CAPACITY ? static_cast<uint32_t>( nIntervals ) : CAPACITY;
	}
	MiniProfilerSample At( uint32_t nRecord, uint32_t nAge ) const; // 0 is the newest; nAge < Count

	// A block's newest samples, from the newest on, in one piece: at most CAPACITY rows.
	void CopyNewest( uint32_t nBlock, std::span<Row> rows ) const;

	// Null as long as no sample of the block has fallen into it. nSegment < SEGMENTS.
	const Segment *SegmentAt( uint32_t nBlock, uint32_t nSegment ) const
	{
		const std::vector<Segment *> &segments = m_Segments[nSegment];
		return nBlock < segments.size() ? segments[nBlock] : nullptr;
	}

	void Clear();

private:
	void MakeSegment( uint32_t nBlock ); // of the newest slot

	// Segments are made by the batch: one by one they would take half as much again for their alignment.
	static constexpr size_t BATCH_SEGMENTS = 128;
	std::vector<std::unique_ptr<Segment[]>> m_Batches;
	size_t m_nBatchUsed = BATCH_SEGMENTS; // of the last one

	std::array<std::vector<Segment *>, SEGMENTS> m_Segments; // by slot, then by block as far as there are any
	std::vector<uint64_t> m_Births; // the interval before the first one that a record took part in
	uint64_t m_nInterval = 1;
	uint32_t m_nHead = 0;
};
