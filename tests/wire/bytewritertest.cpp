#include "wire/bytewriter.h"

#include <gmock/gmock.h>

#include <array>

namespace
{
using testing::Each;
using testing::ElementsAre;
using wire::CByteWriter;

TEST( ByteWriter, WritesNumbersInTheirByteOrder )
{
	std::array<uint8_t, 31> out{};
	CByteWriter writer( out );
	writer.U8( 0x01 );
	writer.U16BigEndian( 0x0203 );
	writer.U32BigEndian( 0x04050607 );
	writer.U64BigEndian( 0x08090A0B0C0D0E0F );
	writer.FloatBigEndian( -2.0f ); // sign, exponent 128, no mantissa: 0xC0000000
	writer.U32LittleEndian( 0x04050607 );
	writer.U64LittleEndian( 0x08090A0B0C0D0E0F );
	EXPECT_THAT( out, ElementsAre( 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0xC0, 0, 0, 0, 7, 6, 5, 4, 15, 14,
						  13, 12, 11, 10, 9, 8 ) );
	EXPECT_EQ( writer.Size(), out.size() );
	EXPECT_FALSE( writer.Overflowed() );
}

TEST( ByteWriter, WritesTextsWithoutATerminatorAndZeros )
{
	std::array<uint8_t, 5> out{ 9, 9, 9, 9, 9 };
	CByteWriter writer( out );
	writer.Text( "ab" );
	writer.Text( "" );
	writer.Zeros( 2 );
	EXPECT_THAT( out, ElementsAre( 'a', 'b', 0, 0, 9 ) );
	EXPECT_EQ( writer.Size(), 4u );
}

TEST( ByteWriter, LeavesOutWholeWhatDoesNotFitAndEverythingAfterIt )
{
	std::array<uint8_t, 6> out{};
	CByteWriter writer( std::span<uint8_t>( out ).first( 5 ) );
	writer.U16BigEndian( 0x0102 );
	writer.U32BigEndian( 0xFFFFFFFF );
	EXPECT_TRUE( writer.Overflowed() );
	writer.U8( 0xFF );
	writer.Text( "x" );
	writer.Zeros( 1 );
	EXPECT_TRUE( writer.Overflowed() );
	EXPECT_EQ( writer.Size(), 2u );
	EXPECT_THAT( out, ElementsAre( 1, 2, 0, 0, 0, 0 ) );
}

TEST( ByteWriter, ASizeThatWouldWrapAroundDoesNotFit )
{
	std::array<uint8_t, 4> out{};
	CByteWriter writer( out );
	writer.U8( 1 );
	writer.Zeros( SIZE_MAX );
	EXPECT_TRUE( writer.Overflowed() );
	EXPECT_EQ( writer.Size(), 1u );
}

TEST( ByteWriter, NothingFitsIntoNothing )
{
	CByteWriter writer( {} );
	writer.Text( "" );
	writer.Zeros( 0 );
	EXPECT_FALSE( writer.Overflowed() );
	writer.U8( 1 );
	EXPECT_TRUE( writer.Overflowed() );
}
} // namespace
