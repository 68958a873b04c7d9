#include "wire/chunkassembler.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <ostream>
#include <vector>

#include "support/randomseed.h"

namespace
{
using testing::ElementsAre;
using testing::IsEmpty;
using wire::CChunkAssembler;
using wire::ChunkHeader;
using wire::HeaderProblem;
using Bytes = std::vector<uint8_t>;

// An allocator that counts, and that can refuse.
struct Heap
{
	static void *Alloc( size_t nBytes )
	{
		if ( nBytes > s_nLargestBlock )
			return nullptr;
		void *pBlock = std::malloc( nBytes );
		s_Live[pBlock] = nBytes;
		s_nLive += nBytes;
		s_nPeak = std::max( s_nPeak, s_nLive );
		return pBlock;
	}
	static void Free( void *pBlock )
	{
		const auto pFound = s_Live.find( pBlock );
		if ( pFound == s_Live.end() )
		{
			ADD_FAILURE() << "freed a block that is not live";
			return;
		}
		s_nLive -= pFound->second;
		s_Live.erase( pFound );
		std::free( pBlock );
	}

	inline static std::map<void *, size_t> s_Live;
	inline static size_t s_nLive = 0;
	inline static size_t s_nPeak = 0;
	inline static size_t s_nLargestBlock = SIZE_MAX;
};

constexpr wire::BlockAllocator HEAP{ Heap::Alloc, Heap::Free };

// What comes out of a stream: chunks, then what is left of it.
struct Outcome
{
	std::vector<std::pair<ChunkHeader, Bytes>> m_Chunks; // payloads
	HeaderProblem m_Problem = HeaderProblem::None;
	size_t m_nPending = 0; // of an unfinished chunk; not looked at after a refusal

	friend bool operator==( const Outcome &, const Outcome & ) = default;
	friend void PrintTo( const Outcome &outcome, std::ostream *pOut )
	{
		*pOut << outcome.m_Chunks.size() << " chunks, problem " << static_cast<int>( outcome.m_Problem ) << ", "
			  << outcome.m_nPending << " bytes pending";
	}
};

Bytes Chunk( const ChunkHeader &header, const Bytes &payload )
{
	Bytes bytes( wire::CHUNK_HEADER_SIZE );
	wire::WriteChunkHeader( std::span<uint8_t, wire::CHUNK_HEADER_SIZE>( bytes ), header );
	bytes.insert( bytes.end(), payload.begin(), payload.end() );
	return bytes;
}

Bytes Chunk( uint32_t nType, const Bytes &payload )
{
	return Chunk( { nType, 2, static_cast<uint32_t>( payload.size() ) }, payload );
}

Bytes Header( uint32_t nLength )
{
	return Chunk( { wire::CHUNK_PRINT, 2, nLength }, {} );
}

class ChunkAssembler : public testing::Test
{
protected:
	void SetUp() override
	{
		Heap::s_nLargestBlock = SIZE_MAX;
		Heap::s_nPeak = 0;
	}
	void TearDown() override { EXPECT_THAT( Heap::s_Live, IsEmpty() ); }

	// Feeds one piece and notes what comes out.
	static void FeedPiece( CChunkAssembler &assembler, std::span<const uint8_t> piece, Outcome &outcome )
	{
		for ( ;; )
		{
			const CChunkAssembler::Result result = assembler.Feed( piece );
			if ( result == CChunkAssembler::Result::Chunk )
			{
				uint8_t *pBlock = assembler.TakeBlock();
				const Bytes header( pBlock, pBlock + wire::CHUNK_HEADER_SIZE );
				EXPECT_EQ( header, Chunk( assembler.Header(), {} ) );
				const uint8_t *pPayload = pBlock + wire::CHUNK_HEADER_SIZE;
				outcome.m_Chunks.emplace_back(
					assembler.Header(), Bytes( pPayload, pPayload + assembler.Header().m_nLength ) );
				Heap::Free( pBlock );
				continue;
			}
			EXPECT_TRUE( piece.empty() || result == CChunkAssembler::Result::Refused );
			break;
		}
		outcome.m_Problem = assembler.Problem();
		outcome.m_nPending = outcome.m_Problem == HeaderProblem::None ? assembler.Pending() : 0;
	}

	// Feeds the stream cut at the given places, which ascend.
	static Outcome FeedCut( std::span<const uint8_t> stream, const std::vector<size_t> &cuts )
	{
		CChunkAssembler assembler( HEAP );
		Outcome outcome;
		size_t nFrom = 0;
		for ( const size_t nCut : cuts )
		{
			FeedPiece( assembler, stream.subspan( nFrom, nCut - nFrom ), outcome );
			nFrom = nCut;
		}
		FeedPiece( assembler, stream.subspan( nFrom ), outcome );
		return outcome;
	}

	// Some chunks, among them empty ones, and the beginning of one more.
	static Bytes SomeStream()
	{
		Bytes stream;
		for ( const size_t nLength : { 0u, 1u, 8u, 0u, 0u, 40u, 3u } )
		{
			Bytes payload( nLength );
			for ( size_t i = 0; i < nLength; i++ )
				payload[i] = static_cast<uint8_t>( 31 * nLength + i );
			const Bytes chunk = Chunk( wire::CHUNK_SAMPLE + static_cast<uint32_t>( nLength ), payload );
			stream.insert( stream.end(), chunk.begin(), chunk.end() );
		}
		const Bytes rest = Chunk( wire::CHUNK_PRINT, { 1, 2, 3 } );
		stream.insert( stream.end(), rest.begin(), rest.end() - 1 );
		return stream;
	}
};

TEST_F( ChunkAssembler, HandsOutChunksWholeAndInOrder )
{
	Bytes stream = Chunk( wire::CHUNK_CATEGORIES, { 1, 2, 3 } );
	for ( const Bytes &more : { Chunk( { 0, 7, 0 }, {} ), Chunk( wire::CHUNK_SAMPLE, { 4 } ) } )
		stream.insert( stream.end(), more.begin(), more.end() );
	const Outcome outcome = FeedCut( stream, {} );
	EXPECT_THAT(
		outcome.m_Chunks, ElementsAre( std::pair( ChunkHeader{ wire::CHUNK_CATEGORIES, 2, 3 }, Bytes{ 1, 2, 3 } ),
							  std::pair( ChunkHeader{ 0, 7, 0 }, Bytes{} ),
							  std::pair( ChunkHeader{ wire::CHUNK_SAMPLE, 2, 1 }, Bytes{ 4 } ) ) );
	EXPECT_EQ( outcome.m_nPending, 0u );
}

TEST_F( ChunkAssembler, GivesTheSameForEveryPlaceAtWhichAStreamIsCut )
{
	const Bytes stream = SomeStream();
	const Outcome whole = FeedCut( stream, {} );
	EXPECT_EQ( whole.m_Chunks.size(), 7u );
	EXPECT_EQ( whole.m_nPending, 12u + 2u );
	std::vector<size_t> everyByte;
	for ( size_t nCut = 0; nCut <= stream.size(); nCut++ )
	{
		EXPECT_EQ( FeedCut( stream, { nCut } ), whole ) << "cut at " << nCut;
		everyByte.push_back( nCut );
	}
	EXPECT_EQ( FeedCut( stream, everyByte ), whole );
}

TEST_F( ChunkAssembler, GivesTheSameForRandomCutsOfRandomStreams )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	const auto below = [&random]( size_t nLimit )
	{ return std::uniform_int_distribution<size_t>( 0, nLimit - 1 )( random ); };
	for ( int nRound = 0; nRound < 100; nRound++ )
	{
		Bytes stream;
		Outcome expected;
		for ( size_t nChunks = below( 8 ); nChunks > 0; nChunks-- )
		{
			Bytes payload( below( 4 ) == 0 ? below( 30000 ) : below( 60 ) );
			for ( uint8_t &nByte : payload )
				nByte = static_cast<uint8_t>( random() );
			const ChunkHeader header{ static_cast<uint32_t>( random() ), static_cast<uint16_t>( random() ),
				static_cast<uint32_t>( payload.size() ) };
			const Bytes chunk = Chunk( header, payload );
			stream.insert( stream.end(), chunk.begin(), chunk.end() );
			expected.m_Chunks.emplace_back( header, payload );
		}
		if ( below( 2 ) == 0 ) // a refused one at the end, and bytes that nobody may look at
		{
			const Bytes refused = Header( wire::MAX_CHUNK_LENGTH + 1 );
			stream.insert( stream.end(), refused.begin(), refused.end() );
			stream.resize( stream.size() + below( 40 ), 0x55 );
			expected.m_Problem = HeaderProblem::TooLong;
		}
		std::vector<size_t> cuts( below( 20 ) );
		for ( size_t &nCut : cuts )
			nCut = below( stream.size() + 1 );
		std::sort( cuts.begin(), cuts.end() );
		ASSERT_EQ( FeedCut( stream, cuts ), expected ) << "in round " << nRound;
	}
}

TEST_F( ChunkAssembler, TakesNothingFromNothing )
{
	CChunkAssembler assembler( HEAP );
	std::span<const uint8_t> nothing;
	EXPECT_EQ( assembler.Feed( nothing ), CChunkAssembler::Result::NeedMore );
	EXPECT_EQ( assembler.Pending(), 0u );
}

TEST_F( ChunkAssembler, LeavesTheBytesBehindAChunk )
{
	Bytes stream = Chunk( wire::CHUNK_PRINT, { 1, 2 } );
	stream.insert( stream.end(), { 8, 9 } );
	CChunkAssembler assembler( HEAP );
	std::span<const uint8_t> bytes = stream;
	EXPECT_EQ( assembler.Feed( bytes ), CChunkAssembler::Result::Chunk );
	EXPECT_THAT( bytes, ElementsAre( 8, 9 ) );
	EXPECT_EQ( assembler.Feed( bytes ), CChunkAssembler::Result::Chunk ) << "until the block is taken";
	EXPECT_THAT( bytes, ElementsAre( 8, 9 ) );
	Heap::Free( assembler.TakeBlock() );
	EXPECT_EQ( assembler.Feed( bytes ), CChunkAssembler::Result::NeedMore );
	EXPECT_EQ( assembler.Pending(), 2u );
}

TEST_F( ChunkAssembler, FreesAChunkThatNobodyTook )
{
	const Bytes stream = Chunk( wire::CHUNK_PRINT, { 1, 2 } );
	CChunkAssembler assembler( HEAP );
	std::span<const uint8_t> bytes = stream;
	EXPECT_EQ( assembler.Feed( bytes ), CChunkAssembler::Result::Chunk );
	EXPECT_EQ( Heap::s_Live.size(), 1u ); // TearDown sees that it goes with the assembler
}

TEST_F( ChunkAssembler, RefusesAnAnnouncementOfMoreThan64MiBAndStaysSo )
{
	CChunkAssembler assembler( HEAP );
	const Bytes header = Header( ( 64u << 20 ) + 1 );
	std::span<const uint8_t> bytes = header;
	EXPECT_EQ( assembler.Feed( bytes ), CChunkAssembler::Result::Refused );
	EXPECT_EQ( assembler.Problem(), HeaderProblem::TooLong );
	EXPECT_EQ( assembler.Header().m_nLength, 67108865u );
	EXPECT_EQ( Heap::s_nPeak, 0u );

	const Bytes good = Chunk( wire::CHUNK_PRINT, { 1 } );
	bytes = good;
	EXPECT_EQ( assembler.Feed( bytes ), CChunkAssembler::Result::Refused );
	EXPECT_EQ( bytes.size(), good.size() ) << "nothing is taken any more";
}

TEST_F( ChunkAssembler, RefusesAHeaderWhoseReservedBytesAreNotZero )
{
	CChunkAssembler assembler( HEAP );
	const Bytes text{ 'G', 'E', 'T', ' ', '/', ' ', 'H', 'T', 'T', 'P', '/', '1' };
	std::span<const uint8_t> bytes = text;
	EXPECT_EQ( assembler.Feed( bytes ), CChunkAssembler::Result::Refused );
	EXPECT_EQ( assembler.Problem(), HeaderProblem::ReservedNotZero );
	EXPECT_STREQ( wire::DescribeChunkType( assembler.Header().m_nType ).m_Text, "GET " );
}

TEST_F( ChunkAssembler, AnAnnouncementAloneCostsNoMemory )
{
	CChunkAssembler assembler( HEAP );
	const Bytes header = Header( 64u << 20 );
	std::span<const uint8_t> bytes = header;
	EXPECT_EQ( assembler.Feed( bytes ), CChunkAssembler::Result::NeedMore );
	EXPECT_EQ( Heap::s_nPeak, 0u );
	EXPECT_EQ( assembler.Pending(), 12u );
}

TEST_F( ChunkAssembler, MemoryGrowsWithTheBytesThatArrive )
{
	CChunkAssembler assembler( HEAP );
	const Bytes header = Header( 64u << 20 );
	std::span<const uint8_t> bytes = header;
	ASSERT_EQ( assembler.Feed( bytes ), CChunkAssembler::Result::NeedMore );
	const Bytes piece( 5000, 7 );
	for ( size_t nArrived = 0; nArrived < 300'000; nArrived += piece.size() )
	{
		bytes = piece;
		ASSERT_EQ( assembler.Feed( bytes ), CChunkAssembler::Result::NeedMore );
		// Doubling: at most twice what is there, and the old block beside the new one while it is copied.
		ASSERT_LE( Heap::s_nLive, 2 * assembler.Pending() + 4096 );
		ASSERT_LE( Heap::s_nPeak, 3 * assembler.Pending() + 4096 );
	}
}

TEST_F( ChunkAssembler, ABlockIsNeverLargerThanItsChunk )
{
	const Bytes payload( 5000, 7 );
	const Bytes chunk = Chunk( wire::CHUNK_PRINT, payload );
	CChunkAssembler assembler( HEAP );
	for ( const auto &[nFrom, nCount] : { std::pair<size_t, size_t>{ 0, 13 }, { 13, 4500 }, { 4513, 499 } } )
	{
		std::span<const uint8_t> bytes = std::span( chunk ).subspan( nFrom, nCount );
		assembler.Feed( bytes );
	}
	EXPECT_EQ( Heap::s_nLive, chunk.size() );
	Heap::Free( assembler.TakeBlock() );
}

TEST_F( ChunkAssembler, AChunkOf64MiBArrivesWhole )
{
	const Bytes payload( 64u << 20, 0x5A );
	const Bytes stream = Chunk( wire::CHUNK_MINIPROFILER, payload );
	CChunkAssembler assembler( HEAP );
	std::span<const uint8_t> bytes = std::span( stream ).first( 1'000'000 );
	ASSERT_EQ( assembler.Feed( bytes ), CChunkAssembler::Result::NeedMore );
	bytes = std::span( stream ).subspan( 1'000'000 );
	ASSERT_EQ( assembler.Feed( bytes ), CChunkAssembler::Result::Chunk );
	uint8_t *pBlock = assembler.TakeBlock();
	EXPECT_TRUE( std::equal( stream.begin(), stream.end(), pBlock ) );
	Heap::Free( pBlock );
}

TEST_F( ChunkAssembler, RefusesAChunkForWhichThereIsNoMemory )
{
	Heap::s_nLargestBlock = 10'000;
	CChunkAssembler assembler( HEAP );
	const Bytes stream = Chunk( wire::CHUNK_PRINT, Bytes( 20'000, 1 ) );
	std::span<const uint8_t> bytes = std::span( stream ).first( 6000 );
	EXPECT_EQ( assembler.Feed( bytes ), CChunkAssembler::Result::NeedMore );
	bytes = std::span( stream ).subspan( 6000 );
	EXPECT_EQ( assembler.Feed( bytes ), CChunkAssembler::Result::Refused );
	EXPECT_EQ( assembler.Problem(), HeaderProblem::NoMemory );
	EXPECT_EQ( assembler.Feed( bytes ), CChunkAssembler::Result::Refused );
}
} // namespace
