#include <gtest/gtest.h>

#include "tests/tools/kestorun.h"
#include "tests/tools/samplerecordings.h"

namespace
{
KestoRun Check( const std::vector<uint8_t> &bytes, const std::vector<std::string> &more )
{
	const CTestFolder folder;
	std::vector<std::string> arguments{ "check", folder.Write( "x.kesto", bytes ) };
	arguments.insert( arguments.end(), more.begin(), more.end() );
	return CallKesto( arguments );
}
} // namespace

// The 99th percentile of the frame is 39.16 ms, that of Solve 3.188 ms (see the tests of the figures).
TEST( KestoCheck, PrintsEachLimitWithItsMeasuredValue )
{
	const KestoRun run = Check( MakeFourFrames(),
		{ "--budget", "Solve<=3.2", "--budget", "Physics/Solve<=3.187", "--frame", "<=39.16", "--percentile", "99" } );
	EXPECT_EQ( run.m_Output, "Percentile 99 of 4 frames\n"
							 "result  measured ms  limit ms  node\n"
							 "    ok       39.160     39.16  (frame)\n"
							 "    ok        3.188       3.2  Solve\n"
							 "BROKEN        3.188     3.187  Physics/Solve\n" );
	EXPECT_EQ( run.m_nStatus, 1 );
	EXPECT_EQ( run.m_Errors, "" );
}

TEST( KestoCheck, IsFineWhenEveryLimitIsKept )
{
	EXPECT_EQ( Check( MakeFourFrames(), { "--frame", "<=40", "--percentile", "100" } ).m_nStatus, 0 );
	EXPECT_EQ( Check( MakeFourFrames(), { "--frame", "<=39.999", "--percentile", "100" } ).m_nStatus, 1 );
	EXPECT_EQ( Check( MakeFourFrames(), { "--frame", "<=4", "--percentile", "0" } ).m_nStatus, 0 );
}

TEST( KestoCheck, TakesThe99thPercentileWhenNoneIsGiven )
{
	EXPECT_TRUE(
		Check( MakeFourFrames(), { "--frame", "<=1" } ).m_Output.starts_with( "Percentile 99 of 4 frames\n" ) );
}

// Multiplied by 1000, some of these decimal limits are a little less than the whole microseconds that they mean.
TEST( KestoCheck, ALimitThatIsMetExactlyIsKept )
{
	for ( uint32_t nUnits = 1; nUnits < 400; nUnits++ )
	{
		CRecordingWriter writer = CRecordingWriter().Header( 0 ).BeginFrame().BeginTimings().Entry( 1, nUnits );
		char limit[16];
		snprintf( limit, sizeof( limit ), "<=%u.%03u", nUnits * 4 / 1000, nUnits * 4 % 1000 );
		ASSERT_EQ( Check( writer.EndFrame().m_Bytes, { "--frame", limit } ).m_nStatus, 0 ) << limit;
	}
}

TEST( KestoCheck, AddsUpTheNodesOfAName )
{
	CRecordingWriter writer = CRecordingWriter().Header( 0 ).BeginFrame().Node( 0, "a", 1 ).Node( 0, "b", 2 );
	writer.Node( 1, "x", 3 ).Node( 2, "x", 4 ).Node( 4, "x", 5 ).BeginTimings();
	// Order: 0, 2, 4, 5, 1, 3. The time of the x below x is in that of the upper one already.
	writer.Entry( 1, 1000 ).Entry( 1, 400 ).Entry( 1, 250 ).Entry( 1, 250 ).Entry( 1, 300 ).Entry( 1, 50 ).EndFrame();
	EXPECT_EQ( Check( writer.m_Bytes, { "--budget", "x<=1.2" } ).m_nStatus, 0 );
	EXPECT_EQ( Check( writer.m_Bytes, { "--budget", "x<=1.199" } ).m_nStatus, 1 );
	EXPECT_EQ( Check( writer.m_Bytes, { "--budget", "b/x<=1" } ).m_nStatus, 0 );
	EXPECT_EQ( Check( writer.m_Bytes, { "--budget", "b/x<=0.999" } ).m_nStatus, 1 );
}

TEST( KestoCheck, ANameMayHaveTheSignOfALimit )
{
	CRecordingWriter writer = CRecordingWriter().Header( 0 ).BeginFrame().Node( 0, "a<=b", 1 ).BeginTimings();
	writer.Entry( 1, 1000 ).Entry( 1, 500 ).EndFrame();
	EXPECT_EQ( Check( writer.m_Bytes, { "--budget", "a<=b <= 2" } ).m_nStatus, 0 );
	EXPECT_EQ( Check( writer.m_Bytes, { "--budget", "a<=b<=1.9" } ).m_nStatus, 1 );
}

TEST( KestoCheck, NamesMayBeTypedInUtf8 )
{
	CRecordingWriter writer = CRecordingWriter().Header( 0 ).BeginFrame().Node( 0, "Caf\xE9", 1 ).EndFrame();
	EXPECT_EQ( Check( writer.m_Bytes, { "--budget", "Caf\xC3\xA9<=1" } ).m_nStatus, 0 );
	EXPECT_EQ( Check( writer.m_Bytes, { "--budget", "Caf\xE9<=1" } ).m_nStatus, 0 );
}

// A limit that checks nothing must not look like one that is kept.
TEST( KestoCheck, ANameThatNoNodeHasIsAnError )
{
	const KestoRun run = Check( MakeFourFrames(), { "--budget", "Sound<=3", "--frame", "<=100" } );
	EXPECT_EQ( run.m_nStatus, 2 );
	EXPECT_NE( run.m_Errors.find( "x.kesto: there is no node \"Sound\" to check\n" ), std::string::npos )
		<< run.m_Errors;
	EXPECT_NE( run.m_Output.find( "    ok       39.160       100  (frame)\n" ), std::string::npos ) << run.m_Output;
	EXPECT_EQ( Check( MakeFourFrames(), { "--budget", "Sound<=3" } ).m_Output, "" );
}

TEST( KestoCheck, DamageIsStatusOneEvenWhenEveryLimitIsKept )
{
	const KestoRun run = Check( MakeDamaged(), { "--frame", "<=100" } );
	EXPECT_EQ( run.m_nStatus, 1 );
	EXPECT_NE( run.m_Output.find( "    ok" ), std::string::npos );
}

TEST( KestoCheck, NeedsFramesAndLimits )
{
	const KestoRun empty = Check( CRecordingWriter().Header( 0 ).m_Bytes, { "--frame", "<=100" } );
	EXPECT_EQ( empty.m_nStatus, 2 );
	EXPECT_NE( empty.m_Errors.find( ": there are no frames to check\n" ), std::string::npos );
	const KestoRun unlimited = Check( MakeFourFrames(), {} );
	EXPECT_EQ( unlimited.m_nStatus, 2 );
	EXPECT_EQ( unlimited.m_Errors, "kesto: no limit to check: give --budget or --frame\n" );
}

TEST( KestoCheck, RefusesLimitsThatAreNone )
{
	for ( const std::string text :
		{ "Physics", "Physics<=", "Physics<=fast", "<=3", "Physics<=-1", "Physics<=inf", "  <=2" } )
		EXPECT_EQ( Check( MakeFourFrames(), { "--budget", text } ).m_nStatus, 2 ) << text;
	for ( const std::string text : { "3", "<=", "Physics<=3", "<=3ms" } )
		EXPECT_EQ( Check( MakeFourFrames(), { "--frame", text } ).m_nStatus, 2 ) << text;
	for ( const std::string text : { "-1", "100.5", "x" } )
		EXPECT_EQ( Check( MakeFourFrames(), { "--frame", "<=99", "--percentile", text } ).m_nStatus, 2 ) << text;
}
