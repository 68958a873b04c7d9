// A trace that a real tool writes while the test runs, and one of a million scopes.
#include <gmock/gmock.h>
#include <rapidjson/document.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "tests/convert/conversions.h"

namespace
{
std::string ReadFile( const std::string &path )
{
	std::ostringstream text;
	text << std::ifstream( path, std::ios::binary ).rdbuf();
	return text.str();
}

// What a compiler says of its work on a small program with a few templates.
std::string CompilerTrace()
{
	const std::string folder = testing::TempDir();
	std::ofstream( folder + "traced.cpp" )
		<< "#include <algorithm>\n#include <map>\n#include <string>\n#include <vector>\n"
		   "int main() { std::map<std::string, std::vector<int>> m; m[\"a\"] = { 3, 1, 2 };\n"
		   "std::sort( m[\"a\"].begin(), m[\"a\"].end() ); return m[\"a\"][0]; }\n";
	const std::string command = std::string( CLANG_PROGRAM ) +
								" -O1 -std=c++20 -ftime-trace -ftime-trace-granularity=50 -c -o \"" + folder +
								"traced.o\" \"" + folder + "traced.cpp\"";
	EXPECT_EQ( std::system( command.c_str() ), 0 );
	return ReadFile( folder + "traced.json" );
}
} // namespace

TEST( RealTraces, TheTimesOfACompilerAreThoseThatItWrote )
{
	const std::string text = CompilerTrace();
	rapidjson::Document document;
	ASSERT_FALSE( document.Parse( text.c_str() ).HasParseError() );
	// Of each thread, in microseconds: what the scopes of a name sum up to, where no scope is inside one of its own
	// name.
	std::string mainThread;
	std::map<std::string, int64_t> sums;
	for ( const auto &event : document["traceEvents"].GetArray() )
	{
		const std::string name = event["name"].GetString();
		if ( event["ph"].GetString() != std::string( "X" ) )
			continue;
		if ( name == "ExecuteCompiler" )
			mainThread = std::to_string( event["tid"].GetInt64() );
		if ( name == "ExecuteCompiler" || name == "Frontend" || name == "Backend" )
			sums[name] += event["dur"].GetInt64();
	}
	ASSERT_FALSE( mainThread.empty() );

	convert::ConversionOptions options;
	options.m_Cut.m_Threads = { mainThread };
	const Conversion conversion = ConvertText( text, options );
	ASSERT_TRUE( conversion.m_bDone ) << conversion.m_Problem.m_Text;
	EXPECT_FALSE( conversion.m_Report.IsDamaged() ) << conversion.m_Report.Lines().front();
	const std::vector<FrameFigures> frames = FramesOf( conversion.m_Bytes );
	ASSERT_EQ( frames.size(), 1u );
	for ( const char *pName : { "ExecuteCompiler", "Frontend", "Backend" } )
	{
		int64_t nSum = 0;
		for ( const auto &[path, figures] : frames[0] )
			if ( path == pName || path.ends_with( std::string( "/" ) + pName ) )
				nSum += figures.second;
		EXPECT_NEAR( static_cast<double>( nSum ), static_cast<double>( sums[pName] ), 4.0 * 4 ) << pName;
	}
	EXPECT_THAT( TopNodes( conversion.m_Bytes ), testing::Contains( "ExecuteCompiler" ) );
	EXPECT_EQ( frames[0].count( "ExecuteCompiler/Frontend" ), 1u );
}

TEST( RealTraces, FiveHundredThousandNestedScopesAreANodeEach )
{
	constexpr int DEPTH = 500'000;
	std::string text = "[";
	for ( int i = 0; i < DEPTH; i++ )
		text += "{\"name\":\"n\",\"ph\":\"B\",\"ts\":" + std::to_string( 4 * i ) + ",\"pid\":1,\"tid\":1},\n";
	for ( int i = 0; i < DEPTH; i++ )
		text += "{\"ph\":\"E\",\"ts\":" + std::to_string( 4 * ( DEPTH + i ) ) + ",\"pid\":1,\"tid\":1}" +
				( i + 1 < DEPTH ? ",\n" : "]" );
	const Conversion conversion = ConvertText( text );
	ASSERT_TRUE( conversion.m_bDone );
	EXPECT_FALSE( conversion.m_Report.IsDamaged() );
	// Header, frame, a node: token, parent, "n", value, id; an entry: 3 bytes, or 7 from 65535 units on.
	const size_t nLong =
		1 + static_cast<size_t>( DEPTH ) - 65534 / 2; // the scope at depth d takes 2 (DEPTH - d) - 1 units
	const size_t nExpected = 8 + 5 + size_t{ 15 } * DEPTH + 1 + 3 * ( size_t{ DEPTH } + 1 ) + 4 * nLong + 1;
	EXPECT_NEAR( static_cast<double>( conversion.m_Bytes.size() ), static_cast<double>( nExpected ), 8.0 );
}

#if !defined( __SANITIZE_ADDRESS__ ) && !defined( __clang__ )
TEST( RealTraces, MemoryStaysBelowAQuarterOfALargeFile )
{
	const std::string folder = testing::TempDir();
	const std::string path = folder + "large.json";
	const std::string output = folder + "large.kesto";
	std::FILE *pFile = std::fopen( path.c_str(), "w" );
	ASSERT_NE( pFile, nullptr );
	std::fputs( "[\n", pFile );
	for ( int i = 0; i < 1'600'000; i++ ) // written as they end, so that all have to be sorted
		std::fprintf( pFile,
			"{\"name\":\"Update part "
			"%d\",\"cat\":\"game,physics\",\"ph\":\"X\",\"ts\":%d,\"dur\":%d,\"pid\":4242,\"tid\":77,"
			"\"args\":{\"detail\":\"/usr/share/game/objects/%d\"}},\n",
			i % 1000, i % 2 ? ( i - 1 ) * 10 : i * 10 + 4, i % 2 ? 18 : 8, i );
	std::fputs( "{\"name\":\"end\",\"ph\":\"i\",\"ts\":0,\"pid\":4242,\"tid\":77}]\n", pFile );
	const long nSize = std::ftell( pFile );
	std::fclose( pFile );
	ASSERT_GT( nSize, 220 << 20 );

	const pid_t nChild = fork();
	if ( nChild == 0 )
	{
		execl( KESTO_PROGRAM, KESTO_PROGRAM, "convert", path.c_str(), output.c_str(), nullptr );
		_exit( 99 );
	}
	int nStatus = 0;
	rusage usage{};
	ASSERT_EQ( wait4( nChild, &nStatus, 0, &usage ), nChild );
	EXPECT_EQ( WEXITSTATUS( nStatus ), 0 );
	EXPECT_LT( usage.ru_maxrss * 1024, nSize / 4 );
	EXPECT_EQ( TopNodes( ReadFile( output ) ).size(), 500u )
		<< "every other scope is inside the one that is written after it";
	std::remove( path.c_str() );
	std::remove( output.c_str() );
}
#endif
