// What the commands show of their work on a terminal, with a clock of the test's own.
#include <gtest/gtest.h>

#include <sstream>

#include "keel0/platform.h"
#include "tests/tools/kestorun.h"
#include "tests/tools/samplerecordings.h"
#include "tools/command.h"

namespace
{
double g_flNow = 1.0;

// A second passes between any two looks at the clock, so that every step of the work is shown.
class CommandProgress : public testing::Test
{
protected:
	void SetUp() override
	{
		Plat_SetFloatTimeSource( [] { return g_flNow += 1.0; } );
	}
	void TearDown() override { Plat_SetFloatTimeSource( nullptr ); }

	// The lines that are written over each other on the terminal, each label once, without its percentage.
	std::vector<std::string> Labels( std::vector<std::string> arguments, bool bOutputIsShown = false )
	{
		std::vector<const char *> texts{ "kesto" };
		for ( const std::string &argument : arguments )
			texts.push_back( argument.c_str() );
		std::ostringstream output;
		std::ostringstream errors;
		std::ostringstream terminal;
		CommandContext context{ output, errors, &terminal };
		context.m_bOutputIsShown = bOutputIsShown;
		EXPECT_EQ( RunKesto( static_cast<int>( texts.size() ), texts.data(), context ), ExitStatus::Fine )
			<< errors.str();
		EXPECT_TRUE( terminal.str().empty() || terminal.str().ends_with( " \r" ) ) << "the last line is cleared";
		std::vector<std::string> labels;
		std::istringstream lines( terminal.str() );
		for ( std::string line; std::getline( lines, line, '\r' ); )
		{
			line.erase( line.find_last_not_of( " 0123456789%" ) + 1 );
			if ( !line.empty() && ( labels.empty() || labels.back() != line ) )
				labels.push_back( line );
		}
		return labels;
	}

	CTestFolder m_Folder;
	// So large that the decoder, which tells its progress every 128 KiB, has something to tell.
	const std::string m_Recording = m_Folder.Write(
		"x.kesto", MakeSample( std::vector<SampleFrame>( 10'000, SampleFrame{ 1000, 500, 400, 300 } ) ) );
	const std::string m_Reading = "Reading " + m_Recording;
	const std::string m_Decoding = "Decoding " + m_Recording;
};

using Labelled = std::vector<std::string>;
} // namespace

TEST_F( CommandProgress, IsShownOfReadingAndDecoding )
{
	for ( const char *pCommand : { "info", "frames" } )
		EXPECT_EQ( Labels( { pCommand, m_Recording } ), ( Labelled{ m_Reading, m_Decoding } ) ) << pCommand;
	EXPECT_EQ( Labels( { "check", m_Recording, "--frame", "<=40" } ), ( Labelled{ m_Reading, m_Decoding } ) );
}

TEST_F( CommandProgress, IsShownOfWhatTakesLongAfterThat )
{
	EXPECT_EQ( Labels( { "nodes", m_Recording } ), ( Labelled{ m_Reading, m_Decoding, "Writing -" } ) );
	EXPECT_EQ( Labels( { "dump", m_Recording } ), ( Labelled{ m_Reading, m_Decoding, "Writing -" } ) );
	EXPECT_EQ(
		Labels( { "convert", m_Recording, "-", "--to", "csv" } ), ( Labelled{ m_Reading, m_Decoding, "Writing -" } ) );
	EXPECT_EQ( Labels( { "compare", m_Recording, m_Recording } ),
		( Labelled{ m_Reading, m_Decoding, m_Reading, m_Decoding, "Comparing with " + m_Recording } ) );
	EXPECT_EQ( Labels( { "repair", m_Recording, m_Folder.Path( "y.kesto" ) } ), ( Labelled{ m_Reading, m_Decoding } ) );
}

TEST_F( CommandProgress, OfATraceIsReadingThenWriting )
{
	const std::string trace = m_Folder.Write( "x.folded", ToBytes( "a;b 4\n" ) );
	const std::string output = m_Folder.Path( "y.kesto" );
	EXPECT_EQ( Labels( { "convert", trace, output } ), ( Labelled{ "Reading " + trace, "Writing " + output } ) );
}

TEST_F( CommandProgress, IsNotMixedIntoWhatIsShownItself )
{
	for ( const char *pCommand : { "nodes", "dump" } )
	{
		EXPECT_EQ( Labels( { pCommand, m_Recording }, true ), ( Labelled{ m_Reading, m_Decoding } ) ) << pCommand;
		const std::string output = m_Folder.Path( "output" );
		EXPECT_EQ( Labels( { pCommand, m_Recording, "-o", output }, true ),
			( Labelled{ m_Reading, m_Decoding, "Writing " + output } ) );
	}
	EXPECT_EQ( Labels( { "convert", m_Recording, "-", "--to", "csv" }, true ), ( Labelled{ m_Reading, m_Decoding } ) );
}
