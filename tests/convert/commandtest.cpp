// The command `kesto convert`: statuses, messages, files.
#include <gmock/gmock.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/convert/conversions.h"
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

TEST_F( ConvertCommand, HelpShowsAnExample )
{
	EXPECT_EQ( Run( { "--help" } ), 0 );
	EXPECT_THAT( m_Output, HasSubstr( "kesto convert trace.json game.kesto --frame Frame" ) );
}
