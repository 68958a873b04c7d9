#include "keel0/strtools.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <string>

#include "keel0/bufferstring.h"
#include "keel0/utlstring.h"

namespace
{
// In the "C" locale, in which tests run, no byte stands for this character.
constexpr wchar_t UNPRINTABLE[] = { static_cast<wchar_t>( 0x20AC ), 0 };

TEST( Snprintf, ReturnsTheBytesWrittenAndCutsWhatDoesNotFit )
{
	std::array<char, 6> buffer{};
	EXPECT_EQ( V_snprintf( buffer.data(), buffer.size(), "%d", 12345 ), 5 );
	EXPECT_STREQ( buffer.data(), "12345" );
	const std::string longText = "123456789";
	EXPECT_EQ( V_snprintf( buffer.data(), buffer.size(), "%s", longText.c_str() ), 5 );
	EXPECT_STREQ( buffer.data(), "12345" );
	EXPECT_EQ( V_snprintf( buffer.data(), 1, "%s", longText.c_str() ), 0 );
	EXPECT_STREQ( buffer.data(), "" );
}

TEST( Snprintf, TouchesNothingInABufferOfNoBytes )
{
	char c = 'k';
	const std::string text = "text";
	EXPECT_EQ( V_snprintf( &c, 0, "%s", text.c_str() ), 0 );
	EXPECT_EQ( c, 'k' );
	EXPECT_EQ( V_snprintf( nullptr, 0, "%s", text.c_str() ), 0 );
}

TEST( Snprintf, LeavesAnEmptyTextWhenTheFormatCannotBePrinted )
{
	std::array<char, 8> buffer{ 'o', 'l', 'd' };
	EXPECT_EQ( V_snprintf( buffer.data(), buffer.size(), "a%ls", UNPRINTABLE ), -1 );
	EXPECT_STREQ( buffer.data(), "" );
}

TEST( ByteOrderReaders, ReadAtAnyAddress )
{
	const std::array<uint8_t, 10> bytes{ 0xFF, 0x81, 0x02, 0x83, 0x04, 0x85, 0x06, 0x87, 0x08, 0xFF };
	const uint8_t *p = bytes.data() + 1;
	EXPECT_EQ( V_ReadBigEndian16( p ), 0x8102 );
	EXPECT_EQ( V_ReadBigEndian32( p ), 0x81028304u );
	EXPECT_EQ( V_ReadBigEndian64( p ), 0x8102830485068708u );
	EXPECT_EQ( V_ReadLittleEndian32( p ), 0x04830281u );
	EXPECT_EQ( V_ReadLittleEndian64( p ), 0x0887068504830281u );
}

TEST( ByteOrderReaders, ReadFloats )
{
	const std::array<uint8_t, 4> sixtyAndAHalf{ 0x42, 0x72, 0x00, 0x00 }; // 1.890625 * 2^5
	EXPECT_EQ( V_ReadBigEndianFloat( sixtyAndAHalf.data() ), 60.5f );
	const std::array<uint8_t, 4> infinity{ 0x7F, 0x80, 0x00, 0x00 };
	EXPECT_EQ( V_ReadBigEndianFloat( infinity.data() ), INFINITY );
}

TEST( BufferString, IsEmptyAtFirst )
{
	const CBufferString text;
	EXPECT_STREQ( text.Get(), "" );
	EXPECT_TRUE( text.IsEmpty() );
	EXPECT_EQ( text.Length(), 0u );
}

TEST( BufferString, FormatReplacesAndAppendFormatAdds )
{
	CBufferString text;
	EXPECT_EQ( text.Format( "%d%%", 50 ), 3u );
	EXPECT_EQ( text.AppendFormat( " of %s", "all" ), 10u );
	EXPECT_STREQ( text.Get(), "50% of all" );
	text.Append( "!" );
	text.Append( nullptr );
	EXPECT_STREQ( text.Get(), "50% of all!" );
	text.Format( "%s", "" );
	EXPECT_TRUE( text.IsEmpty() );
	text.Append( "again" );
	text.Clear();
	EXPECT_STREQ( text.Get(), "" );
}

TEST( BufferString, HoldsTextsOfAnyLength )
{
	CBufferString text;
	std::string expected;
	for ( int i = 0; i < 5000; i++ )
	{
		text.AppendFormat( "%d,", i );
		expected += std::to_string( i ) + ',';
	}
	EXPECT_EQ( text.Get(), expected );
	EXPECT_EQ( text.Length(), expected.size() );
}

TEST( BufferString, CanFormatItsOwnText )
{
	CBufferString text;
	text.Format( "%s", "inner" );
	text.Format( "<%s>", text.Get() );
	EXPECT_STREQ( text.Get(), "<inner>" );
}

TEST( BufferString, IsEmptyAfterAFormatThatCannotBePrinted )
{
	CBufferString text;
	text.Append( "old" );
	EXPECT_EQ( text.Format( "a%ls", UNPRINTABLE ), 0u );
	EXPECT_STREQ( text.Get(), "" );
}

TEST( UtlString, IsNeverNull )
{
	CUtlString text;
	EXPECT_STREQ( text.Get(), "" );
	text.Set( "abc" );
	EXPECT_EQ( text.Length(), 3u );
	text.Set( nullptr );
	EXPECT_STREQ( text.Get(), "" );
	EXPECT_TRUE( CUtlString( static_cast<const char *>( nullptr ) ).IsEmpty() );
}

TEST( UtlString, ComparesAsTextDoes )
{
	EXPECT_EQ( CUtlString( "a" ), CUtlString( std::string_view( "ab" ).substr( 0, 1 ) ) );
	EXPECT_NE( CUtlString( "a" ), CUtlString( "A" ) );
	EXPECT_LT( CUtlString( "a" ), CUtlString( "ab" ) );
	EXPECT_EQ( CUtlString( "abc" ).View(), "abc" );
}
} // namespace
