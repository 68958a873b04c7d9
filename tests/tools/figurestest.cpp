// info, frames and nodes.
#include <gtest/gtest.h>

#include "tests/tools/kestorun.h"
#include "tests/tools/samplerecordings.h"

namespace
{
KestoRun Tell(
	const std::string &command, const std::vector<uint8_t> &bytes, const std::vector<std::string> &more = {} )
{
	const CTestFolder folder;
	std::vector<std::string> arguments{ command, folder.Write( "x.kesto", bytes ) };
	arguments.insert( arguments.end(), more.begin(), more.end() );
	return CallKesto( arguments );
}

// Frames of the root alone.
std::vector<uint8_t> MakeRootFrames( const std::vector<uint32_t> &units )
{
	CRecordingWriter writer = CRecordingWriter().Header( 0 );
	for ( const uint32_t nTime : units )
		writer.BeginFrame().BeginTimings().Entry( 1, nTime ).EndFrame();
	return writer.m_Bytes;
}
} // namespace

// Times 4, 8, 12, 40 ms: mean 16, median 10, 95th percentile 12 + 0.85 * 28, 99th 12 + 0.97 * 28.
TEST( KestoInfo, SumsARecordingUp )
{
	const std::vector<uint8_t> bytes = MakeFourFrames();
	const CTestFolder folder;
	const std::string path = folder.Write( "x.kesto", bytes );
	const KestoRun run = CallKesto( { "info", path } );
	const std::vector<std::string> lines = SplitLines( run.m_Output );
	ASSERT_EQ( lines.size(), 14u ) << run.m_Output;
	EXPECT_EQ( lines[0], "File           " + path );
	EXPECT_EQ( lines[1], "Size           " + std::to_string( bytes.size() ) + " bytes" );
	EXPECT_EQ( lines[2], "Frames         4" );
	EXPECT_EQ( lines[3], "Nodes          4, depth 3" );
	EXPECT_EQ( lines[4], "Duration       0.064 s" );
	EXPECT_EQ( lines[5], "Frame time     mean 16.000 ms, median 10.000 ms, 95th percentile 35.800 ms, "
						 "99th percentile 39.160 ms" );
	EXPECT_EQ( lines[6], "Slowest frame  3, 40.000 ms" );
	EXPECT_EQ( lines[8], "Nodes with the most time:" );
	EXPECT_EQ( lines[9], "total ms  of all  self ms  ms/frame  calls  node" );
	// Physics takes 1.6 + 3.6 * 3 = 12.4 ms, Solve 8.8 of them, Render 8.8; all of it is 64 ms.
	EXPECT_EQ( lines[10], "  64.000  100.0%   42.800    16.000      4  (root)" );
	EXPECT_EQ( lines[11], "  12.400   19.4%    3.600     3.100      4  Physics" );
	// Of equals the one earlier in the tree comes first.
	EXPECT_EQ( lines[12], "   8.800   13.8%    8.800     2.200      4  Render" );
	EXPECT_EQ( lines[13], "   8.800   13.8%    8.800     2.200     10  Physics/Solve" );
	EXPECT_EQ( run.m_nStatus, 0 );
	EXPECT_EQ( run.m_Errors, "" );
}

TEST( KestoInfo, PrintsTheSameFiguresAsJson )
{
	const std::vector<uint8_t> bytes = MakeFourFrames();
	const KestoRun run = Tell( "info", bytes, { "--json", "--top", "1", "--by", "self" } );
	EXPECT_EQ(
		run.m_Output, "{\"depth\":3,\"duration_us\":64000,\"failed\":false,\"failure\":\"\","
					  "\"frame_time_us\":{\"mean\":16000,\"median\":10000,\"p95\":35800,\"p99\":39160},"
					  "\"frames\":4,\"nodes\":4,\"size\":" +
						  std::to_string( bytes.size() ) +
						  ",\"slowest_frame\":{\"frame\":3,\"time_us\":40000},\"top_nodes\":[{\"calls\":4,"
						  "\"id\":0,\"name\":\"\",\"path\":\"(root)\",\"self_us\":42800,\"total_us\":64000}]}\n" );
}

TEST( KestoInfo, OrdersByOwnTimeWhenAsked )
{
	const KestoRun run = Tell( "info", MakeFourFrames(), { "--by", "self" } );
	const std::vector<std::string> lines = SplitLines( run.m_Output );
	ASSERT_EQ( lines.size(), 14u );
	EXPECT_TRUE( lines[10].ends_with( "  (root)" ) );
	EXPECT_TRUE( lines[11].ends_with( "  Render" ) );
	EXPECT_TRUE( lines[12].ends_with( "  Physics/Solve" ) );
	EXPECT_TRUE( lines[13].ends_with( "  Physics" ) );
}

// Node i takes i units; the root, which is one of the ten, takes most.
TEST( KestoInfo, ListsTheTenNodesWithTheMostTimeUnlessTold )
{
	CRecordingWriter writer = CRecordingWriter().Header( 0 ).BeginFrame();
	for ( int32_t i = 1; i <= 12; i++ )
		writer.Node( 0, "n" + std::to_string( i ), i );
	writer.BeginTimings().Entry( 1, 100 );
	for ( uint32_t i = 12; i >= 1; i-- ) // the last one defined comes first
		writer.Entry( 1, i );
	const auto nodesOf = [&]( const std::vector<std::string> &more )
	{
		std::vector<std::string> lines = SplitLines( Tell( "info", writer.m_Bytes, more ).m_Output );
		lines.erase( lines.begin(), lines.begin() + 10 );
		for ( std::string &line : lines )
			line = line.substr( line.rfind( ' ' ) + 1 );
		return lines;
	};
	writer.EndFrame();
	EXPECT_EQ( nodesOf( {} ),
		( std::vector<std::string>{ "(root)", "n12", "n11", "n10", "n9", "n8", "n7", "n6", "n5", "n4" } ) );
	EXPECT_EQ( nodesOf( { "--top", "2" } ), ( std::vector<std::string>{ "(root)", "n12" } ) );
	EXPECT_EQ( nodesOf( { "--top", "100" } ).size(), 13u );
}

TEST( KestoInfo, AFileOfOnlyTheHeaderHasNoTimes )
{
	const KestoRun run = Tell( "info", CRecordingWriter().Header( 0 ).m_Bytes, { "--json" } );
	EXPECT_EQ( run.m_nStatus, 0 );
	EXPECT_EQ( run.m_Output,
		"{\"depth\":0,\"duration_us\":0,\"failed\":false,\"failure\":\"\",\"frame_time_us\":{\"mean\":null,"
		"\"median\":null,\"p95\":null,\"p99\":null},\"frames\":0,\"nodes\":0,\"size\":8,\"slowest_frame\":null,"
		"\"top_nodes\":[]}\n" );
	EXPECT_EQ( SplitLines( Tell( "info", CRecordingWriter().Header( 0 ).m_Bytes ).m_Output ).size(), 5u );
}

TEST( KestoInfo, SaysThatAFileIsDamagedAndGivesTheFiguresOfWhatWasKept )
{
	const KestoRun run = Tell( "info", MakeDamaged() );
	EXPECT_EQ( run.m_nStatus, 1 );
	EXPECT_NE( run.m_Output.find( "\nFrames         2 (the file is damaged)\n" ), std::string::npos ) << run.m_Output;
	EXPECT_NE( run.m_Errors.find( "Timings truncated; frames kept: 2\n" ), std::string::npos ) << run.m_Errors;
}

TEST( KestoInfo, TimesBeyond32BitsAreAddedUpWhole )
{
	// Three frames of 2,000 s each wrap the model's own sums.
	const KestoRun run = Tell( "info", MakeRootFrames( { 500000000, 500000000, 500000000 } ), { "--json" } );
	EXPECT_NE( run.m_Output.find( "\"duration_us\":6000000000," ), std::string::npos ) << run.m_Output;
	EXPECT_NE( run.m_Output.find( "\"total_us\":6000000000}" ), std::string::npos ) << run.m_Output;
}

TEST( KestoInfo, NamesInTheTableAreUtf8WithoutControlCharacters )
{
	CRecordingWriter writer = CRecordingWriter().Header( 0 ).BeginFrame().Node( 0, "Caf\xE9\n\x1B[1m\x9B", 1 );
	writer.BeginTimings().Entry( 1, 10 ).Entry( 1, 5 ).EndFrame();
	EXPECT_NE( Tell( "info", writer.m_Bytes ).m_Output.find( "  Caf\xC3\xA9??[1m?\n" ), std::string::npos );
}

TEST( KestoFrames, PrintsALineForEachFrame )
{
	const KestoRun run = Tell( "frames", MakeFourFrames(), { "--csv" } );
	EXPECT_EQ( run.m_Output, "frame,start_us,time_us,calls,active_nodes\n"
							 "0,0,4000,4,4\n"
							 "1,4000,8000,4,4\n"
							 "2,12000,12000,10,4\n"
							 "3,24000,40000,4,4\n" );
	EXPECT_EQ( run.m_nStatus, 0 );
	EXPECT_EQ( Tell( "frames", MakeFourFrames() ).m_Output, run.m_Output );
}

TEST( KestoFrames, AddsAColumnForEachNodeThatIsAskedFor )
{
	const KestoRun run = Tell( "frames", MakeFourFrames(), { "--node", "Physics/Solve", "--node", "Render" } );
	EXPECT_EQ( run.m_Output, "frame,start_us,time_us,calls,active_nodes,Physics/Solve_us,Render_us\n"
							 "0,0,4000,4,4,1200,2000\n"
							 "1,4000,8000,4,4,2800,2000\n"
							 "2,12000,12000,10,4,3200,2400\n"
							 "3,24000,40000,4,4,1600,2400\n" );
}

// Five nodes have the name; the first frame has entries for one of them, the second for all.
TEST( KestoFrames, AColumnAddsUpAllNodesOfItsNameHoweverFewAFrameHas )
{
	CRecordingWriter writer = CRecordingWriter().Header( 0 ).BeginFrame().Node( 0, "x", 1 );
	writer.BeginTimings().Entry( 1, 100 ).Entry( 1, 7 ).EndFrame().BeginFrame();
	for ( int32_t i = 2; i <= 5; i++ )
		writer.Node( 0, "x", i );
	writer.BeginTimings().Entry( 1, 100 );
	for ( uint32_t i = 1; i <= 5; i++ )
		writer.Entry( 1, i );
	const KestoRun run = Tell( "frames", writer.EndFrame().m_Bytes, { "--node", "x" } );
	EXPECT_EQ( run.m_Output, "frame,start_us,time_us,calls,active_nodes,x_us\n"
							 "0,0,400,2,2,28\n"
							 "1,400,400,6,6,60\n" );
}

TEST( KestoFrames, ANodeThatIsNotThereIsAnError )
{
	const KestoRun run = Tell( "frames", MakeFourFrames(), { "--node", "Sound" } );
	EXPECT_EQ( run.m_nStatus, 2 );
	EXPECT_EQ( run.m_Output, "" );
	EXPECT_NE( run.m_Errors.find( ": there is no node \"Sound\"\n" ), std::string::npos ) << run.m_Errors;
}

TEST( KestoFrames, AFileOfOnlyTheHeaderGivesTheHeadings )
{
	const KestoRun run = Tell( "frames", CRecordingWriter().Header( 0 ).m_Bytes, { "--csv" } );
	EXPECT_EQ( run.m_Output, "frame,start_us,time_us,calls,active_nodes\n" );
	EXPECT_EQ( run.m_nStatus, 0 );
}

TEST( KestoFrames, DamageGivesTheLinesOfWhatWasKept )
{
	const KestoRun run = Tell( "frames", MakeDamaged(), { "--csv" } );
	EXPECT_EQ( SplitLines( run.m_Output ).size(), 3u );
	EXPECT_EQ( run.m_nStatus, 1 );
}

TEST( KestoNodes, PrintsALineForEachNodeInTheOrderOfTheTree )
{
	const KestoRun run = Tell( "nodes", MakeFourFrames(), { "--csv" } );
	// Solve: 1.2, 2.8, 3.2, 1.6 ms; in order 1.2, 1.6, 2.8, 3.2, so the 95th percentile is 2.8 + 0.85 * 0.4.
	EXPECT_EQ( run.m_Output,
		"id,parent,depth,name,path,frames,calls,total_us,self_us,mean_us,median_us,p95_us,p99_us,max_us,max_frame\n"
		"0,,0,,(root),4,4,64000,42800,16000.000,10000.000,35800.000,39160.000,40000,3\n"
		"3,0,1,Render,Render,4,4,8800,8800,2200.000,2200.000,2400.000,2400.000,2400,2\n"
		"1,0,1,Physics,Physics,4,4,12400,3600,3100.000,3600.000,3600.000,3600.000,3600,1\n"
		"2,1,2,Solve,Physics/Solve,4,10,8800,8800,2200.000,2200.000,3140.000,3188.000,3200,2\n" );
	EXPECT_EQ( run.m_nStatus, 0 );
}

TEST( KestoNodes, FramesWithoutTheNodeCountAsZero )
{
	CRecordingWriter writer = CRecordingWriter().Header( 0 );
	writer.BeginFrame().BeginTimings().Entry( 1, 10 ).EndFrame();
	writer.BeginFrame().Node( 0, "late", 1 ).BeginTimings().Entry( 1, 10 ).Entry( 2, 5 ).EndFrame();
	const KestoRun run = Tell( "nodes", writer.m_Bytes, { "--csv" } );
	EXPECT_NE(
		run.m_Output.find( "\n1,0,1,late,late,1,2,20,20,10.000,10.000,19.000,19.800,20,1\n" ), std::string::npos )
		<< run.m_Output;
}

TEST( KestoNodes, QuotesNamesThatWouldBreakALine )
{
	CRecordingWriter writer = CRecordingWriter().Header( 0 ).BeginFrame().Node( 0, "a,\"b\"", 1 ).EndFrame();
	const KestoRun run = Tell( "nodes", writer.m_Bytes, { "--csv" } );
	EXPECT_NE( run.m_Output.find( "\n1,0,1,\"a,\"\"b\"\"\",\"a,\"\"b\"\"\",0,0,0,0,0.000,0.000,0.000,0.000,0,\n" ),
		std::string::npos )
		<< run.m_Output;
}

TEST( KestoNodes, PathsOfDeepNodesShowTheirLastNames )
{
	CRecordingWriter writer = CRecordingWriter().Header( 0 ).BeginFrame();
	for ( int32_t i = 1; i <= 66; i++ )
		writer.Node( i - 1, std::to_string( i ), i );
	const KestoRun run = Tell( "nodes", writer.EndFrame().m_Bytes, { "--csv" } );
	const std::vector<std::string> lines = SplitLines( run.m_Output );
	ASSERT_EQ( lines.size(), 68u );
	std::string path = "1";
	for ( int i = 2; i <= 64; i++ )
		path += "/" + std::to_string( i );
	EXPECT_TRUE( lines[65].starts_with( "64,63,64,64," + path + ",0," ) ) << lines[65];
	EXPECT_TRUE( lines[66].starts_with( "65,64,65,65,..." + path.substr( 1 ) + "/65,0," ) ) << lines[66];
	EXPECT_TRUE( lines[67].starts_with( "66,65,66,66,..." + path.substr( 3 ) + "/65/66,0," ) ) << lines[67];
}

// Such chains come from files that are merely cut.
TEST( KestoNodes, NodesThatAreTheirOwnAncestorsAreListedOnce )
{
	CRecordingWriter writer = CRecordingWriter().Header( 0 ).BeginFrame();
	writer.Node( 0, "a", 1 ).Node( 1, "b", 2 ).Node( 2, "a again", 1 ).Node( 0, "self", 0 ).EndFrame();
	const KestoRun run = Tell( "nodes", writer.m_Bytes, { "--csv" } );
	EXPECT_EQ( SplitLines( run.m_Output ).size(), 4u ) << run.m_Output;
	EXPECT_EQ( run.m_nStatus, 0 );
}
