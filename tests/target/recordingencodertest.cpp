// The bytes of frames, and which frames are kept.
#include <gmock/gmock.h>

#include <map>
#include <random>

#include "recordingfile.h"
#include "target/src/framefilter.h"
#include "target/src/recordingencoder.h"
#include "tests/recordings/recordingwriter.h"
#include "tests/support/randomseed.h"

namespace
{
using showbudget::CFrameFilter;
using showbudget::CRecordingEncoder;
using showbudget::RecordedFrame;
using showbudget::RecordedNode;

constexpr uint64_t TICKS_PER_UNIT = 1000; // of 4 us
constexpr uint64_t FREQUENCY = TICKS_PER_UNIT * 250000;

// "Frame" with "a" and "b" below it, and "c" below "a".
RecordedNode NodeOf( uint32_t nNode )
{
	static const RecordedNode s_Nodes[] = { { 0, "Frame", 0 }, { 0, "a", 0xAA }, { 0, "b", 0xBB }, { 1, "c", 0xCC } };
	return s_Nodes[nNode];
}

TEST( RecordingEncoder, WritesDefinitionsOnceAndTimingsInTheReadersOrder )
{
	CRecordingEncoder encoder( FREQUENCY, NodeOf );
	showbudget::Bytes bytes;
	CRecordingEncoder::AppendFileHeader( bytes );
	encoder.AddString( "text", 9 );
	encoder.AppendFrame( bytes, { 5000, 3, { { 0, 1, 90000 }, { 1, 254, 50000 }, { 2, 255, 7000 } } } );
	encoder.AppendFrame( bytes, { 95000, 4, { { 0, 1, 65534000 }, { 3, 70000, 3000 }, { 1, 1, 4000 } } } );
	encoder.AppendFrame( bytes, { 65629000, 5, { { 0, 1, 65535000 } } } );

	CRecordingWriter expected;
	expected.Header( 0 );
	expected.BeginFrame( 3 ).String( "text", 9 );
	expected.Node( 1, "Frame", 0 ).Node( 0, "b", 2, 0xBB ).Node( 0, "a", 3, 0xAA );
	expected.BeginTimings().Entry( 1, 90 ).Entry( 254, 50 ).Entry( 255, 7 ).EndFrame();
	expected.BeginFrame( 4 ).Node( 3, "c", 4, 0xCC );
	expected.BeginTimings().Entry( 1, 65534 ).Entry( 1, 4 ).Entry( 65535, 3 ).Entry( 0, 0 ).EndFrame();
	expected.BeginFrame( 5 );
	expected.BeginTimings().Entry( 1, 65535 ).Entry( 0, 0 ).Entry( 0, 0 ).Entry( 0, 0 ).EndFrame();
	EXPECT_EQ( bytes, expected.m_Bytes );
}

// Readers take the file's text as Latin-1.
TEST( RecordingEncoder, NamesAreWrittenInEightBits )
{
	const std::vector<std::pair<std::string, std::string>> names = { { "caf\xC3\xA9 \xC2\xB5s", "caf\xE9 \xB5s" },
		{ "\xC3\xBF \xC4\x80 \xE2\x82\xAC \xF0\x9F\x90\x8C!", "\xFF ? ? ?!" }, { "\xE9 alone \xC3", "\xE9 alone \xC3" },
		{ "\xE2\x82 cut", "\xE2\x82 cut" } };
	for ( const auto &[utf8, latin1] : names )
	{
		const auto nodeOf = [&name = utf8]( uint32_t nNode ) {
			return RecordedNode{ 0, nNode == 0 ? std::string_view( "Frame" ) : std::string_view( name ), 0 };
		};
		CRecordingEncoder encoder( FREQUENCY, nodeOf );
		showbudget::Bytes bytes;
		CRecordingEncoder::AppendFileHeader( bytes );
		encoder.AppendFrame( bytes, { 0, 0, { { 0, 1, 1000 }, { 1, 1, 1000 } } } );
		EXPECT_TRUE( CRecordingFileOfTest( bytes ).Nodes().contains( "Frame/" + latin1 ) ) << utf8;
	}
}

TEST( RecordingEncoder, ShortTimesAreNotLostAndNeverExceedTheirParents )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	std::uniform_int_distribution<uint64_t> shortTime( 100, 900 ); // below the unit of the file
	CRecordingEncoder encoder( FREQUENCY, NodeOf );
	showbudget::Bytes bytes;
	CRecordingEncoder::AppendFileHeader( bytes );
	constexpr int FRAMES = 20000;
	uint64_t nNow = 123456789;
	uint64_t sums[3] = {};
	for ( int i = 0; i < FRAMES; i++ )
	{
		const uint64_t nA = shortTime( random ), nB = shortTime( random ), nOther = shortTime( random );
		encoder.AppendFrame( bytes, { nNow, 0, { { 0, 1, nA + nB + nOther }, { 1, 1, nA }, { 2, 1, nB } } } );
		nNow += nA + nB + nOther;
		sums[0] += nA + nB + nOther;
		sums[1] += nA;
		sums[2] += nB;
	}
	const CRecordingFileOfTest file( bytes );
	ASSERT_EQ( file.FrameCount(), FRAMES );
	std::map<std::string, uint64_t> units;
	for ( int i = 0; i < FRAMES; i++ )
	{
		const uint32_t nFrame = file.At( i, "Frame" ).m_nTime;
		EXPECT_GE( nFrame, file.At( i, "Frame/a" ).m_nTime + file.At( i, "Frame/b" ).m_nTime );
		for ( const auto &[path, figures] : file.Frame( i ) )
			units[path] += figures.m_nTime / 4;
	}
	// Frames lie one behind the other, so nothing is lost of their sum but the rest of the last one.
	EXPECT_EQ( units["Frame"], ( nNow - 123456789 ) / TICKS_PER_UNIT );
	// The places where scopes begin are as good as random: each unit more or less is a coin that was tossed.
	const double flTolerance = 6.0 * std::sqrt( FRAMES ) * 0.5;
	EXPECT_NEAR(
		static_cast<double>( units["Frame/a"] ), static_cast<double>( sums[1] ) / TICKS_PER_UNIT, flTolerance );
	EXPECT_NEAR(
		static_cast<double>( units["Frame/b"] ), static_cast<double>( sums[2] ) / TICKS_PER_UNIT, flTolerance );
}

// An engine that was held in a debugger over night.
TEST( RecordingEncoder, TimesBeyondWhatAReaderTellsAreWrittenAsTheLongestOne )
{
	constexpr uint64_t MICROSECONDS_PER_UNIT = 4;
	constexpr uint64_t LONGEST = 2147483647 / MICROSECONDS_PER_UNIT; // units; times are read as signed 32-bit numbers
	for ( const uint64_t nUnits : { LONGEST, LONGEST + 1, uint64_t( 1 ) << 30, uint64_t( 1 ) << 32 } )
	{
		CRecordingEncoder encoder( FREQUENCY, NodeOf );
		showbudget::Bytes bytes;
		CRecordingEncoder::AppendFileHeader( bytes );
		encoder.AppendFrame( bytes, { 0, 0, { { 0, 1, nUnits * TICKS_PER_UNIT } } } );
		EXPECT_EQ( CRecordingFileOfTest( bytes ).At( 0, "Frame" ).m_nTime, LONGEST * MICROSECONDS_PER_UNIT ) << nUnits;
	}
}

TEST( FrameFilter, KeepsWhatThePlainRuleKeeps )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	for ( int nRound = 0; nRound < 300; nRound++ )
	{
		const auto nAround = std::uniform_int_distribution<uint32_t>( 0, 5 )( random );
		const auto nLimit = std::uniform_int_distribution<uint64_t>( 0, 100 )( random );
		const int nOneIn = std::uniform_int_distribution( 1, 30 )( random );
		std::vector<uint64_t> times;
		for ( int i = 0; i < 200; i++ )
			times.push_back( random() % static_cast<unsigned>( nOneIn ) == 0 ? nLimit + random() % 3 : nLimit / 2 );

		std::vector<uint32_t> expected;
		for ( int i = 0; i < 200; i++ )
		{
			bool bKeep = nLimit == 0;
			for ( int n = i - static_cast<int>( nAround ); n <= i + static_cast<int>( nAround ); n++ )
				bKeep |= n >= 0 && n < 200 && times[static_cast<size_t>( n )] > nLimit;
			if ( bKeep )
				expected.push_back( static_cast<uint32_t>( i ) );
		}
		std::vector<uint32_t> kept;
		CFrameFilter filter( nLimit, nAround );
		for ( uint32_t i = 0; i < 200; i++ )
		{
			RecordedFrame frame = filter.TakeEmpty();
			EXPECT_TRUE( frame.m_Entries.empty() );
			frame.m_nFrame = i;
			frame.m_Entries.push_back( { 0, 1, times[i] } );
			filter.Add( std::move( frame ),
				[&]( const RecordedFrame &keep )
				{
					EXPECT_EQ( keep.m_Entries.at( 0 ).m_nTicks, times[keep.m_nFrame] );
					kept.push_back( keep.m_nFrame );
				} );
		}
		ASSERT_EQ( kept, expected ) << "slower than " << nLimit << ", " << nAround << " around";
	}
}
} // namespace
