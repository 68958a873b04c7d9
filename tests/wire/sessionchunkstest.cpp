#include "wire/sessionchunks.h"

#include <gmock/gmock.h>

namespace
{
using testing::ElementsAre;
using testing::ElementsAreArray;
using wire::PrintSeverity;
using Bytes = std::vector<uint8_t>;

const std::string EURO = "\xE2\x82\xAC"; // three bytes

TEST( HelloChunk, IsWrittenBigEndianWithTheNameAtItsEnd )
{
	const Bytes payload = wire::WriteHello( { 2, 0x01020304, 0x05060708090A0B0C, "demo" } );
	EXPECT_THAT( payload, ElementsAre( 0, 0, 0, 2, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 'd', 'e', 'm', 'o' ) );
}

TEST( HelloChunk, IsReadAsItWasWritten )
{
	const auto hello = wire::ReadHello( wire::WriteHello( { 9, 77, UINT64_MAX, "f\xC3\xBCnf" } ) );
	ASSERT_TRUE( hello );
	EXPECT_EQ( hello->m_nProtocol, 9u ) << "the version is not judged here";
	EXPECT_EQ( hello->m_nProcessId, 77u );
	EXPECT_EQ( hello->m_nTickFrequency, UINT64_MAX );
	EXPECT_EQ( hello->m_Name, "f\xC3\xBCnf" );
}

TEST( HelloChunk, NamesThisProtocolByDefault )
{
	EXPECT_EQ( wire::Hello{}.m_nProtocol, 2u );
}

TEST( HelloChunk, WithoutItsFixedFieldsIsNoHello )
{
	const Bytes payload( 16, 1 );
	for ( size_t nBytes = 0; nBytes < 16; nBytes++ )
		EXPECT_FALSE( wire::ReadHello( std::span( payload ).first( nBytes ) ) ) << nBytes;
	ASSERT_TRUE( wire::ReadHello( payload ) );
	EXPECT_EQ( wire::ReadHello( payload )->m_Name, "" );
}

TEST( HelloChunk, ItsNameIsCutOnWriting )
{
	const wire::Hello longName{ 2, 0, 0, std::string( 254, 'n' ) + EURO };
	EXPECT_EQ( wire::WriteHello( longName ).size(), 16u + 254u );
	const wire::Hello withTerminator{ 2, 0, 0, std::string( "ab\0cd", 5 ) };
	EXPECT_EQ( wire::WriteHello( withTerminator ).size(), 16u + 2u );
}

TEST( HelloChunk, ItsNameIsCutOnReading )
{
	Bytes payload( 16 );
	payload.insert( payload.end(), 1000, 'n' );
	EXPECT_EQ( wire::ReadHello( payload )->m_Name, std::string( 255, 'n' ) );
	payload[16 + 3] = 0;
	EXPECT_EQ( wire::ReadHello( payload )->m_Name, "nnn" );
}

TEST( PrintChunk, IsASeverityAndAText )
{
	EXPECT_THAT( wire::WritePrint( PrintSeverity::Error, "no!\n" ), ElementsAre( 0, 0, 0, 2, 'n', 'o', '!', '\n' ) );
	EXPECT_THAT( wire::WritePrint( PrintSeverity::Message, "" ), ElementsAre( 0, 0, 0, 0 ) );
}

TEST( PrintChunk, IsReadAsItWasWritten )
{
	for ( const PrintSeverity severity : { PrintSeverity::Message, PrintSeverity::Warning, PrintSeverity::Error } )
	{
		const Bytes payload = wire::WritePrint( severity, "text\n" );
		const auto line = wire::ReadPrint( payload );
		ASSERT_TRUE( line );
		EXPECT_EQ( line->m_Severity, severity );
		EXPECT_EQ( line->m_Text, "text\n" );
	}
}

TEST( PrintChunk, AnUnknownSeverityCountsAsAMessage )
{
	for ( const uint8_t nSeverity : { uint8_t{ 3 }, uint8_t{ 255 } } )
		EXPECT_EQ( wire::ReadPrint( Bytes{ 0, 0, 0, nSeverity, 'x' } )->m_Severity, PrintSeverity::Message );
	EXPECT_EQ( wire::ReadPrint( Bytes{ 1, 0, 0, 2, 'x' } )->m_Severity, PrintSeverity::Message );
}

TEST( PrintChunk, WithoutASeverityIsNoLine )
{
	for ( size_t nBytes = 0; nBytes < 4; nBytes++ )
		EXPECT_FALSE( wire::ReadPrint( Bytes( nBytes ) ) ) << nBytes;
}

TEST( PrintChunk, ALongTextIsCutBetweenCharacters )
{
	const std::string text = std::string( 16382, 'x' ) + EURO;
	EXPECT_EQ( wire::WritePrint( PrintSeverity::Message, text ).size(), 4u + 16382u );
	EXPECT_EQ( wire::WritePrint( PrintSeverity::Message, std::string( 16384, 'x' ) ).size(), 4u + 16384u );
	EXPECT_EQ( wire::WritePrint( PrintSeverity::Message, std::string( 16385, 'x' ) ).size(), 4u + 16384u );
}

TEST( DroppedChunk, IsOneBigEndianCount )
{
	const Bytes payload = wire::WriteDropped( 0x0102030405060708 );
	EXPECT_THAT( payload, ElementsAre( 1, 2, 3, 4, 5, 6, 7, 8 ) );
	EXPECT_EQ( wire::ReadDropped( payload ), 0x0102030405060708u );
	EXPECT_EQ( wire::ReadDropped( std::span( payload ).first( 7 ) ), std::nullopt );
	EXPECT_EQ( wire::ReadDropped( Bytes{ 0, 0, 0, 0, 0, 0, 0, 1, 9 } ), 1u );
}
} // namespace
