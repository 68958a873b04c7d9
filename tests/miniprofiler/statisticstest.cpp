#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>

#include "miniprofiler/miniprofilerstatistics.h"
#include "support/randomseed.h"

namespace
{
using testing::Each;
using testing::ElementsAre;

struct Expected
{
	MiniProfilerArray m_Ave{}, m_StDev{}, m_Cur{}, m_Peaks{};
	bool m_bIdle = false;
};

// The rules once more, the plain way; samples are newest first and there is at least one.
Expected Model( const std::deque<MiniProfilerSample> &samples, bool bPeaks )
{
	const auto Ticks = []( const MiniProfilerSample &sample ) { return static_cast<double>( sample.m_nTicks ); };
	const auto Calls = []( const MiniProfilerSample &sample ) { return static_cast<double>( sample.m_nCalls ); };
	const auto Make = []( double flCalls, double flInclusive, double flPerCall )
	{
		MiniProfilerArray array{};
		array[1] = static_cast<float>( flCalls );
		array[2] = static_cast<float>( flInclusive );
		array[4] = static_cast<float>( flPerCall );
		return array;
	};
	const auto n = static_cast<double>( samples.size() );
	double C = 0, T = 0, peakC = 0, peakT = 0, peakPer = 0;
	for ( const MiniProfilerSample &sample : samples )
	{
		C += Calls( sample );
		T += Ticks( sample );
		peakC = std::max( peakC, Calls( sample ) );
		peakT = std::max( peakT, Ticks( sample ) );
		peakPer = std::max( peakPer, Ticks( sample ) / std::max( Calls( sample ), 1.0 ) );
	}
	const double flPerCall = T / std::max( C, 1.0 );
	double squareC = 0, squareT = 0, squarePer = 0, m = 0;
	for ( const MiniProfilerSample &sample : samples )
	{
		squareC += std::pow( Calls( sample ) - C / n, 2 );
		squareT += std::pow( Ticks( sample ) - T / n, 2 );
		if ( sample.m_nCalls != 0 )
		{
			squarePer += std::pow( Ticks( sample ) / Calls( sample ) - flPerCall, 2 );
			m++;
		}
	}
	Expected expected;
	const MiniProfilerSample &newest = samples.front();
	expected.m_Cur = Make( Calls( newest ), Ticks( newest ), Ticks( newest ) / std::max( Calls( newest ), 1.0 ) );
	expected.m_Peaks = bPeaks ? Make( peakC, peakT, peakPer ) : expected.m_Cur;
	expected.m_Ave = Make( C / n, T / n, flPerCall );
	if ( samples.size() >= 2 )
		expected.m_StDev =
			Make( std::sqrt( squareC / n ), std::sqrt( squareT / n ), C > 0 ? std::sqrt( squarePer / m ) : 0.0 );
	expected.m_bIdle = C == 0 && T == 0;
	return expected;
}

class MiniProfilerStatistics : public testing::Test
{
protected:
	CQMiniProfilerRecord &AddRecord( bool bAdvanced )
	{
		m_Records.push_back(
			std::make_unique<CQMiniProfilerRecord>( m_Records.size() + 1, m_History.Add( bAdvanced ) ) );
		return *m_Records.back();
	}
	// A record with these samples, oldest first.
	CQMiniProfilerRecord &AddRecord( const std::vector<MiniProfilerSample> &samples )
	{
		CQMiniProfilerRecord &record = AddRecord( false );
		for ( const MiniProfilerSample &sample : samples )
		{
			m_History.Advance();
			m_History.SetNewest( record.HistoryIndex(), sample );
		}
		return record;
	}
	void Compute( bool bPeaks = true ) { ComputeMiniProfilerStatistics( m_History, m_Records, bPeaks ); }

	CMiniProfilerHistory m_History;
	std::vector<std::unique_ptr<CQMiniProfilerRecord>> m_Records;
};

TEST_F( MiniProfilerStatistics, ARecordWithoutSamplesStaysAsItIsAndIsNotIdle )
{
	CQMiniProfilerRecord &record = AddRecord( false );
	Compute();
	EXPECT_THAT( record.m_Ave, Each( 0.0f ) );
	EXPECT_FALSE( record.HasFlag( MINIPROFILER_ROW_IDLE ) );

	record.m_Ave = { 0, 9, 9, 9, 9, 9 };
	Compute();
	EXPECT_THAT( record.m_Ave, ElementsAre( 0, 9, 9, 9, 9, 9 ) );
}

TEST_F( MiniProfilerStatistics, OneSampleIsCurrentAverageAndPeakAndLeavesTheDeviation )
{
	CQMiniProfilerRecord &record = AddRecord( { { 300, 4 } } );
	record.m_StDev = { 0, 8, 8, 8, 8, 8 };
	Compute();
	EXPECT_THAT( record.m_Cur, ElementsAre( 0, 4, 300, 0, 75, 0 ) );
	EXPECT_EQ( record.m_Ave, record.m_Cur );
	EXPECT_EQ( record.m_Peaks, record.m_Cur );
	EXPECT_THAT( record.m_StDev, ElementsAre( 0, 8, 8, 8, 8, 8 ) );
}

TEST_F( MiniProfilerStatistics, TimeWithoutCallsIsDividedByOne )
{
	CQMiniProfilerRecord &record = AddRecord( { { 500, 0 }, { 700, 0 } } );
	Compute();
	EXPECT_EQ( record.m_Cur[MINIPROFILER_INCLUSIVE_CALL], 700.0f );
	EXPECT_EQ( record.m_Ave[MINIPROFILER_INCLUSIVE_CALL], 1200.0f );
	EXPECT_EQ( record.m_Peaks[MINIPROFILER_INCLUSIVE_CALL], 700.0f );
	EXPECT_EQ( record.m_StDev[MINIPROFILER_INCLUSIVE_CALL], 0.0f );
	EXPECT_FALSE( record.HasFlag( MINIPROFILER_ROW_IDLE ) );
}

TEST_F( MiniProfilerStatistics, PeaksAreOnlyCollectedWhenTheyAreShown )
{
	CQMiniProfilerRecord &record = AddRecord( { { 900, 3 }, { 100, 50 }, { 10, 2 } } );
	Compute( true );
	EXPECT_THAT( record.m_Peaks, ElementsAre( 0, 50, 900, 0, 300, 0 ) );
	Compute( false );
	EXPECT_EQ( record.m_Peaks, record.m_Cur );
}

TEST_F( MiniProfilerStatistics, IdleComesAndGoes )
{
	CQMiniProfilerRecord &record = AddRecord( { { 0, 0 } } );
	Compute();
	EXPECT_TRUE( record.HasFlag( MINIPROFILER_ROW_IDLE ) );
	m_History.SetNewest( 0, { 0, 1 } );
	Compute();
	EXPECT_FALSE( record.HasFlag( MINIPROFILER_ROW_IDLE ) );
}

// Exclusive columns are 0 on purpose: the engine sends inclusive times only.
TEST_F( MiniProfilerStatistics, ExclusiveColumnsAreZero )
{
	CQMiniProfilerRecord &record = AddRecord( { { 500, 5 }, { 700, 6 } } );
	Compute();
	for ( const MiniProfilerArray &array : { record.m_Ave, record.m_StDev, record.m_Cur, record.m_Peaks } )
		for ( const int nColumn : { MINIPROFILER_NAME, MINIPROFILER_EXCLUSIVE, MINIPROFILER_EXCLUSIVE_CALL } )
			EXPECT_EQ( array[static_cast<size_t>( nColumn )], 0.0f );
}

TEST_F( MiniProfilerStatistics, TheLargestNumbersDoNotOverflow )
{
	CQMiniProfilerRecord &record = AddRecord( { { UINT64_MAX, UINT64_MAX }, { 0, 0 } } );
	Compute();
	EXPECT_FLOAT_EQ( record.m_Peaks[MINIPROFILER_INCLUSIVE], 18446744073709551615.0f );
	EXPECT_FLOAT_EQ( record.m_Ave[MINIPROFILER_CALLS], 9223372036854775807.5f );
	EXPECT_FLOAT_EQ( record.m_StDev[MINIPROFILER_INCLUSIVE], 9223372036854775807.5f );
}

void ExpectNear( const MiniProfilerArray &found, const MiniProfilerArray &expected, const char *pWhat )
{
	for ( size_t i = 0; i < MINIPROFILER_COLUMNS; i++ )
		EXPECT_NEAR( found[i], expected[i], 1e-6 * std::max( 1.0f, expected[i] ) ) << pWhat << ", column " << i;
}

TEST_F( MiniProfilerStatistics, AgreesWithAPlainModelUnderRandomSamples )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937_64 random( nSeed );
	std::vector<std::deque<MiniProfilerSample>> model;
	for ( int nInterval = 0; nInterval < 200; nInterval++ )
	{
		m_History.Advance();
		for ( auto &samples : model )
			samples.push_front( samples.size() >= 128 ? samples[127] : MiniProfilerSample{} );
		for ( int i = 0; i < 2; i++ ) // records come at different times, so rings differ in length
		{
			const bool bAdvanced = random() % 2 == 0;
			AddRecord( bAdvanced );
			model.push_back( std::deque<MiniProfilerSample>( bAdvanced ? 1 : 0 ) );
		}
		for ( uint32_t i = 0; i < model.size(); i++ )
		{
			if ( model[i].size() > 128 )
				model[i].resize( 128 );
			if ( model[i].empty() || random() % 8 == 0 )
				continue;
			const int nShift = static_cast<int>( random() % 64 );
			const MiniProfilerSample sample{ random() >> nShift, random() % 4 == 0 ? 0 : random() % 1000 };
			m_History.SetNewest( i, sample );
			model[i].front() = sample;
		}
	}
	for ( const bool bPeaks : { true, false } )
	{
		ComputeMiniProfilerStatistics( m_History, m_Records, bPeaks, false ); // as every processor can
		for ( size_t i = 0; i < model.size(); i++ )
		{
			if ( model[i].empty() )
				continue;
			SCOPED_TRACE( i );
			const Expected expected = Model( model[i], bPeaks );
			ExpectNear( m_Records[i]->m_Cur, expected.m_Cur, "Cur" );
			ExpectNear( m_Records[i]->m_Ave, expected.m_Ave, "Ave" );
			ExpectNear( m_Records[i]->m_StDev, expected.m_StDev, "StDev" );
			ExpectNear( m_Records[i]->m_Peaks, expected.m_Peaks, "Peaks" );
			EXPECT_EQ( m_Records[i]->HasFlag( MINIPROFILER_ROW_IDLE ), expected.m_bIdle );
		}
	}
}

TEST_F( MiniProfilerStatistics, EveryProcessorGetsTheSameNumbers )
{
	if ( !HasWideVectors() )
		GTEST_SKIP() << "this processor has no vectors of four";
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937_64 random( nSeed );
	for ( uint32_t nRecords = 1; nRecords <= 21; nRecords++ ) // every remainder of a block
	{
		AddRecord( random() % 2 == 0 );
		for ( uint64_t i = random() % 40; i > 0; i-- )
		{
			m_History.Advance();
			for ( uint32_t j = 0; j < nRecords; j++ )
				m_History.SetNewest( j, { random() >> random() % 64, random() % 5 } );
		}
		ComputeMiniProfilerStatistics( m_History, m_Records, true, false );
		std::vector<std::array<MiniProfilerArray, 4>> narrow;
		for ( const auto &pRecord : m_Records )
			narrow.push_back( { pRecord->m_Ave, pRecord->m_StDev, pRecord->m_Cur, pRecord->m_Peaks } );
		ComputeMiniProfilerStatistics( m_History, m_Records, true, true );
		for ( uint32_t j = 0; j < nRecords; j++ )
		{
			const CQMiniProfilerRecord &record = *m_Records[j];
			const std::array<MiniProfilerArray, 4> wide{ record.m_Ave, record.m_StDev, record.m_Cur, record.m_Peaks };
			ASSERT_EQ( wide, narrow[j] ) << "record " << j << " of " << nRecords;
		}
	}
}
} // namespace
