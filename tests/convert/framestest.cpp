// How the scopes of a trace are cut into frames.
#include <gmock/gmock.h>

#include <algorithm>
#include <random>

#include "support/randomseed.h"
#include "tests/convert/conversions.h"

namespace
{
using convert::ConversionOptions;
using convert::Note;
using testing::ElementsAre;
using testing::HasSubstr;

ConversionOptions ByName( const char *pName )
{
	ConversionOptions options;
	options.m_Cut.m_FrameName = pName;
	return options;
}

ConversionOptions ByPeriod( int64_t nMicroseconds )
{
	ConversionOptions options;
	options.m_Cut.m_nPeriod = nMicroseconds * 1000;
	return options;
}

ConversionOptions OfThread( const char *pThread )
{
	ConversionOptions options;
	options.m_Cut.m_Threads = { pThread };
	return options;
}

std::vector<FrameFigures> Frames( const std::string &trace, const ConversionOptions &options )
{
	const Conversion conversion = ConvertText( trace, options );
	EXPECT_TRUE( conversion.m_bDone ) << conversion.m_Problem.m_Text;
	EXPECT_FALSE( conversion.m_Report.IsDamaged() );
	return FramesOf( conversion.m_Bytes );
}

std::string Named( const char *pKind, int nThread, const char *pName )
{
	return std::string( R"({"ph":"M","pid":1,"tid":)" ) + std::to_string( nThread ) + R"(,"name":")" + pKind +
		   R"(","args":{"name":")" + pName + "\"}}";
}
} // namespace

TEST( Frames, AMarkerBeginsAFrameThatLastsToTheNextOne )
{
	const std::string trace = Trace(
		{ BeginEvent( "F", 100 ), BeginEvent( "a", 104 ), EndEvent( 112 ), EndEvent( 140 ), BeginEvent( "b", 140 ),
			EndEvent( 148 ), BeginEvent( "F", 200 ), EndEvent( 260 ), BeginEvent( "b", 280 ), EndEvent( 300 ) } );
	EXPECT_THAT( Frames( trace, ByName( "F" ) ),
		ElementsAre( FrameFigures{ { "", { 1, 100 } }, { "F", { 1, 40 } }, { "F/a", { 1, 8 } }, { "b", { 1, 8 } } },
			FrameFigures{ { "", { 1, 100 } }, { "F", { 1, 60 } }, { "b", { 1, 20 } } } ) );
}

TEST( Frames, AMarkerIsAScopeOfEitherKindOrAnInstant )
{
	const std::string instant = R"({"name":"F","ph":"i","ts":200,"pid":1,"tid":1,"s":"g"})";
	EXPECT_THAT(
		Frames( Trace( { CompleteEvent( "F", 100, 40 ), instant, CompleteEvent( "a", 240, 20 ) } ), ByName( "F" ) ),
		ElementsAre( FrameFigures{ { "", { 1, 100 } }, { "F", { 1, 40 } } },
			FrameFigures{ { "", { 1, 60 } }, { "a", { 1, 20 } } } ) );
}

TEST( Frames, AFrameHasTheScopesThatBeginWithItWhateverTheirOrder )
{
	const std::vector<std::string> events = { CompleteEvent( "a", 100, 40 ), CompleteEvent( "F", 100, 80 ),
		CompleteEvent( "a", 200, 40 ), CompleteEvent( "F", 200, 80 ) };
	EXPECT_THAT( Frames( Trace( events ), ByName( "F" ) ),
		ElementsAre( FrameFigures{ { "", { 1, 100 } }, { "F", { 1, 80 } }, { "F/a", { 1, 40 } } },
			FrameFigures{ { "", { 1, 80 } }, { "F", { 1, 80 } }, { "F/a", { 1, 40 } } } ) );
}

TEST( Frames, WhatIsBeforeTheFirstMarkerIsLeftOutAndSaid )
{
	const Conversion conversion =
		ConvertText( Trace( { BeginEvent( "init", 0 ), CompleteEvent( "x", 4, 40 ), CompleteEvent( "F", 100, 40 ),
						 EndEvent( 180 ), CompleteEvent( "F", 200, 40 ) } ),
			ByName( "F" ) );
	EXPECT_THAT( FramesOf( conversion.m_Bytes ),
		// What is still open belongs to the first frame from there on; it was not called in it.
		ElementsAre( FrameFigures{ { "", { 1, 100 } }, { "init", { 0, 80 } }, { "init/F", { 1, 40 } } },
			FrameFigures{ { "", { 1, 40 } }, { "F", { 1, 40 } } } ) );
	EXPECT_EQ( conversion.m_Report.Get( Note::BeforeFirstFrame ), 2u );
}

TEST( Frames, AMarkerThatIsNotThereIsAnErrorThatNamesIt )
{
	const Conversion conversion = ConvertText( Trace( { CompleteEvent( "a", 0, 4 ) } ), ByName( "Frame" ) );
	EXPECT_FALSE( conversion.m_bDone );
	EXPECT_THAT( conversion.m_Problem.m_Text, HasSubstr( "\"Frame\"" ) );
}

TEST( Frames, MarkersCountOnTheThreadThatHasTheFirstOne )
{
	const std::string trace = Trace( { CompleteEvent( "F", 100, 40, 1 ), CompleteEvent( "F", 120, 40, 2 ),
		CompleteEvent( "F", 200, 40, 1 ), CompleteEvent( "F", 220, 40, 2 ) } );
	EXPECT_THAT( Frames( trace, ByName( "F" ) ),
		ElementsAre( FrameFigures{ { "", { 1, 100 } }, { "thread 1", { 1, 40 } }, { "thread 1/F", { 1, 40 } },
						 { "thread 2", { 1, 40 } }, { "thread 2/F", { 1, 40 } } },
			FrameFigures{ { "", { 1, 60 } }, { "thread 1", { 1, 40 } }, { "thread 1/F", { 1, 40 } },
				{ "thread 2", { 1, 40 } }, { "thread 2/F", { 1, 40 } } } ) );
}

TEST( Frames, MarkersCutTheScopesOfAThreadThatHasNone )
{
	ConversionOptions options = OfThread( "2" );
	options.m_Cut.m_FrameName = "F";
	EXPECT_THAT( Frames( Trace( { CompleteEvent( "F", 100, 40, 1 ), CompleteEvent( "w", 160, 80, 2 ),
							 CompleteEvent( "F", 200, 40, 1 ) } ),
					 options ),
		ElementsAre( FrameFigures{ { "", { 1, 100 } }, { "w", { 1, 40 } } },
			FrameFigures{ { "", { 1, 40 } }, { "w", { 0, 40 } } } ) );
}

TEST( Frames, APeriodCutsFromTheFirstEventAndTheLastFrameEndsWithTheLast )
{
	const std::string trace =
		Trace( { CompleteEvent( "a", 1000, 100 ), CompleteEvent( "b", 1100, 40 ), CompleteEvent( "a", 1300, 20 ) } );
	EXPECT_THAT( Frames( trace, ByPeriod( 80 ) ),
		ElementsAre( FrameFigures{ { "", { 1, 80 } }, { "a", { 1, 80 } } },
			FrameFigures{ { "", { 1, 80 } }, { "a", { 0, 20 } }, { "b", { 1, 40 } } },
			FrameFigures{ { "", { 1, 80 } } }, FrameFigures{ { "", { 1, 80 } }, { "a", { 1, 20 } } } ) );
}

TEST( Frames, APeriodThatFitsMakesNoEmptyFrameAtTheEnd )
{
	EXPECT_EQ(
		Frames( Trace( { CompleteEvent( "a", 0, 40 ), CompleteEvent( "b", 40, 40 ) } ), ByPeriod( 40 ) ).size(), 2u );
}

TEST( Frames, APeriodThatMakesTooManyFramesIsRefused )
{
	const Conversion conversion =
		ConvertText( Trace( { CompleteEvent( "a", 0, 4 ), CompleteEvent( "a", 1e12, 4 ) } ), ByPeriod( 100 ) );
	EXPECT_FALSE( conversion.m_bDone );
	EXPECT_THAT( conversion.m_Problem.m_Text, HasSubstr( "1000000 frames" ) );
}

// Periods 1 to 4999 are empty, of which 1000 stay.
TEST( Frames, OfManyEmptyFramesInARowAThousandAreKeptAndTheOthersCounted )
{
	const Conversion conversion =
		ConvertText( Trace( { CompleteEvent( "a", 0, 40 ), CompleteEvent( "b", 400000, 20 ) } ), ByPeriod( 80 ) );
	const std::vector<FrameFigures> frames = FramesOf( conversion.m_Bytes );
	ASSERT_EQ( frames.size(), 1002u );
	EXPECT_EQ( frames[0], ( FrameFigures{ { "", { 1, 80 } }, { "a", { 1, 40 } } } ) );
	for ( size_t i = 1; i < 1001; i++ )
		ASSERT_EQ( frames[i], ( FrameFigures{ { "", { 1, 80 } } } ) ) << i;
	EXPECT_EQ( frames[1001], ( FrameFigures{ { "", { 1, 20 } }, { "b", { 1, 20 } } } ) );
	EXPECT_EQ( conversion.m_Report.Get( Note::EmptyFrames ), 3999u );
	EXPECT_FALSE( conversion.m_Report.IsDamaged() );
}

TEST( Frames, EveryStretchOfEmptyFramesKeepsAsMany )
{
	const auto countOf = []( int nEmpty )
	{
		std::vector<std::string> events;
		for ( int i = 0; i < 3; i++ )
			events.push_back( CompleteEvent( "a", i * ( nEmpty + 1 ) * 80.0, 40 ) );
		const Conversion conversion = ConvertText( Trace( events ), ByPeriod( 80 ) );
		return std::pair( FramesOf( conversion.m_Bytes ).size(), conversion.m_Report.Get( Note::EmptyFrames ) );
	};
	EXPECT_EQ( countOf( 999 ), ( std::pair<size_t, uint64_t>( 3 + 2 * 999, 0 ) ) );
	EXPECT_EQ( countOf( 1000 ), ( std::pair<size_t, uint64_t>( 3 + 2 * 1000, 0 ) ) );
	EXPECT_EQ( countOf( 1001 ), ( std::pair<size_t, uint64_t>( 3 + 2 * 1000, 2 ) ) );
}

TEST( Frames, EmptyFramesOfAThreadAreTheSameWhateverRunsOnOthers )
{
	std::vector<std::string> events = { CompleteEvent( "a", 0, 40 ), CompleteEvent( "b", 400000, 20 ) };
	for ( int i = 0; i < 500; i++ )
		events.push_back( CompleteEvent( "other", i * 800, 40, 2 ) );
	events.push_back( R"({"name":"instant","ph":"i","ts":200000,"pid":1,"tid":1})" );
	events.push_back( EndEvent( 300000 ) ); // of nothing
	ConversionOptions options = ByPeriod( 80 );
	options.m_Cut.m_Threads = { "1" };
	const Conversion conversion = ConvertText( Trace( events ), options );
	EXPECT_EQ( FramesOf( conversion.m_Bytes ).size(), 1002u );
	EXPECT_EQ( conversion.m_Report.Get( Note::EmptyFrames ), 3999u );
}

TEST( Frames, AFrameInWhichAScopeIsOpenIsNotEmpty )
{
	const Conversion conversion = ConvertText(
		Trace( { BeginEvent( "a", 0 ), BeginEvent( "b", 400000 ), EndEvent( 400020 ), EndEvent( 400040 ) } ),
		ByPeriod( 80 ) );
	const std::vector<FrameFigures> frames = FramesOf( conversion.m_Bytes );
	ASSERT_EQ( frames.size(), 5001u );
	EXPECT_EQ( frames[2500], ( FrameFigures{ { "", { 1, 80 } }, { "a", { 0, 80 } } } ) );
	EXPECT_EQ( conversion.m_Report.Get( Note::EmptyFrames ), 0u );
}

// Three frames, with 2 (the root and "F"), 3 and 3 nodes.
TEST( Frames, MoreEntriesThanTheyMayMakeAreRefused )
{
	const std::string trace = Trace( { CompleteEvent( "F", 0, 40 ), CompleteEvent( "F", 80, 40 ),
		CompleteEvent( "a", 120, 8 ), CompleteEvent( "F", 160, 40 ) } );
	ConversionOptions options = ByName( "F" );
	options.m_Cut.m_nMostEntries = 8;
	EXPECT_TRUE( ConvertText( trace, options ).m_bDone );
	options.m_Cut.m_nMostEntries = 7;
	const Conversion conversion = ConvertText( trace, options );
	EXPECT_FALSE( conversion.m_bDone );
	EXPECT_EQ(
		conversion.m_Problem.m_Text, "this makes more than 7 entries (frames times nodes); longer frames make fewer" );
}

TEST( Frames, TheEntriesOfALargeTraceAreThoseOfAnyAndOfASmallOneFewer )
{
	EXPECT_EQ( convert::MostEntriesOfTrace( -1 ), 4294967296u ) << "a pipe";
	EXPECT_EQ( convert::MostEntriesOfTrace( 0 ), 268435456u );
	EXPECT_EQ( convert::MostEntriesOfTrace( 1'000'000 ), 332435456u );
	EXPECT_EQ( convert::MostEntriesOfTrace( 1'000'000'000 ), 4294967296u );
	EXPECT_EQ( convert::MostEntriesOfTrace( INT64_MAX ), 4294967296u );
}

TEST( Frames, SeveralThreadsHaveANodeEach )
{
	const std::string trace = Trace( { Named( "thread_name", 1, "Main" ), CompleteEvent( "a", 0, 40, 1 ),
		CompleteEvent( "b", 0, 80, 2 ), CompleteEvent( "c", 60, 40, 1 ), Named( "process_name", 1, "game" ) } );
	EXPECT_THAT( Frames( trace, {} ),
		ElementsAre( FrameFigures{ { "", { 1, 100 } }, { "Main 1", { 2, 80 } }, { "Main 1/a", { 1, 40 } },
			{ "Main 1/c", { 1, 40 } }, { "thread 2", { 1, 80 } }, { "thread 2/b", { 1, 80 } } } ) );
}

TEST( Frames, AThreadIsChosenByNameOrId )
{
	const std::string trace = Trace(
		{ CompleteEvent( "a", 0, 40, 1 ), CompleteEvent( "b", 20, 80, 2 ), Named( "thread_name", 2, "Worker" ) } );
	EXPECT_THAT(
		Frames( trace, OfThread( "1" ) ), ElementsAre( FrameFigures{ { "", { 1, 40 } }, { "a", { 1, 40 } } } ) );
	EXPECT_THAT(
		Frames( trace, OfThread( "Worker" ) ), ElementsAre( FrameFigures{ { "", { 1, 80 } }, { "b", { 1, 80 } } } ) );
}

TEST( Frames, AProcessIsChosenByNameOrId )
{
	const std::string trace = R"([{"name":"a","ph":"X","ts":0,"dur":4,"pid":7,"tid":1},
		{"name":"b","ph":"X","ts":4,"dur":8,"pid":8,"tid":1},
		{"name":"process_name","ph":"M","pid":8,"args":{"name":"game"}}])";
	for ( const char *pProcess : { "8", "game" } )
	{
		ConversionOptions options;
		options.m_Cut.m_Processes = { pProcess };
		EXPECT_THAT( Frames( trace, options ), ElementsAre( FrameFigures{ { "", { 1, 8 } }, { "b", { 1, 8 } } } ) );
	}
	EXPECT_THAT( TopNodes( ConvertText( trace ).m_Bytes ), ElementsAre( "process 7: thread 1", "game 8: thread 1" ) );
}

TEST( Frames, AThreadThatIsNotThereIsAnErrorThatListsThoseThatAre )
{
	const Conversion conversion = ConvertText( Trace( { CompleteEvent( "a", 0, 4, 5 ) } ), OfThread( "Main" ) );
	EXPECT_FALSE( conversion.m_bDone );
	EXPECT_THAT( conversion.m_Problem.m_Text, HasSubstr( "\"process 1: thread 5\"" ) );
}

TEST( Frames, ChildrenAreInTheOrderInWhichTheyFirstRan )
{
	const Conversion conversion =
		ConvertText( Trace( { CompleteEvent( "z", 0, 4 ), CompleteEvent( "a", 8, 4 ), CompleteEvent( "m", 16, 4 ) } ) );
	EXPECT_THAT( TopNodes( conversion.m_Bytes ), ElementsAre( "z", "a", "m" ) );
}

TEST( Frames, TimesAreRoundedToTheUnitOfARecordingAndThatIsSaid )
{
	const Conversion conversion = ConvertText( Trace( { CompleteEvent( "a", 0, 1.999 ), CompleteEvent( "b", 4, 2 ),
		CompleteEvent( "c", 8, 5.999 ), CompleteEvent( "d", 16, 4 ) } ) );
	EXPECT_EQ(
		FramesOf( conversion.m_Bytes ).at( 0 ), ( FrameFigures{ { "", { 1, 20 } }, { "a", { 1, 0 } }, { "b", { 1, 4 } },
													{ "c", { 1, 4 } }, { "d", { 1, 4 } } } ) );
	EXPECT_EQ( conversion.m_Report.Get( Note::TimeRounded ), 3u );
}

TEST( Frames, RoundedChildrenFitIntoTheirParentAndFramesIntoTheWhole )
{
	// Ends at 2, 4 and 6 microseconds: at 1/2, 1 and 1 1/2 units of 4, the halves rounded up.
	ConversionOptions folded;
	folded.m_From = convert::Format::Folded;
	const std::string three = "a;x 2\na;y 2\na;z 2\n";
	EXPECT_EQ( FramesOf( ConvertText( three, folded ).m_Bytes ).at( 0 ),
		( FrameFigures{
			{ "", { 1, 8 } }, { "a", { 3, 8 } }, { "a/x", { 1, 4 } }, { "a/y", { 1, 0 } }, { "a/z", { 1, 4 } } } ) );

	// Frames of 5 microseconds end at 1 1/4, 2 1/2, 3 3/4 and 5 units.
	ConversionOptions options;
	options.m_Cut.m_nPeriod = 5000;
	const Conversion conversion = ConvertText( Trace( { CompleteEvent( "a", 0, 20 ) } ), options );
	std::vector<int64_t> times;
	for ( const FrameFigures &frame : FramesOf( conversion.m_Bytes ) )
	{
		times.push_back( frame.at( "" ).second );
		EXPECT_EQ( frame.at( "a" ).second, times.back() );
	}
	EXPECT_THAT( times, ElementsAre( 4, 8, 4, 4 ) );
}

TEST( Frames, WhatARecordingCannotHoldIsCutAndSaid )
{
	std::vector<std::string> events = { CompleteEvent( "long", 0, 3e9 ) };
	for ( int i = 0; i < 65536; i++ )
		events.push_back( CompleteEvent( "often", i * 8, 4 ) );
	const Conversion conversion = ConvertText( Trace( events ) );
	const FrameFigures frame = FramesOf( conversion.m_Bytes ).at( 0 );
	EXPECT_EQ( frame.at( "long" ).second, 2147483644 ) << "the greatest multiple of 4 that is a signed 32-bit number";
	EXPECT_EQ( frame.at( "long/often" ).first, 65535u );
	EXPECT_EQ( conversion.m_Report.Get( Note::LongTime ), 2u ) << "the scope and the frame";
	EXPECT_EQ( conversion.m_Report.Get( Note::ManyCalls ), 1u );
}

// Scopes at random, and their times in the frames by the plainest rule: what of the scope lies between the cuts.
namespace
{
struct RandomScope
{
	std::string m_Path;
	int64_t m_nBegin;
	int64_t m_nEnd;
};

class CRandomScopes
{
public:
	explicit CRandomScopes( uint32_t nSeed )
		: m_Random( nSeed )
	{
		Fill( 0, 4000, "", 0 );
	}
	int64_t Number( int64_t nFrom, int64_t nTo )
	{
		return std::uniform_int_distribution<int64_t>( nFrom, nTo )( m_Random );
	}

	std::vector<RandomScope> m_Scopes; // parents before children, in order of time
	std::mt19937 m_Random;

private:
	// Begins and ends lie on different multiples of 4, so that what is nested is clear from times alone.
	void Fill( int64_t nBegin, int64_t nEnd, const std::string &path, int nDepth )
	{
		for ( int64_t nTime = nBegin + 4 * Number( 1, 20 ); nTime + 8 < nEnd; )
		{
			const int64_t nScopeEnd = std::min( nTime + 4 * Number( 1, 120 ), nEnd - 4 );
			const std::string name( 1, static_cast<char>( 'a' + Number( 0, 3 ) ) );
			m_Scopes.push_back( { path + name, nTime, nScopeEnd } );
			if ( nDepth < 5 )
				Fill( nTime, nScopeEnd, path + name + "/", nDepth + 1 );
			nTime = nScopeEnd + 4 * Number( 1, 20 );
		}
	}
};

std::vector<FrameFigures> PlainFrames( const std::vector<RandomScope> &scopes, int64_t nPeriod )
{
	int64_t nFirst = scopes[0].m_nBegin;
	int64_t nLast = 0;
	for ( const RandomScope &scope : scopes )
		nLast = std::max( nLast, scope.m_nEnd );
	std::vector<FrameFigures> frames;
	for ( int64_t nBegin = nFirst; nBegin < nLast; nBegin += nPeriod )
	{
		const int64_t nEnd = std::min( nBegin + nPeriod, nLast );
		FrameFigures &frame = frames.emplace_back();
		frame[""] = { 1, static_cast<int32_t>( nEnd - nBegin ) };
		for ( const RandomScope &scope : scopes )
		{
			const int64_t nPart = std::min( nEnd, scope.m_nEnd ) - std::max( nBegin, scope.m_nBegin );
			const bool bCalled = scope.m_nBegin >= nBegin && scope.m_nBegin < nEnd;
			if ( nPart <= 0 && !bCalled )
				continue;
			frame[scope.m_Path].first += bCalled;
			frame[scope.m_Path].second += static_cast<int32_t>( nPart );
		}
	}
	return frames;
}

std::string NameOf( const RandomScope &scope )
{
	return scope.m_Path.substr( scope.m_Path.rfind( '/' ) + 1 );
}
} // namespace

TEST( Frames, RandomScopesInAnyOrderGiveThePlainSums )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	for ( uint32_t nRound = 0; nRound < 60; nRound++ )
	{
		CRandomScopes random( nSeed + nRound );
		std::vector<std::string> complete;
		for ( const RandomScope &scope : random.m_Scopes )
			complete.push_back( CompleteEvent( NameOf( scope ), static_cast<double>( scope.m_nBegin ),
				static_cast<double>( scope.m_nEnd - scope.m_nBegin ) ) );
		if ( nRound % 2 == 1 )
			std::shuffle( complete.begin(), complete.end(), random.m_Random );
		std::vector<std::string> pairs;
		std::vector<const RandomScope *> open;
		for ( const RandomScope &scope : random.m_Scopes )
		{
			for ( ; !open.empty() && open.back()->m_nEnd <= scope.m_nBegin; open.pop_back() )
				pairs.push_back( EndEvent( static_cast<double>( open.back()->m_nEnd ) ) );
			pairs.push_back( BeginEvent( NameOf( scope ), static_cast<double>( scope.m_nBegin ) ) );
			open.push_back( &scope );
		}
		for ( ; !open.empty(); open.pop_back() )
			pairs.push_back( EndEvent( static_cast<double>( open.back()->m_nEnd ) ) );

		ConversionOptions options = ByPeriod( 4 * random.Number( 20, 600 ) );
		options.m_nRunEvents = static_cast<size_t>( random.Number( 8, 64 ) ); // sorted in runs on disk
		const std::vector<FrameFigures> expected = PlainFrames( random.m_Scopes, options.m_Cut.m_nPeriod / 1000 );
		EXPECT_EQ( FramesOf( ConvertText( Trace( complete ), options ).m_Bytes ), expected );
		EXPECT_EQ( FramesOf( ConvertText( Trace( pairs ), options ).m_Bytes ), expected );
	}
}
