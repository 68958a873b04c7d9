// A stream of chunks: what the assembler hands out is what a splitter that sees the whole stream finds, wherever the
// stream is cut (nowhere, once at every byte, behind every byte, at random), and its memory follows the bytes that
// arrived.
//
// The first byte of an input chooses the cuts, the rest is the stream.
#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "require.h"
#include "wire/chunkassembler.h"

namespace
{
using wire::CChunkAssembler;
using wire::HeaderProblem;
using Bytes = std::vector<uint8_t>;

constexpr size_t MAX_CUT = 256; // every place up to here: more than what 20 headers need

std::map<void *, size_t> g_Blocks;
size_t g_nLive = 0;

void *Alloc( size_t nBytes )
{
	void *pBlock = std::malloc( nBytes );
	g_Blocks[pBlock] = nBytes;
	g_nLive += nBytes;
	return pBlock;
}

void Free( void *pBlock )
{
	const auto pFound = g_Blocks.find( pBlock );
	Require( pFound != g_Blocks.end(), "a freed block is live" );
	g_nLive -= pFound->second;
	g_Blocks.erase( pFound );
	std::free( pBlock );
}

// What a message calls a chunk's type: its four characters, or its number where one cannot be printed.
std::string TypeText( const uint8_t *pHeader )
{
	std::string characters( pHeader, pHeader + 4 );
	if ( std::all_of( characters.begin(), characters.end(), []( char c ) { return c >= ' ' && c <= '~'; } ) )
		return characters;
	char number[11];
	std::snprintf( number, sizeof( number ), "0x%02X%02X%02X%02X", pHeader[0], pHeader[1], pHeader[2], pHeader[3] );
	return number;
}

// A header that is read and written again is the same, but for its reserved bytes, which are written as 0.
void CheckHeader( const uint8_t *pHeader )
{
	std::array<uint8_t, wire::CHUNK_HEADER_SIZE> bytes;
	std::copy_n( pHeader, bytes.size(), bytes.begin() );
	wire::ChunkHeader header;
	wire::ReadChunkHeader( bytes, header );
	Require( wire::DescribeChunkType( header.m_nType ).m_Text == TypeText( pHeader ), "a type has its text" );
	std::array<uint8_t, wire::CHUNK_HEADER_SIZE> written;
	wire::WriteChunkHeader( written, header );
	bytes[6] = bytes[7] = 0;
	Require( written == bytes, "what was read can be written" );
}

struct Outcome
{
	std::vector<Bytes> m_Chunks; // with their headers
	HeaderProblem m_Problem = HeaderProblem::None;
	size_t m_nLeft = 0; // bytes of an unfinished chunk

	friend bool operator==( const Outcome &, const Outcome & ) = default;
};

// The layout, read as plainly as can be.
Outcome Split( std::span<const uint8_t> stream )
{
	Outcome outcome;
	size_t nAt = 0;
	while ( stream.size() - nAt >= 12 )
	{
		const uint8_t *p = stream.data() + nAt;
		CheckHeader( p );
		uint64_t nLength = 0;
		for ( int i = 8; i < 12; i++ )
			nLength = nLength * 256 + p[i];
		if ( p[6] != 0 || p[7] != 0 )
			outcome.m_Problem = HeaderProblem::ReservedNotZero;
		else if ( nLength > 64 * 1024 * 1024 )
			outcome.m_Problem = HeaderProblem::TooLong;
		if ( outcome.m_Problem != HeaderProblem::None )
			return outcome;
		if ( stream.size() - nAt < 12 + nLength )
			break;
		outcome.m_Chunks.emplace_back( p, p + 12 + nLength );
		nAt += 12 + nLength;
	}
	outcome.m_nLeft = stream.size() - nAt;
	return outcome;
}

void Feed( CChunkAssembler &assembler, std::span<const uint8_t> piece, Outcome &outcome )
{
	for ( ;; )
	{
		const CChunkAssembler::Result result = assembler.Feed( piece );
		Require( g_nLive <= 2 * assembler.Pending() + 4096, "memory follows the bytes that arrived" );
		if ( result != CChunkAssembler::Result::Chunk )
		{
			const bool bRefused = result == CChunkAssembler::Result::Refused;
			Require( bRefused == ( assembler.Problem() != HeaderProblem::None ), "a refusal has a reason" );
			Require( bRefused || piece.empty(), "all bytes of an unfinished chunk are taken" );
			break;
		}
		uint8_t *pBlock = assembler.TakeBlock();
		outcome.m_Chunks.emplace_back( pBlock, pBlock + wire::CHUNK_HEADER_SIZE + assembler.Header().m_nLength );
		Free( pBlock );
	}
	outcome.m_Problem = assembler.Problem();
	outcome.m_nLeft = outcome.m_Problem == HeaderProblem::None ? assembler.Pending() : 0;
}

// nPattern 0: in one piece; 1: byte by byte; else pieces of changing length.
Outcome Assemble( std::span<const uint8_t> stream, uint32_t nPattern )
{
	CChunkAssembler assembler( { Alloc, Free } );
	Outcome outcome;
	uint32_t nState = nPattern;
	do
	{
		nState = nState * 1664525 + 1013904223;
		const size_t nWanted = nPattern == 0 ? stream.size() : nPattern == 1 ? 1 : ( nState >> 16 ) % 40;
		const size_t nPiece = std::min( nWanted, stream.size() );
		Feed( assembler, stream.first( nPiece ), outcome );
		stream = stream.subspan( nPiece );
	} while ( !stream.empty() );
	return outcome;
}

// In two pieces.
Outcome AssembleCut( std::span<const uint8_t> stream, size_t nCut )
{
	CChunkAssembler assembler( { Alloc, Free } );
	Outcome outcome;
	Feed( assembler, stream.first( nCut ), outcome );
	Feed( assembler, stream.subspan( nCut ), outcome );
	return outcome;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *pData, size_t nSize )
{
	if ( nSize == 0 )
		return 0;
	const std::span<const uint8_t> stream( pData + 1, nSize - 1 );
	const Outcome expected = Split( stream );
	for ( const uint32_t nPattern : { 0u, 1u, 2u + pData[0] } )
		Require( Assemble( stream, nPattern ) == expected, "a cut stream gives the chunks of the whole one" );
	for ( size_t nCut = 0; nCut <= std::min( stream.size(), MAX_CUT ); nCut++ )
		Require( AssembleCut( stream, nCut ) == expected, "and so does one that is cut once" );
	Require( g_Blocks.empty(), "every block is freed" );
	return 0;
}
