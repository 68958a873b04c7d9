// Runs a fuzz target over files and folders of inputs, for builds without libFuzzer.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *pData, size_t nSize );

namespace
{
int g_nReplayed = 0;

void ReplayFile( const std::filesystem::path &path )
{
	std::ifstream file( path, std::ios::binary );
	if ( !file )
	{
		std::fprintf( stderr, "%s cannot be read\n", path.c_str() );
		std::exit( 1 );
	}
	const std::vector<char> bytes{ std::istreambuf_iterator<char>( file ), {} };
	LLVMFuzzerTestOneInput( reinterpret_cast<const uint8_t *>( bytes.data() ), bytes.size() );
	g_nReplayed++;
}

void Replay( const std::filesystem::path &path )
{
	if ( !std::filesystem::is_directory( path ) )
		return ReplayFile( path );
	for ( const auto &entry : std::filesystem::directory_iterator( path ) )
		Replay( entry.path() );
}
} // namespace

// Status 1 when there was nothing to replay: a corpus that went missing must not look like a pass.
int main( int nArguments, char **ppArguments )
{
	for ( int i = 1; i < nArguments; i++ )
		Replay( ppArguments[i] );
	std::printf( "%d inputs replayed\n", g_nReplayed );
	return g_nReplayed > 0 ? 0 : 1;
}
