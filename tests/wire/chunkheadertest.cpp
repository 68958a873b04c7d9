#include "wire/chunkheader.h"

#include <gmock/gmock.h>

#include <array>

namespace
{
using testing::ElementsAre;
using wire::ChunkHeader;
using wire::HeaderProblem;
using HeaderBytes = std::array<uint8_t, wire::CHUNK_HEADER_SIZE>;

TEST( ChunkTypes, HaveTheFirstCharacterInTheMostSignificantByte )
{
	EXPECT_EQ( wire::CHUNK_CATEGORIES, 0x50434154u );
	EXPECT_EQ( wire::CHUNK_SAMPLE, 0x50435055u );
	EXPECT_EQ( wire::CHUNK_MINIPROFILER, 0x504D5046u );
	EXPECT_EQ( wire::CHUNK_SAMPLING, 0x4B53544Fu );
	EXPECT_EQ( wire::CHUNK_MINIPROFILER_CONTROL, 0x4B4D5043u );
	EXPECT_EQ( wire::CHUNK_MINIPROFILER_NAMES, 0x4B4D504Eu );
	EXPECT_EQ( wire::CHUNK_HELLO, 0x48454C4Fu );
	EXPECT_EQ( wire::CHUNK_PRINT, 0x50524E54u );
	EXPECT_EQ( wire::CHUNK_DROPPED, 0x44524F50u );
	EXPECT_EQ( wire::CHUNK_COMMAND, 0x434D4E44u );
	EXPECT_EQ( wire::FourCC( "\xFF\x80z~" ), 0xFF807A7Eu );
}

TEST( ChunkHeaders, AreTwelveBigEndianBytes )
{
	HeaderBytes bytes{};
	bytes.fill( 0xEE );
	wire::WriteChunkHeader( bytes, { wire::CHUNK_CATEGORIES, 0x0102, 0x03040506 } );
	EXPECT_THAT( bytes, ElementsAre( 'P', 'C', 'A', 'T', 1, 2, 0, 0, 3, 4, 5, 6 ) );
}

TEST( ChunkHeaders, AreReadAsTheyWereWritten )
{
	for ( const ChunkHeader &header : { ChunkHeader{ 0, 0, 0 }, ChunkHeader{ 0xFFFFFFFF, 0xFFFF, 1 },
			  ChunkHeader{ wire::CHUNK_PRINT, 2, wire::MAX_CHUNK_LENGTH } } )
	{
		HeaderBytes bytes{};
		wire::WriteChunkHeader( bytes, header );
		ChunkHeader read{ 1, 1, 1 };
		EXPECT_EQ( wire::ReadChunkHeader( bytes, read ), HeaderProblem::None );
		EXPECT_EQ( read, header );
	}
}

TEST( ChunkHeaders, AreRefusedWhenAReservedByteIsNotZero )
{
	for ( const size_t nReserved : { 6u, 7u } )
	{
		HeaderBytes bytes{ 'P', 'C', 'A', 'T', 0, 2, 0, 0, 0, 0, 0, 9 };
		bytes[nReserved] = 1;
		ChunkHeader read;
		EXPECT_EQ( wire::ReadChunkHeader( bytes, read ), HeaderProblem::ReservedNotZero );
		EXPECT_EQ( read, ( ChunkHeader{ wire::CHUNK_CATEGORIES, 2, 9 } ) ) << "filled for the message";
	}
}

TEST( ChunkHeaders, AreRefusedWhenThePayloadIsOver64MiB )
{
	HeaderBytes bytes{};
	ChunkHeader read;
	wire::WriteChunkHeader( bytes, { wire::CHUNK_PRINT, 2, 67108864 } );
	EXPECT_EQ( wire::ReadChunkHeader( bytes, read ), HeaderProblem::None );
	for ( const uint32_t nTooLong : { 67108865u, 0xFFFFFFFFu } )
	{
		wire::WriteChunkHeader( bytes, { wire::CHUNK_PRINT, 2, nTooLong } );
		EXPECT_EQ( wire::ReadChunkHeader( bytes, read ), HeaderProblem::TooLong );
		EXPECT_EQ( read.m_nLength, nTooLong );
	}
}

TEST( ChunkTypes, AreDescribedByTheirCharactersOrElseTheirNumber )
{
	EXPECT_STREQ( wire::DescribeChunkType( wire::CHUNK_SAMPLE ).m_Text, "PCPU" );
	EXPECT_STREQ( wire::DescribeChunkType( wire::FourCC( " ~a1" ) ).m_Text, " ~a1" );
	EXPECT_STREQ( wire::DescribeChunkType( 1 ).m_Text, "0x00000001" );
	EXPECT_STREQ( wire::DescribeChunkType( 0x5043411F ).m_Text, "0x5043411F" );
	EXPECT_STREQ( wire::DescribeChunkType( 0x7F434154 ).m_Text, "0x7F434154" );
	EXPECT_STREQ( wire::DescribeChunkType( 0x50C34154 ).m_Text, "0x50C34154" );
}
} // namespace
