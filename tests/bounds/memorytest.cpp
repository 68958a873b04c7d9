// What a file makes a program take from the heap, however it is made: at most 16 MiB for 100 bytes, at most 64 MiB and
// 16 bytes for each byte otherwise.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <streambuf>
#include <string>
#include <vector>

#include "keel0/keyvalues.h"
#include "memorybound.h"
#include "recordings/kestomemoryreader.h"
#include "recordings/noderows.h"
#include "tests/recordings/recordingcorpus.h"
#include "tests/recordings/recordingwriter.h"
#include "tests/tools/kestorun.h"
#include "tools/command.h"

namespace
{
constexpr int32_t LAST_ID = 1048575;

// Keeps nothing: what is printed does not count as what printing it takes.
class CNowhere final : public std::streambuf
{
protected:
	int_type overflow( int_type c ) override { return traits_type::not_eof( c ); }
	std::streamsize xsputn( const char *, std::streamsize nBytes ) override { return nBytes; }
};

void RunCommand( std::vector<const char *> arguments )
{
	CNowhere nowhere;
	std::ostream output( &nowhere );
	std::ostream errors( &nowhere );
	CommandContext context{ output, errors, nullptr };
	arguments.insert( arguments.begin(), "kesto" );
	RunKesto( static_cast<int>( arguments.size() ), arguments.data(), context );
}

std::vector<std::vector<const char *>> CommandsOn( const char *pPath )
{
	std::vector<std::vector<const char *>> commands = {
		{ "info", pPath },
		{ "info", pPath, "--json", "--top", "1000000000" },
		{ "dump", pPath },
		{ "frames", pPath },
		{ "nodes", pPath },
		{ "compare", pPath, pPath },
		{ "check", pPath, "--frame", "<=1" },
		{ "repair", pPath, "-" },
	};
	for ( const char *pTo : { "kesto", "chrome", "speedscope", "folded", "csv" } )
		commands.push_back( { "convert", pPath, "-", "--to", pTo } );
	for ( const char *pFrom : { "chrome", "speedscope", "folded", "perf" } )
		commands.push_back( { "convert", pPath, "-", "--from", pFrom, "--to", "kesto", "--period", "0.001" } );
	return commands;
}

std::string ShowArguments( const std::vector<const char *> &arguments )
{
	std::string text;
	for ( const char *pArgument : arguments )
		text.append( text.empty() ? "" : " " ).append( pArgument );
	return text;
}

void ExpectBounded( const CTestFolder &folder, const std::string &name, const std::vector<uint8_t> &bytes )
{
	SCOPED_TRACE( name );
	const int64_t nLimit = MemoryBound( bytes.size() );
	EXPECT_LE( PeakMemoryOf(
				   [&]
				   {
					   CKestoMemoryReader reader( bytes );
					   const auto pFile = CRefPtr<CKestoFile>::Adopt( new CKestoFile( reader ) );
					   const NodeRows rows( *pFile );
				   } ),
		nLimit );
	const std::string path = folder.Write( "input", bytes );
	for ( const std::vector<const char *> &arguments : CommandsOn( path.c_str() ) )
		EXPECT_LE( PeakMemoryOf( [&] { RunCommand( arguments ); } ), nLimit ) << ShowArguments( arguments );
}

std::vector<uint8_t> ReadBytes( const std::filesystem::path &path )
{
	std::ifstream file( path, std::ios::binary );
	return { std::istreambuf_iterator<char>( file ), {} };
}

class Memory : public testing::Test
{
protected:
	void SetUp() override
	{
		if ( !countedmemory::IsCounted() )
			GTEST_SKIP() << "this build has another heap";
	}

	CTestFolder m_Folder;
};

TEST_F( Memory, IsCounted )
{
	EXPECT_GE( PeakMemoryOf( [] { std::vector<char> bytes( 1 << 20 ); } ), 1 << 20 );
	EXPECT_LT( PeakMemoryOf( [] {} ), 1 << 10 );
	std::vector<char> kept( 1 << 20 );
	EXPECT_LT( PeakMemoryOf( [] {} ), 1 << 10 ) << "what was there before does not count";
}

TEST_F( Memory, OfEveryInputOfTheCorporaIsBounded )
{
	int nInputs = 0;
	for ( const char *pCorpus :
		{ "recording", "convert_chrome", "convert_folded", "convert_perf", "convert_speedscope" } )
		for ( const auto &entry :
			std::filesystem::directory_iterator( std::filesystem::path( FUZZ_CORPUS ) / pCorpus ) )
		{
			std::vector<uint8_t> bytes = ReadBytes( entry.path() );
			ExpectBounded( m_Folder, entry.path(), bytes );
			bytes.resize( std::min( bytes.size(), SHORT_INPUT ) );
			ExpectBounded( m_Folder, entry.path().string() + " cut", bytes );
			nInputs++;
		}
	EXPECT_GT( nInputs, 40 );
}

// Made to take as much as so few bytes can.
TEST_F( Memory, OfAHundredBytesIsSmallWhateverTheySay )
{
	CRecordingWriter lastRoot = CRecordingWriter().Header( LAST_ID );
	while ( lastRoot.m_Bytes.size() + 10 <= SHORT_INPUT )
		lastRoot.BeginFrame().BeginTimings().Entry( 255, 70000 ).EndFrame();
	ExpectBounded( m_Folder, "frames with a root at the last id", lastRoot.m_Bytes );

	CRecordingWriter spread = CRecordingWriter().Header( LAST_ID ).BeginFrame();
	for ( int32_t i = 0; spread.m_Bytes.size() + 18 <= SHORT_INPUT; i++ )
		spread.Node( LAST_ID - 2 * i * 5000, "", LAST_ID - ( 2 * i + 1 ) * 5000 );
	ExpectBounded( m_Folder, "nodes all over the ids", spread.BeginTimings().Entry( 1, 1 ).EndFrame().m_Bytes );

	for ( const char *pText : {
			  R"([{"ph":"X","name":"a","ts":0,"dur":1e12},{"ph":"X","name":"b","ts":-9e12,"dur":9e14}])",
			  R"({"profiles":[{"type":"sampled","samples":[[0]],"weights":[1e300]}],"shared":{"frames":[{}]}})",
			  "a;b;c;d;e;f;g;h 9223372036854775807\na;a;a;a;a;a;a;a;a 9223372036854775807\n",
			  "x 1 0.000001: 1 cpu-clock:\n\tffff a (b)\n\nx 1 99999999.9: 1 cpu-clock:\n\tffff a (b)\n",
		  } )
		ExpectBounded( m_Folder, pText, ToBytes( pText ) );
}

// Entries as short as can be, in blocks inside one another, beside one another, and all in one.
std::string SettingsOf( size_t nBytes, const std::string &block )
{
	std::string text = "r{";
	for ( int i = 0; text.size() < nBytes; i++ )
		text += std::to_string( i ) + block;
	return text + "}";
}

TEST_F( Memory, OfASettingsTextIsBounded )
{
	std::string nested = "{";
	for ( int i = 0; i < 61; i++ )
		nested += "a{";
	nested += std::string( 62, '}' );
	std::string beside = "{";
	for ( char c = 'a'; c <= 'z'; c++ )
		beside += std::string( 1, c ) + "{}";
	beside += '}';
	const std::string longNames = "_" + std::string( 300, 'n' ) + "\"\"\n";
	int nLoaded = 0;
	for ( const std::string &block : { nested, beside, std::string( "{}" ), longNames } )
		for ( size_t nBytes = 64; nBytes <= size_t{ 16 } << 20; nBytes *= 4 )
		{
			const std::string text = SettingsOf( nBytes, block );
			bool bLoaded = false;
			EXPECT_LE( PeakMemoryOf(
						   [&]
						   {
							   KeyValues tree( "" );
							   bLoaded = tree.LoadFromBuffer( text );
						   } ),
				MemoryBound( text.size() ) )
				<< text.size() << " bytes of " << block;
			nLoaded += bLoaded;
		}
	EXPECT_GE( nLoaded, 20 ) << "most of them are settings";
}

// Traces whose scopes are as short as they can be, so that many nodes come from few bytes.
struct DenseTrace
{
	const char *m_pName;
	const char *m_pFormat;
	std::function<std::string( size_t nBytes )> m_Make;
};

std::string Repeated( std::string text, const std::string &piece, size_t nBytes )
{
	while ( text.size() < nBytes )
		text += piece;
	return text;
}

const DenseTrace DENSE_TRACES[] = {
	{ "one deep stack", "speedscope",
		[]( size_t nBytes )
		{
			return Repeated(
					   R"({"shared":{"frames":[{"name":"a"}]},"profiles":[{"type":"sampled","weights":[4],"samples":[[0)",
					   ",0", nBytes ) +
				   "]]}]}";
		} },
	{ "many stacks that begin alike", "folded",
		[]( size_t nBytes )
		{
			std::string text;
			for ( int i = 0; text.size() < nBytes; i++ )
				text += "a;" + std::to_string( i ) + ";b;c;d 4\n";
			return text;
		} },
	{ "many names", "folded",
		[]( size_t nBytes )
		{
			std::string text;
			for ( int i = 0; text.size() < nBytes; i++ )
				text += std::to_string( i ) + " 4\n";
			return text;
		} },
};

// As many bytes as make the most nodes that a recording can have: with more, the bound grows and the nodes do not.
TEST_F( Memory, OfAConversionOfDenseTracesIsBounded )
{
	constexpr size_t BYTES = 9 << 18;
	for ( const DenseTrace &trace : DENSE_TRACES )
	{
		const std::string text = trace.m_Make( BYTES );
		const std::string path = m_Folder.Write( "input", ToBytes( text ) );
		for ( const char *pTo : { "kesto", "speedscope", "csv" } )
			EXPECT_LE( PeakMemoryOf(
						   [&] {
							   RunCommand( { "convert", path.c_str(), "-", "--from", trace.m_pFormat, "--to", pTo } );
						   } ),
				MemoryBound( text.size() ) )
				<< trace.m_pName << ", to " << pTo;
	}
}

struct LargeRecording
{
	const char *m_pName;
	std::function<void( CRecordingWriter &, int32_t )> m_Append; // called until there is enough
};

const LargeRecording LARGE_RECORDINGS[] = {
	{ "empty frames", []( CRecordingWriter &writer, int32_t ) { writer.BeginFrame().EndFrame(); } },
	{ "frames of one entry",
		[]( CRecordingWriter &writer, int32_t ) { writer.BeginFrame().BeginTimings().Entry( 1, 1 ).EndFrame(); } },
	{ "frames of one long entry",
		[]( CRecordingWriter &writer, int32_t ) { writer.BeginFrame().BeginTimings().Entry( 300, 1 ).EndFrame(); } },
	{ "frames of two records", // so that they are walked
		[]( CRecordingWriter &writer, int32_t )
		{ writer.BeginFrame().BeginTimings().Entry( 1, 1 ).BeginTimings().Entry( 1, 1 ).EndFrame(); } },
	{ "empty strings",
		[]( CRecordingWriter &writer, int32_t n )
		{
			if ( n == 0 )
				writer.BeginFrame();
			writer.String( "", 0 );
		} },
	{ "nodes all over the ids",
		[]( CRecordingWriter &writer, int32_t n )
		{
			if ( n == 0 )
				writer.BeginFrame();
			writer.Node( n * 4099 % LAST_ID, "", n * 4093 % LAST_ID );
		} },
	{ "a frame for each new node, with its timings",
		[]( CRecordingWriter &writer, int32_t n )
		{
			writer.BeginFrame().Node( 0, "n", LAST_ID - n % 100000 ).BeginTimings();
			for ( int32_t i = 0; i <= n + 1; i++ )
				writer.Entry( 1, 1 );
			writer.EndFrame();
		} },
};

// A sampled profile of so many samples, the list that comes first first.
std::string WriteProfile( const CTestFolder &folder, bool bStacksFirst, int nSamples )
{
	const std::string path = folder.Path( "profile.json" );
	std::ofstream file( path, std::ios::binary );
	const auto writeList = [&]( const char *pKey, const char *pItem )
	{
		file << '"' << pKey << "\":[";
		for ( int i = 0; i < nSamples; i++ )
			file << ( i > 0 ? "," : "" ) << pItem;
		file << ']';
	};
	file << R"({"shared":{"frames":[{"name":"a"}]},"profiles":[{"unit":"none",)";
	bStacksFirst ? writeList( "samples", "[0]" ) : writeList( "weights", "4" );
	file << ',';
	bStacksFirst ? writeList( "weights", "4" ) : writeList( "samples", "[0]" );
	file << "}]}";
	return path;
}

// From a million samples on all of them lie on disk; only what is reserved goes a little by the size of the file. A
// list in memory would take 8 MiB more at least.
TEST_F( Memory, OfASampledProfileDoesNotGrowWithItsSamples )
{
	for ( const bool bStacksFirst : { false, true } )
	{
		const auto peakOf = [&]( int nSamples )
		{
			const std::string path = WriteProfile( m_Folder, bStacksFirst, nSamples );
			return PeakMemoryOf( [&] { RunCommand( { "convert", path.c_str(), "-", "--to", "csv" } ); } );
		};
		const int64_t nPeak = peakOf( 1'500'000 );
		EXPECT_LT( std::abs( peakOf( 3'000'000 ) - nPeak ), 4 << 20 ) << "from " << nPeak;
	}
}

TEST_F( Memory, OfAParsedRecordingIs64MebibytesAnd16BytesPerByteAtMost )
{
	constexpr size_t BYTES = 4 << 20;
	for ( const LargeRecording &recording : LARGE_RECORDINGS )
	{
		CRecordingWriter writer = CRecordingWriter().Header();
		for ( int32_t n = 0; writer.m_Bytes.size() < BYTES; n++ )
			recording.m_Append( writer, n );
		const int64_t nPeak = PeakMemoryOf(
			[&]
			{
				CKestoMemoryReader reader( writer.m_Bytes );
				CRefPtr<CKestoFile>::Adopt( new CKestoFile( reader ) );
			} );
		EXPECT_LE( nPeak, MemoryBound( writer.m_Bytes.size() ) ) << recording.m_pName;
	}
}

// One frame in which nodes of that name are inside one another.
std::vector<uint8_t> NestedNodes( int32_t nNodes, const std::string &name )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int32_t n = 1; n <= nNodes; n++ )
		writer.Node( n - 1, name, n );
	writer.BeginTimings();
	for ( int32_t n = 0; n <= nNodes; n++ )
		writer.Entry( 1, static_cast<uint32_t>( nNodes - n + 1 ) );
	return writer.EndFrame().m_Bytes;
}

// The path to a node is up to 64 names long, so the paths to all of them may be far longer than the recording.
TEST_F( Memory, OfListingAllNodesIsBounded )
{
	for ( const std::vector<uint8_t> &bytes :
		{ NestedNodes( 2000, std::string( 1000, 'n' ) ), NestedNodes( 300000, "" ) } )
	{
		const std::string path = m_Folder.Write( "input", bytes );
		const char *pPath = path.c_str();
		for ( const std::vector<const char *> &arguments : std::vector<std::vector<const char *>>{
				  { "info", pPath, "--top", "1000000000" }, { "info", pPath, "--top", "1000000000", "--json" } } )
			EXPECT_LE( PeakMemoryOf( [&] { RunCommand( arguments ); } ), MemoryBound( bytes.size() ) )
				<< ShowArguments( arguments );
		for ( const std::vector<const char *> &arguments : std::vector<std::vector<const char *>>{
				  { "compare", pPath, pPath }, { "compare", pPath, pPath, "--json" } } )
			EXPECT_LE( PeakMemoryOf( [&] { RunCommand( arguments ); } ), MemoryBound( 2 * bytes.size() ) )
				<< ShowArguments( arguments );
	}
}
} // namespace
