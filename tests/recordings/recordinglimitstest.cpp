#include <gtest/gtest.h>

#include "tests/recordings/recordingreaders.h"
#include "tests/recordings/recordingwriter.h"

namespace
{
constexpr int32_t LAST_ID = 1048575;
constexpr size_t BYTES = 16 << 20;

// Each of these ends within the time limit of a test only when no list of nodes is walked again and again.

TEST( RecordingLimits, ManyFramesWithARootAtTheLastIdAreSmall )
{
	CRecordingWriter writer = CRecordingWriter().Header( LAST_ID );
	int nFrames = 0;
	for ( ; writer.m_Bytes.size() < BYTES / 4; nFrames++ )
		writer.BeginFrame().BeginTimings().Entry( 1, 1 ).EndFrame();
	CKestoMemoryReader reader( writer.m_Bytes );
	const CRefPtr<CKestoFile> pFile = ParseRecording( reader );
	EXPECT_TRUE( reader.m_bGood );
	ASSERT_EQ( pFile->GetFrameCount(), nFrames );
	EXPECT_EQ( pFile->GetFrame( nFrames - 1 )->GetCount(), LAST_ID + 1 );
	EXPECT_EQ( pFile->GetSum( LAST_ID ).m_nCalls, static_cast<uint32_t>( nFrames ) );
}

TEST( RecordingLimits, AMillionChildrenOfOneParentAreNotWalkedForEachOther )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int32_t i = 1; i <= LAST_ID; i++ )
		writer.Node( 0, "", i );
	CKestoMemoryReader reader( writer.EndFrame().m_Bytes );
	const CRefPtr<CKestoFile> pFile = ParseRecording( reader );
	EXPECT_TRUE( reader.m_bGood );
	EXPECT_EQ( pFile->GetNodeFirstChild( 0 ), LAST_ID );
	EXPECT_EQ( pFile->GetNodeNextSibling( LAST_ID ), LAST_ID - 1 );
}

TEST( RecordingLimits, DefiningTheChildrenOfALongChainAgainDoesNotWalkItEither )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int32_t i = 1; i < 500000; i++ )
		writer.Node( 0, "", i );
	for ( int32_t i = 1; i < 500000; i++ )
		writer.Node( 0, "new", i, 9 );
	CKestoMemoryReader reader( writer.EndFrame().m_Bytes );
	const CRefPtr<CKestoFile> pFile = ParseRecording( reader );
	EXPECT_TRUE( reader.m_bGood );
	EXPECT_EQ( pFile->GetNodeValue( 1 ), 9u );
	EXPECT_STREQ( pFile->GetNodeName( 1 ), "" );
}

TEST( RecordingLimits, NorDoesItOnceAChainRunsThroughAMovedNode )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int32_t i = 1; i < 300000; i++ )
		writer.Node( 0, "", i );
	// The node that was linked first is at the end of the chain; moved, it continues it with what is below 300000.
	writer.Node( 300000, "", 300001 ).Node( 300000, "", 1 );
	for ( int32_t i = 2; i < 300000; i++ )
		writer.Node( 0, "new", i, 9 );
	for ( int32_t i = 2; i < 300000; i++ )
		writer.Node( 0, "", 300001, static_cast<uint32_t>( i ) );
	CKestoMemoryReader reader( writer.EndFrame().m_Bytes );
	const CRefPtr<CKestoFile> pFile = ParseRecording( reader );
	EXPECT_TRUE( reader.m_bGood );
	EXPECT_EQ( pFile->GetNodeValue( 2 ), 9u );
	EXPECT_EQ( pFile->GetNodeParent( 300001 ), 300000 ) << "it was found in the chain of 0 each time";
	EXPECT_EQ( pFile->GetNodeValue( 300001 ), 299999u );
}

TEST( RecordingLimits, AChainOf500000LevelsIsReadWithoutRecursion )
{
	constexpr int32_t LEVELS = 500000;
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int32_t i = 1; i <= LEVELS; i++ )
		writer.Node( i - 1, "", i );
	writer.BeginTimings();
	for ( int32_t i = 0; i <= LEVELS; i++ )
		writer.Entry( 1, static_cast<uint32_t>( i ) );
	CKestoMemoryReader reader( writer.EndFrame().m_Bytes );
	const CRefPtr<CKestoFile> pFile = ParseRecording( reader );
	EXPECT_TRUE( reader.m_bGood );
	ASSERT_EQ( pFile->GetFrameCount(), 1 );
	for ( int32_t i = 0; i <= LEVELS; i++ )
		ASSERT_EQ( pFile->GetFrame( 0 )->PeekEntry( i ).m_nTime, 4u * static_cast<uint32_t>( i ) );
}

TEST( RecordingLimits, ACycleIsReadUntilTheDataEnds )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame().Node( 0, "self", 0 ).BeginTimings();
	while ( writer.m_Bytes.size() < BYTES )
		writer.Entry( 1, 1 );
	CKestoMemoryReader reader( writer.m_Bytes );
	ParseRecording( reader );
	EXPECT_EQ( reader.GetFailureText(), "Truncated file\nTimings truncated" ) << "reported once, however deep it was";
}

TEST( RecordingLimits, LinkingANodeBeforeEachRecordCostsNoMoreThanReadingIt )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	constexpr int32_t NODES = 2000;
	for ( int32_t i = 1; i < NODES; i++ )
		writer.Node( i / 2, "", i );
	writer.EndFrame();
	int32_t nNodes = NODES;
	for ( int nFrame = 0; nFrame < 200; nFrame++ )
	{
		writer.BeginFrame().Node( 7, "", nNodes++ ).BeginTimings();
		for ( int32_t i = 0; i < nNodes; i++ )
			writer.Entry( 1, 1 );
		writer.EndFrame();
	}
	CKestoMemoryReader reader( writer.m_Bytes );
	const CRefPtr<CKestoFile> pFile = ParseRecording( reader );
	EXPECT_TRUE( reader.m_bGood );
	EXPECT_EQ( pFile->GetSum( 0 ).m_nCalls, 200u );
	EXPECT_EQ( pFile->GetSum( nNodes - 1 ).m_nCalls, 1u );
}
} // namespace
