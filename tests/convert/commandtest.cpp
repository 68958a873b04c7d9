// The command `kesto convert`: statuses, messages, files.
#include <gmock/gmock.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/convert/conversions.h"
#include "tests/recordings/recordingwriter.h"
#include "tools/command.h"

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class ConvertCommand : public testing::Test
{
protected:
	void SetUp() override
	{
		m_Folder = testing::TempDir() + "convert_" + testing::UnitTest::GetInstance()->current_test_info()->name();
		std::filesystem::remove_all( m_Folder );
		std::filesystem::create_directories( m_Folder );
	}
	void TearDown() override { std::filesystem::remove_all( m_Folder ); }

	std::string Path( const std::string &name ) const { return m_Folder + "/" + name; }
	void Write( const std::string &name, const std::string &text ) const
	{
		std::ofstream( Path( name ), std::ios::binary ) << text;
	}
	std::string Read( const std::string &name ) const
	{
		std::ostringstream text;
		text << std::ifstream( Path( name ), std::ios::binary ).rdbuf();
		return text.str();
	}
	std::vector<std::string> Files() const
	{
		std::vector<std::string> names;
		for ( const auto &entry : std::filesystem::directory_iterator( m_Folder ) )
			names.push_back( entry.path().filename() );
		std::sort( names.begin(), names.end() );
		return names;
	}

	int Run( std::vector<std::string> arguments )
	{
		arguments.insert( arguments.begin(), { "kesto", "convert" } );
		std::vector<const char *> pointers;
		for ( const std::string &argument : arguments )
			pointers.push_back( argument.c_str() );
		std::ostringstream output;
		std::ostringstream errors;
		CommandContext context{ output, errors, nullptr };
		const ExitStatus status = RunKesto( static_cast<int>( pointers.size() ), pointers.data(), context );
		m_Output = output.str();
		m_Errors = errors.str();
		return static_cast<int>( status );
	}

	std::string m_Folder;
	std::string m_Output;
	std::string m_Errors;
};

static const std::string WHOLE = Trace( { CompleteEvent( "F", 0, 40 ), CompleteEvent( "F", 100, 40 ) } );

TEST_F( ConvertCommand, AWholeTraceIsConvertedWithoutAWord )
{
	Write( "in.json", WHOLE );
	EXPECT_EQ( Run( { Path( "in.json" ), Path( "out.kesto" ), "--frame", "F" } ), 0 );
	EXPECT_THAT( m_Errors, IsEmpty() );
	EXPECT_THAT( m_Output, IsEmpty() );
	EXPECT_EQ( FramesOf( Read( "out.kesto" ) ).size(), 2u );
	EXPECT_EQ( Files().size(), 2u ) << "no temporary file is left";
}

TEST_F( ConvertCommand, RepairsAreCountedOnALineEachAndGiveStatus1 )
{
	Write( "in.json", WHOLE.substr( 0, WHOLE.size() - 3 ) + "," + EndEvent( 200 ) );
	EXPECT_EQ( Run( { Path( "in.json" ), Path( "out.kesto" ) } ), 1 );
	EXPECT_EQ( m_Errors.find( "kesto: " + Path( "in.json" ) + ": 1 early end of the input, at byte " ), 0u )
		<< m_Errors;
	EXPECT_FALSE( FramesOf( Read( "out.kesto" ) ).empty() );
}

TEST_F( ConvertCommand, AnInputThatCannotBeUsedGivesStatus2WithOneLineAndLeavesTheOutputAlone )
{
	Write( "out.kesto", "what was there" );
	const std::pair<std::string, std::string> inputs[] = {
		{ "", "offset 0: the file is empty" },
		{ "hello\n", "offset 0: no known format begins like this" },
		{ "{\"a\":7", "offset 6: no list of events" },
		{ "[{\"ph\":", "offset 0: no event could be read" },
		{ std::string( "\1\0\0\0", 4 ), "offset 4: Truncated file; frames kept: 0" },
	};
	for ( const auto &[input, problem] : inputs )
	{
		Write( "in", input );
		EXPECT_EQ( Run( { Path( "in" ), Path( "out.kesto" ) } ), 2 ) << input;
		EXPECT_THAT( m_Errors, StartsWith( "kesto: " + Path( "in" ) + ": " + problem ) );
		EXPECT_EQ( std::count( m_Errors.begin(), m_Errors.end(), '\n' ), 1 );
		EXPECT_EQ( Read( "out.kesto" ), "what was there" );
		EXPECT_EQ( Files().size(), 2u );
	}
	EXPECT_EQ( Run( { Path( "not there" ), Path( "out.kesto" ) } ), 2 );
	EXPECT_EQ( m_Errors, "kesto: " + Path( "not there" ) + ": No such file or directory\n" );
	EXPECT_EQ( Run( { m_Folder, Path( "out.kesto" ) } ), 2 );
	EXPECT_EQ( m_Errors, "kesto: " + m_Folder + ": Is a directory\n" );
	EXPECT_EQ( Run( { "/proc/self/mem", Path( "out.kesto" ) } ), 2 ); // nothing lies at address 0
	EXPECT_EQ( m_Errors, "kesto: /proc/self/mem: offset 0: Input/output error\n" );
}

TEST_F( ConvertCommand, AWrongCommandLineGivesStatus2 )
{
	Write( "in.json", WHOLE );
	Write( "in.kesto", ConvertText( WHOLE ).m_Bytes );
	const std::vector<std::string> wrong[] = { {}, { Path( "in.json" ) }, { Path( "in.json" ), Path( "out.txt" ) },
		{ Path( "in.json" ), Path( "o.kesto" ), "--to", "perf" },
		{ Path( "in.json" ), Path( "o.kesto" ), "--from", "csv" },
		{ Path( "in.json" ), Path( "o.kesto" ), "--period", "0" },
		{ Path( "in.json" ), Path( "o.kesto" ), "--period", "x" },
		{ Path( "in.json" ), Path( "o.kesto" ), "--period", "4", "--frame", "F" },
		{ Path( "in.json" ), Path( "o.kesto" ), "--sample-time", "-1" },
		{ Path( "in.json" ), Path( "o.kesto" ), "--frame", "G" },
		{ Path( "in.json" ), Path( "o.kesto" ), "--thread", "G" },
		{ Path( "in.kesto" ), Path( "o.json" ), "--frame", "F" }, { Path( "in.json" ), Path( "no folder/o.kesto" ) } };
	for ( const std::vector<std::string> &arguments : wrong )
	{
		EXPECT_EQ( Run( arguments ), 2 ) << testing::PrintToString( arguments );
		EXPECT_THAT( m_Errors, StartsWith( "kesto: " ) );
		EXPECT_EQ( std::count( m_Errors.begin(), m_Errors.end(), '\n' ), 1 ) << m_Errors;
		EXPECT_EQ( Files().size(), 2u ) << testing::PrintToString( arguments );
	}
}

TEST_F( ConvertCommand, FormatsCanBeNamed )
{
	Write( "in", "a;b 4\n" );
	EXPECT_EQ( Run( { Path( "in" ), Path( "out" ), "--from", "folded", "--to", "csv" } ), 0 );
	EXPECT_THAT( Read( "out" ), HasSubstr( "\n0,2,1,2,b,1,4,4\n" ) );
}

TEST_F( ConvertCommand, ADashIsStandardOutput )
{
	Write( "in.json", WHOLE );
	EXPECT_EQ( Run( { Path( "in.json" ), "-", "--to", "folded" } ), 0 );
	EXPECT_EQ( m_Output, "[frame] 60\nF 80\n" );
}

TEST_F( ConvertCommand, EveryTargetIsReadBackByItsContent )
{
	Write( "in.json", WHOLE );
	ASSERT_EQ( Run( { Path( "in.json" ), Path( "a.kesto" ), "--frame", "F" } ), 0 );
	for ( const char *pName : { "b.kesto", "b.json", "b.speedscope.json" } )
	{
		EXPECT_EQ( Run( { Path( "a.kesto" ), Path( pName ) } ), 0 ) << m_Errors;
		EXPECT_EQ( Run( { Path( pName ), Path( "c.kesto" ) } ), 0 ) << m_Errors;
		EXPECT_EQ( FramesOf( Read( "c.kesto" ) ), FramesOf( Read( "a.kesto" ) ) ) << pName;
	}
}

TEST_F( ConvertCommand, ADamagedRecordingIsConvertedAsFarAsItGoes )
{
	const std::string recording = [&]
	{
		convert::ConversionOptions options;
		options.m_Cut.m_FrameName = "F";
		return ConvertText( WHOLE, options ).m_Bytes;
	}();
	Write( "in.kesto", recording.substr( 0, recording.size() - 2 ) );
	EXPECT_EQ( Run( { Path( "in.kesto" ), Path( "out.kesto" ) } ), 1 );
	EXPECT_THAT( m_Errors, HasSubstr( "Truncated file; Timings truncated; frames kept: 1\n" ) );
	EXPECT_EQ( FramesOf( Read( "out.kesto" ) ).size(), 1u );
}

// Every frame's list is as long as the root's id says, so that none tells that it does not know the nodes of the last
// one: 3000 times 10001 entries.
TEST_F( ConvertCommand, ADamagedRecordingWhoseNodesDoNotFitItsFramesIsRefused )
{
	CRecordingWriter writer = CRecordingWriter().Header( 1048575 );
	for ( int i = 0; i < 3000; i++ )
		writer.BeginFrame().BeginTimings().Entry( 1, 1 ).EndFrame();
	writer.BeginFrame();
	for ( int i = 0; i < 10000; i++ )
		writer.Node( 1048575, "n", i );
	writer.EndFrame();
	Write( "in.kesto", std::string( writer.m_Bytes.begin(), writer.m_Bytes.end() ) );
	for ( const char *pOutput : { "out.kesto", "out.json", "out.speedscope.json", "out.folded", "out.csv" } )
	{
		EXPECT_EQ( Run( { Path( "in.kesto" ), Path( pOutput ) } ), 2 ) << pOutput;
		EXPECT_EQ(
			m_Errors, "kesto: " + Path( "in.kesto" ) +
						  ": the nodes are not those of the frames: together they would make 30003000 entries, far "
						  "more than the file holds\n" );
		EXPECT_EQ( Files(), std::vector<std::string>{ "in.kesto" } ) << "nothing is left";
	}
}

TEST_F( ConvertCommand, WhatIsSaidOfAConversionComesOnlyWithItsOutput )
{
	Write( "in.json", Trace( { CompleteEvent( "a", 0, 1 ) } ) );
	EXPECT_EQ( Run( { Path( "in.json" ), "/dev/full", "--to", "kesto" } ), 2 );
	EXPECT_EQ( m_Errors, "kesto: /dev/full: No space left on device\n" );
}

TEST_F( ConvertCommand, SaysThatAPackedInputIsPacked )
{
	Write( "in.json", std::string( "\x1F\x8B\x08\0\0", 5 ) );
	EXPECT_EQ( Run( { Path( "in.json" ), Path( "out.kesto" ) } ), 2 );
	EXPECT_EQ( m_Errors, "kesto: " + Path( "in.json" ) + ": offset 0: this is packed (gzip): unpack it first\n" );
}

TEST_F( ConvertCommand, SaysWhatATimeLineThatWasAddedUpDoesNotShow )
{
	Write( "in.json", WHOLE );
	for ( const char *pOutput : { "out.json", "out.speedscope.json" } )
	{
		EXPECT_EQ( Run( { Path( "in.json" ), Path( pOutput ) } ), 0 );
		EXPECT_THAT(
			m_Errors, HasSubstr( ": 2 scopes were added up by frame and node: it is not shown when each of them "
								 "ran\n" ) );
	}
}

// The same stack in every format that is read, to every format that is written; what comes back is "a" with 100 and "b"
// in it with 40 microseconds.
TEST_F( ConvertCommand, EveryFormatGoesToEveryOther )
{
	const std::string trace = Trace( { BeginEvent( "a", 0 ), BeginEvent( "b", 20 ), EndEvent( 60 ), EndEvent( 100 ) } );
	const std::string perf = "p 7 1.0: 60000 cpu-clock: \n\tff a (x)\n\np 7 1.1: 40000 cpu-clock: \n\tff b (x)\n"
							 "\tff a (x)\n\n";
	const std::pair<const char *, std::string> inputs[] = {
		{ "in.kesto", ConvertText( trace ).m_Bytes },
		{ "in.json", trace },
		{ "in.object.json", "{\"traceEvents\":" + trace + "}" },
		{ "in.speedscope.json", R"({"shared":{"frames":[{"name":"a"},{"name":"b"}]},"profiles":[{"type":"sampled",)"
								R"("unit":"microseconds","samples":[[0],[0,1]],"weights":[60,40]}]})" },
		{ "in.folded", "a 60\na;b 40\n" },
		{ "in.perf", perf },
	};
	const auto timesOf = [this]( const char *pName )
	{
		std::map<std::string, int32_t> times;
		for ( const FrameFigures &frame : FramesOf( Read( pName ) ) )
			for ( const auto &[path, figures] : frame )
				times[path] += figures.second;
		return times;
	};
	const std::map<std::string, int32_t> expected = { { "", 100 }, { "a", 100 }, { "a/b", 40 } };
	for ( const auto &[pInput, text] : inputs )
	{
		SCOPED_TRACE( pInput );
		Write( pInput, text );
		for ( const char *pOutput : { "out.kesto", "out.json", "out.speedscope.json", "out.folded" } )
		{
			EXPECT_EQ( Run( { Path( pInput ), Path( pOutput ) } ), 0 ) << pOutput << m_Errors;
			EXPECT_EQ( Run( { Path( pOutput ), Path( "back.kesto" ) } ), 0 ) << pOutput << m_Errors;
			std::map<std::string, int32_t> times = timesOf( "back.kesto" );
			EXPECT_EQ( times, expected ) << pOutput;
		}
		EXPECT_EQ( Run( { Path( pInput ), Path( "out.csv" ) } ), 0 ) << m_Errors;
		EXPECT_THAT( Read( "out.csv" ), HasSubstr( ",100,60\n" ) );
		EXPECT_THAT( Read( "out.csv" ), HasSubstr( ",40,40\n" ) );
	}
}

TEST_F( ConvertCommand, InputAndOutputMayBeTheSameFile )
{
	Write( "x.json", WHOLE );
	EXPECT_EQ( Run( { Path( "x.json" ), Path( "x.json" ), "--to", "kesto", "--frame", "F" } ), 0 );
	EXPECT_EQ( FramesOf( Read( "x.json" ) ).size(), 2u );
	EXPECT_EQ( Files(), std::vector<std::string>{ "x.json" } );
}

TEST_F( ConvertCommand, HelpShowsAnExample )
{
	EXPECT_EQ( Run( { "--help" } ), 0 );
	EXPECT_THAT( m_Output, HasSubstr( "kesto convert trace.json game.kesto --frame Frame" ) );
}
