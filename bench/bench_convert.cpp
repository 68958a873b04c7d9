// Conversion of Chrome traces to recordings against the JSON library's bare parse of the same file.
#include <benchmark/benchmark.h>
#include <rapidjson/filereadstream.h>
#include <rapidjson/reader.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <tuple>

#include "tools/convert/conversion.h"

namespace
{
enum Shape
{
	Flat,    // one scope after another
	Nested,  // all scopes inside each other
	Complete // as flat, with durations, and an argument each
};

void PrintEvents( std::FILE *pFile, int nShape, int nEvents )
{
	for ( int i = 0; i < nEvents; i++ )
	{
		const char *pComma = i + 1 < nEvents ? "," : "";
		const bool bBegin = nShape == Flat ? i % 2 == 0 : i < nEvents / 2;
		if ( nShape == Complete )
			std::fprintf( pFile,
				"{\"name\":\"Function "
				"%d\",\"cat\":\"game\",\"ph\":\"X\",\"ts\":%d.%03d,\"dur\":6.5,\"pid\":4242,\"tid\":1,"
				"\"args\":{\"object\":%d}}%s\n",
				i % 500, 10 * i, i % 1000, i, pComma );
		else if ( bBegin )
			std::fprintf( pFile,
				"{\"name\":\"Function %d\",\"cat\":\"game\",\"ph\":\"B\",\"ts\":%d.%03d,\"pid\":4242,\"tid\":1}%s\n",
				i % 500, 5 * i, i % 1000, pComma );
		else
			std::fprintf( pFile, "{\"ph\":\"E\",\"ts\":%d.%03d,\"pid\":4242,\"tid\":1}%s\n", 5 * i, i % 1000, pComma );
	}
}

// A file that is there as long as the program.
class CTraceFile
{
public:
	CTraceFile( int nShape, int nEvents )
	{
		char name[] = "/tmp/bench_convert_XXXXXX";
		std::FILE *pFile = fdopen( mkstemp( name ), "w" );
		m_Path = name;
		std::fputs( "[\n", pFile );
		PrintEvents( pFile, nShape, nEvents );
		std::fputs( "]\n", pFile );
		std::fclose( pFile );
	}
	~CTraceFile() { std::remove( m_Path.c_str() ); }

	std::string m_Path;
};

const std::string &TracePath( const benchmark::State &state )
{
	static std::map<std::pair<int64_t, int64_t>, CTraceFile> s_Files;
	const auto key = std::pair( state.range( 0 ), state.range( 1 ) );
	return s_Files.try_emplace( key, static_cast<int>( key.first ), static_cast<int>( key.second ) * 1'000'000 )
		.first->second.m_Path;
}

// With a handler that does nothing, from a file stream with a buffer of 64 KiB.
template <unsigned FLAGS>
void BM_BareParse( benchmark::State &state )
{
	const std::string &path = TracePath( state );
	for ( auto _ : state )
	{
		std::FILE *pFile = std::fopen( path.c_str(), "rb" );
		static char s_Buffer[1 << 16];
		rapidjson::FileReadStream stream( pFile, s_Buffer, sizeof( s_Buffer ) );
		rapidjson::BaseReaderHandler<> handler;
		rapidjson::Reader reader;
		if ( reader.Parse<FLAGS>( stream, handler ).IsError() )
			state.SkipWithError( "this is no JSON" );
		std::fclose( pFile );
	}
	state.SetItemsProcessed( state.iterations() * state.range( 1 ) * 1'000'000 );
}

void BM_Convert( benchmark::State &state )
{
	const std::string &path = TracePath( state );
	size_t nBytes = 0;
	for ( auto _ : state )
	{
		convert::CInputStream input;
		convert::CReport report;
		convert::ImportProblem problem;
		convert::ConversionOptions options;
		options.m_SpoolFolder = "/tmp";
		const auto output = [&nBytes]( std::string_view bytes )
		{
			nBytes += bytes.size();
			return true;
		};
		if ( !input.Open( path ) || !ConvertTrace( input, options, report, output, problem ) || report.IsDamaged() )
			state.SkipWithError( "the trace was not converted whole" );
	}
	benchmark::DoNotOptimize( nBytes );
	state.SetItemsProcessed( state.iterations() * state.range( 1 ) * 1'000'000 );
}

// Millions of events.
void Cases( benchmark::internal::Benchmark *pBenchmark )
{
	pBenchmark->ArgNames( { "shape", "million" } )->Unit( benchmark::kMillisecond );
	for ( const int nShape : { Flat, Nested, Complete } )
		for ( const int nMillions : { 1, 4 } )
			pBenchmark->Args( { nShape, nMillions } );
}

BENCHMARK( BM_BareParse<rapidjson::kParseDefaultFlags> )->Name( "BareParse" )->Apply( Cases );
BENCHMARK( BM_BareParse<rapidjson::kParseNumbersAsStringsFlag> )->Name( "BareParseNumbersAsTexts" )->Apply( Cases );
BENCHMARK( BM_Convert )->Name( "Convert" )->Apply( Cases );
} // namespace

BENCHMARK_MAIN();
