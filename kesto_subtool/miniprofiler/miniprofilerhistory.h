// The newest 128 samples of every mini-profiler record.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
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
// Eight neighbouring records share a block: their samples of one interval fill two cache lines, which is how a chunk
// writes them, and the whole block fits into the first-level cache, where the statistics go over it a few records at a
// time. A block grows by segments of four slots, each made with the first sample other than 0 that falls into it. So a
// record costs next to nothing before it has samples, and a sample never makes much more than SEGMENT_BYTES. A block
// whose segments are all there is put together into one piece, and from then on nothing is made for it any more.
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
	struct alignas( 64 ) Rows : std::array<Row, CAPACITY> // of a block
	{
	};
	static constexpr size_t SEGMENT_BYTES = SEGMENT_SLOTS * sizeof( Row );

	// Blocks that are put together in one interval at most: all of a hundred thousand records at once would be a pause,
	// and a peak of memory.
	static constexpr uint32_t MAX_JOINED = 256;

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
		if ( nRecord % BLOCK_RECORDS == 0 )
			FetchRow( nBlock + FETCH_AHEAD );
		if ( m_Blocks[nBlock] )
			Fill( ( *m_Blocks[nBlock] )[m_nHead], nRecord, sample );
		else
			FillGrowing( nRecord, sample );
	}

	uint32_t RecordCount() const { return static_cast<uint32_t>( m_Births.size() ); }
	uint32_t BlockCount() const { return static_cast<uint32_t>( m_Blocks.size() ); }
	uint32_t Count( uint32_t nRecord ) const // samples, at most CAPACITY
	{
		const uint64_t nIntervals = m_nInterval - m_Births[nRecord];
		return nIntervals < CAPACITY ? static_cast<uint32_t>( nIntervals ) : CAPACITY;
	}
	MiniProfilerSample At( uint32_t nRecord, uint32_t nAge ) const; // 0 is the newest; nAge < Count

	uint32_t Slot( uint32_t nAge ) const { return ( m_nHead + nAge ) % CAPACITY; }

	// A block's rows by slot: where they are when the block is in one piece, else a copy of them in room.
	const Rows &RowsOf( uint32_t nBlock, Rows &room ) const;

	bool IsWhole( uint32_t nBlock ) const { return m_Blocks[nBlock]; } // in one piece
	uint32_t SegmentCount( uint32_t nBlock ) const;                    // how much of it is there

	void Clear();

private:
	using Segment = std::array<Row, SEGMENT_SLOTS>;
	struct Growing // a block that is not in one piece
	{
		std::array<std::unique_ptr<Segment>, SEGMENTS> m_Segments;
		uint32_t m_nSegments = 0;
	};

	static void Fill( Row &row, uint32_t nRecord, const MiniProfilerSample &sample )
	{
		row.m_Ticks[nRecord % BLOCK_RECORDS] = sample.m_nTicks;
		row.m_Calls[nRecord % BLOCK_RECORDS] = sample.m_nCalls;
	}

	void FillGrowing( uint32_t nRecord, MiniProfilerSample sample ); // by value, so that it can stay in registers
	void Join( uint32_t nBlock );
	const Row *FindRow( uint32_t nBlock, uint32_t nSlot ) const; // null where none was made
	static void CopySegments( const Growing &growing, Rows &rows );

	// A row was last touched 128 intervals ago: neighbours that a chunk is about to fill are fetched beforehand.
	static constexpr uint32_t FETCH_AHEAD = 8;
	void FetchRow( uint32_t nBlock ) const
	{
		if ( nBlock >= m_Blocks.size() || !m_Blocks[nBlock] )
			return;
		const Row &row = ( *m_Blocks[nBlock] )[m_nHead];
		__builtin_prefetch( &row.m_Ticks, 1 );
		__builtin_prefetch( &row.m_Calls, 1 );
	}

	// Whole blocks lie in runs, so that a chunk goes through memory and not about it; a run is small enough for the
	// room that the segments of its blocks leave. The padding lets rows of one slot fall into different sets of the
	// caches.
	static constexpr size_t RUN_BLOCKS = 7;
	struct alignas( 64 ) Place
	{
		Rows m_Rows;
		std::array<uint64_t, 8> m_Padding;
	};
	std::vector<std::unique_ptr<Place[]>> m_Runs;
	size_t m_nRunUsed = RUN_BLOCKS; // places of the last one

	std::vector<Rows *> m_Blocks;                    // null as long as they grow
	std::vector<std::unique_ptr<Growing>> m_Growing; // null before the first sample, and behind the last segment
	std::vector<uint64_t> m_Births;                  // the interval before the first one that a record took part in
	uint64_t m_nInterval = 1;
	uint32_t m_nHead = 0;
	uint32_t m_nJoined = 0; // in this interval
};
