// Chrome traces, whole and damaged.
#include <gmock/gmock.h>

#include "tests/convert/conversions.h"

namespace
{
using convert::Note;
using convert::Repair;
using testing::ElementsAre;
using testing::HasSubstr;

// The only frame of what must be an undamaged trace.
FrameFigures WholeFrame( const std::string &trace )
{
	const Conversion conversion = ConvertText( trace );
	EXPECT_TRUE( conversion.m_bDone ) << conversion.m_Problem.m_Text;
	EXPECT_FALSE( conversion.m_Report.IsDamaged() ) << conversion.m_Report.Lines().front();
	const std::vector<FrameFigures> frames = FramesOf( conversion.m_Bytes );
	EXPECT_EQ( frames.size(), 1u );
	return frames.empty() ? FrameFigures() : frames[0];
}

// How often the repair was needed, when nothing else was.
uint64_t OnlyRepair( const Conversion &conversion, Repair wanted )
{
	for ( int i = 0; i < static_cast<int>( Repair::Count ); i++ )
		if ( static_cast<Repair>( i ) != wanted )
		{
			EXPECT_EQ( conversion.m_Report.Get( static_cast<Repair>( i ) ), 0u ) << "repair " << i;
		}
	return conversion.m_Report.Get( wanted );
}

const FrameFigures NESTED = { { "", { 1, 100 } }, { "a", { 1, 100 } }, { "a/b", { 2, 60 } }, { "a/b/c", { 1, 8 } } };
} // namespace

TEST( ChromeTrace, BeginAndEndEventsNestInTheArrayForm )
{
	EXPECT_EQ(
		WholeFrame( Trace( { BeginEvent( "a", 1000 ), BeginEvent( "b", 1004 ), BeginEvent( "c", 1008 ),
			EndEvent( 1016 ), EndEvent( 1024 ), BeginEvent( "b", 1040 ), EndEvent( 1080 ), EndEvent( 1100 ) } ) ),
		NESTED );
}

TEST( ChromeTrace, CompleteEventsNestByTheirTimesInTheObjectForm )
{
	const std::string events = Trace( { CompleteEvent( "a", 1000, 100 ), CompleteEvent( "b", 1004, 20 ),
		CompleteEvent( "c", 1008, 8 ), CompleteEvent( "b", 1040, 40 ) } );
	EXPECT_EQ( WholeFrame( R"({"otherData":{"version":[1,{"traceEvents":[]}]},"traceEvents":)" + events +
						   R"(,"displayTimeUnit":"ns"})" ),
		NESTED );
}

TEST( ChromeTrace, CompleteEventsThatAreWrittenWhenTheyEndNestTheSame )
{
	EXPECT_EQ( WholeFrame( Trace( { CompleteEvent( "c", 1008, 8 ), CompleteEvent( "b", 1004, 20 ),
				   CompleteEvent( "b", 1040, 40 ), CompleteEvent( "a", 1000, 100 ) } ) ),
		NESTED );
}

TEST( ChromeTrace, CompleteAndBeginEventsMixOnOneThread )
{
	EXPECT_EQ( WholeFrame( Trace( { BeginEvent( "a", 1000 ), CompleteEvent( "b", 1004, 20 ), BeginEvent( "c", 1008 ),
				   EndEvent( 1016 ), CompleteEvent( "b", 1040, 40 ), EndEvent( 1100 ) } ) ),
		NESTED );
}

TEST( ChromeTrace, TimesAreNumbersOrTextsOfNumbers )
{
	EXPECT_EQ( WholeFrame( R"([{"name":"a","ph":"B","ts":"1000.0","pid":"1","tid":"x"},
		{"name":"b","ph":"X","ts":"1.02e3","dur":"40","pid":"1","tid":"x"},
		{"ph":"E","ts":1.1E+3,"pid":"1","tid":"x"}])" ),
		( FrameFigures{ { "", { 1, 100 } }, { "a", { 1, 100 } }, { "a/b", { 1, 40 } } } ) );
}

TEST( ChromeTrace, MembersOfAnEventComeInAnyOrder )
{
	EXPECT_EQ(
		WholeFrame( R"([{"args":{"name":"not this"},"tid":3,"dur":8,"ts":4,"ph":"X","pid":1,"cat":"c","name":"a"}])" ),
		( FrameFigures{ { "", { 1, 8 } }, { "a", { 1, 8 } } } ) );
}

TEST( ChromeTrace, ATimeSince1970KeepsItsNanoseconds )
{
	// 1,763,700,000,000,000 microseconds and a bit: as a double the bit would be a quarter of a microsecond off.
	EXPECT_EQ( WholeFrame( R"([{"name":"a","ph":"B","ts":1763700000000000.001,"pid":1,"tid":1},
		{"ph":"E","ts":1763700000000006.001,"pid":1,"tid":1},
		{"name":"b","ph":"B","ts":1763700000000006.001,"pid":1,"tid":1},
		{"ph":"E","ts":1763700000000012.002,"pid":1,"tid":1}])" ),
		// The end of the first is at one and a half units of 4: rounded up. The end of the second is at three.
		( FrameFigures{ { "", { 1, 12 } }, { "a", { 1, 8 } }, { "b", { 1, 4 } } } ) );
}

TEST( ChromeTrace, EscapesInNamesAreCharacters )
{
	const FrameFigures frame =
		WholeFrame( R"([{"name":"a\"\\\/\t\u00e9\u0041","ph":"X","ts":0,"dur":4,"pid":1,"tid":1}])" );
	EXPECT_EQ( frame.count( "a\"\\/\t\xE9"
							"A" ),
		1u )
		<< "recordings hold Latin-1";
}

TEST( ChromeTrace, CharactersThatARecordingCannotHoldAreReplacedAndSaid )
{
	const Conversion conversion =
		ConvertText( R"([{"name":"\ud83d\ude00\u4e2d\u0000z","ph":"X","ts":0,"dur":4,"pid":1,"tid":1}])" );
	EXPECT_EQ( FramesOf( conversion.m_Bytes ).at( 0 ).count( "???z" ), 1u );
	EXPECT_EQ( conversion.m_Report.Get( Note::NameCharacters ), 1u );
	EXPECT_FALSE( conversion.m_Report.IsDamaged() );
}

TEST( ChromeTrace, BytesThatAreNoUtf8AreTakenAsLatin1 )
{
	EXPECT_EQ(
		WholeFrame( "[{\"name\":\"\xFC-\xC3\xBC\",\"ph\":\"X\",\"ts\":0,\"dur\":4}]" ).count( "\xFC-\xFC" ), 1u );
}

TEST( ChromeTrace, ANameOfMoreThan511CharactersIsCutAndSaid )
{
	const Conversion conversion = ConvertText( Trace( { CompleteEvent( std::string( 600, 'n' ), 0, 4 ) } ) );
	EXPECT_EQ( FramesOf( conversion.m_Bytes ).at( 0 ).count( std::string( 511, 'n' ) ), 1u );
	EXPECT_EQ( conversion.m_Report.Get( Note::NameCut ), 1u );
}

TEST( ChromeTrace, EventsThatAreNoScopesAreCountedAndLeftOut )
{
	const Conversion conversion = ConvertText( R"([{"name":"a","ph":"X","ts":0,"dur":4,"pid":1,"tid":1},
		{"name":"c","ph":"C","ts":1,"pid":1,"args":{"v":1}},{"name":"s","ph":"s","ts":1,"id":1},
		{"name":"b","ph":"b","ts":1,"id":1}])" );
	EXPECT_EQ( conversion.m_Report.Get( Note::OtherKind ), 3u );
	EXPECT_FALSE( conversion.m_Report.IsDamaged() );
}

TEST( ChromeTrace, AnEmptyListIsARecordingWithoutFrames )
{
	for ( const char *pTrace : { "[]", "[ ]\n", R"({"traceEvents":[]})" } )
	{
		const Conversion conversion = ConvertText( pTrace );
		EXPECT_TRUE( conversion.m_bDone );
		EXPECT_FALSE( conversion.m_Report.IsDamaged() );
		EXPECT_TRUE( FramesOf( conversion.m_Bytes ).empty() );
	}
}

TEST( ChromeTrace, JsonWithoutAListOfEventsIsRefused )
{
	for ( const char *pTrace : { "{}", R"({"traceEvents":{"a":[]}})", "7", R"({"events":[{"ph":"B"}]})" } )
	{
		const Conversion conversion = ConvertText( pTrace );
		EXPECT_FALSE( conversion.m_bDone ) << pTrace;
		EXPECT_THAT( conversion.m_Problem.m_Text, HasSubstr( "no list of events" ) ) << pTrace;
	}
}

TEST( ChromeTrace, AByteOrderMarkAndTrailingCommasDoNoHarm )
{
	EXPECT_EQ( WholeFrame( "\xEF\xBB\xBF[{\"name\":\"a\",\"ph\":\"X\",\"ts\":0,\"dur\":4,},]" ).count( "a" ), 1u );
}

// Damage.

TEST( ChromeTrace, UnorderedEventsAreSortedAndCounted )
{
	const Conversion conversion =
		ConvertText( Trace( { BeginEvent( "b", 1040 ), EndEvent( 1080 ), BeginEvent( "a", 1000 ), EndEvent( 1100 ),
			EndEvent( 1024 ), BeginEvent( "b", 1004 ), EndEvent( 1016 ), BeginEvent( "c", 1008 ) } ) );
	EXPECT_EQ( FramesOf( conversion.m_Bytes ).at( 0 ), NESTED );
	// Later ones are 1000 (after 1080), then 1024, 1004, 1016 and 1008 (after 1100).
	EXPECT_EQ( OnlyRepair( conversion, Repair::Unordered ), 5u );
}

TEST( ChromeTrace, CompleteEventsAreUnorderedWhenNeitherTheirBeginsNorTheirEndsAscend )
{
	const Conversion conversion = ConvertText( Trace( { CompleteEvent( "b", 1040, 40 ), CompleteEvent( "b", 1004, 20 ),
		CompleteEvent( "c", 1008, 8 ), CompleteEvent( "a", 1000, 100 ) } ) );
	EXPECT_EQ( FramesOf( conversion.m_Bytes ).at( 0 ), NESTED );
	EXPECT_EQ( OnlyRepair( conversion, Repair::Unordered ), 1u );
}

TEST( ChromeTrace, AnEndWithoutABeginIsLeftOutAndCounted )
{
	const Conversion conversion = ConvertText(
		Trace( { EndEvent( 0 ), BeginEvent( "a", 0 ), EndEvent( 4, 1, "b" ), EndEvent( 8 ), EndEvent( 8 ) } ) );
	EXPECT_EQ( FramesOf( conversion.m_Bytes ).at( 0 ), ( FrameFigures{ { "", { 1, 8 } }, { "a", { 1, 8 } } } ) );
	EXPECT_EQ( OnlyRepair( conversion, Repair::EndWithoutBegin ), 3u );
}

TEST( ChromeTrace, ABeginWithoutAnEndLastsAsLongAsTheTrace )
{
	const Conversion conversion = ConvertText( Trace( { BeginEvent( "a", 0 ), CompleteEvent( "b", 4, 36 ) } ) );
	EXPECT_EQ( FramesOf( conversion.m_Bytes ).at( 0 ),
		( FrameFigures{ { "", { 1, 40 } }, { "a", { 1, 40 } }, { "a/b", { 1, 36 } } } ) );
	EXPECT_EQ( OnlyRepair( conversion, Repair::BeginWithoutEnd ), 1u );
}

TEST( ChromeTrace, ANamedEndEndsWhatWasForgottenInsideIt )
{
	const Conversion conversion = ConvertText( Trace( { BeginEvent( "a", 0 ), BeginEvent( "b", 4 ),
		BeginEvent( "c", 8 ), EndEvent( 20, 1, "a" ), BeginEvent( "d", 20 ), EndEvent( 40 ) } ) );
	EXPECT_EQ( FramesOf( conversion.m_Bytes ).at( 0 ),
		( FrameFigures{ { "", { 1, 40 } }, { "a", { 1, 20 } }, { "a/b", { 1, 16 } }, { "a/b/c", { 1, 12 } },
			{ "d", { 1, 20 } } } ) );
	EXPECT_EQ( OnlyRepair( conversion, Repair::BeginWithoutEnd ), 2u );
}

TEST( ChromeTrace, AScopeThatEndsAfterTheScopeAroundItIsCutThere )
{
	const Conversion conversion = ConvertText( Trace( { CompleteEvent( "a", 0, 40 ), CompleteEvent( "b", 20, 40 ) } ) );
	EXPECT_EQ( FramesOf( conversion.m_Bytes ).at( 0 ),
		( FrameFigures{ { "", { 1, 60 } }, { "a", { 1, 40 } }, { "a/b", { 1, 20 } } } ) );
	EXPECT_EQ( OnlyRepair( conversion, Repair::Overlap ), 1u );
}

TEST( ChromeTrace, OverlapsByRoundingAreNoDamage )
{
	EXPECT_EQ( WholeFrame( Trace(
				   { CompleteEvent( "a", 0, 40.5 ), CompleteEvent( "c", 20, 21 ), CompleteEvent( "b", 40, 40 ) } ) ),
		( FrameFigures{ { "", { 1, 80 } }, { "a", { 1, 40 } }, { "a/c", { 1, 20 } }, { "b", { 1, 40 } } } ) );
}

TEST( ChromeTrace, OfEqualScopesTheFirstIsTheOuterOneUnlessScopesAreWrittenWhenTheyEnd )
{
	EXPECT_EQ(
		WholeFrame( Trace( { CompleteEvent( "out", 0, 40 ), CompleteEvent( "in", 0, 40 ) } ) ).count( "out/in" ), 1u );
	// "early" in "late" says that scopes are written when they end.
	EXPECT_EQ( WholeFrame( Trace( { CompleteEvent( "early", 4, 4 ), CompleteEvent( "late", 0, 12 ),
							   CompleteEvent( "in", 20, 40 ), CompleteEvent( "out", 20, 40 ) } ) )
				   .count( "out/in" ),
		1u );
}

TEST( ChromeTrace, HostileNumbersAndNamesCostOnlyTheirEvent )
{
	const std::string good = CompleteEvent( "good", 0, 40 );
	const std::pair<const char *, Repair> cases[] = {
		{ R"({"name":"x","ph":"X","ts":NaN,"dur":1,"pid":1,"tid":1})", Repair::Unreadable },
		{ R"({"name":"x","ph":"X","ts":1e400,"dur":1,"pid":1,"tid":1})", Repair::Unreadable },
		{ R"({"name":"x","ph":"X","ts":"NaN","dur":1,"pid":1,"tid":1})", Repair::UnusableEvent },
		{ R"({"name":"x","ph":"X","ts":1e30,"dur":1,"pid":1,"tid":1})", Repair::UnusableEvent },
		{ R"({"name":"x","ph":"X","ts":9.9e15,"dur":1,"pid":1,"tid":1})", Repair::UnusableEvent },
		{ R"({"name":"x","ph":"X","ts":1,"dur":"inf","pid":1,"tid":1})", Repair::UnusableEvent },
		{ R"({"name":"x","ph":"X","dur":1,"pid":1,"tid":1})", Repair::UnusableEvent },
		{ R"({"name":7,"ph":"X","ts":1,"dur":1,"pid":1,"tid":1})", Repair::UnusableEvent },
		{ R"({"name":"x","ph":"XX","ts":1,"dur":1,"pid":1,"tid":1})", Repair::UnusableEvent },
		{ R"({"name":"\ud800","ph":"X","ts":1,"dur":1,"pid":1,"tid":1})", Repair::Unreadable },
		{ "{\"name\":\"a\nb\",\"ph\":\"X\",\"ts\":1,\"dur\":1,\"pid\":1,\"tid\":1}", Repair::Unreadable },
		{ R"({"name":"x","ph":"X","ts":1,"dur":1,"pid":1,"tid":1)", Repair::Unreadable },
		{ R"({"name" "x"})", Repair::Unreadable },
		{ "{}", Repair::UnusableEvent },
	};
	for ( const auto &[pBad, repair] : cases )
	{
		const Conversion conversion = ConvertText( Trace( { good, pBad, CompleteEvent( "last", 80, 40 ) } ) );
		ASSERT_TRUE( conversion.m_bDone ) << pBad;
		EXPECT_EQ( FramesOf( conversion.m_Bytes ).at( 0 ),
			( FrameFigures{ { "", { 1, 120 } }, { "good", { 1, 40 } }, { "last", { 1, 40 } } } ) )
			<< pBad;
		EXPECT_EQ( OnlyRepair( conversion, repair ), 1u ) << pBad;
	}
}

TEST( ChromeTrace, DamageIsNamedWithItsPlace )
{
	const std::string first = "[" + CompleteEvent( "a", 0, 4 ) + ",\n";
	const Conversion conversion =
		ConvertText( first + R"({"name":"x","ts":-})" + "," + CompleteEvent( "b", 4, 4 ) + "]" );
	const std::string offset = std::to_string( first.size() + std::string_view( R"({"name":"x","ts":-)" ).size() );
	EXPECT_THAT( conversion.m_Report.Lines(),
		testing::Contains( "1 stretch that could not be read was left out, at byte " + offset + ": Invalid value." ) );
}

TEST( ChromeTrace, ANegativeDurationIsTakenAsNone )
{
	const Conversion conversion = ConvertText( Trace( { CompleteEvent( "a", 0, -40 ), CompleteEvent( "b", 0, 40 ) } ) );
	EXPECT_EQ( FramesOf( conversion.m_Bytes ).at( 0 ),
		( FrameFigures{ { "", { 1, 40 } }, { "b/a", { 1, 0 } }, { "b", { 1, 40 } } } ) );
	EXPECT_EQ( OnlyRepair( conversion, Repair::NegativeTime ), 1u );
}

TEST( ChromeTrace, AHugeProcessIdIsAnIdLikeAnyOther )
{
	convert::ConversionOptions options;
	options.m_Cut.m_Processes = { "123456789012345678901234567890" };
	const Conversion conversion = ConvertText(
		R"([{"name":"a","ph":"X","ts":0,"dur":4,"pid":123456789012345678901234567890,"tid":-1},
		{"name":"b","ph":"X","ts":0,"dur":4,"pid":123456789012345678901234567891,"tid":-1}])",
		options );
	EXPECT_THAT( TopNodes( conversion.m_Bytes ), ElementsAre( "a" ) );
}

TEST( ChromeTrace, DeepArgumentsEndNothingButTheirEvent )
{
	const std::string deep = R"({"name":"x","ph":"X","ts":0,"dur":4,"args":)" + std::string( 1'000'000, '[' );
	const Conversion conversion = ConvertText( Trace( { deep + "}", CompleteEvent( "a", 0, 4 ) } ) );
	EXPECT_THAT( TopNodes( conversion.m_Bytes ), ElementsAre( "a" ) );
	EXPECT_EQ( OnlyRepair( conversion, Repair::Unreadable ), 1u );
}

TEST( ChromeTrace, TextBehindTheEndIsDamage )
{
	const Conversion conversion = ConvertText( Trace( { CompleteEvent( "a", 0, 4 ) } ) + "and more" );
	EXPECT_EQ( OnlyRepair( conversion, Repair::Unreadable ), 1u );
	EXPECT_THAT( TopNodes( conversion.m_Bytes ), ElementsAre( "a" ) );
}

TEST( ChromeTrace, CutAtEveryByteAllWholeEventsAreKept )
{
	const std::vector<std::string> events = { CompleteEvent( "a", 0, 4 ), CompleteEvent( "b", 4, 4 ),
		CompleteEvent( "c\\\"},{", 8, 4 ), CompleteEvent( "d", 12, 4 ) };
	for ( const char *pFront : { "", R"({"otherData":{"a":[1]},"traceEvents":)" } )
	{
		const std::string whole = pFront + Trace( events ) + ( *pFront ? "}" : "" );
		for ( size_t nSize = 0; nSize < whole.find( ']', whole.rfind( '{' ) ); nSize++ )
		{
			const std::string cut = whole.substr( 0, nSize );
			size_t nWhole = 0;
			while ( nWhole < events.size() && cut.find( events[nWhole] ) != std::string::npos )
				nWhole++;
			const Conversion conversion = ConvertText( cut );
			ASSERT_EQ( conversion.m_bDone, nWhole > 0 ) << cut;
			if ( nWhole == 0 )
			{
				EXPECT_FALSE( conversion.m_Problem.m_Text.empty() );
				continue;
			}
			EXPECT_EQ( TopNodes( conversion.m_Bytes ).size(), nWhole ) << cut;
			EXPECT_EQ( OnlyRepair( conversion, Repair::Cut ), 1u ) << cut;
		}
	}
}

TEST( ChromeTrace, EveryChangedByteLeavesAWholeRecording )
{
	const std::string whole =
		Trace( { BeginEvent( "a", 0 ), CompleteEvent( "b", 4, 4 ), EndEvent( 12 ), CompleteEvent( "c", 16, 4 ) } );
	for ( size_t i = 0; i < whole.size(); i++ )
		for ( const char c : { '\0', '"', '{', '}', '[', ']', ',', ':', '\\', '9', 'x', '\x80' } )
		{
			std::string changed = whole;
			changed[i] = c;
			const Conversion conversion = ConvertText( changed );
			if ( conversion.m_bDone )
				FramesOf( conversion.m_Bytes ); // fails when it is not whole
			else
				EXPECT_FALSE( conversion.m_Problem.m_Text.empty() ) << changed;
		}
}
