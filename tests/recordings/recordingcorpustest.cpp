#include <gtest/gtest.h>

#include "tests/recordings/recordingcorpus.h"
#include "tests/recordings/recordingoracle.h"
#include "tests/recordings/recordingwriter.h"

namespace
{
TEST( RecordingCorpus, TheParserAgreesWithTheSlowReader )
{
	for ( const CorpusRecording &recording : MakeRecordingCorpus() )
		EXPECT_EQ( CompareAllReaders( recording.m_Bytes ), "" ) << recording.m_Name;
}

// What the oracle itself says of a recording that is easy to read, so that two readers cannot be wrong together.
TEST( RecordingCorpus, TheSlowReaderReadsAnOrdinaryRecordingRight )
{
	const SlowRecording recording = ReadSlowly( MakeRecordingCorpus()[4].m_Bytes );
	EXPECT_FALSE( recording.m_bFailed );
	ASSERT_EQ( recording.m_Frames.size(), 6u );
	EXPECT_EQ( recording.m_Nodes.at( 3 ).m_nFirstChild, 6 );
	EXPECT_EQ( recording.m_Nodes.at( 6 ).m_nNextSibling, 7 );
	EXPECT_EQ( recording.m_Nodes.at( 7 ).m_nFirstChild, 5 );
	EXPECT_EQ( recording.m_Nodes.at( 7 ).m_Name, "render" );
	EXPECT_EQ( recording.m_Nodes.at( 7 ).m_nValue, 99u );
	// The order is 2, 3, 6, 7, 5, 4, 0: so 7 has the entry 3, which in the frame 3 (the third with timings) is a long
	// time.
	EXPECT_EQ( recording.m_Frames[3].m_Entries.at( 7 ), ( SlowRecording::Figures{ 3, 4 * ( 65535 + 3000 ) } ) );
	EXPECT_EQ( recording.m_Frames[5].m_Entries.size(), 8u );
}

TEST( RecordingCorpus, ThreeRecordingsCutAtEveryByteReadTheSame )
{
	for ( const CorpusRecording &recording : MakeRecordingCorpus() )
	{
		if ( recording.m_Name != "ordinary" && recording.m_Name != "reached twice" && recording.m_Name != "sparse ids" )
			continue;
		for ( size_t nSize = 0; nSize <= recording.m_Bytes.size(); nSize++ )
			ASSERT_EQ( CompareAllReaders( std::span( recording.m_Bytes ).first( nSize ) ), "" )
				<< recording.m_Name << " cut after " << nSize << " bytes";
	}
}

TEST( RecordingCorpus, EverySingleByteChangeOfARecordingReadsTheSame )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame().Node( 0, "a", 1 ).Node( 1, "b", 2 );
	writer.String( "s", 3 ).BeginTimings().Entry( 1, 1 ).Entry( 300, 70000 ).Entry( 3, 3 ).EndFrame();
	writer.BeginFrame().Node( 2, "a", 1 ).EndFrame().BeginFrame().BeginTimings().Entry( 1, 1 ).EndFrame().U8( 5 );
	for ( size_t i = 0; i < writer.m_Bytes.size(); i++ )
		for ( unsigned nChange = 1; nChange < 256; nChange++ )
		{
			std::vector<uint8_t> bytes = writer.m_Bytes;
			bytes[i] = static_cast<uint8_t>( bytes[i] ^ nChange );
			ASSERT_EQ( CompareAllReaders( bytes ), "" ) << "byte " << i << " changed to " << int{ bytes[i] };
		}
}

TEST( RecordingCorpus, RandomRecordingsReadTheSame )
{
	size_t nWhole = 0;
	for ( uint32_t nSeed = 0; nSeed < 6000; nSeed++ )
	{
		const std::vector<uint8_t> bytes = MakeRandomRecording( nSeed );
		ASSERT_EQ( CompareAllReaders( bytes ), "" ) << "seed " << nSeed;
		nWhole += ReadSlowly( bytes ).m_Frames.size() >= 2 ? 1 : 0;
	}
	EXPECT_GT( nWhole, 900u ) << "too few of the recordings are read beyond their first frame to say anything";
}
} // namespace
