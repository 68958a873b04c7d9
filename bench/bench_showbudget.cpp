// What adding one sample to the store costs, beside plain loops that write as many values: into an array, into the very
// places where the store has to write them (one in each block), and into the same places of blocks without the store's
// padding. The ratios are printed at the end; AddSample reads the clock once and compares with the peaks, too.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "showbudget/budgetsamplestore.h"

namespace
{
constexpr size_t VALUES = 64;

// The values of successive frames: different in each, as an engine's are.
class CFrames
{
public:
	CFrames()
	{
		uint32_t nState = 12345;
		for ( uint32_t &nValue : m_Values )
		{
			nState = nState * 1664525 + 1013904223;
			nValue = nState % 20000;
		}
	}

	std::span<const uint32_t> Next()
	{
		m_nFrame = ( m_nFrame + 1 ) % FRAMES;
		return std::span( m_Values ).subspan( m_nFrame * VALUES, VALUES );
	}

private:
	static constexpr size_t FRAMES = 16;
	std::vector<uint32_t> m_Values = std::vector<uint32_t>( FRAMES * VALUES );
	size_t m_nFrame = 0;
};

void WriteArray( benchmark::State &state )
{
	CFrames frames;
	std::vector<uint32_t> array( VALUES );
	for ( auto _ : state )
	{
		const std::span<const uint32_t> values = frames.Next();
		for ( size_t i = 0; i < values.size(); i++ )
			array[i] = values[i];
		benchmark::DoNotOptimize( array.data() );
		benchmark::ClobberMemory();
	}
}

template <size_t nStride>
void WriteBlocks( benchmark::State &state )
{
	CFrames frames;
	std::vector<uint32_t> blocks( VALUES * nStride );
	uint32_t nSample = 0;
	for ( auto _ : state )
	{
		const std::span<const uint32_t> values = frames.Next();
		const uint32_t nSlot = nSample++ % BUDGET_RING_SIZE;
		for ( size_t i = 0; i < values.size(); i++ )
			blocks[i * nStride + nSlot] = values[i];
		benchmark::DoNotOptimize( blocks.data() );
		benchmark::ClobberMemory();
	}
}

void WriteStoreBlocks( benchmark::State &state )
{
	WriteBlocks<BUDGET_BLOCK_STRIDE>( state );
}

void WriteTightBlocks( benchmark::State &state )
{
	WriteBlocks<BUDGET_BLOCK_SIZE>( state );
}

void AddSample( benchmark::State &state )
{
	CFrames frames;
	CBudgetSampleStore store;
	store.SetCategories( std::vector<BudgetCategory>( VALUES ) );
	for ( auto _ : state )
	{
		store.AddSample( frames.Next(), 60.0f, false, false );
		benchmark::ClobberMemory();
	}
}

BENCHMARK( WriteArray );
BENCHMARK( WriteStoreBlocks );
BENCHMARK( WriteTightBlocks );
BENCHMARK( AddSample );

// Keeps the fastest repetition of each benchmark: what else runs on the machine only ever adds.
class CFastestReporter final : public benchmark::ConsoleReporter
{
public:
	void ReportRuns( const std::vector<Run> &runs ) override
	{
		ConsoleReporter::ReportRuns( runs );
		for ( const Run &run : runs )
		{
			if ( run.run_type != Run::RT_Iteration )
				continue;
			const auto [entry, bNew] = m_Fastest.try_emplace( run.run_name.function_name, run.GetAdjustedCPUTime() );
			entry->second = std::min( entry->second, run.GetAdjustedCPUTime() );
		}
	}

	void PrintRatio( const char *pName, const char *pBaseline ) const
	{
		const auto time = m_Fastest.find( pName );
		const auto baseline = m_Fastest.find( pBaseline );
		if ( time != m_Fastest.end() && baseline != m_Fastest.end() )
			std::printf( "%s / %s: %.2f (%.1f ns / %.1f ns)\n", pName, pBaseline, time->second / baseline->second,
				time->second, baseline->second );
	}

private:
	std::map<std::string, double> m_Fastest;
};
} // namespace

int main( int nArguments, char **ppArguments )
{
	benchmark::Initialize( &nArguments, ppArguments );
	if ( benchmark::ReportUnrecognizedArguments( nArguments, ppArguments ) )
		return 1;
	CFastestReporter reporter;
	benchmark::RunSpecifiedBenchmarks( &reporter );
	for ( const char *pBaseline : { "WriteArray", "WriteStoreBlocks", "WriteTightBlocks" } )
		reporter.PrintRatio( "AddSample", pBaseline );
	return 0;
}
