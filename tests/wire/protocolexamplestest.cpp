// The byte dumps of docs/protocol.md are what the writers write.
#include <gmock/gmock.h>

#include <cctype>
#include <fstream>
#include <map>
#include <set>
#include <string>

#include "wire/budgetchunks.h"
#include "wire/bytewriter.h"
#include "wire/chunkheader.h"
#include "wire/controlchunks.h"
#include "wire/sessionchunks.h"

namespace
{
using testing::ElementsAreArray;
using Bytes = std::vector<uint8_t>;

// The bytes at the front of a dump's line; what follows three blanks is a remark.
void AppendDumpLine( Bytes &bytes, const std::string &line )
{
	const std::string dump = line.substr( 0, line.find( "   " ) );
	for ( size_t i = 0; i + 1 < dump.size(); i++ )
		if ( std::isxdigit( static_cast<unsigned char>( dump[i] ) ) )
			bytes.push_back( static_cast<uint8_t>( std::stoi( dump.substr( i++, 2 ), nullptr, 16 ) ) );
}

// The blocks that begin with "```hex NAME".
std::map<std::string, Bytes> Dumps()
{
	const std::string opening = "```hex ";
	std::map<std::string, Bytes> dumps;
	std::ifstream file( PROTOCOL_PAGE );
	std::string name;
	for ( std::string line; std::getline( file, line ); )
		if ( line.starts_with( opening ) )
			name = line.substr( opening.size() );
		else if ( line.starts_with( "```" ) )
			name.clear();
		else if ( !name.empty() )
			AppendDumpLine( dumps[name], line );
	return dumps;
}

Bytes Chunk( uint32_t nType, std::span<const uint8_t> payload )
{
	Bytes bytes( wire::CHUNK_HEADER_SIZE );
	wire::WriteChunkHeader( std::span<uint8_t, wire::CHUNK_HEADER_SIZE>( bytes ),
		{ nType, wire::CHUNK_VERSION, static_cast<uint32_t>( payload.size() ) } );
	bytes.insert( bytes.end(), payload.begin(), payload.end() );
	return bytes;
}

void ExpectDump( const std::string &name, const Bytes &expected )
{
	const std::map<std::string, Bytes> dumps = Dumps();
	ASSERT_TRUE( dumps.contains( name ) ) << "no dump of " << name;
	EXPECT_THAT( dumps.at( name ), ElementsAreArray( expected ) );
}

TEST( ProtocolPage, HasADumpOfEveryChunk )
{
	std::set<std::string> names;
	for ( const auto &[name, bytes] : Dumps() )
		names.insert( name );
	EXPECT_THAT( names, testing::UnorderedElementsAre( "HELO", "HELO-token", "HELO-refusal", "PCAT", "PCPU", "PMPF",
							"PRNT", "DROP", "BEAT", "KSTO", "KMPC", "KMPN", "CMND" ) );
}

TEST( ProtocolPage, ItsHelloIsRight )
{
	ExpectDump( "HELO", Chunk( wire::CHUNK_HELLO, wire::WriteHello( { 2, 4660, 1'000'000'000, "demo" } ) ) );
}

TEST( ProtocolPage, ItsHelloWithATokenIsRight )
{
	ExpectDump( "HELO-token", Chunk( wire::CHUNK_HELLO, wire::WriteHello( { 2, 81, 0, "desk", "open" } ) ) );
}

TEST( ProtocolPage, ItsRefusalIsRight )
{
	ExpectDump( "HELO-refusal",
		Chunk( wire::CHUNK_HELLO, wire::WriteHello( { 2, 4660, 1'000'000'000, "demo", "", "wrong token" } ) ) );
}

TEST( ProtocolPage, ItsBudgetChunksAreRight )
{
	const wire::Category physics{ "Physics", 230, 120, 20 };
	Bytes payload( wire::CategoriesSize( 1 ) );
	wire::WriteCategories( payload, { &physics, 1 } );
	ExpectDump( "PCAT", Chunk( wire::CHUNK_CATEGORIES, payload ) );

	const uint32_t nTime = 2500;
	payload.resize( wire::SampleSize( 1 ) );
	wire::WriteSample( payload, false, 60.0f, { &nTime, 1 } );
	ExpectDump( "PCPU", Chunk( wire::CHUNK_SAMPLE, payload ) );
}

TEST( ProtocolPage, ItsRequestsAreRight )
{
	ExpectDump( "KSTO", Chunk( wire::CHUNK_SAMPLING, wire::WriteSamplingRequest( { true, {} } ) ) );
	ExpectDump( "KMPC", Chunk( wire::CHUNK_MINIPROFILER_CONTROL, wire::WriteMiniProfilerControl( true ) ) );
	const uint64_t nId = 0x1000;
	Bytes payload( wire::NAME_REQUEST_SIZE );
	wire::WriteNameRequests( payload, { &nId, 1 } );
	ExpectDump( "KMPN", Chunk( wire::CHUNK_MINIPROFILER_NAMES, payload ) );
}

TEST( ProtocolPage, ItsTextsAreRight )
{
	ExpectDump( "PRNT", Chunk( wire::CHUNK_PRINT, wire::WritePrint( wire::PrintSeverity::Warning, "low on\n" ) ) );
	ExpectDump( "CMND", Chunk( wire::CHUNK_COMMAND, Bytes{ 'h', 'e', 'l', 'p' } ) );
	ExpectDump( "DROP", Chunk( wire::CHUNK_DROPPED, wire::WriteDropped( 256 ) ) );
	ExpectDump( "BEAT", Chunk( wire::CHUNK_BEAT, std::span<const uint8_t>() ) );
}

TEST( ProtocolPage, ItsMiniProfilerFrameIsRight )
{
	using namespace std::string_view_literals;
	constexpr uint64_t ID = 0x1000;
	constexpr uint32_t DATA_END = 8 + 8 + 24 + 36; // service time, sub-record header, data header, one entry
	constexpr std::string_view NAME = "solve\0Physics\nSolve\na.c\n7\ngame\n\0"sv;
	constexpr uint32_t NAMES_END = DATA_END + 8 + 12 + 16 + static_cast<uint32_t>( NAME.size() );
	Bytes payload( NAMES_END );
	wire::CByteWriter writer( payload );
	writer.U64LittleEndian( 500 );
	writer.U32LittleEndian( 0 );
	writer.U32LittleEndian( DATA_END );
	writer.Text( "1SMK" );
	writer.U32LittleEndian( 1 );
	writer.Zeros( 8 );
	writer.U32LittleEndian( 1 );
	writer.U32LittleEndian( 1 );
	writer.Zeros( 4 );
	writer.U64LittleEndian( ID );
	writer.U64LittleEndian( 0 );
	writer.U64LittleEndian( 2'500'000 );
	writer.U64LittleEndian( 3 );
	writer.U32LittleEndian( 1 );
	writer.U32LittleEndian( NAMES_END );
	writer.U64LittleEndian( 1'000'000'000 );
	writer.U32LittleEndian( 1 );
	writer.U64LittleEndian( ID );
	writer.U64LittleEndian( 0 );
	writer.Text( NAME );
	ASSERT_EQ( writer.Size(), payload.size() );
	ASSERT_FALSE( writer.Overflowed() );
	ExpectDump( "PMPF", Chunk( wire::CHUNK_MINIPROFILER, payload ) );
}
} // namespace
