#include "wire/controlchunks.h"

#include <gmock/gmock.h>

#include <vector>

namespace
{
using testing::ElementsAre;
using Bytes = std::vector<uint8_t>;

TEST( SamplingChunk, IsAStartByteAndTwoOptions )
{
	EXPECT_THAT( wire::WriteSamplingRequest( { true, {} } ), ElementsAre( 1, 0, 0 ) );
	EXPECT_THAT( wire::WriteSamplingRequest( { false, {} } ), ElementsAre( 0, 0, 0 ) );
	EXPECT_THAT( wire::WriteSamplingRequest( { true, { 7, 8 } } ), ElementsAre( 1, 7, 8 ) );
}

TEST( SamplingChunk, IsReadAndMayBeLongerButNotShorter )
{
	const auto start = wire::ReadSamplingRequest( Bytes{ 1, 5, 6, 99 } );
	ASSERT_TRUE( start );
	EXPECT_TRUE( start->m_bStart );
	EXPECT_THAT( start->m_Options, ElementsAre( 5, 6 ) );
	EXPECT_FALSE( wire::ReadSamplingRequest( Bytes{ 0, 1, 1 } )->m_bStart );
	EXPECT_TRUE( wire::ReadSamplingRequest( Bytes{ 255, 0, 0 } )->m_bStart );
	EXPECT_FALSE( wire::ReadSamplingRequest( Bytes{ 1, 0 } ) );
	EXPECT_FALSE( wire::ReadSamplingRequest( {} ) );
}

TEST( MiniProfilerControlChunk, HasItsFlagInByte4 )
{
	EXPECT_THAT( wire::WriteMiniProfilerControl( true ), ElementsAre( 0, 0, 0, 0, 1, 0, 0, 0 ) );
	EXPECT_THAT( wire::WriteMiniProfilerControl( false ), ElementsAre( 0, 0, 0, 0, 0, 0, 0, 0 ) );
}

TEST( MiniProfilerControlChunk, IsReadWhateverStandsInTheBytesWithoutMeaning )
{
	EXPECT_EQ( wire::ReadMiniProfilerControl( Bytes{ 9, 9, 9, 9, 1, 9, 9, 9 } ), true );
	EXPECT_EQ( wire::ReadMiniProfilerControl( Bytes{ 9, 9, 9, 9, 0, 9, 9, 9, 1 } ), false );
	EXPECT_EQ( wire::ReadMiniProfilerControl( Bytes{ 0, 0, 0, 0, 1, 0, 0 } ), std::nullopt );
	EXPECT_EQ( wire::ReadMiniProfilerControl( {} ), std::nullopt );
}

TEST( NameRequestChunk, IsLittleEndianIdsUpToItsEnd )
{
	const Bytes payload{ 1, 2, 3, 4, 5, 6, 7, 8, 0xFF, 0, 0, 0, 0, 0, 0, 0x80, 42 };
	ASSERT_EQ( wire::NameRequestCount( payload ), 2u ) << "the rest is no id";
	EXPECT_EQ( wire::ReadNameRequest( payload, 0 ), 0x0807060504030201u );
	EXPECT_EQ( wire::ReadNameRequest( payload, 1 ), 0x80000000000000FFu );
	EXPECT_EQ( wire::NameRequestCount( {} ), 0u );
	EXPECT_EQ( wire::NameRequestCount( Bytes( 7 ) ), 0u );
}

TEST( NameRequestChunk, IsReadAsItWasWritten )
{
	const std::vector<uint64_t> ids{ 1, UINT64_MAX, 0x123456789ABCDEF0 };
	Bytes out( 3 * wire::NAME_REQUEST_SIZE );
	ASSERT_EQ( wire::WriteNameRequests( out, ids ), 24u );
	for ( size_t i = 0; i < ids.size(); i++ )
		EXPECT_EQ( wire::ReadNameRequest( out, i ), ids[i] );
	out.pop_back();
	EXPECT_EQ( wire::WriteNameRequests( out, ids ), 0u );
	EXPECT_EQ( wire::WriteNameRequests( {}, {} ), 0u );
}
} // namespace
