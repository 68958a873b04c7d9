#include <gtest/gtest.h>

#include <string>

#include "tests/recordings/expecteddump.h"
#include "tests/recordings/recordingcorpus.h"
#include "tests/recordings/slowrecordingreader.h"
#include "tests/tools/kestorun.h"
#include "tests/tools/samplerecordings.h"

namespace
{
void ExpectDump( const std::vector<uint8_t> &bytes, const std::string &name )
{
	const CTestFolder folder;
	const SlowRecording model = ReadSlowly( bytes );
	const KestoRun run = CallKesto( { "dump", folder.Write( "x.kesto", bytes ) } );
	// Compared without printing: some of these are megabytes.
	EXPECT_TRUE( run.m_Output == ExpectedDump( model ) ) << name << ": " << run.m_Output.substr( 0, 400 );
	const int nDamaged = model.m_Frames.empty() ? 2 : 1;
	EXPECT_EQ( run.m_nStatus, model.m_bFailed ? nDamaged : 0 ) << name;
	EXPECT_EQ( run.m_Errors.empty(), !model.m_bFailed ) << name << run.m_Errors;
}
} // namespace

TEST( KestoDump, PrintsTheWholeModelInItsExactForm )
{
	const CTestFolder folder;
	CRecordingWriter writer = CRecordingWriter().Header( 0 ).BeginFrame();
	writer.Node( 0, "a\"b", 1, 7 ).String( "tab\t\\", 9 ).BeginTimings().Entry( 300, 10 ).Entry( 2, 70000 ).EndFrame();
	const KestoRun run = CallKesto( { "dump", folder.Write( "x.kesto", writer.m_Bytes ) } );
	EXPECT_EQ( run.m_Output, "{\"failed\":false,\"failure\":\"\",\"frames\":[[[300,40],[2,280000]]],"
							 "\"maxima\":[[40,0],[280000,0]],\"nodes\":[{\"first_child\":1,\"name\":\"\","
							 "\"next_sibling\":-1,\"parent\":-1,\"value\":0},{\"first_child\":-1,\"name\":\"a\\\"b\","
							 "\"next_sibling\":-1,\"parent\":0,\"value\":7}],\"root\":0,\"strings\":[{\"text\":"
							 "\"tab\\t\\\\\",\"value\":9}],\"sums\":[[300,40],[2,280000]]}\n" );
	EXPECT_EQ( run.m_nStatus, 0 );
	EXPECT_EQ( run.m_Errors, "" );
}

TEST( KestoDump, TurnsEachByteOfATextIntoTheCodePointOfThatNumber )
{
	const CTestFolder folder;
	CRecordingWriter writer =
		CRecordingWriter().Header( 0 ).BeginFrame().String( "\xE9\x80\xFF\x7F\x1F", 1 ).EndFrame();
	const KestoRun run = CallKesto( { "dump", folder.Write( "x.kesto", writer.m_Bytes ) } );
	EXPECT_NE(
		run.m_Output.find( "{\"text\":\"\\u00e9\\u0080\\u00ff\\u007f\\u001f\",\"value\":1}" ), std::string::npos )
		<< run.m_Output;
}

TEST( KestoDump, AgreesWithASlowReaderOnEveryRecordingOfTheCorpus )
{
	for ( const CorpusRecording &recording : MakeRecordingCorpus() )
	{
		if ( recording.m_Name != "sparse ids" ) // millions of entries, see below
			ExpectDump( recording.m_Bytes, recording.m_Name );
	}
}

TEST( KestoDump, PrintsEntriesThatTakeNoMemoryToo )
{
	constexpr int32_t LAST = 1048575;
	const CTestFolder folder;
	CRecordingWriter writer = CRecordingWriter().Header( LAST ).BeginFrame().BeginTimings().Entry( 1, 2 ).EndFrame();
	const KestoRun run = CallKesto( { "dump", folder.Write( "x.kesto", writer.m_Bytes ) } );
	const auto list = [&]( const std::string &zero, const std::string &last )
	{
		std::string text = "[";
		for ( int32_t i = 0; i < LAST; i++ )
			text += zero;
		return text + last + "]";
	};
	const std::string expected = "{\"failed\":false,\"failure\":\"\",\"frames\":[" + list( "[0,0],", "[1,8]" ) +
								 "],\"maxima\":" + list( "[0,-1],", "[8,0]" ) +
								 ",\"nodes\":[],\"root\":1048575,\"strings\":[],\"sums\":" + list( "[0,0],", "[1,8]" ) +
								 "}\n";
	EXPECT_TRUE( run.m_Output == expected ) << run.m_Output.size() << " bytes instead of " << expected.size();
}

TEST( KestoDump, AgreesWithASlowReaderOnRandomRecordings )
{
	for ( uint32_t nSeed = 0; nSeed < 150; nSeed++ )
		ExpectDump( MakeRandomRecording( nSeed ), "seed " + std::to_string( nSeed ) );
}

TEST( KestoDump, AgreesWithASlowReaderWhereverAFileIsCut )
{
	const std::vector<uint8_t> whole = MakeFourFrames();
	for ( size_t nLength = 0; nLength <= whole.size(); nLength++ )
		ExpectDump( { whole.begin(), whole.begin() + static_cast<ptrdiff_t>( nLength ) },
			"length " + std::to_string( nLength ) );
}

TEST( KestoDump, PrintsTheModelOfADamagedFileWithoutFramesToo )
{
	const CTestFolder folder;
	const KestoRun run = CallKesto( { "dump", folder.Write( "x.kesto", { 2, 0, 0, 0 } ) } );
	EXPECT_EQ( run.m_nStatus, 2 );
	EXPECT_EQ( run.m_Output, "{\"failed\":true,\"failure\":\"Unsupported file version\",\"frames\":[],\"maxima\":[],"
							 "\"nodes\":[],\"root\":-1,\"strings\":[],\"sums\":[]}\n" );
	EXPECT_EQ(
		run.m_Errors, "kesto: " + folder.Path( "x.kesto" ) + ": offset 4: Unsupported file version; frames kept: 0\n" );
}

TEST( KestoDump, TellsWhereAFileIsDamagedAndWhatWasKept )
{
	const CTestFolder folder;
	const std::vector<uint8_t> bytes = MakeDamaged();
	const KestoRun run = CallKesto( { "dump", folder.Write( "x.kesto", bytes ) } );
	// Without its last 5 bytes (end of frame, Solve's 3, one of Physics' time) the last one begins a time that is not
	// whole.
	const std::string offset = std::to_string( bytes.size() - 1 );
	EXPECT_EQ( run.m_Errors, "kesto: " + folder.Path( "x.kesto" ) + ": offset " + offset +
								 ": Truncated file; Timings truncated; frames kept: 2\n" );
	EXPECT_EQ( run.m_nStatus, 1 );
}

TEST( KestoDump, WritesAFileInsteadWhenOneIsNamed )
{
	const CTestFolder folder;
	const std::string input = folder.Write( "x.kesto", MakeFourFrames() );
	const KestoRun printed = CallKesto( { "dump", input } );
	const KestoRun written = CallKesto( { "dump", input, "--output", folder.Path( "x.json" ) } );
	EXPECT_EQ( written.m_Output, "" );
	EXPECT_EQ( written.m_nStatus, 0 );
	EXPECT_EQ( folder.Read( "x.json" ), printed.m_Output );
	EXPECT_EQ( folder.Names(), ( std::vector<std::string>{ "x.json", "x.kesto" } ) );
}
