#include "recordings/kestofile.h"

#include <gmock/gmock.h>

#include "tests/recordings/recordingreaders.h"
#include "tests/recordings/recordingwriter.h"

using testing::ElementsAre;

namespace
{
struct Parsed
{
	explicit Parsed( const CRecordingWriter &writer )
	{
		CKestoMemoryReader reader( writer.m_Bytes );
		m_pFile = ParseRecording( reader );
		m_bGood = reader.m_bGood;
		m_Failure = reader.GetFailureText();
	}

	CRefPtr<CKestoFile> m_pFile;
	bool m_bGood = false;
	std::string m_Failure;
};

// Root 0 with the children 1 and 2, and 3 below 1; the chain of children is the reverse of this order.
CRecordingWriter FourNodes()
{
	return CRecordingWriter().Header().BeginFrame().Node( 0, "one", 1 ).Node( 0, "two", 2 ).Node( 1, "three", 3 );
}

CKestoFile::CTickTimings::Entry EntryOf( const CKestoFile &file, int nFrame, int32_t nNode )
{
	return file.GetFrame( nFrame )->PeekEntry( nNode );
}

using Entry = CKestoFile::CTickTimings::Entry;
using Maximum = CKestoFile::Maximum;

TEST( KestoFile, AnEmptyFileHasAnUnsupportedVersion )
{
	const Parsed parsed{ CRecordingWriter() };
	EXPECT_EQ( parsed.m_Failure, "Truncated file\nUnsupported file version" );
	EXPECT_EQ( parsed.m_pFile->GetFrameCount(), 0 );
	EXPECT_EQ( parsed.m_pFile->GetRootNode(), -1 );
	EXPECT_EQ( parsed.m_pFile->GetNodeCount(), 0 );
}

TEST( KestoFile, AFileShorterThanItsVersionHasAnUnsupportedVersion )
{
	const Parsed parsed{ CRecordingWriter().U16( 1 ).U8( 0 ) };
	EXPECT_EQ( parsed.m_Failure, "Truncated file\nUnsupported file version" );
	EXPECT_EQ( parsed.m_pFile->GetFrameCount(), 0 );
}

TEST( KestoFile, AnotherVersionIsRefusedAndNothingIsKept )
{
	const Parsed parsed{ CRecordingWriter().Header( 7, 2 ).BeginFrame().EndFrame() };
	EXPECT_EQ( parsed.m_Failure, "Unsupported file version" );
	EXPECT_EQ( parsed.m_pFile->GetFrameCount(), 0 );
	EXPECT_EQ( parsed.m_pFile->GetRootNode(), -1 );
}

TEST( KestoFile, AHeaderAloneIsARecordingWithoutFrames )
{
	const Parsed parsed{ CRecordingWriter().Header( 7 ) };
	EXPECT_TRUE( parsed.m_bGood );
	EXPECT_EQ( parsed.m_Failure, "" );
	EXPECT_EQ( parsed.m_pFile->GetFrameCount(), 0 );
	EXPECT_EQ( parsed.m_pFile->GetRootNode(), 7 );
}

TEST( KestoFile, ARootThatCannotBeReadIsZero )
{
	const Parsed parsed{ CRecordingWriter().U32( 1 ).U16( 9 ) };
	EXPECT_EQ( parsed.m_Failure, "Truncated file" );
	EXPECT_EQ( parsed.m_pFile->GetRootNode(), 0 );
}

TEST( KestoFile, ARootOutOfRangeStopsBeforeTheFirstFrameAndIsKept )
{
	for ( const int32_t nRoot : { -1, -2147483647, 1048576, 2147483647 } )
	{
		const Parsed parsed{ CRecordingWriter().Header( nRoot ).BeginFrame().EndFrame() };
		EXPECT_EQ( parsed.m_Failure, "Root node id " + std::to_string( nRoot ) + " out of range" );
		EXPECT_EQ( parsed.m_pFile->GetFrameCount(), 0 );
		EXPECT_EQ( parsed.m_pFile->GetRootNode(), nRoot );
	}
}

TEST( KestoFile, TheEndMarkEndsTheRecordingWhateverFollows )
{
	const Parsed parsed{ CRecordingWriter().Header().BeginFrame().EndFrame().U8( 5 ).U32( 0xFFFFFFFF ) };
	EXPECT_TRUE( parsed.m_bGood );
	EXPECT_EQ( parsed.m_pFile->GetFrameCount(), 1 );
}

TEST( KestoFile, AnUnexpectedFrameHeaderIsReportedAsASignedByte )
{
	EXPECT_EQ( Parsed( CRecordingWriter().Header().U8( 0xFF ) ).m_Failure, "Frame header: unexpected token -1" );
	EXPECT_EQ( Parsed( CRecordingWriter().Header().U8( 4 ) ).m_Failure, "Frame header: unexpected token 4" );
}

TEST( KestoFile, AnInvalidTokenDropsItsFrameOnly )
{
	const Parsed parsed{ CRecordingWriter().Header().BeginFrame().EndFrame().BeginFrame().Node( 0, "n", 1 ).U8( 7 ) };
	EXPECT_EQ( parsed.m_Failure, "Invalid token 7" );
	EXPECT_EQ( parsed.m_pFile->GetFrameCount(), 1 );
	EXPECT_STREQ( parsed.m_pFile->GetNodeName( 1 ), "n" ) << "what the dropped frame defined stays";
	EXPECT_EQ( Parsed( CRecordingWriter().Header().BeginFrame().U8( 0x80 ) ).m_Failure, "Invalid token -128" );
	EXPECT_EQ( Parsed( CRecordingWriter().Header().BeginFrame().U8( 0 ) ).m_Failure, "Invalid token 0" );
	EXPECT_EQ( Parsed( CRecordingWriter().Header().BeginFrame().U8( 5 ) ).m_Failure, "Invalid token 5" );
}

TEST( KestoFile, ChildrenAreChainedInTheReverseOfTheirDefinition )
{
	const Parsed parsed{ FourNodes().EndFrame() };
	const CKestoFile &file = *parsed.m_pFile;
	EXPECT_EQ( file.GetNodeCount(), 4 );
	EXPECT_EQ( file.GetNodeFirstChild( 0 ), 2 );
	EXPECT_EQ( file.GetNodeNextSibling( 2 ), 1 );
	EXPECT_EQ( file.GetNodeNextSibling( 1 ), -1 );
	EXPECT_EQ( file.GetNodeFirstChild( 1 ), 3 );
	EXPECT_EQ( file.GetNodeParent( 3 ), 1 );
	EXPECT_EQ( file.GetNodeParent( 0 ), -1 );
	EXPECT_STREQ( file.GetNodeName( 0 ), "" );
}

TEST( KestoFile, NothingIsKnownOfNodesThatCannotBe )
{
	const Parsed parsed{ FourNodes().EndFrame() };
	for ( const int32_t nNode : { -1, 4, 1048576, 2147483647, -2147483647 - 1 } )
	{
		EXPECT_STREQ( parsed.m_pFile->GetNodeName( nNode ), "" );
		EXPECT_EQ( parsed.m_pFile->GetNodeParent( nNode ), -1 );
		EXPECT_EQ( parsed.m_pFile->GetNodeFirstChild( nNode ), -1 );
		EXPECT_EQ( parsed.m_pFile->GetNodeNextSibling( nNode ), -1 );
		EXPECT_EQ( parsed.m_pFile->GetMaximum( nNode ), Maximum{} );
		EXPECT_EQ( parsed.m_pFile->GetSum( nNode ), CKestoFile::Sum{} );
	}
}

TEST( KestoFile, ASecondDefinitionBelowTheSameParentChangesTheValueOnly )
{
	const Parsed parsed{
		CRecordingWriter().Header().BeginFrame().Node( 0, "old", 1, 10 ).Node( 0, "new", 1, 20 ).EndFrame() };
	EXPECT_STREQ( parsed.m_pFile->GetNodeName( 1 ), "old" );
	EXPECT_EQ( parsed.m_pFile->GetNodeValue( 1 ), 20u );
	EXPECT_EQ( parsed.m_pFile->GetNodeNextSibling( 1 ), -1 );
}

// The old parent's chain is deliberately not repaired: it runs on into the new siblings.
TEST( KestoFile, ADefinitionBelowAnotherParentMovesTheNodeAndLeavesTheOldChain )
{
	const Parsed parsed{ FourNodes().Node( 1, "moved", 2, 5 ).EndFrame() };
	const CKestoFile &file = *parsed.m_pFile;
	EXPECT_EQ( file.GetNodeFirstChild( 1 ), 2 );
	EXPECT_EQ( file.GetNodeNextSibling( 2 ), 3 );
	EXPECT_EQ( file.GetNodeParent( 2 ), 1 );
	EXPECT_STREQ( file.GetNodeName( 2 ), "moved" );
	EXPECT_EQ( file.GetNodeValue( 2 ), 5u );
	EXPECT_EQ( file.GetNodeFirstChild( 0 ), 2 ) << "still the head of the old chain, which lost the node 1";
}

TEST( KestoFile, AMovedNodeIsAlsoFoundThroughTheOldChain )
{
	// The chain of 0 is now 2, 3. So 3 is a child of 0 too, and defining it there changes its value only.
	const Parsed parsed{ FourNodes().Node( 1, "moved", 2 ).Node( 0, "again", 3, 8 ).EndFrame() };
	EXPECT_STREQ( parsed.m_pFile->GetNodeName( 3 ), "three" );
	EXPECT_EQ( parsed.m_pFile->GetNodeParent( 3 ), 1 );
	EXPECT_EQ( parsed.m_pFile->GetNodeValue( 3 ), 8u );
}

TEST( KestoFile, ANodeWithAnIdOutOfRangeFailsTheFrameAndGrowsNothing )
{
	for ( const auto &[nParent, nNode, nNamed] :
		{ std::tuple{ -3, 1048576, -3 }, { 2, -1, -1 }, { 1048576, 2, 1048576 } } )
	{
		const Parsed parsed{ CRecordingWriter().Header().BeginFrame().Node( nParent, "n", nNode ).EndFrame() };
		EXPECT_EQ( parsed.m_Failure, "Node id " + std::to_string( nNamed ) + " out of range" );
		EXPECT_EQ( parsed.m_pFile->GetNodeCount(), 0 );
		EXPECT_EQ( parsed.m_pFile->GetFrameCount(), 0 );
	}
}

TEST( KestoFile, TheLastIdIsAnId )
{
	const Parsed parsed{ CRecordingWriter().Header().BeginFrame().Node( 0, "last", 1048575 ).EndFrame() };
	EXPECT_TRUE( parsed.m_bGood );
	EXPECT_EQ( parsed.m_pFile->GetNodeCount(), 1048576 );
	EXPECT_STREQ( parsed.m_pFile->GetNodeName( 1048575 ), "last" );
}

TEST( KestoFile, ShortAndLongCallsAndTimesAreRead )
{
	const Parsed parsed{ FourNodes()
							 .BeginTimings()
							 .Entry( 254, 65534 )
							 .Entry( 300, 7 )  // node 2
							 .Entry( 0, 1000 ) // node 1
							 .U8( 255 )
							 .U16( 3 )
							 .U16( 65535 )
							 .U32( 1000 ) // node 3, longer than it must be
							 .EndFrame() };
	const CKestoFile &file = *parsed.m_pFile;
	EXPECT_EQ( EntryOf( file, 0, 0 ), ( Entry{ 254, 262136 } ) );
	EXPECT_EQ( EntryOf( file, 0, 2 ), ( Entry{ 300, 28 } ) );
	EXPECT_EQ( EntryOf( file, 0, 1 ), ( Entry{ 0, 4000 } ) );
	EXPECT_EQ( EntryOf( file, 0, 3 ), ( Entry{ 3, 4000 } ) );
	EXPECT_TRUE( parsed.m_bGood );
}

TEST( KestoFile, ATimeWrapsAt32Bits )
{
	const Parsed parsed{ CRecordingWriter().Header().BeginFrame().BeginTimings().Entry( 1, 0x40000001 ).EndFrame() };
	EXPECT_EQ( EntryOf( *parsed.m_pFile, 0, 0 ), ( Entry{ 1, 4 } ) );
}

TEST( KestoFile, ARecordCoversTheNodesThatAreKnownWhenItIsRead )
{
	const Parsed parsed{ CRecordingWriter()
							 .Header()
							 .BeginFrame()
							 .BeginTimings()
							 .Entry( 1, 1 )
							 .EndFrame()
							 .BeginFrame()
							 .Node( 0, "late", 1 )
							 .BeginTimings()
							 .Entry( 2, 2 )
							 .Entry( 3, 3 )
							 .EndFrame() };
	EXPECT_EQ( parsed.m_pFile->GetFrame( 0 )->GetCount(), 1 );
	EXPECT_EQ( parsed.m_pFile->GetFrame( 1 )->GetCount(), 2 );
	EXPECT_EQ( EntryOf( *parsed.m_pFile, 1, 1 ), ( Entry{ 3, 12 } ) );
}

TEST( KestoFile, TheSecondTimingsOfAFrameOverwriteTheFirst )
{
	const Parsed parsed{ CRecordingWriter()
							 .Header()
							 .BeginFrame()
							 .BeginTimings()
							 .Entry( 9, 9 )
							 .Node( 0, "one", 1 )
							 .BeginTimings()
							 .Entry( 1, 1 )
							 .Entry( 2, 2 )
							 .EndFrame() };
	EXPECT_EQ( EntryOf( *parsed.m_pFile, 0, 0 ), ( Entry{ 1, 4 } ) );
	EXPECT_EQ( EntryOf( *parsed.m_pFile, 0, 1 ), ( Entry{ 2, 8 } ) );
	EXPECT_EQ( parsed.m_pFile->GetSum( 0 ).m_nCalls, 1u );
}

TEST( KestoFile, ACutTimingsRecordIsReportedOnceAndDropsItsFrame )
{
	const CRecordingWriter whole =
		FourNodes().BeginTimings().Entry( 1, 1 ).Entry( 1, 1 ).Entry( 1, 1 ).Entry( 1, 1 ).EndFrame();
	const Parsed parsed{ CRecordingWriter( whole ).BeginFrame().BeginTimings().Entry( 1, 1 ).U8( 1 ) };
	EXPECT_EQ( parsed.m_Failure, "Truncated file\nTimings truncated" );
	EXPECT_EQ( parsed.m_pFile->GetFrameCount(), 1 );
	EXPECT_EQ( parsed.m_pFile->GetSum( 0 ).m_nCalls, 1u );
}

TEST( KestoFile, AFrameCutBeforeItsEndIsKept )
{
	const Parsed parsed{ CRecordingWriter().Header().BeginFrame().BeginTimings().Entry( 5, 5 ) };
	EXPECT_EQ( parsed.m_pFile->GetFrameCount(), 1 );
	EXPECT_EQ( parsed.m_Failure, "Truncated file" );
}

TEST( KestoFile, ADefinitionCutInsideItsIdIsAppliedToNodeZeroAndItsFrameIsKept )
{
	const Parsed parsed{ CRecordingWriter().Header().BeginFrame().U8( 1 ).U32( 2 ).Text( "cut" ).U32( 9 ).U16( 3 ) };
	EXPECT_EQ( parsed.m_Failure, "Truncated file" );
	EXPECT_EQ( parsed.m_pFile->GetFrameCount(), 1 );
	EXPECT_STREQ( parsed.m_pFile->GetNodeName( 0 ), "cut" );
	EXPECT_EQ( parsed.m_pFile->GetNodeParent( 0 ), 2 );
	EXPECT_EQ( parsed.m_pFile->GetNodeValue( 0 ), 9u );
}

TEST( KestoFile, AStringWithoutAnEndIsReported )
{
	const Parsed parsed{ CRecordingWriter().Header().BeginFrame().EndFrame().BeginFrame().U8( 2 ).U8( 'a' ) };
	EXPECT_EQ( parsed.m_Failure, "Truncated file\nNo String terminator past end of file" );
	EXPECT_EQ( parsed.m_pFile->GetFrameCount(), 1 );
}

TEST( KestoFile, StringsAreKeptInOrderWithDuplicatesAndCutAt511Bytes )
{
	const std::string longText( 600, 'x' );
	const Parsed parsed{
		CRecordingWriter().Header().BeginFrame().String( "a", 1 ).String( longText, 2 ).String( "a", 1 ).EndFrame() };
	ASSERT_EQ( parsed.m_pFile->GetStringTable().size(), 3u );
	EXPECT_STREQ( parsed.m_pFile->GetStringTable()[0].m_pText, "a" );
	EXPECT_EQ( parsed.m_pFile->GetStringTable()[1].m_pText, std::string( 511, 'x' ) );
	EXPECT_EQ( parsed.m_pFile->GetStringTable()[1].m_nValue, 2u );
	EXPECT_STREQ( parsed.m_pFile->GetStringTable()[2].m_pText, "a" );
	EXPECT_TRUE( parsed.m_bGood );
}

TEST( KestoFile, AStringWhoseValueIsCutIsAppendedAndFailsTheFrame )
{
	const Parsed parsed{ CRecordingWriter().Header().BeginFrame().U8( 2 ).Text( "s" ).U16( 7 ) };
	ASSERT_EQ( parsed.m_pFile->GetStringTable().size(), 1u );
	EXPECT_EQ( parsed.m_pFile->GetStringTable()[0].m_nValue, 0u );
	EXPECT_EQ( parsed.m_pFile->GetFrameCount(), 0 );
}

// Times 5, -7 and 7 in frames 0, 1 and 2: the comparison is by magnitude and strict. Stored times are multiples of 4.
TEST( KestoFile, MaximaAreComparedByMagnitudeAndTiesKeepTheEarlierFrame )
{
	CRecordingWriter writer;
	writer.Header();
	for ( const int32_t nTime : { 5, -7, 7 } )
		writer.BeginFrame().BeginTimings().Entry( 1, static_cast<uint32_t>( nTime ) ).EndFrame();
	EXPECT_EQ( Parsed( writer ).m_pFile->GetMaximum( 0 ), ( Maximum{ -28, 1 } ) );
}

TEST( KestoFile, TheMostNegativeTimeHasTheGreatestMagnitude )
{
	CRecordingWriter writer;
	writer.Header();
	for ( const uint32_t nTime : { 0x1FFFFFFFu, 0x20000000u, 0x1FFFFFFFu } )
		writer.BeginFrame().BeginTimings().Entry( 1, nTime ).EndFrame();
	EXPECT_EQ( Parsed( writer ).m_pFile->GetMaximum( 0 ), ( Maximum{ -2147483647 - 1, 1 } ) );
}

TEST( KestoFile, SumsWrapAt32Bits )
{
	CRecordingWriter writer;
	writer.Header();
	for ( int i = 0; i < 3; i++ )
		writer.BeginFrame().BeginTimings().Entry( 65535, 0x30000000 ).EndFrame();
	const CKestoFile::Sum sum = Parsed( writer ).m_pFile->GetSum( 0 );
	EXPECT_EQ( sum.m_nCalls, 3u * 65535u );
	EXPECT_EQ( sum.m_nTime, static_cast<uint32_t>( 3ull * 0xC0000000ull ) );
}

TEST( KestoFile, StatisticsAreAsLongAsTheLongestFrame )
{
	const Parsed parsed{ FourNodes().EndFrame() };
	EXPECT_EQ( parsed.m_pFile->GetStatisticsCount(), 0 ) << "the frame has no timings";
	const Parsed timed{
		CRecordingWriter().Header( 6 ).BeginFrame().BeginTimings().Entry( 0, 0 ).EndFrame().BeginFrame().EndFrame() };
	EXPECT_EQ( timed.m_pFile->GetStatisticsCount(), 7 );
	EXPECT_EQ( timed.m_pFile->GetMaximum( 6 ), Maximum{} ) << "a time of 0 is never a maximum";
}

TEST( KestoFile, ExclusiveTimeIsWhatTheChildrenLeave )
{
	const Parsed parsed{
		FourNodes().BeginTimings().Entry( 1, 10 ).Entry( 1, 3 ).Entry( 1, 4 ).Entry( 1, 6 ).EndFrame() };
	CKestoFile::CTickTimings &frame = *parsed.m_pFile->GetFrame( 0 );
	EXPECT_EQ( parsed.m_pFile->GetExclusiveTime( frame, 0 ), 4 * ( 10 - 3 - 4 ) );
	EXPECT_EQ( parsed.m_pFile->GetExclusiveTime( frame, 1 ), 4 * ( 4 - 6 ) ) << "may be negative";
	EXPECT_EQ( parsed.m_pFile->GetExclusiveTime( frame, 3 ), 4 * 6 );
}

TEST( KestoFile, ChildrenBehindTheEndOfAFrameTakeNoTime )
{
	const Parsed parsed{ CRecordingWriter()
							 .Header()
							 .BeginFrame()
							 .BeginTimings()
							 .Entry( 1, 10 )
							 .EndFrame()
							 .BeginFrame()
							 .Node( 0, "late", 5 )
							 .EndFrame() };
	CKestoFile::CTickTimings &frame = *parsed.m_pFile->GetFrame( 0 );
	EXPECT_EQ( parsed.m_pFile->GetExclusiveTime( frame, 0 ), 40 );
	EXPECT_EQ( frame.GetCount(), 1 ) << "children do not extend the frame";
	EXPECT_EQ( parsed.m_pFile->GetExclusiveTime( frame, 5 ), 0 );
	EXPECT_EQ( frame.GetCount(), 6 ) << "the node itself does";
}

TEST( KestoFile, ReadingBehindTheEndOfAFrameExtendsItByZeros )
{
	const Parsed parsed{ CRecordingWriter().Header().BeginFrame().EndFrame() };
	CKestoFile::CTickTimings &frame = *parsed.m_pFile->GetFrame( 0 );
	EXPECT_EQ( frame.GetCount(), 0 );
	EXPECT_EQ( frame.GetEntry( 41 ), ( Entry{ 0, 0 } ) );
	EXPECT_EQ( frame.GetCount(), 42 );
	EXPECT_EQ( frame.GetEntry( 3 ), ( Entry{ 0, 0 } ) );
	EXPECT_EQ( frame.GetCount(), 42 );
	EXPECT_EQ( frame.GetEntry( -1 ), ( Entry{ 0, 0 } ) );
	EXPECT_EQ( frame.GetEntry( 1048576 ), ( Entry{ 0, 0 } ) );
	EXPECT_EQ( frame.GetCount(), 42 ) << "ids that cannot be extend nothing";
}

TEST( KestoFile, AverageTimePerCallIsTotalTimeOverTotalCalls )
{
	CRecordingWriter writer;
	writer.Header();
	writer.BeginFrame().BeginTimings().Entry( 1, 10 ).EndFrame();
	writer.BeginFrame().BeginTimings().Entry( 2, 3 ).EndFrame();
	const Parsed parsed{ writer };
	EXPECT_DOUBLE_EQ( parsed.m_pFile->GetAverageTimePerCall( 0 ), 52.0 / 3.0 );
	EXPECT_EQ( parsed.m_pFile->GetAverageTimePerCall( 1 ), 0.0 );
}

TEST( KestoFile, TheNextFrameAtAThresholdIsTheFirstThatReachesIt )
{
	CRecordingWriter writer;
	writer.Header();
	for ( const uint32_t nTime : { 10u, 20u, 5u, 20u } )
		writer.BeginFrame().BeginTimings().Entry( 1, nTime ).EndFrame();
	const Parsed parsed{ writer };
	EXPECT_EQ( parsed.m_pFile->FindNextFrame( 0, 0, 80 ), ( Maximum{ 80, 1 } ) );
	EXPECT_EQ( parsed.m_pFile->FindNextFrame( 0, 2, 41 ), ( Maximum{ 80, 3 } ) );
	EXPECT_EQ( parsed.m_pFile->FindNextFrame( 0, 0, 81 ), ( Maximum{ 0, -1 } ) );
	EXPECT_EQ( parsed.m_pFile->FindNextFrame( 0, 4, 1 ), ( Maximum{ 0, -1 } ) );
	EXPECT_EQ( parsed.m_pFile->FindNextFrame( 7, 1, 0 ), ( Maximum{ 0, 1 } ) ) << "a node without times reads as 0";
	EXPECT_EQ( parsed.m_pFile->FindNextFrame( 0, -5, 80 ), ( Maximum{ 80, 1 } ) );
}

TEST( KestoFile, FramesOutsideTheRecordingAreNone )
{
	const Parsed parsed{ CRecordingWriter().Header().BeginFrame().EndFrame() };
	EXPECT_NE( parsed.m_pFile->GetFrame( 0 ), nullptr );
	EXPECT_EQ( parsed.m_pFile->GetFrame( -1 ), nullptr );
	EXPECT_EQ( parsed.m_pFile->GetFrame( 1 ), nullptr );
}

TEST( KestoFile, AFrameOutlivesItsFileWhileSomebodyHoldsIt )
{
	Parsed parsed{ CRecordingWriter().Header().BeginFrame().BeginTimings().Entry( 3, 4 ).EndFrame() };
	const CRefPtr<CKestoFile::CTickTimings> pFrame( parsed.m_pFile->GetFrame( 0 ) );
	parsed.m_pFile = {};
	EXPECT_EQ( pFrame->GetEntry( 0 ), ( Entry{ 3, 16 } ) );
}

// A reader with only the three operations that every reader has.
class CMinimalReader final : public CKestoFile::CReader
{
public:
	explicit CMinimalReader( const CRecordingWriter &writer )
		: m_Bytes( writer.m_Bytes )
	{
	}
	void ReportFailure( const char *pMessage ) override
	{
		m_Messages.emplace_back( pMessage );
		m_bGood = false;
	}
	int Read( void *pDestination, int nCount ) override
	{
		if ( !m_bGood || nCount > BytesLeft() )
			return 0;
		std::copy_n( m_Bytes.begin() + m_nPosition, nCount, static_cast<uint8_t *>( pDestination ) );
		m_nPosition += nCount;
		return nCount;
	}
	int64_t BytesLeft() const override { return static_cast<int64_t>( m_Bytes.size() ) - m_nPosition; }

	std::vector<uint8_t> m_Bytes;
	int64_t m_nPosition = 0;
	std::vector<std::string> m_Messages;
};

TEST( KestoFile, AReaderMayOfferNoSpans )
{
	CMinimalReader reader(
		FourNodes().BeginTimings().Entry( 1, 1 ).Entry( 2, 2 ).Entry( 3, 3 ).Entry( 4, 4 ).EndFrame() );
	const CRefPtr<CKestoFile> pFile = ParseRecording( reader );
	EXPECT_TRUE( reader.m_bGood );
	EXPECT_EQ( EntryOf( *pFile, 0, 3 ), ( Entry{ 4, 16 } ) );
}

// It should report why it delivers nothing. When it does not, a cycle of nodes must still come to an end.
TEST( KestoFile, AReaderThatRunsDryWithoutAWordDoesNotMakeACycleEndless )
{
	CMinimalReader reader( CRecordingWriter().Header().BeginFrame().Node( 0, "self", 0 ).BeginTimings().Entry( 1, 1 ) );
	const CRefPtr<CKestoFile> pFile = ParseRecording( reader );
	EXPECT_THAT( reader.m_Messages, ElementsAre( "Timings truncated" ) );
	EXPECT_EQ( pFile->GetFrameCount(), 0 );
}

// Notes where it was asked and where it made progress.
template <typename Base>
class CProgressLog final : public Base
{
public:
	using Base::Base;
	bool IsCancelled() override
	{
		m_Asked.push_back( this->GetPosition() );
		return this->GetPosition() >= m_nCancelFrom;
	}
	void OnProgress( int64_t nPosition ) override { m_Progress.push_back( nPosition ); }

	int64_t m_nCancelFrom = INT64_MAX;
	std::vector<int64_t> m_Asked;
	std::vector<int64_t> m_Progress;
};

CRecordingWriter LongRecording()
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	for ( int i = 1; i < 1000; i++ )
		writer.Node( i / 3, "node " + std::to_string( i ), i );
	writer.EndFrame();
	for ( unsigned nFrame = 0; nFrame < 150; nFrame++ )
	{
		writer.BeginFrame().BeginTimings();
		for ( unsigned i = 0; i < 1000; i++ )
			writer.Entry( i % 7 == 3 ? 300 + i : i % 250, i % 11 == nFrame % 11 ? 70000 + i : i );
		writer.EndFrame();
	}
	return writer;
}

TEST( KestoMemoryReader, StepsAreMadeAtTheSameFieldsWithAndWithoutSpans )
{
	const CRecordingWriter writer = LongRecording();
	CProgressLog<CKestoMemoryReader> spans( writer.m_Bytes );
	CProgressLog<CFieldwiseReader> fields( writer.m_Bytes );
	ParseRecording( spans );
	ParseRecording( fields );
	EXPECT_EQ( spans.m_Asked, fields.m_Asked );
	EXPECT_EQ( spans.m_Progress, fields.m_Progress );
	ASSERT_GE( spans.m_Asked.size(), 3u );
	EXPECT_GT( spans.m_Asked[0], 131072 ) << "a field that begins at 131,072 makes no step yet";
	EXPECT_LE( spans.m_Asked[0], 131072 + 4 );
	for ( size_t i = 0; i < spans.m_Asked.size(); i++ )
	{
		EXPECT_GE( spans.m_Progress[i], spans.m_Asked[i] + 1 );
		EXPECT_LE( spans.m_Progress[i], spans.m_Asked[i] + 4 );
	}
}

TEST( KestoMemoryReader, ASpanEndsWhereTheReadOfTheNextStepBegins )
{
	const std::vector<uint8_t> bytes( 400000 );
	CKestoMemoryReader reader( bytes );
	EXPECT_EQ( reader.PeekSpan().size(), 131072u + 1 ) << "a read from 131,072 on makes no step, one behind it does";
	reader.SkipSpan( 131072 );
	EXPECT_EQ( reader.PeekSpan().size(), 1u );
	reader.SkipSpan( 1 );
	EXPECT_TRUE( reader.PeekSpan().empty() );
	uint32_t nField = 0;
	EXPECT_EQ( reader.Read( &nField, 4 ), 4 );
	EXPECT_EQ( reader.GetPosition(), 131073 + 4 );
	EXPECT_EQ( reader.PeekSpan().size(), 131072u + 1 );
	reader.ReportFailure( "enough" );
	EXPECT_TRUE( reader.PeekSpan().empty() );
}

TEST( KestoMemoryReader, AStopIsNoticedAtTheNextStepAndKeepsTheFramesBefore )
{
	const CRecordingWriter writer = LongRecording();
	CProgressLog<CKestoMemoryReader> spans( writer.m_Bytes );
	CProgressLog<CFieldwiseReader> fields( writer.m_Bytes );
	spans.m_nCancelFrom = fields.m_nCancelFrom = 200000;
	const CRefPtr<CKestoFile> pFromSpans = ParseRecording( spans );
	const CRefPtr<CKestoFile> pFromFields = ParseRecording( fields );
	EXPECT_EQ( spans.GetFailureText(), "Decoding cancelled\nTimings truncated" );
	EXPECT_EQ( spans.GetFailureText(), fields.GetFailureText() );
	EXPECT_GT( pFromSpans->GetFrameCount(), 10 );
	EXPECT_LT( pFromSpans->GetFrameCount(), 151 );
	EXPECT_EQ( pFromSpans->GetFrameCount(), pFromFields->GetFrameCount() );
	EXPECT_EQ( spans.m_Progress.size(), 1u );
	EXPECT_EQ( spans.m_Progress, fields.m_Progress );
}

TEST( KestoMemoryReader, AShortReadDeliversNoPartOfTheBytes )
{
	const std::vector<uint8_t> bytes = { 1, 2, 3 };
	CKestoMemoryReader reader( bytes );
	uint32_t nValue = 77;
	EXPECT_EQ( reader.Read( &nValue, 4 ), 0 );
	EXPECT_EQ( nValue, 77u );
	EXPECT_EQ( reader.BytesLeft(), 3 );
	EXPECT_FALSE( reader.m_bGood );
	EXPECT_EQ( reader.Read( &nValue, 1 ), 0 ) << "nothing more is delivered after a failure";
	EXPECT_EQ( reader.GetFailureText(), "Truncated file" );
	reader.ReportFailure( "more" );
	EXPECT_EQ( reader.GetFailureText(), "Truncated file\nmore" );
}
} // namespace
