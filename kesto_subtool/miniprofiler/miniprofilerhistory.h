// The newest 128 samples of every mini-profiler record.
#pragma once

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
// costs the same for one record and for a hundred thousand. Eight records share a block: their samples of one interval
// fill two cache lines, which is how a chunk writes them, and the whole block fits into the first-level cache, where
// the statistics go over it a few records at a time.
class CMiniProfilerHistory
{
public:
	static constexpr uint32_t CAPACITY = 128;
	static constexpr uint32_t BLOCK_RECORDS = 8;

	struct Row // one interval of a block's records
	{
		std::array<uint64_t, BLOCK_RECORDS> m_Ticks{};
		std::array<uint64_t, BLOCK_RECORDS> m_Calls{};
	};
	struct alignas( 64 ) Block
	{
		std::array<Row, CAPACITY> m_Rows;
	};

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
		Row &row = m_Blocks[nBlock]->m_Rows[m_nHead];
		row.m_Ticks[nRecord % BLOCK_RECORDS] = sample.m_nTicks;
		row.m_Calls[nRecord % BLOCK_RECORDS] = sample.m_nCalls;
	}

	uint32_t RecordCount() const { return static_cast<uint32_t>( m_Births.size() ); }
	uint32_t Count( uint32_t nRecord ) const // samples, at most CAPACITY
	{
		const uint64_t nIntervals = m_nInterval - m_Births[nRecord];
		return nIntervals < CAPACITY ? static_cast<uint32_t>( nIntervals ) : CAPACITY;
	}
	MiniProfilerSample At( uint32_t nRecord, uint32_t nAge ) const; // 0 is the newest; nAge < Count

	const Block &BlockAt( uint32_t nBlock ) const { return *m_Blocks[nBlock]; }
	uint32_t Slot( uint32_t nAge ) const { return ( m_nHead + nAge ) % CAPACITY; }

	void Clear();

private:
	// A row was last touched 128 intervals ago: neighbours that a chunk is about to fill are fetched beforehand.
	static constexpr uint32_t FETCH_AHEAD = 8;
	void FetchRow( uint32_t nBlock ) const
	{
		if ( nBlock >= m_Blocks.size() )
			return;
		const Row &row = m_Blocks[nBlock]->m_Rows[m_nHead];
		__builtin_prefetch( &row.m_Ticks, 1 );
		__builtin_prefetch( &row.m_Calls, 1 );
	}

	std::vector<std::unique_ptr<Block>> m_Blocks;
	std::vector<uint64_t> m_Births; // the interval before the first one that a record took part in
	uint64_t m_nInterval = 1;
	uint32_t m_nHead = 0;
};
