// Parsing of recordings against the plainest loop that could read the same bytes.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstring>
#include <memory>
#include <vector>

#include "recordingbytes.h"
#include "recordings/kestofile.h"
#include "recordings/kestomemoryreader.h"
#include "wire/recordingtokens.h"

namespace
{
int64_t EntriesOf( const CKestoFile &file )
{
	return int64_t{ file.GetFrameCount() } * NODES;
}

// The plainest loop: a check before each value, entries one after another into memory that is as fresh and as large,
// allocated by the frame; no nodes, no statistics.
struct PlainEntry
{
	uint32_t m_nCalls;
	uint32_t m_nTime;
};

class CPlainLoop
{
public:
	explicit CPlainLoop( const std::vector<uint8_t> &bytes )
		: m_p( bytes.data() )
		, m_pEnd( m_p + bytes.size() )
	{
	}

	int64_t Run( size_t nHeadBytes )
	{
		m_p += nHeadBytes;
		while ( m_p < m_pEnd )
		{
			m_Frames.push_back( std::make_unique_for_overwrite<PlainEntry[]>( NODES ) );
			for ( int32_t i = 0; i < NODES; i++ )
				m_Frames.back()[static_cast<size_t>( i )] = ReadEntry();
			m_p += 7; // end of frame, the next frame's head, timings
		}
		return static_cast<int64_t>( m_Frames.size() ) * NODES;
	}

private:
	template <typename T>
	uint32_t Read()
	{
		T value = 0;
		if ( m_pEnd - m_p >= static_cast<ptrdiff_t>( sizeof( T ) ) )
		{
			std::memcpy( &value, m_p, sizeof( T ) );
			m_p += sizeof( T );
		}
		return value;
	}

	PlainEntry ReadEntry()
	{
		PlainEntry entry;
		entry.m_nCalls = Read<uint8_t>();
		if ( entry.m_nCalls == wire::RECORDING_LONG_CALLS )
			entry.m_nCalls = Read<uint16_t>();
		entry.m_nTime = Read<uint16_t>();
		if ( entry.m_nTime == wire::RECORDING_LONG_TIME )
			entry.m_nTime = Read<uint32_t>();
		entry.m_nTime *= wire::RECORDING_TIME_UNIT;
		return entry;
	}

	const uint8_t *m_p;
	const uint8_t *m_pEnd;
	std::vector<std::unique_ptr<PlainEntry[]>> m_Frames;
};

// Bytes in front of the first entry.
constexpr size_t HEAD_BYTES = 8 + 5 + ( NODES - 1 ) * 15 + 1;

void BM_PlainLoop( benchmark::State &state )
{
	const std::vector<uint8_t> &bytes = Recording( state.range( 0 ) );
	int64_t nEntries = 0;
	for ( auto _ : state )
	{
		nEntries = CPlainLoop( bytes ).Run( HEAD_BYTES );
		malloc_trim( 0 ); // so that the next run gets fresh memory too
	}
	state.SetItemsProcessed( nEntries * state.iterations() );
}

void BM_Parse( benchmark::State &state )
{
	const std::vector<uint8_t> &bytes = Recording( state.range( 0 ) );
	int64_t nEntries = 0;
	for ( auto _ : state )
	{
		CKestoMemoryReader reader( bytes );
		const auto pFile = CRefPtr<CKestoFile>::Adopt( new CKestoFile( reader ) );
		nEntries = EntriesOf( *pFile );
		if ( !reader.m_bGood )
			state.SkipWithError( reader.GetFailureText().c_str() );
		malloc_trim( 0 );
	}
	state.SetItemsProcessed( nEntries * state.iterations() );
}

// Memory of a parsed recording over what its entries take at 8 bytes each.
void BM_ParseMemory( benchmark::State &state )
{
	const std::vector<uint8_t> &bytes = Recording( state.range( 0 ) );
	for ( auto _ : state )
	{
		const size_t nBefore = mallinfo2().uordblks + mallinfo2().hblkhd;
		CKestoMemoryReader reader( bytes );
		const auto pFile = CRefPtr<CKestoFile>::Adopt( new CKestoFile( reader ) );
		const size_t nUsed = mallinfo2().uordblks + mallinfo2().hblkhd - nBefore;
		state.counters["bytes_per_entry"] = static_cast<double>( nUsed ) / static_cast<double>( EntriesOf( *pFile ) );
		state.counters["MiB_over_8_per_entry"] =
			( static_cast<double>( nUsed ) - 8.0 * static_cast<double>( EntriesOf( *pFile ) ) ) / ( 1 << 20 );
	}
}

BENCHMARK( BM_PlainLoop )->Arg( 60 )->Arg( 300 )->Unit( benchmark::kMillisecond );
BENCHMARK( BM_Parse )->Arg( 60 )->Arg( 300 )->Unit( benchmark::kMillisecond );
BENCHMARK( BM_ParseMemory )->Arg( 60 )->Arg( 300 )->Iterations( 1 )->Unit( benchmark::kMillisecond );
} // namespace

BENCHMARK_MAIN();
