#include "views/samplestepping.h"

#include <gtest/gtest.h>

#include <deque>
#include <limits>
#include <random>

#include "views/fakehistoryowner.h"
#include "views/framerate.h"

namespace
{
constexpr uint32_t LAST_COUNT = std::numeric_limits<uint32_t>::max();

// The ring as a user sees it: the newest 4,096 samples by number, and nothing clever.
struct RingModel
{
	struct Sample
	{
		uint32_t m_nNumber;
		uint32_t m_nMicroseconds;
	};

	std::deque<Sample> m_Samples;

	void Add( uint32_t nNumber, uint32_t nMicroseconds )
	{
		m_Samples.push_back( { nNumber, nMicroseconds } );
		if ( m_Samples.size() > 4096 )
			m_Samples.pop_front();
	}

	// One step at a time; a step from in front of the ring leads to its oldest sample.
	uint32_t Step( uint32_t nCursor, int nSteps ) const
	{
		for ( ; nSteps > 0 && nCursor < m_Samples.back().m_nNumber; nSteps-- )
			nCursor++;
		for ( ; nSteps < 0 && nCursor > m_Samples.front().m_nNumber; nSteps++ )
			nCursor--;
		return std::max( nCursor, m_Samples.front().m_nNumber );
	}

	static bool IsSlow( const Sample &sample, double flRate )
	{
		return sample.m_nMicroseconds > 0 && 1e6 / sample.m_nMicroseconds < flRate;
	}

	// Puts the samples into the order in which they are looked at and takes the first slow one.
	std::optional<uint32_t> FindSlower( uint32_t nCursor, SearchDirection direction, double flRate ) const
	{
		std::deque<Sample> order;
		for ( const Sample &sample : m_Samples )
		{
			if ( sample.m_nNumber > nCursor )
				order.push_back( sample );
		}
		for ( const Sample &sample : m_Samples )
		{
			if ( sample.m_nNumber <= nCursor )
				order.push_back( sample );
		}
		if ( direction == SearchDirection::Earlier )
		{
			std::reverse( order.begin(), order.end() );
			// The cursor's own sample is the last choice.
			if ( !order.empty() && order.front().m_nNumber == nCursor )
			{
				order.push_back( order.front() );
				order.pop_front();
			}
		}
		for ( const Sample &sample : order )
		{
			if ( IsSlow( sample, flRate ) )
				return sample.m_nNumber;
		}
		return std::nullopt;
	}

	std::optional<uint32_t> FindSlowest() const
	{
		std::optional<Sample> slowest;
		for ( const Sample &sample : m_Samples )
		{
			if ( sample.m_nMicroseconds > 0 && ( !slowest || sample.m_nMicroseconds >= slowest->m_nMicroseconds ) )
				slowest = sample;
		}
		return slowest ? std::optional( slowest->m_nNumber ) : std::nullopt;
	}
};

struct Session
{
	CFakeHistoryOwner m_Owner{ 1 };
	RingModel m_Model;

	void Add( uint32_t nMicroseconds )
	{
		m_Model.Add( m_Owner.m_Data.m_nSampleCount, nMicroseconds );
		m_Owner.AddSample( { nMicroseconds } );
	}

	void Check( uint32_t nCursor, int nSteps, float flRate ) const
	{
		const BudgetViewData data = m_Owner.GetViewData();
		const std::optional<HeldSamples> held = HeldSamples::Of( data.m_nSampleCount );
		ASSERT_TRUE( held );
		EXPECT_EQ( held->m_nOldest, m_Model.m_Samples.front().m_nNumber );
		EXPECT_EQ( held->m_nNewest, m_Model.m_Samples.back().m_nNumber );
		EXPECT_EQ( StepSample( *held, nCursor, nSteps ), m_Model.Step( nCursor, nSteps ) )
			<< nCursor << " + " << nSteps;
		for ( const SearchDirection direction : { SearchDirection::Later, SearchDirection::Earlier } )
		{
			EXPECT_EQ( FindSlowerSample( data, nCursor, direction, flRate ),
				m_Model.FindSlower( nCursor, direction, double{ flRate } ) )
				<< "from " << nCursor << " below " << flRate;
		}
		EXPECT_EQ( FindSlowestSample( data ), m_Model.FindSlowest() );
	}
};
} // namespace

TEST( SampleStepping, HasNothingToOfferBeforeTheFirstSample )
{
	CFakeHistoryOwner owner( 1 );
	EXPECT_FALSE( HeldSamples::Of( 0 ) );
	EXPECT_FALSE( FindSlowerSample( owner.GetViewData(), 0, SearchDirection::Later, 1000.0f ) );
	EXPECT_FALSE( FindSlowestSample( owner.GetViewData() ) );
}

TEST( SampleStepping, AgreesWithAListOfTheNewestSamples )
{
	const unsigned nSeed = std::random_device()();
	SCOPED_TRACE( testing::Message() << "seed " << nSeed );
	std::mt19937 random( nSeed );
	const auto Number = [&]( uint32_t nFrom, uint32_t nTo )
	{ return std::uniform_int_distribution<uint32_t>( nFrom, nTo )( random ); };
	for ( int nRound = 0; nRound < 12; nRound++ )
	{
		Session run;
		const uint32_t nCount = Number( 1, nRound % 3 == 0 ? 12 : 9000 );
		const uint32_t nSlowEvery = Number( 1, 400 );
		for ( uint32_t i = 0; i < nCount; i++ )
			run.Add( Number( 0, 30 ) == 0           ? 0
					 : Number( 0, nSlowEvery ) == 0 ? Number( 40000, 90000 )
													: Number( 8000, 20000 ) );
		for ( int i = 0; i < 60; i++ )
		{
			const uint32_t nCursor = Number( 0, nCount - 1 ); // at times one that has left the ring
			const int nSteps = static_cast<int>( Number( 0, 700 ) ) - 350;
			run.Check( nCursor, nSteps, i % 2 == 0 ? 30.0f : 60.0f );
		}
	}
}

TEST( SampleStepping, GoesOnWithTheOldestSlowSampleAfterTheNewest )
{
	Session run;
	for ( const uint32_t nMicroseconds : { 10000u, 50000u, 10000u, 60000u, 10000u } )
		run.Add( nMicroseconds );
	const BudgetViewData data = run.m_Owner.GetViewData();
	EXPECT_EQ( FindSlowerSample( data, 4, SearchDirection::Later, 30.0f ), 1u );
	EXPECT_EQ( FindSlowerSample( data, 1, SearchDirection::Later, 30.0f ), 3u );
	EXPECT_EQ( FindSlowerSample( data, 3, SearchDirection::Later, 30.0f ), 1u );
	EXPECT_EQ( FindSlowerSample( data, 4, SearchDirection::Earlier, 30.0f ), 3u );
	EXPECT_EQ( FindSlowerSample( data, 1, SearchDirection::Earlier, 30.0f ), 3u );
	EXPECT_EQ( FindSlowestSample( data ), 3u );
}

TEST( SampleStepping, ASampleAtTheMarkerIsNotSlower )
{
	Session run;
	run.Add( 20000 ); // 50 frames per second
	EXPECT_FALSE( FindSlowerSample( run.m_Owner.GetViewData(), 0, SearchDirection::Later, 50.0f ) );
	EXPECT_EQ( FindSlowerSample( run.m_Owner.GetViewData(), 0, SearchDirection::Later, 51.0f ), 0u );
}

TEST( SampleStepping, AFrameWithoutTimeIsNotSlow )
{
	Session run;
	run.Add( 0 );
	EXPECT_FALSE( FindSlowerSample( run.m_Owner.GetViewData(), 0, SearchDirection::Later, 50.0f ) );
	EXPECT_FALSE( FindSlowestSample( run.m_Owner.GetViewData() ) );
}

TEST( SampleStepping, SearchesTheRatesThatTheGraphShows )
{
	CFakeHistoryOwner owner( 1 );
	owner.AddSample( { 10000 }, 20.0f ); // 100 measured, 20 averaged
	owner.AddSample( { 50000 }, 90.0f ); // 20 measured, 90 averaged
	EXPECT_EQ( FindSlowestSample( owner.GetViewData() ), 1u );
	owner.m_Data.m_bFPSAverages = true;
	EXPECT_EQ( FindSlowestSample( owner.GetViewData() ), 0u );
	EXPECT_EQ( FindSlowerSample( owner.GetViewData(), 1, SearchDirection::Later, 30.0f ), 0u );
}

TEST( SampleStepping, StaysInTheRingAtTheCountersLastStepAndAtItsWrap )
{
	const std::optional<HeldSamples> last = HeldSamples::Of( LAST_COUNT );
	ASSERT_TRUE( last );
	EXPECT_EQ( last->m_nNewest, LAST_COUNT - 1 );
	EXPECT_EQ( last->m_nOldest, LAST_COUNT - 4096 );
	EXPECT_EQ( StepSample( *last, LAST_COUNT - 1, 10 ), LAST_COUNT - 1 );
	EXPECT_EQ( StepSample( *last, LAST_COUNT - 5, 2 ), LAST_COUNT - 3 );
	EXPECT_EQ( StepSample( *last, 0, -10 ), LAST_COUNT - 4096 );

	Session run;
	run.m_Owner.m_Data.m_nSampleCount = LAST_COUNT - 4096;
	for ( uint32_t i = 0; i < 4096; i++ )
		run.Add( i % 1000 == 7 ? 50000 : 10000 );
	run.Check( LAST_COUNT - 1, -10, 30.0f );
	run.Check( LAST_COUNT - 4096, 4095, 30.0f );

	EXPECT_FALSE( HeldSamples::Of( LAST_COUNT + 1 ) );
	const std::optional<HeldSamples> wrapped = HeldSamples::Of( LAST_COUNT + 2 );
	ASSERT_TRUE( wrapped );
	EXPECT_EQ( StepSample( *wrapped, LAST_COUNT - 1, -1 ), 0u ); // a cursor from before the wrap
}
