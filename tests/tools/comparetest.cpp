#include "tools/comparison.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "support/randomseed.h"
#include "tests/tools/kestorun.h"
#include "tests/tools/samplerecordings.h"

namespace
{
double Density( double flDegrees, double flT )
{
	const double flLog =
		std::lgamma( ( flDegrees + 1.0 ) / 2.0 ) - std::lgamma( flDegrees / 2.0 ) - 0.5 * std::log( flDegrees * M_PI );
	return std::exp( flLog - ( flDegrees + 1.0 ) / 2.0 * std::log1p( flT * flT / flDegrees ) );
}

// Both tails of Student's distribution, by Simpson's rule over the middle.
double TwoTails( double flDegrees, double flT )
{
	constexpr int STEPS = 20000;
	const double flStep = flT / STEPS;
	double flSum = Density( flDegrees, 0.0 ) + Density( flDegrees, flT );
	for ( int i = 1; i < STEPS; i++ )
		flSum += ( i % 2 == 0 ? 2.0 : 4.0 ) * Density( flDegrees, i * flStep );
	return 1.0 - 2.0 * flSum * flStep / 3.0;
}

std::vector<uint8_t> Faster()
{
	return MakeSample( { { 1000, 500, 400, 300 }, { 1000, 510, 400, 300 }, { 1000, 520, 400, 300 } } );
}
std::vector<uint8_t> Slower()
{
	return MakeSample( { { 2000, 510, 400, 100 }, { 2000, 520, 400, 100 }, { 2000, 530, 400, 100 } } );
}

KestoRun Compare( const std::vector<uint8_t> &a, const std::vector<uint8_t> &b, const std::vector<std::string> &more )
{
	const CTestFolder folder;
	std::vector<std::string> arguments{ "compare", folder.Write( "a.kesto", a ), folder.Write( "b.kesto", b ) };
	arguments.insert( arguments.end(), more.begin(), more.end() );
	return CallKesto( arguments );
}

std::string JsonOfRender( double flProbability )
{
	char text[64];
	snprintf( text, sizeof( text ), "%.6f", flProbability );
	return text;
}

// The "p" of the node, as far as `digits` goes.
std::string ProbabilityOf( const std::string &json, const std::string &path )
{
	const size_t nPath = json.find( "\"path\":\"" + path + "\"" );
	const size_t nProbability = json.rfind( "\"p\":", nPath );
	return json.substr( nProbability + 4, json.find( ',', nProbability ) - nProbability - 4 );
}
} // namespace

// With 2 degrees of freedom the probability is 1 - t / sqrt( 2 + t * t ): here t = 4 / sqrt( 2 ).
TEST( Welch, AgreesWithTheClosedFormForTwoDegreesOfFreedom )
{
	const std::optional<double> flProbability =
		WelchProbability( CDistribution( { 0, 2 } ), CDistribution( { 4, 6 } ) );
	ASSERT_TRUE( flProbability );
	EXPECT_NEAR( *flProbability, 1.0 - std::sqrt( 8.0 ) / std::sqrt( 10.0 ), 1e-12 );
}

TEST( Welch, AgreesWithAnIntegrationForSetsOfDifferentSizesAndSpreads )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	for ( int nRound = 0; nRound < 30; nRound++ )
	{
		std::vector<int32_t> a( 2 + random() % 20 );
		std::vector<int32_t> b( 2 + random() % 20 );
		for ( int32_t &nNumber : a )
			nNumber = static_cast<int32_t>( random() % 1000 );
		for ( int32_t &nNumber : b )
			nNumber = static_cast<int32_t>( random() % 300 ) + 400;
		const auto moments = []( const std::vector<int32_t> &set )
		{
			double flSum = 0.0;
			double flSquares = 0.0;
			for ( const int32_t nNumber : set )
				flSum += nNumber;
			const double flMean = flSum / static_cast<double>( set.size() );
			for ( const int32_t nNumber : set )
				flSquares += ( nNumber - flMean ) * ( nNumber - flMean );
			const double flVariance = flSquares / static_cast<double>( set.size() - 1 );
			return std::pair( flMean, flVariance / static_cast<double>( set.size() ) );
		};
		const auto [flMeanA, flErrorA] = moments( a );
		const auto [flMeanB, flErrorB] = moments( b );
		if ( flErrorA + flErrorB == 0.0 )
			continue;
		const double flT = std::fabs( flMeanA - flMeanB ) / std::sqrt( flErrorA + flErrorB );
		const double flDegrees =
			std::pow( flErrorA + flErrorB, 2 ) / ( std::pow( flErrorA, 2 ) / static_cast<double>( a.size() - 1 ) +
													 std::pow( flErrorB, 2 ) / static_cast<double>( b.size() - 1 ) );
		const std::optional<double> flProbability = WelchProbability( CDistribution( a ), CDistribution( b ) );
		ASSERT_TRUE( flProbability );
		EXPECT_NEAR( *flProbability, TwoTails( flDegrees, flT ), 1e-7 ) << "t " << flT << ", degrees " << flDegrees;
	}
}

TEST( Welch, IsTheSameWhicheverSetComesFirst )
{
	const CDistribution a( { 1, 5, 9, 14 } );
	const CDistribution b( { 4, 4, 30 } );
	EXPECT_EQ( WelchProbability( a, b ), WelchProbability( b, a ) );
}

TEST( Welch, SetsWithoutSpreadAreEqualOrNot )
{
	EXPECT_EQ( WelchProbability( CDistribution( { 3, 3 } ), CDistribution( { 3, 3, 3 } ) ), 1.0 );
	EXPECT_EQ( WelchProbability( CDistribution( { 3, 3 } ), CDistribution( { 4, 4, 4 } ) ), 0.0 );
}

TEST( Welch, OneNumberIsNoSetToTest )
{
	EXPECT_EQ( WelchProbability( CDistribution( { 3 } ), CDistribution( { 4, 5 } ) ), std::nullopt );
	EXPECT_EQ( WelchProbability( CDistribution( { 4, 5 } ), CDistribution() ), std::nullopt );
}

// Render: A 2000, 2040, 2080, B 2040, 2080, 2120: means 2040 and 2080, variances 1600, so t = 40 / sqrt( 3200 / 3) with
// 4 degrees of freedom.
TEST( KestoCompare, ListsNodesByTheSizeOfTheirChange )
{
	const KestoRun run = Compare( Faster(), Slower(), {} );
	const std::vector<std::string> lines = SplitLines( run.m_Output );
	ASSERT_EQ( lines.size(), 8u ) << run.m_Output;
	EXPECT_TRUE( lines[0].starts_with( "A  " ) && lines[0].ends_with( "a.kesto, frames: 3" ) ) << lines[0];
	EXPECT_TRUE( lines[1].starts_with( "B  " ) && lines[1].ends_with( "b.kesto, frames: 3" ) ) << lines[1];
	EXPECT_EQ( lines[3], "A mean ms  B mean ms  change ms   change        p  A p95 ms  B p95 ms  node" );
	EXPECT_EQ( lines[4], "    4.000      8.000     +4.000  +100.0%  <0.0001     4.000     8.000  (root)" );
	EXPECT_EQ( lines[5], "    1.200      0.400     -0.800   -66.7%  <0.0001     1.200     0.400  Physics/Solve" );
	char probability[16];
	snprintf( probability, sizeof( probability ), "%.4f", TwoTails( 4.0, 40.0 / std::sqrt( 3200.0 / 3.0 ) ) );
	EXPECT_EQ( lines[6],
		std::string( "    2.040      2.080     +0.040    +2.0%   " ) + probability + "     2.076     2.116  Render" );
	EXPECT_EQ( lines[7], "    1.600      1.600     +0.000    +0.0%   1.0000     1.600     1.600  Physics" );
	EXPECT_EQ( run.m_nStatus, 0 );
}

TEST( KestoCompare, PrintsJson )
{
	const KestoRun run = Compare( Faster(), Slower(), { "--json", "--min-change", "0.8" } );
	EXPECT_EQ( run.m_Output,
		"{\"a\":{\"failed\":false,\"frames\":3},\"b\":{\"failed\":false,\"frames\":3},\"nodes\":["
		"{\"a\":{\"mean_us\":4000,\"p95_us\":4000},\"b\":{\"mean_us\":8000,\"p95_us\":8000},\"change_percent\":100,"
		"\"change_us\":4000,\"p\":0,\"path\":\"(root)\"},"
		"{\"a\":{\"mean_us\":1200,\"p95_us\":1200},\"b\":{\"mean_us\":400,\"p95_us\":400},"
		"\"change_percent\":-66.66666666666667,\"change_us\":-800,\"p\":0,\"path\":\"Physics/Solve\"}]}\n" );
}

TEST( KestoCompare, GivesTheProbabilityInFull )
{
	const KestoRun run = Compare( Faster(), Slower(), { "--json" } );
	const std::string expected = JsonOfRender( TwoTails( 4.0, 40.0 / std::sqrt( 3200.0 / 3.0 ) ) );
	EXPECT_EQ( ProbabilityOf( run.m_Output, "Render" ).substr( 0, 6 ), expected.substr( 0, 6 ) ) << run.m_Output;
}

TEST( KestoCompare, LeavesOutSmallChangesInMillisecondsOrPercent )
{
	const auto countRows = []( const std::string &minChange ) {
		return SplitLines( Compare( Faster(), Slower(), { "--min-change", minChange } ).m_Output ).size() - 4;
	};
	EXPECT_EQ( countRows( "0" ), 4u );
	EXPECT_EQ( countRows( "0.04" ), 3u );
	EXPECT_EQ( countRows( "0.041" ), 2u );
	EXPECT_EQ( countRows( "4" ), 1u );
	EXPECT_EQ( countRows( "4.001" ), 0u );
	EXPECT_EQ( countRows( "1.9%" ), 3u );
	EXPECT_EQ( countRows( "2%" ), 2u ); // 40 of 2040 is less
	EXPECT_EQ( countRows( "66%" ), 2u );
	EXPECT_EQ( countRows( "101%" ), 0u );
}

TEST( KestoCompare, MatchesNodesByTheirPathsNotTheirIds )
{
	CRecordingWriter a = CRecordingWriter().Header( 0 ).BeginFrame().Node( 0, "x", 1 ).Node( 1, "y", 2 );
	a.BeginTimings().Entry( 1, 10 ).Entry( 1, 5 ).Entry( 1, 3 ).EndFrame();
	CRecordingWriter b = CRecordingWriter().Header( 9 ).BeginFrame().Node( 9, "x", 7 ).Node( 7, "y", 3 );
	b.Node( 9, "z", 1 ).BeginTimings().Entry( 1, 10 ).Entry( 1, 1 ).Entry( 1, 5 ).Entry( 1, 2 ).EndFrame();
	const KestoRun run = Compare( a.m_Bytes, b.m_Bytes, { "--json" } );
	const size_t nNodes = run.m_Output.find( "\"nodes\"" );
	EXPECT_EQ( run.m_Output.substr( nNodes ),
		"\"nodes\":["
		"{\"a\":{\"mean_us\":12,\"p95_us\":12},\"b\":{\"mean_us\":8,\"p95_us\":8},"
		"\"change_percent\":-33.333333333333336,\"change_us\":-4,\"p\":null,\"path\":\"x/y\"},"
		"{\"a\":null,\"b\":{\"mean_us\":4,\"p95_us\":4},\"change_percent\":null,\"change_us\":4,\"p\":null,"
		"\"path\":\"z\"},"
		"{\"a\":{\"mean_us\":40,\"p95_us\":40},\"b\":{\"mean_us\":40,\"p95_us\":40},\"change_percent\":0,"
		"\"change_us\":0,\"p\":null,\"path\":\"(root)\"},"
		"{\"a\":{\"mean_us\":20,\"p95_us\":20},\"b\":{\"mean_us\":20,\"p95_us\":20},\"change_percent\":0,"
		"\"change_us\":0,\"p\":null,\"path\":\"x\"}]}\n" );
}

TEST( KestoCompare, AddsUpNodesOfTheSamePath )
{
	CRecordingWriter two = CRecordingWriter().Header( 0 ).BeginFrame().Node( 0, "x", 1 ).Node( 0, "x", 2 );
	two.BeginTimings().Entry( 1, 100 ).Entry( 1, 30 ).Entry( 1, 20 ).EndFrame();
	CRecordingWriter one = CRecordingWriter().Header( 0 ).BeginFrame().Node( 0, "x", 1 );
	one.BeginTimings().Entry( 1, 100 ).Entry( 1, 50 ).EndFrame();
	const KestoRun run = Compare( two.m_Bytes, one.m_Bytes, { "--json" } );
	EXPECT_NE( run.m_Output.find( "{\"a\":{\"mean_us\":200,\"p95_us\":200},\"b\":{\"mean_us\":200,\"p95_us\":200},"
								  "\"change_percent\":0,\"change_us\":0,\"p\":null,\"path\":\"x\"}" ),
		std::string::npos )
		<< run.m_Output;
}

TEST( KestoCompare, DamageOnEitherSideIsStatusOne )
{
	EXPECT_EQ( Compare( MakeDamaged(), Slower(), {} ).m_nStatus, 1 );
	EXPECT_EQ( Compare( Slower(), MakeDamaged(), {} ).m_nStatus, 1 );
}

TEST( KestoCompare, NeedsFramesOnBothSides )
{
	const std::vector<uint8_t> none = CRecordingWriter().Header( 0 ).m_Bytes;
	const KestoRun run = Compare( Slower(), none, {} );
	EXPECT_EQ( run.m_nStatus, 2 );
	EXPECT_EQ( run.m_Output, "" );
	EXPECT_NE( run.m_Errors.find( "b.kesto: there are no frames to compare\n" ), std::string::npos ) << run.m_Errors;
	EXPECT_EQ( Compare( none, Slower(), {} ).m_nStatus, 2 );
	EXPECT_EQ( Compare( {}, Slower(), {} ).m_nStatus, 2 );
}

TEST( KestoCompare, RefusesAMinimumThatIsNoAmount )
{
	for ( const std::string text : { "x", "-1", "%", "1ms", "nan", "" } )
	{
		const KestoRun run = Compare( Slower(), Slower(), { "--min-change", text } );
		EXPECT_EQ( run.m_nStatus, 2 ) << text;
		EXPECT_EQ( run.m_Output, "" ) << text;
	}
}
