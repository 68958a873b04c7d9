#include "tests/recordings/recordingcorpus.h"

#include <random>

#include "tests/recordings/recordingwriter.h"

namespace
{
// Several levels, short and long entries, strings, nodes that come later, an end mark and bytes behind it.
CRecordingWriter Ordinary()
{
	CRecordingWriter writer = CRecordingWriter().Header( 2 ).BeginFrame();
	writer.String( "build", 77 ).Node( 2, "frame", 3, 5 ).Node( 3, "physics", 0 ).Node( 3, "render", 7 );
	writer.Node( 7, "shadows", 4 ).Node( 7, "opaque", 5 ).Node( 3, "", 6 ).EndFrame();
	for ( unsigned nFrame = 0; nFrame < 4; nFrame++ )
	{
		writer.BeginFrame( nFrame ).BeginTimings();
		for ( unsigned i = 0; i < 7; i++ )
			writer.Entry( i == nFrame ? 255 + i : i, i == nFrame + 1 ? 65535 + i * 1000 : 100 * i );
		writer.EndFrame();
	}
	writer.BeginFrame().Node( 5, std::string( 600, 'n' ), 9, 1 ).Node( 3, "renamed", 7, 99 ).BeginTimings();
	for ( unsigned i = 0; i < 8; i++ )
		writer.Entry( i, 0x10000000 * i );
	return writer.String( "tail", 1 ).EndFrame().U8( 5 ).U32( 12345 );
}

CRecordingWriter SelfParent()
{
	CRecordingWriter writer = CRecordingWriter().Header( 1 ).BeginFrame().Node( 1, "self", 1 ).BeginTimings();
	for ( unsigned i = 0; i < 40; i++ )
		writer.Entry( i, i );
	return writer.EndFrame();
}

CRecordingWriter MovedToItsGrandchild()
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	writer.Node( 0, "a", 1 ).Node( 1, "b", 2 ).Node( 2, "c", 3 ).Node( 0, "d", 4 ).EndFrame();
	writer.BeginFrame().Node( 3, "a again", 1 ).EndFrame().BeginFrame().BeginTimings();
	for ( unsigned i = 0; i < 30; i++ )
		writer.Entry( 1, i );
	return writer;
}

// 3 hangs below 1 and 2 after the move, and is read twice.
CRecordingWriter ReachedTwice()
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame();
	writer.Node( 0, "one", 1 ).Node( 0, "two", 2 ).Node( 1, "three", 3 ).Node( 2, "three", 3 ).Node( 3, "four", 4 );
	writer.BeginTimings();
	for ( unsigned i = 0; i < 7; i++ )
		writer.Entry( i + 1, i + 10 );
	writer.EndFrame().BeginFrame().BeginTimings();
	for ( unsigned i = 0; i < 7; i++ )
		writer.Entry( i + 2, 70000 * i );
	return writer.EndFrame();
}

CRecordingWriter SparseIds()
{
	CRecordingWriter writer = CRecordingWriter().Header( 1048575 ).BeginFrame().BeginTimings().Entry( 1, 1 ).EndFrame();
	writer.BeginFrame().Node( 1048575, "low", 0 ).Node( 1048575, "middle", 500000 ).Node( 500000, "deep", 4096 );
	writer.BeginTimings().Entry( 4, 4 ).Entry( 3, 3 ).Entry( 2, 2 ).Entry( 1, 1 ).EndFrame();
	writer.BeginFrame().BeginTimings().Entry( 4, 4 ).Entry( 3, 3 ).Entry( 2, 2 ).Entry( 1, 1 );
	return writer.BeginTimings().Entry( 9, 9 ).Entry( 8, 8 ).Entry( 7, 7 ).Entry( 6, 6 ).EndFrame();
}

CRecordingWriter TwoTimingsAroundALink()
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame().Node( 0, "one", 1 ).BeginTimings();
	writer.Entry( 1, 1 ).Entry( 2, 2 ).Node( 0, "two", 900 ).BeginTimings();
	return writer.Entry( 3, 3 ).Entry( 4, 4 ).Entry( 5, 5 ).EndFrame();
}

CRecordingWriter OutOfRange( int32_t nParent, int32_t nNode )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame().Node( 0, "fine", 1 ).EndFrame();
	return writer.BeginFrame().Node( nParent, "bad", nNode ).EndFrame();
}

CRecordingWriter BadTokens()
{
	return CRecordingWriter().Header().BeginFrame().EndFrame().BeginFrame().String( "s", 1 ).U8( 0xF9 ).EndFrame();
}
} // namespace

std::vector<CorpusRecording> MakeRecordingCorpus()
{
	const auto named = []( const char *pName, const CRecordingWriter &writer ) {
		return CorpusRecording{ pName, writer.m_Bytes };
	};
	return {
		named( "empty", CRecordingWriter() ),
		named( "other version", CRecordingWriter().Header( 0, 2 ).BeginFrame().EndFrame() ),
		named( "header", CRecordingWriter().Header( 3 ) ),
		named( "root out of range", CRecordingWriter().Header( -7 ).BeginFrame().EndFrame() ),
		named( "ordinary", Ordinary() ),
		named( "self parent", SelfParent() ),
		named( "moved to its grandchild", MovedToItsGrandchild() ),
		named( "reached twice", ReachedTwice() ),
		named( "sparse ids", SparseIds() ),
		named( "two timings around a link", TwoTimingsAroundALink() ),
		named( "negative parent", OutOfRange( -1, 2 ) ),
		named( "id too large", OutOfRange( 0, 1048576 ) ),
		named( "bad tokens", BadTokens() ),
		named( "bad frame header", CRecordingWriter().Header().BeginFrame().EndFrame().U8( 200 ) ),
		named( "unterminated name", CRecordingWriter().Header().BeginFrame().U8( 1 ).U32( 0 ).U16( 0x4141 ) ),
	};
}

std::vector<uint8_t> MakeRandomRecording( uint32_t nSeed )
{
	std::mt19937 random( nSeed );
	const auto below = [&]( uint32_t n ) { return static_cast<uint32_t>( random() % n ); };
	const uint32_t nIds = 1 + below( 12 );
	// Now and then ids far apart, so that frames are stored by list and sparsely.
	const uint32_t nSpread = below( 4 ) == 0 ? 1000 : 1;
	const auto id = [&] { return static_cast<int32_t>( below( nIds ) * nSpread ); };
	CRecordingWriter writer = CRecordingWriter().Header( id() );
	for ( uint32_t nFrame = 0, nFrames = below( 8 ); nFrame < nFrames; nFrame++ )
	{
		writer.BeginFrame( nFrame );
		for ( uint32_t i = 0, n = below( 6 ); i < n; i++ )
			writer.Node( id(), std::string( below( 3 ), 'a' ), id(), below( 100 ) );
		if ( below( 4 ) == 0 )
			writer.String( std::string( below( 5 ), 's' ), below( 9 ) );
		for ( uint32_t nRecord = 0, nRecords = below( 3 ); nRecord < nRecords; nRecord++ )
		{
			writer.BeginTimings();
			// How many entries there must be is for the readers to find out; what is too much reads as records.
			for ( uint32_t i = 0, n = 1 + below( nIds + 3 ); i < n; i++ )
				writer.Entry(
					below( 3 ) == 0 ? below( 400 ) : 4, below( 9 ) == 0 ? 65535 + below( 99 ) : 4 * below( 5 ) );
		}
		writer.EndFrame();
	}
	return writer.m_Bytes;
}
