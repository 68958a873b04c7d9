#include "wire/sessionchunks.h"

#include <gmock/gmock.h>

#include <algorithm>

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

using namespace std::string_literals;
using namespace std::string_view_literals;

// A payload whose fixed fields are zero.
Bytes HelloWithTexts( std::string_view texts )
{
	Bytes payload( 16 );
	payload.insert( payload.end(), texts.begin(), texts.end() );
	return payload;
}

TEST( HelloChunk, ATokenStandsBehindTheNamesTerminator )
{
	EXPECT_EQ( wire::WriteHello( { 0, 0, 0, "me", "open" } ), HelloWithTexts( "me\0open"sv ) );
	EXPECT_EQ( wire::WriteHello( { 0, 0, 0, "", "open" } ), HelloWithTexts( "\0open"sv ) );
}

TEST( HelloChunk, ARefusalStandsBehindTheTokensTerminator )
{
	EXPECT_EQ( wire::WriteHello( { 0, 0, 0, "me", "open", "no room" } ), HelloWithTexts( "me\0open\0no room"sv ) );
	EXPECT_EQ( wire::WriteHello( { 0, 0, 0, "me", "", "no room" } ), HelloWithTexts( "me\0\0no room"sv ) );
}

TEST( HelloChunk, TextsThatAreNotThereAreEmpty )
{
	for ( const std::string_view texts : { ""sv, "me"sv, "me\0"sv, "me\0\0"sv, "me\0\0\0"sv, "me\0\0\0ignored"sv } )
	{
		const auto hello = wire::ReadHello( HelloWithTexts( texts ) );
		ASSERT_TRUE( hello );
		EXPECT_EQ( hello->m_Name, texts.substr( 0, 2 ) );
		EXPECT_EQ( hello->m_Token, "" );
		EXPECT_EQ( hello->m_Refusal, "" );
	}
}

TEST( HelloChunk, ItsTextsAreReadAsTheyWereWritten )
{
	const auto hello = wire::ReadHello( wire::WriteHello( { 2, 1, 3, "me", "s\xC3\xA9same", "token required" } ) );
	ASSERT_TRUE( hello );
	EXPECT_EQ( hello->m_Name, "me" );
	EXPECT_EQ( hello->m_Token, "s\xC3\xA9same" );
	EXPECT_EQ( hello->m_Refusal, "token required" );
}

TEST( HelloChunk, EveryCutOfItIsReadWithoutABytePastItsEnd )
{
	const std::string_view texts = "me\0open\0no room\0rest"sv;
	const Bytes whole = HelloWithTexts( texts );
	for ( size_t nTexts = 0; nTexts <= texts.size(); nTexts++ )
	{
		// A copy of exactly that size, so that a sanitizer sees a byte too many.
		const Bytes cut( whole.begin(), whole.begin() + static_cast<ptrdiff_t>( 16 + nTexts ) );
		const auto hello = wire::ReadHello( cut );
		ASSERT_TRUE( hello );
		const auto part = [&]( size_t nBegin, size_t nEnd )
		{ return nTexts < nBegin ? ""sv : texts.substr( nBegin, std::min( nTexts, nEnd ) - nBegin ); };
		EXPECT_EQ( hello->m_Name, part( 0, 2 ) ) << nTexts;
		EXPECT_EQ( hello->m_Token, part( 3, 7 ) ) << nTexts;
		EXPECT_EQ( hello->m_Refusal, part( 8, 15 ) ) << nTexts;
	}
}

TEST( HelloChunk, ATokenIsNeverCut )
{
	const std::string longest( 255, 't' );
	EXPECT_EQ( wire::ReadHello( wire::WriteHello( { 2, 0, 0, "me", longest } ) )->m_Token, longest );
	EXPECT_EQ( wire::WriteHello( { 2, 0, 0, "me", longest + 't' } ).size(), 16u + 2u ) << "left out";
	EXPECT_EQ( wire::ReadHello( HelloWithTexts( '\0' + longest + 't' ) )->m_Token, longest + 't' )
		<< "cut, it could match one that it is not";
}

TEST( HelloChunk, ATokenIsOneLineOfText )
{
	for ( const std::string_view token : { "x"sv, "two words"sv, "\xE2\x82\xAC"sv } )
		EXPECT_TRUE( wire::IsToken( token ) ) << token;
	for ( const std::string_view token : { ""sv, "a\nb"sv, "a\0b"sv, "tab\t"sv, "\x7F"sv, "\x1F"sv } )
		EXPECT_FALSE( wire::IsToken( token ) ) << token;
	EXPECT_TRUE( wire::IsToken( std::string( 255, 'x' ) ) );
	EXPECT_FALSE( wire::IsToken( std::string( 256, 'x' ) ) );
}

TEST( HelloChunk, ARefusalIsCutToOneLine )
{
	const auto refusal = []( const std::string &text ) {
		return wire::ReadHello( wire::WriteHello( { 2, 0, 0, "me", "", text } ) )->m_Refusal;
	};
	EXPECT_EQ( refusal( "first\nsecond" ), "first" );
	EXPECT_EQ( refusal( std::string( 254, 'n' ) + EURO ), std::string( 254, 'n' ) );
	EXPECT_EQ( wire::ReadHello( HelloWithTexts( "\0\0first\nsecond"sv ) )->m_Refusal, "first" );
	EXPECT_EQ(
		wire::ReadHello( HelloWithTexts( "\0\0"s + std::string( 1000, 'n' ) ) )->m_Refusal, std::string( 255, 'n' ) );
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
