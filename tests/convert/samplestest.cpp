// Sampled inputs: folded stacks, the text of perf script, speedscope files.
#include <gmock/gmock.h>

#include "tests/convert/conversions.h"

namespace
{
using convert::ConversionOptions;
using convert::Format;
using convert::Repair;
using testing::ElementsAre;
using testing::HasSubstr;

ConversionOptions From( Format format )
{
	ConversionOptions options;
	options.m_From = format;
	return options;
}

std::vector<FrameFigures> WholeFrames( const std::string &text, const ConversionOptions &options )
{
	const Conversion conversion = ConvertText( text, options );
	EXPECT_TRUE( conversion.m_bDone ) << conversion.m_Problem.m_Text;
	EXPECT_FALSE( conversion.m_Report.IsDamaged() ) << conversion.m_Report.Lines().front();
	return FramesOf( conversion.m_Bytes );
}

// As `perf record -e cpu-clock -F 4000 -g` and `perf script` write them; the first one without a symbol.
constexpr const char *PERF = R"(# captured on: a comment
demo_engine 4711/4711 [001] 15940.240000:     250000 cpu-clock:pppH: 
	    55d0c0ffee00 Solve(Body const&, int)+0x1c (/usr/bin/demo_engine)
	    55d0c0ffee10 Step+0x2a0 (/usr/bin/demo_engine)
	    55d0c0ffee20 main+0x10 (/usr/bin/demo_engine)

demo_engine 4711/4711 [001] 15940.240250:     250000 cpu-clock:pppH: 
	    7f1fc4d038a8 [unknown] (/usr/lib/libc.so.6)
	    55d0c0ffee20 main+0x99 (/usr/bin/demo_engine)

demo_engine 4711/4712 [000] 15940.240500:     500000 cpu-clock:pppH: 
	    55d0c0ffee30 Mix (inlined)
	    55d0c0ffee40 Audio+0x1 (/usr/bin/demo_engine)

)";
} // namespace

TEST( PerfScript, APeriodOfAClockIsTheTimeOfItsSample )
{
	ConversionOptions options = From( Format::Perf );
	options.m_Cut.m_Threads = { "4711" };
	EXPECT_THAT( WholeFrames( PERF, options ),
		ElementsAre(
			FrameFigures{ { "", { 1, 500 } }, { "main", { 2, 500 } }, { "main/Step", { 1, 252 } }, // to 250, rounded
				{ "main/Step/Solve(Body const&, int)", { 1, 252 } }, { "main/[unknown] (libc.so.6)", { 1, 248 } } } ) );
}

TEST( PerfScript, ThreadsHaveTheNamesOfTheirCommands )
{
	EXPECT_THAT( TopNodes( ConvertText( PERF, From( Format::Perf ) ).m_Bytes ),
		ElementsAre( "demo_engine 4711", "demo_engine 4712" ) );
}

TEST( PerfScript, OtherPeriodsAreNoTimesSoASampleLastsToTheNextOneOfItsThread )
{
	const auto head = []( const char *pTime )
	{ return "my prog 7 [000] " + std::string( pTime ) + ":  1234567 cycles:u: \n"; };
	const std::string text = head( "1.000000" ) + "\tffff a+0x1 (x)\n\n" + head( "1.001000" ) + "\tffff b (x)\n\n" +
							 head( "1.002000" ) + "\tffff a (x)\n\n" +
							 // Nothing ran for nine seconds: this sample counts twice the usual interval.
							 head( "1.003000" ) + "\tffff c (x)\n\n" + head( "10.000000" ) + "\tffff d (x)\n\n";
	EXPECT_THAT( WholeFrames( text, From( Format::Perf ) ),
		ElementsAre( FrameFigures{ { "", { 1, 6000 } }, { "a", { 2, 2000 } }, { "b", { 1, 1000 } },
			{ "c", { 1, 2000 } }, { "d", { 1, 1000 } } } ) );
}

TEST( PerfScript, ATimeForEachSampleCanBeGiven )
{
	ConversionOptions options = From( Format::Perf );
	options.m_Import.m_flSampleTime = 10'000;
	options.m_Cut.m_Threads = { "4712" };
	EXPECT_THAT( WholeFrames( PERF, options ), ElementsAre( FrameFigures{ { "", { 1, 10'000 } },
												   { "Audio", { 1, 10'000 } }, { "Audio/Mix", { 1, 10'000 } } } ) );
}

TEST( PerfScript, SamplesWithoutStacksHaveTheirSymbolOnTheLine )
{
	const std::string text =
		"a:b c 7 1.5: 4000 task-clock:  ffff80 main+0x4 (/bin/x)\na:b c 7 1.6: 8000 task-clock:  ffff80 f (/bin/x)\n";
	EXPECT_THAT( WholeFrames( text, From( Format::Perf ) ),
		ElementsAre( FrameFigures{ { "", { 1, 12 } }, { "main", { 1, 4 } }, { "f", { 1, 8 } } } ) );
}

TEST( PerfScript, APeriodCutsSamplesByTheirTimes )
{
	ConversionOptions options = From( Format::Perf );
	options.m_Cut.m_nPeriod = 250'000;
	const std::vector<FrameFigures> frames = WholeFrames( PERF, options );
	ASSERT_EQ( frames.size(), 3u );
	EXPECT_EQ( frames[1].at( "" ), ( Figures{ 1, 248 } ) ) << "from 250, which was rounded up, to 500";
	EXPECT_EQ( frames[2].at( "demo_engine 4712/Audio" ), ( Figures{ 1, 500 } ) );
}

// Two hours lie between the samples.
TEST( PerfScript, AProcessThatSleepsMakesAThousandEmptyFrames )
{
	ConversionOptions options = From( Format::Perf );
	options.m_Cut.m_nPeriod = 10'000'000;
	const auto sample = []( const char *pTime )
	{ return "p 7 " + std::string( pTime ) + ": 4000 cpu-clock: \n\tff main (x)\n\n"; };
	const Conversion conversion = ConvertText( sample( "1.0" ) + sample( "7201.0" ), options );
	const std::vector<FrameFigures> frames = FramesOf( conversion.m_Bytes );
	ASSERT_EQ( frames.size(), 1002u );
	EXPECT_EQ( frames.front(), frames.back() );
	EXPECT_EQ( frames[500], ( FrameFigures{ { "", { 1, 0 } } } ) );
	EXPECT_THAT( conversion.m_Report.Lines(), ElementsAre( "718999 frames in which nothing ran were left out: 1000 in "
														   "a row are kept" ) );
}

TEST( PerfScript, AScopeOfSamplesCutsFramesWhereItAppears )
{
	ConversionOptions options = From( Format::Perf );
	options.m_Cut.m_FrameName = "Step";
	const auto sample = []( const char *pTime, const char *pSymbol )
	{ return "p 7 " + std::string( pTime ) + ": 1000000 cpu-clock: \n\tff " + pSymbol + " (x)\n\tff main (x)\n\n"; };
	EXPECT_THAT( WholeFrames( sample( "1.0", "Step" ) + sample( "1.1", "Step" ) + sample( "1.2", "Wait" ) +
								  sample( "1.3", "Step" ),
					 options ),
		ElementsAre( FrameFigures{ { "", { 1, 3000 } }, { "main", { 3, 3000 } }, { "main/Step", { 2, 2000 } },
						 { "main/Wait", { 1, 1000 } } },
			FrameFigures{ { "", { 1, 1000 } }, { "main", { 1, 1000 } }, { "main/Step", { 1, 1000 } } } ) );
}

TEST( PerfScript, LinesThatAreNeitherAreCountedWithThePlaceOfTheFirst )
{
	const Conversion conversion = ConvertText( std::string( PERF ) + "what is this\n", From( Format::Perf ) );
	EXPECT_EQ( conversion.m_Report.Get( Repair::Unreadable ), 1u );
	EXPECT_THAT(
		conversion.m_Report.Lines().at( 0 ), HasSubstr( "at byte " + std::to_string( std::string( PERF ).size() ) ) );
}

TEST( PerfScript, CutAtEveryByteItConvertsOrSaysWhyNot )
{
	const std::string whole = PERF;
	for ( size_t nSize = 0; nSize < whole.size(); nSize++ )
	{
		const Conversion conversion = ConvertText( whole.substr( 0, nSize ), From( Format::Perf ) );
		const size_t nThird = whole.find( "4711/4712" );
		if ( conversion.m_bDone )
		{
			EXPECT_LE( FramesOf( conversion.m_Bytes ).size(), 1u );
			const auto names = TopNodes( conversion.m_Bytes );
			EXPECT_EQ(
				names.size() == 2 && names[1] == "demo_engine 4712", nSize > whole.find( "15940.2405", nThird ) + 12 )
				<< nSize;
		}
		else
			EXPECT_FALSE( conversion.m_Problem.m_Text.empty() );
	}
}

TEST( FoldedStacks, NumbersAreMicroseconds )
{
	EXPECT_THAT( WholeFrames( "main;draw;clear 40\nmain;draw 60.5\r\n\nmain 100\n", From( Format::Folded ) ),
		ElementsAre( FrameFigures{ { "", { 1, 200 } }, { "main", { 3, 200 } }, { "main/draw", { 2, 100 } },
			{ "main/draw/clear", { 1, 40 } } } ) );
}

TEST( FoldedStacks, NumbersOfSamplesTimesTheTimeOfOne )
{
	ConversionOptions options = From( Format::Folded );
	options.m_Import.m_flSampleTime = 1000;
	EXPECT_THAT( WholeFrames( "main;a b 3\nmain 1", options ),
		ElementsAre( FrameFigures{ { "", { 1, 4000 } }, { "main", { 4, 4000 } }, { "main/a b", { 3, 3000 } } } ) );
}

TEST( FoldedStacks, LinesWithoutANumberAreCountedAndNegativeOnesTakenAsNone )
{
	const Conversion conversion = ConvertText( "a 4\nb\nc;d x\ne NaN\nf -8\n", From( Format::Folded ) );
	EXPECT_EQ( FramesOf( conversion.m_Bytes ).at( 0 ),
		( FrameFigures{ { "", { 1, 4 } }, { "a", { 1, 4 } }, { "f", { 1, 0 } } } ) );
	EXPECT_EQ( conversion.m_Report.Get( Repair::Unreadable ), 3u );
	EXPECT_EQ( conversion.m_Report.Get( Repair::NegativeTime ), 1u );
}

TEST( FoldedStacks, TextWithoutAnyIsRefused )
{
	const Conversion conversion = ConvertText( "hello\nworld\n", From( Format::Folded ) );
	EXPECT_FALSE( conversion.m_bDone );
	EXPECT_THAT( conversion.m_Problem.m_Text, HasSubstr( "no line is a folded stack" ) );
}

TEST( FoldedStacks, ALineLongerThanTheWindowIsOneLine )
{
	const std::string path = testing::TempDir() + "longline.folded";
	std::FILE *pFile = std::fopen( path.c_str(), "w" );
	const std::string name( 3 * convert::CInputStream::WINDOW_SIZE, 'x' );
	std::fprintf( pFile, "a 4\n%s 8\nb 12\n", name.c_str() );
	std::fclose( pFile );
	convert::CInputStream input;
	ASSERT_TRUE( input.Open( path ) );
	convert::CReport report;
	convert::CTrace trace( report, testing::TempDir() );
	convert::ImportProblem problem;
	EXPECT_TRUE( ImportFolded( input, trace, {}, problem ) );
	EXPECT_EQ( trace.m_Spool.Count(), 2u ) << "the lines around it";
	EXPECT_EQ( report.Get( Repair::Unreadable ), 1u );
	std::remove( path.c_str() );
}

TEST( Speedscope, EventedProfilesAreScopes )
{
	for ( const char *pOrder : { R"({"shared":{"frames":[{"name":"a"},{"name":"b","line":4}]},"profiles":[PROFILE]})",
			  R"({"profiles":[PROFILE],"shared":{"frames":[{"file":"x","name":"a"},{"name":"b"}]}})" } )
		for ( const char *pProfile :
			{ R"({"type":"evented","name":"p","unit":"milliseconds","startValue":0,"endValue":3,"events":[EVENTS]})",
				R"({"events":[EVENTS],"unit":"milliseconds","name":"p","type":"evented"})" } )
		{
			std::string text = pOrder;
			text.replace( text.find( "PROFILE" ), 7, pProfile );
			text.replace( text.find( "EVENTS" ), 6,
				R"({"type":"O","frame":0,"at":0},{"at":1,"frame":1,"type":"O"},{"type":"C","frame":1,"at":1.5},{"type":"C","frame":0,"at":3})" );
			EXPECT_THAT( WholeFrames( text, From( Format::Speedscope ) ),
				ElementsAre( FrameFigures{ { "", { 1, 3000 } }, { "a", { 1, 3000 } }, { "a/b", { 1, 500 } } } ) )
				<< text;
		}
}

TEST( Speedscope, SampledProfilesAreSamplesWithWeightsOnEitherSide )
{
	for ( const char *pLists : { R"("samples":[[0,1],[0],[]],"weights":[0.004,0.008,0.1])",
			  R"("weights":[0.004,0.008,0.1],"samples":[[0,1],[0],[]])" } )
	{
		const std::string text = R"({"profiles":[{"type":"sampled","unit":"seconds","startValue":5,)" +
								 std::string( pLists ) + R"(}],"shared":{"frames":[{"name":"a"},{"name":"b"}]}})";
		EXPECT_THAT( WholeFrames( text, From( Format::Speedscope ) ),
			ElementsAre( FrameFigures{ { "", { 1, 112'000 } }, { "a", { 2, 12'000 } }, { "a/b", { 1, 4'000 } } } ) )
			<< text;
	}
}

// Sample i is of frame i % 3 and lasts 4 * (i % 5) microseconds; a run of events is four, so the lists wait on disk.
TEST( Speedscope, TheListThatComesFirstWaitsOnDiskForTheOther )
{
	constexpr int SAMPLES = 3000;
	std::string samples;
	std::string weights;
	std::map<std::string, Figures> expected;
	int32_t nAll = 0;
	for ( int i = 0; i < SAMPLES; i++ )
	{
		samples += ( i > 0 ? ",[" : "[" ) + std::to_string( i % 3 ) + "]";
		weights += ( i > 0 ? "," : "" ) + std::to_string( 4 * ( i % 5 ) );
		Figures &figures = expected[std::string( 1, static_cast<char>( 'a' + i % 3 ) )];
		figures.first++;
		figures.second += 4 * ( i % 5 );
		nAll += 4 * ( i % 5 );
	}
	expected[""] = { 1, nAll };
	const std::string front =
		R"({"shared":{"frames":[{"name":"a"},{"name":"b"},{"name":"c"}]},"profiles":[{"unit":"none",)";
	ConversionOptions options = From( Format::Speedscope );
	options.m_nRunEvents = 4;
	for ( const std::string &lists : { "\"samples\":[" + samples + "],\"weights\":[" + weights + "]",
			  "\"weights\":[" + weights + "],\"samples\":[" + samples + "]" } )
		EXPECT_THAT( WholeFrames( front + lists + "}]}", options ), ElementsAre( expected ) );
}

TEST( Speedscope, WhatWaitsNeedsAFolder )
{
	convert::CInputStream input;
	input.OpenMemory(
		R"({"profiles":[{"samples":[[0],[0],[0]],"weights":[4,4,4]}],"shared":{"frames":[{"name":"a"}]}})" );
	convert::CReport report;
	convert::CTrace trace( report, "/nowhere/at/all", 1 );
	convert::ImportProblem problem;
	EXPECT_FALSE( ImportSpeedscope( input, trace, {}, problem ) );
	EXPECT_THAT( problem.m_Text, HasSubstr( "\"/nowhere/at/all\": No such file" ) );
}

TEST( Speedscope, EveryProfileHasItsOwnUnitAndStart )
{
	const std::string text = R"({"shared":{"frames":[{"name":"a"}]},"profiles":[{},
		{"unit":"milliseconds","events":[{"type":"O","frame":0,"at":1},{"type":"C","frame":0,"at":2}]},
		{"name":"two","unit":"seconds","startValue":1,"samples":[[0]],"weights":[0.5]},{"samples":[[0]],"weights":[8]}]})";
	EXPECT_THAT( WholeFrames( text, From( Format::Speedscope ) ),
		ElementsAre( FrameFigures{ { "", { 1, 1'000'000 } }, { "thread 1", { 1, 1000 } }, { "thread 1/a", { 1, 1000 } },
			{ "two 2", { 1, 500'000 } }, { "two 2/a", { 1, 500'000 } }, { "thread 3", { 1, 8 } },
			{ "thread 3/a", { 1, 8 } } } ) );
}

TEST( Speedscope, EveryProfileIsAThread )
{
	const std::string text = R"({"shared":{"frames":[{"name":"a"}]},"profiles":[
		{"type":"sampled","name":"one","unit":"none","samples":[[0]],"weights":[4]},
		{"type":"sampled","name":"two","unit":"none","samples":[[0],[0]],"weights":[8,8]}]})";
	EXPECT_THAT( TopNodes( ConvertText( text, From( Format::Speedscope ) ).m_Bytes ), ElementsAre( "one 0", "two 1" ) );
	ConversionOptions options = From( Format::Speedscope );
	options.m_Cut.m_Threads = { "two" };
	options.m_Import.m_flSampleTime = 1000;
	EXPECT_THAT(
		WholeFrames( text, options ), ElementsAre( FrameFigures{ { "", { 1, 16'000 } }, { "a", { 16, 16'000 } } } ) );
}

TEST( Speedscope, WhatIsNoProfileInTheListOfThemIsPassedOver )
{
	const std::string profile = R"({"type":"sampled","unit":"microseconds","samples":[[0]],"weights":[8]})";
	for ( const std::string &list :
		{ "[[1,\"x\"]," + profile + "]", "{\"a\":[2],\"b\":" + profile + "}", "[7," + profile + "]" } )
		EXPECT_THAT( WholeFrames( R"({"profiles":)" + list + R"(,"shared":{"frames":[{"name":"a"}]}})",
						 From( Format::Speedscope ) ),
			ElementsAre( FrameFigures{ { "", { 1, 8 } }, { "a", { 1, 8 } } } ) )
			<< list;
}

TEST( Speedscope, OnlyTheListOfFramesNamesThem )
{
	EXPECT_THAT( WholeFrames( R"({"shared":{"frames":[{"name":"a"}],"other":[{"name":"b"}]},"profiles":[)"
							  R"({"type":"sampled","unit":"microseconds","samples":[[0]],"weights":[8]}]})",
					 From( Format::Speedscope ) ),
		ElementsAre( FrameFigures{ { "", { 1, 8 } }, { "a", { 1, 8 } } } ) );
}

TEST( Speedscope, IndicesThatAreNoFramesAndListsOfDifferentLengthsAreCounted )
{
	const Conversion conversion = ConvertText( R"({"shared":{"frames":[{"name":"a"},{}]},"profiles":[
		{"type":"sampled","unit":"microseconds","samples":[[0],[7],[0,"x"],[1],[0],[0]],"weights":[4,4,4,4,8]}]})",
		From( Format::Speedscope ) );
	EXPECT_EQ( FramesOf( conversion.m_Bytes ).at( 0 ), ( FrameFigures{ { "", { 1, 12 } }, { "a", { 2, 12 } } } ) );
	EXPECT_EQ( conversion.m_Report.Get( Repair::UnusableEvent ), 4u );
}

TEST( Speedscope, CutAtEveryByteAllWholeEventsAreKept )
{
	const std::string whole =
		R"({"shared":{"frames":[{"name":"a"},{"name":"b"}]},"profiles":[{"type":"evented","unit":"microseconds","events":[)"
		R"({"type":"O","frame":0,"at":0},{"type":"O","frame":1,"at":4},{"type":"C","frame":1,"at":8},{"type":"C","frame":0,"at":12}]}]})";
	const size_t nFirst = whole.find( "{\"type\":\"O\"" );
	for ( size_t nSize = 0; nSize < whole.size(); nSize++ )
	{
		const Conversion conversion = ConvertText( whole.substr( 0, nSize ), From( Format::Speedscope ) );
		size_t nEvents = 0;
		for ( size_t nAt = nFirst; ( nAt = whole.find( '}', nAt + 1 ) ) < nSize && nEvents < 4; )
			nEvents++;
		ASSERT_EQ( conversion.m_bDone, nEvents > 0 ) << nSize;
		if ( !conversion.m_bDone )
			continue;
		EXPECT_EQ( conversion.m_Report.Get( Repair::Cut ), 1u ) << nSize;
		EXPECT_EQ( FramesOf( conversion.m_Bytes ).at( 0 ).count( "a/b" ), nEvents > 1 ? 1u : 0u ) << nSize;
	}
}

TEST( Speedscope, NamesAreMadeUpWhenTheInputEndsBeforeThem )
{
	const Conversion conversion = ConvertText( R"({"profiles":[{"type":"evented","unit":"microseconds","events":[)"
											   R"({"type":"O","frame":3,"at":0},{"type":"C","frame":3,"at":12}],)",
		From( Format::Speedscope ) );
	EXPECT_EQ(
		FramesOf( conversion.m_Bytes ).at( 0 ), ( FrameFigures{ { "", { 1, 12 } }, { "frame 3", { 1, 12 } } } ) );
}
