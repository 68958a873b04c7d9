// The parts of a conversion that can be looked at alone.
#include <gmock/gmock.h>

#include <algorithm>
#include <random>

#include "support/randomseed.h"
#include "tools/convert/decimal.h"
#include "tools/convert/eventspool.h"
#include "tools/convert/format.h"
#include "tools/convert/lineinput.h"
#include "tools/convert/nametable.h"
#include "tools/convert/text.h"
#include "tools/convert/timelinesink.h"

using namespace convert;

TEST( ConvertDecimal, TimesAreExactWholeNanoseconds )
{
	EXPECT_EQ( ParseTime( "0", MICROSECONDS ), 0 );
	EXPECT_EQ( ParseTime( "-12.5", MICROSECONDS ), -12'500 );
	EXPECT_EQ( ParseTime( "1763700000000000.001", MICROSECONDS ), 1'763'700'000'000'000'001 );
	EXPECT_EQ( ParseTime( "12345.678901234", SECONDS ), 12'345'678'901'234 );
	EXPECT_EQ( ParseTime( "1e3", NANOSECONDS ), 1000 );
	EXPECT_EQ( ParseTime( "25E-1", MILLISECONDS ), 2'500'000 );
	EXPECT_EQ( ParseTime( "0.0000000000000000000000001e22", MICROSECONDS ), 1 );
	EXPECT_EQ( ParseTime( "9223372036854775807", NANOSECONDS ), INT64_MAX );
}

TEST( ConvertDecimal, HalfANanosecondIsRoundedUp )
{
	EXPECT_EQ( ParseTime( "1.0005", MICROSECONDS ), 1001 );
	EXPECT_EQ( ParseTime( "1.00049999", MICROSECONDS ), 1000 );
	EXPECT_EQ( ParseTime( "0.00009", MICROSECONDS ), 0 );
	EXPECT_EQ( ParseTime( "1e-99999999999", MICROSECONDS ), 0 );
}

TEST( ConvertDecimal, WhatIsNoNumberOrDoesNotFitIsNone )
{
	for ( const char *pText : { "", "-", ".", "NaN", "inf", "1x", "1e", "1e+", "1.2.3", " 1", "0x10", "--1" } )
		EXPECT_FALSE( ParseTime( pText, MICROSECONDS ) ) << pText;
	for ( const char *pText : { "9223372036854775808", "1e19", "1e400", "99999999999999999999999999" } )
		EXPECT_FALSE( ParseTime( pText, NANOSECONDS ) ) << pText;
	EXPECT_FALSE( ParseNumber( "nan" ) );
	EXPECT_FALSE( ParseNumber( "1e999" ) );
	EXPECT_EQ( ParseNumber( "-2.5" ), -2.5 );
}

TEST( ConvertDecimal, MicrosecondsAreWrittenAsShortAsTheyAre )
{
	EXPECT_EQ( FormatMicroseconds( 0 ), "0" );
	EXPECT_EQ( FormatMicroseconds( 1'000 ), "1" );
	EXPECT_EQ( FormatMicroseconds( 1'234'050 ), "1234.05" );
	EXPECT_EQ( FormatMicroseconds( -1 ), "-0.001" );
}

TEST( ConvertText, Utf8IsWhatTheStandardSays )
{
	for ( const char *pText :
		{ "", "a", "\xC2\x80", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF" } )
		EXPECT_TRUE( IsUtf8( pText ) ) << pText;
	for ( const char *pText : { "\x80", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
			  "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xC2", "\xE2\x82", "\xC2z" } )
		EXPECT_FALSE( IsUtf8( pText ) ) << pText;
}

TEST( ConvertText, EveryLatin1TextComesBack )
{
	std::string all;
	for ( int i = 1; i < 256; i++ )
		all += static_cast<char>( i );
	bool bReplaced = false;
	EXPECT_EQ( ToLatin1( FromLatin1( all ), bReplaced ), all );
	EXPECT_FALSE( bReplaced );
	EXPECT_EQ( ToLatin1( "\xC4\x80", bReplaced ), "?" );
	EXPECT_TRUE( bReplaced );
}

TEST( ConvertText, TextsAreCutBetweenCharacters )
{
	EXPECT_EQ( CutUtf8( "a\xC3\xBC", 3 ), "a\xC3\xBC" );
	EXPECT_EQ( CutUtf8( "a\xC3\xBC", 2 ), "a" );
	EXPECT_EQ( CutUtf8( "\xF0\x9F\x98\x80", 3 ), "" );
}

TEST( ConvertNames, EachNameHasOneId )
{
	CReport report;
	CNameTable names( report );
	std::vector<uint32_t> ids;
	for ( int i = 0; i < 5000; i++ )
		ids.push_back( names.Intern( "name " + std::to_string( i ) ) );
	for ( int i = 0; i < 5000; i++ )
	{
		EXPECT_EQ( names.Intern( "name " + std::to_string( i ) ), ids[static_cast<size_t>( i )] );
		EXPECT_EQ( names.Get( ids[static_cast<size_t>( i )] ), "name " + std::to_string( i ) );
	}
	EXPECT_EQ( names.Count(), 5000u );
}

TEST( ConvertNames, TooManyNamesBecomeOne )
{
	CReport report;
	CNameTable names( report );
	for ( size_t i = 0; i < CNameTable::MAX_NAMES; i++ )
		names.Intern( std::to_string( i ) );
	const uint32_t nMore = names.Intern( "one more" );
	EXPECT_EQ( names.Get( nMore ), CNameTable::COMMON_NAME );
	EXPECT_EQ( names.Intern( "and another" ), nMore );
	EXPECT_EQ( names.Get( names.Intern( "17" ) ), "17" ) << "known names stay";
	EXPECT_EQ( report.Get( Note::TooManyNames ), 2u );
}

TEST( ConvertNames, NamesAreCutAtABoundOfTheirLength )
{
	CReport report;
	CNameTable names( report );
	EXPECT_LE( names.Get( names.Intern( std::string( 1'000'000, 'x' ) ) ).size(), CNameTable::MAX_NAME_BYTES );
	EXPECT_LE( names.Get( names.Intern( std::string( 1'000'000, '\xFF' ) ) ).size(), CNameTable::MAX_NAME_BYTES );
	EXPECT_EQ( report.Get( Note::NameCut ), 2u );
}

TEST( ConvertSpool, RunsOnDiskComeBackAsOneStableOrder )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	for ( int nRound = 0; nRound < 40; nRound++ )
	{
		const size_t nRunEvents = 1 + random() % 50;
		const int64_t nTimes = 1 + static_cast<int64_t>( random() % 300 ); // few times, so that many are the same
		CEventSpool spool( testing::TempDir(), nRunEvents );
		std::vector<std::pair<int64_t, uint32_t>> expected;
		for ( uint32_t i = 0; i < random() % 1000; i++ )
		{
			TraceEvent event;
			event.m_nTime = static_cast<int64_t>( random() ) % nTimes;
			event.m_nName = i;
			ASSERT_TRUE( spool.Add( event ) );
			expected.emplace_back( event.m_nTime, i );
		}
		std::stable_sort(
			expected.begin(), expected.end(), []( const auto &a, const auto &b ) { return a.first < b.first; } );
		ASSERT_TRUE( spool.BeginReading() );
		std::vector<std::pair<int64_t, uint32_t>> found;
		while ( const TraceEvent *pEvent = spool.Next() )
			found.emplace_back( pEvent->m_nTime, pEvent->m_nName );
		EXPECT_EQ( found, expected );
	}
}

TEST( ConvertSpool, AFolderThatIsNotThereIsNamed )
{
	CEventSpool spool( "/nowhere/at/all", 1 );
	EXPECT_TRUE( spool.Add( {} ) );
	EXPECT_FALSE( spool.Add( {} ) );
	EXPECT_THAT( spool.Problem(), testing::HasSubstr( "\"/nowhere/at/all\": No such file" ) );
}

TEST( ConvertLines, LinesComeWithTheirPlaces )
{
	CInputStream input;
	input.OpenMemory( "one\r\n\nthree" );
	CLineInput lines( input );
	std::string_view line;
	EXPECT_TRUE( lines.Next( line ) && line == "one" && lines.Offset() == 0 && lines.IsTerminated() );
	EXPECT_TRUE( lines.Next( line ) && line == "" && lines.Offset() == 5 );
	EXPECT_TRUE( lines.Next( line ) && line == "three" && lines.Offset() == 6 && !lines.IsTerminated() );
	EXPECT_FALSE( lines.Next( line ) );
}

TEST( ConvertFormats, AFileIsKnownByItsFirstBytes )
{
	const std::pair<std::string_view, Format> files[] = {
		{ { "\1\0\0\0\0\0\0\0", 8 }, Format::Kesto },
		{ "[", Format::Chrome },
		{ "[]", Format::Chrome },
		{ " \n[ {\"ph\":", Format::Chrome },
		{ "{\"traceEvents\":[", Format::Chrome },
		{ "\xEF\xBB\xBF{\"displayTimeUnit\":", Format::Chrome },
		{ "{\"$schema\":\"https://www.speedscope.app/file-format-schema.json\"", Format::Speedscope },
		{ "{\"shared\":{\"frames\":[", Format::Speedscope },
		{ "main;draw 12\n", Format::Folded },
		{ "main 1.5e3\r\n", Format::Folded },
		{ "[unknown];main 3\n", Format::Folded },
		{ "{closure};main 3\n", Format::Folded },
		{ "# a comment\nswapper     0 [000]  1.5:     250000 cpu-clock: \n", Format::Perf },
	};
	for ( const auto &[head, format] : files )
		EXPECT_EQ( FormatOfContent( head ), format ) << head;
	for ( const std::string_view head : { "", "\n\n", "hello world\n", "PK\3\4" } )
		EXPECT_FALSE( FormatOfContent( head ) ) << head;
}

TEST( ConvertFormats, ATargetIsKnownByTheEndOfItsName )
{
	EXPECT_EQ( FormatOfPath( "a.kesto" ), Format::Kesto );
	EXPECT_EQ( FormatOfPath( "a.json" ), Format::Chrome );
	EXPECT_EQ( FormatOfPath( "x/a.speedscope.json" ), Format::Speedscope );
	EXPECT_EQ( FormatOfPath( "a.folded" ), Format::Folded );
	EXPECT_EQ( FormatOfPath( "a.csv" ), Format::Csv );
	EXPECT_FALSE( FormatOfPath( "a.txt" ) );
	for ( const Format format : ALL_FORMATS )
		EXPECT_EQ( FormatOfName( NameOf( format ) ), format );
}
