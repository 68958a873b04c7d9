#include "tools/recordingrepair.h"

#include <gtest/gtest.h>

#include "tests/recordings/recordingcorpus.h"
#include "tests/recordings/slowrecordingreader.h"
#include "tests/tools/kestorun.h"
#include "tests/tools/samplerecordings.h"

namespace
{
std::vector<uint8_t> Repaired( const std::vector<uint8_t> &bytes )
{
	const RecordingRepair repair = FindRepair( bytes );
	EXPECT_LE( repair.m_nLength, bytes.size() );
	std::vector<uint8_t> result( bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>( repair.m_nLength ) );
	result.insert( result.end(), repair.m_Tail.begin(), repair.m_Tail.end() );
	return result;
}

// The slow reader finds the same frames in both and nothing wrong with the repaired one.
void ExpectRepairable( const std::vector<uint8_t> &bytes, const std::string &name )
{
	const SlowRecording damaged = ReadSlowly( bytes );
	const RecordingRepair repair = FindRepair( bytes );
	EXPECT_EQ( repair.m_bDamaged, damaged.m_bFailed ) << name;
	EXPECT_EQ( repair.m_Failure, damaged.m_Failure ) << name;
	EXPECT_EQ( repair.m_nFrames, static_cast<int>( damaged.m_Frames.size() ) ) << name;
	if ( damaged.m_Frames.empty() )
		return;
	const SlowRecording whole = ReadSlowly( Repaired( bytes ) );
	EXPECT_FALSE( whole.m_bFailed ) << name << ": " << whole.m_Failure;
	ASSERT_EQ( whole.m_Frames.size(), damaged.m_Frames.size() ) << name;
	for ( size_t i = 0; i < whole.m_Frames.size(); i++ )
	{
		EXPECT_EQ( whole.m_Frames[i].m_Entries, damaged.m_Frames[i].m_Entries ) << name << ", frame " << i;
		EXPECT_EQ( whole.m_Frames[i].m_nLength, damaged.m_Frames[i].m_nLength ) << name << ", frame " << i;
	}
	EXPECT_EQ( whole.m_nRoot, damaged.m_nRoot ) << name;
	EXPECT_EQ( whole.m_Maxima, damaged.m_Maxima ) << name;
	EXPECT_EQ( whole.m_Sums, damaged.m_Sums ) << name;
}

void ExpectRepairableWhereverCut( const std::vector<uint8_t> &bytes, const std::string &name )
{
	for ( size_t nLength = 0; nLength <= bytes.size(); nLength++ )
		ExpectRepairable( { bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>( nLength ) },
			name + " cut to " + std::to_string( nLength ) );
}

std::vector<uint8_t> OneFrame()
{
	return MakeSample( { { 1000, 500, 400, 300 } } );
}
} // namespace

TEST( KestoRepair, MakesWholeFilesWhereverOneIsCut )
{
	ExpectRepairableWhereverCut( MakeFourFrames(), "four frames" );
}

TEST( KestoRepair, MakesWholeFilesOfTheCorpusWhereverTheyAreCut )
{
	for ( const CorpusRecording &recording : MakeRecordingCorpus() )
	{
		// Cut everywhere, a file with a million entries in its frames would be read for minutes.
		if ( recording.m_Name == "sparse ids" )
			ExpectRepairable( recording.m_Bytes, recording.m_Name );
		else
			ExpectRepairableWhereverCut( recording.m_Bytes, recording.m_Name );
	}
}

TEST( KestoRepair, MakesWholeFilesOfRandomOnes )
{
	for ( uint32_t nSeed = 0; nSeed < 300; nSeed++ )
		ExpectRepairable( MakeRandomRecording( nSeed ), "seed " + std::to_string( nSeed ) );
}

TEST( KestoRepair, LeavesAWholeFileAsItIs )
{
	const std::vector<uint8_t> bytes = CRecordingWriter{ MakeFourFrames() }.U8( 5 ).Text( "rest" ).m_Bytes;
	EXPECT_EQ( Repaired( bytes ), bytes );
}

TEST( KestoRepair, EndsAFrameThatWasCutAtItsEnd )
{
	const std::vector<uint8_t> whole = OneFrame();
	EXPECT_EQ( Repaired( { whole.begin(), whole.end() - 1 } ), whole );
}

TEST( KestoRepair, LeavesOutADefinitionThatWasCut )
{
	const std::vector<uint8_t> whole = OneFrame();
	CRecordingWriter writer;
	writer.m_Bytes.assign( whole.begin(), whole.end() - 1 );
	writer.U8( 1 ).U32( 1 ).Text( "lost" );
	for ( int nByte = 0; nByte < 8; nByte++ )
	{
		EXPECT_EQ( Repaired( writer.m_Bytes ), whole ) << nByte << " bytes behind the name";
		writer.U8( 9 );
	}
}

TEST( KestoRepair, CompletesTheHeaderOfAFrameThatEndsInIt )
{
	std::vector<uint8_t> bytes = OneFrame();
	std::vector<uint8_t> expected = bytes;
	expected.insert( expected.end(), { 0, 0, 0, 0, 0, 4 } );
	bytes.insert( bytes.end(), { 0, 7, 7 } );
	EXPECT_EQ( Repaired( bytes ), expected );
}

TEST( KestoRepair, DropsAFrameWithAWrongToken )
{
	const std::vector<uint8_t> whole = OneFrame();
	CRecordingWriter writer;
	writer.m_Bytes = whole;
	writer.BeginFrame().U8( 7 ).EndFrame();
	EXPECT_EQ( Repaired( writer.m_Bytes ), whole );
}

TEST( KestoRepair, WritesTheFileAndTellsWhatWasWrong )
{
	const CTestFolder folder;
	const KestoRun run =
		CallKesto( { "repair", folder.Write( "in.kesto", MakeDamaged() ), folder.Path( "out.kesto" ) } );
	EXPECT_EQ( run.m_nStatus, 1 );
	EXPECT_EQ( run.m_Output, "" );
	EXPECT_NE( run.m_Errors.find( ": Truncated file; Timings truncated; frames kept: 2\n" ), std::string::npos );
	const std::vector<uint8_t> expected = MakeSample( { { 1000, 500, 400, 300 }, { 2000, 500, 900, 700 } } );
	EXPECT_EQ( ToBytes( folder.Read( "out.kesto" ) ), expected );
}

TEST( KestoRepair, MayWriteOverItsInput )
{
	const CTestFolder folder;
	const std::string path = folder.Write( "x.kesto", MakeDamaged() );
	EXPECT_EQ( CallKesto( { "repair", path, path } ).m_nStatus, 1 );
	EXPECT_EQ( CallKesto( { "info", path } ).m_nStatus, 0 );
	EXPECT_EQ( folder.Names(), std::vector<std::string>{ "x.kesto" } );
}

TEST( KestoRepair, WithoutAFrameNothingIsWritten )
{
	const CTestFolder folder;
	folder.Write( "out.kesto", { 'o', 'l', 'd' } );
	for ( const std::vector<uint8_t> &bytes :
		{ std::vector<uint8_t>{}, { 2, 0, 0, 0 }, { 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9 } } )
	{
		const KestoRun run = CallKesto( { "repair", folder.Write( "in.kesto", bytes ), folder.Path( "out.kesto" ) } );
		EXPECT_EQ( run.m_nStatus, 2 );
		EXPECT_EQ( folder.Read( "out.kesto" ), "old" );
	}
	EXPECT_EQ( folder.Names(), ( std::vector<std::string>{ "in.kesto", "out.kesto" } ) );
}

TEST( KestoRepair, AFileOfOnlyTheHeaderIsWhole )
{
	const CTestFolder folder;
	const std::string path = folder.Write( "in.kesto", CRecordingWriter().Header( 0 ).m_Bytes );
	EXPECT_EQ( CallKesto( { "repair", path, folder.Path( "out.kesto" ) } ).m_nStatus, 0 );
	EXPECT_EQ( folder.Read( "out.kesto" ), folder.Read( "in.kesto" ) );
}
