#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <random>

#include "showbudget/budgetsamplestore.h"
#include "support/fakeclock.h"

using testing::ElementsAre;

// Brings the counter where four billion samples would.
class CBudgetSampleStoreTester
{
public:
	static void SetSampleCount( CBudgetSampleStore &store, uint32_t nCount ) { store.m_nSampleCount = nCount; }
};

namespace
{
std::vector<BudgetCategory> MakeCategories( size_t nCount )
{
	std::vector<BudgetCategory> categories;
	for ( size_t i = 0; i < nCount; i++ )
		categories.push_back(
			{ CUtlString( "Budget " + std::to_string( i ) ), QColor( 1, 2, static_cast<int>( i ) ) } );
	return categories;
}

BudgetViewData View( const CBudgetSampleStore &store )
{
	BudgetViewData viewData;
	store.FillViewData( viewData );
	return viewData;
}

// The values of all categories in one slot, "Totals" last.
std::vector<uint32_t> Slot( const CBudgetSampleStore &store, uint32_t nSlot )
{
	const BudgetViewData viewData = View( store );
	std::vector<uint32_t> values;
	for ( size_t i = 0; i < viewData.m_Categories.size(); i++ )
		values.push_back( viewData.Value( i, nSlot ) );
	return values;
}

std::vector<uint32_t> Peaks( const CBudgetSampleStore &store )
{
	return Slot( store, BUDGET_PEAK_ENTRY );
}

void Add( CBudgetSampleStore &store, std::vector<uint32_t> values, float flFrameRate = 60.0f )
{
	store.AddSample( values, flFrameRate, false, false );
}

class SampleStoreTest : public testing::Test
{
protected:
	CFakeClock m_Clock;
	CBudgetSampleStore m_Store;
};
} // namespace

TEST_F( SampleStoreTest, StartsWithoutCategoriesAndFrames )
{
	EXPECT_TRUE( m_Store.Categories().empty() );
	EXPECT_EQ( m_Store.SampleCount(), 0u );
	EXPECT_TRUE( View( m_Store ).m_Blocks.empty() );
	EXPECT_EQ( View( m_Store ).m_FrameRates.size(), BUDGET_RING_SIZE );
}

TEST_F( SampleStoreTest, AppendsWhiteTotalsToTheCategories )
{
	m_Store.SetCategories( MakeCategories( 2 ) );
	const auto categories = m_Store.Categories();
	ASSERT_EQ( categories.size(), 3u );
	EXPECT_STREQ( categories[0].m_Name.Get(), "Budget 0" );
	EXPECT_EQ( categories[1].m_Colour, QColor( 1, 2, 1 ) );
	EXPECT_STREQ( categories[2].m_Name.Get(), "Totals" );
	EXPECT_EQ( categories[2].m_Colour, QColor( 255, 255, 255, 255 ) );
	for ( size_t i = 0; i < 3; i++ )
		EXPECT_EQ( View( m_Store ).Block( i ).size(), 4097u );
}

TEST_F( SampleStoreTest, NewCategoriesForgetOldFramesAndNames )
{
	m_Store.SetCategories( MakeCategories( 3 ) );
	Add( m_Store, { 1, 2, 3 } );
	m_Store.SetCategories( MakeCategories( 1 ) );
	EXPECT_EQ( m_Store.Categories().size(), 2u );
	EXPECT_EQ( m_Store.SampleCount(), 0u );
	EXPECT_THAT( Peaks( m_Store ), ElementsAre( 0u, 0u ) );
}

TEST_F( SampleStoreTest, StoresZeroInTotalsWhenThereIsNothingElse )
{
	m_Store.SetCategories( {} );
	Add( m_Store, {} );
	EXPECT_EQ( m_Store.SampleCount(), 1u );
	EXPECT_THAT( Slot( m_Store, 0 ), ElementsAre( 0u ) );
	EXPECT_THAT( Peaks( m_Store ), ElementsAre( 0u ) );
}

TEST_F( SampleStoreTest, TotalsIsTheSumOfAllOthersOfTheSample )
{
	m_Store.SetCategories( MakeCategories( 3 ) );
	Add( m_Store, { 100, 20, 3 } );
	EXPECT_THAT( Slot( m_Store, 0 ), ElementsAre( 100u, 20u, 3u, 123u ) );
}

TEST_F( SampleStoreTest, DoesNotReadMoreValuesThanThereAreCategories )
{
	m_Store.SetCategories( MakeCategories( 1 ) );
	Add( m_Store, { 7, 1000, 1000 } );
	EXPECT_THAT( Slot( m_Store, 0 ), ElementsAre( 7u, 7u ) );
}

TEST_F( SampleStoreTest, CountsMissingValuesAsZero )
{
	m_Store.SetCategories( MakeCategories( 2 ) );
	Add( m_Store, { 5, 6 } );
	Add( m_Store, { 7 } );
	EXPECT_THAT( Slot( m_Store, 1 ), ElementsAre( 7u, 0u, 7u ) );
}

TEST_F( SampleStoreTest, CountsFramesBeforeAnyCategoriesButShowsNoneToTheViews )
{
	Add( m_Store, { 5 } );
	EXPECT_EQ( m_Store.SampleCount(), 1u );
	EXPECT_EQ( View( m_Store ).m_nSampleCount, 0u );
}

TEST_F( SampleStoreTest, TheSampleBehindAFullRingOverwritesSlotZeroOfEveryBlock )
{
	m_Store.SetCategories( MakeCategories( 2 ) );
	for ( uint32_t i = 0; i < 4096; i++ )
		Add( m_Store, { i, 1 } );
	EXPECT_THAT( Slot( m_Store, 0 ), ElementsAre( 0u, 1u, 1u ) );
	EXPECT_THAT( Slot( m_Store, 4095 ), ElementsAre( 4095u, 1u, 4096u ) );
	Add( m_Store, { 9999, 2 }, 30.0f );
	EXPECT_EQ( m_Store.SampleCount(), 4097u );
	EXPECT_THAT( Slot( m_Store, 0 ), ElementsAre( 9999u, 2u, 10001u ) );
	EXPECT_THAT( Slot( m_Store, 1 ), ElementsAre( 1u, 1u, 2u ) );
	EXPECT_EQ( View( m_Store ).m_FrameRates[0], 30.0f );
}

TEST_F( SampleStoreTest, HoldsTheLargerPeakForThreeSecondsThenTakesWhateverComes )
{
	m_Store.SetCategories( MakeCategories( 1 ) );
	Add( m_Store, { 50 } );
	EXPECT_TRUE( m_Store.ArePeaksJustReset() );
	m_Clock.Advance( 2.875 );
	Add( m_Store, { 80 } );
	EXPECT_FALSE( m_Store.ArePeaksJustReset() );
	EXPECT_THAT( Peaks( m_Store ), ElementsAre( 80u, 80u ) );
	Add( m_Store, { 60 } );
	EXPECT_THAT( Peaks( m_Store ), ElementsAre( 80u, 80u ) );
	m_Clock.Advance( 0.125 ); // three seconds since the reset
	Add( m_Store, { 10 } );
	EXPECT_TRUE( m_Store.ArePeaksJustReset() );
	EXPECT_THAT( Peaks( m_Store ), ElementsAre( 10u, 10u ) );
}

// At 60 frames per second on a clock that began long ago: the first frame that is three seconds old or more replaces
// the peak, and none before it.
TEST_F( SampleStoreTest, HoldsPeaksAsLongAfterAMonthAsAfterAnHour )
{
	constexpr double HOUR = 3600.0;
	constexpr int FRAMES_HELD = 180; // 3 s
	for ( const double flUptime : { 0.001, HOUR, 36 * HOUR, 30 * 24 * HOUR, 365 * 24 * HOUR } )
	{
		m_Clock.Set( flUptime );
		m_Store.SetCategories( MakeCategories( 1 ) );
		Add( m_Store, { 1'000'000 } );
		for ( int nReset = 0; nReset < 5; nReset++ )
		{
			ASSERT_TRUE( m_Store.ArePeaksJustReset() ) << "uptime " << flUptime << ", reset " << nReset;
			int nFramesHeld = 0;
			do
			{
				m_Clock.Advance( 1.0 / 60 );
				Add( m_Store, { 10 } );
				nFramesHeld++;
			} while ( !m_Store.ArePeaksJustReset() && nFramesHeld < 1000 );
			EXPECT_NEAR( nFramesHeld, FRAMES_HELD, 1 ) << "uptime " << flUptime << ", reset " << nReset;
			EXPECT_EQ( Peaks( m_Store )[0], 10u );
		}
	}
}

TEST_F( SampleStoreTest, KeepsSlotsAndPeaksRightWhereASignedCounterWouldOverflow )
{
	m_Store.SetCategories( MakeCategories( 1 ) );
	CBudgetSampleStoreTester::SetSampleCount( m_Store, 0x7FFFFFFE );
	Add( m_Store, { 1 } ); // number 0x7FFFFFFE
	Add( m_Store, { 2 } );
	Add( m_Store, { 3 } ); // number 0x80000000
	EXPECT_EQ( m_Store.SampleCount(), 0x80000001u );
	EXPECT_THAT( Slot( m_Store, 4094 ), ElementsAre( 1u, 1u ) );
	EXPECT_THAT( Slot( m_Store, 4095 ), ElementsAre( 2u, 2u ) );
	EXPECT_THAT( Slot( m_Store, 0 ), ElementsAre( 3u, 3u ) );
	m_Clock.Advance( 3.0 );
	m_Store.AddSample( std::vector<uint32_t>{ 1 }, 60.0f, false, true );
	EXPECT_THAT( Peaks( m_Store ), ElementsAre( 3u, 3u ) ) << "the frame before it is sample 0x80000000";
}

TEST_F( SampleStoreTest, AnAccumulatingSampleAddsToTheFrameAndNeitherCountsNorResets )
{
	m_Store.SetCategories( MakeCategories( 2 ) );
	Add( m_Store, { 10, 1 } );
	m_Clock.Advance( 100.0 ); // a reset is long due
	m_Store.AddSample( std::vector<uint32_t>{ 5, 6 }, 25.0f, true, true );
	EXPECT_EQ( m_Store.SampleCount(), 1u );
	EXPECT_FALSE( m_Store.ArePeaksJustReset() );
	EXPECT_THAT( Slot( m_Store, 0 ), ElementsAre( 15u, 7u, 22u ) );
	EXPECT_THAT( Peaks( m_Store ), ElementsAre( 15u, 7u, 22u ) );
	EXPECT_EQ( View( m_Store ).m_FrameRates[0], 25.0f );
}

TEST_F( SampleStoreTest, AnAccumulatingSampleBeforeAnyFrameChangesNothing )
{
	m_Store.SetCategories( MakeCategories( 1 ) );
	m_Store.AddSample( std::vector<uint32_t>{ 5 }, 25.0f, true, true );
	EXPECT_EQ( m_Store.SampleCount(), 0u );
	EXPECT_THAT( Peaks( m_Store ), ElementsAre( 0u, 0u ) );
	Add( m_Store, { 3 } );
	EXPECT_TRUE( m_Store.ArePeaksJustReset() );
	EXPECT_THAT( Slot( m_Store, 0 ), ElementsAre( 3u, 3u ) );
}

TEST_F( SampleStoreTest, ClearingForgetsFramesAndPeaksAndTheNextSampleResetsThem )
{
	m_Store.SetCategories( MakeCategories( 1 ) );
	Add( m_Store, { 500 } );
	Add( m_Store, { 400 } );
	m_Store.Clear();
	EXPECT_EQ( m_Store.SampleCount(), 0u );
	EXPECT_THAT( Peaks( m_Store ), ElementsAre( 0u, 0u ) );
	EXPECT_THAT( Slot( m_Store, 1 ), ElementsAre( 400u, 400u ) ) << "slots are not erased";
	Add( m_Store, { 7 } );
	EXPECT_EQ( m_Store.SampleCount(), 1u );
	EXPECT_TRUE( m_Store.ArePeaksJustReset() );
	EXPECT_THAT( Peaks( m_Store ), ElementsAre( 7u, 7u ) );
}

// The new frame is the first part of a tick when the peaks are reset, so the tick before it counts too.
TEST_F( SampleStoreTest, WithTickSamplingAResetPeakTakesTheFrameBeforeIntoAccount )
{
	m_Store.SetCategories( MakeCategories( 1 ) );
	m_Store.AddSample( std::vector<uint32_t>{ 90 }, 60.0f, false, true );
	EXPECT_THAT( Peaks( m_Store ), ElementsAre( 90u, 90u ) ) << "one frame: there is none before it";
	m_Clock.Advance( 3.0 );
	m_Store.AddSample( std::vector<uint32_t>{ 20 }, 60.0f, false, true );
	EXPECT_THAT( Peaks( m_Store ), ElementsAre( 90u, 90u ) );
	m_Clock.Advance( 3.0 );
	m_Store.AddSample( std::vector<uint32_t>{ 30 }, 60.0f, false, true );
	EXPECT_THAT( Peaks( m_Store ), ElementsAre( 30u, 30u ) );
}

TEST_F( SampleStoreTest, WithoutTickSamplingAResetPeakIsTheFrameAlone )
{
	m_Store.SetCategories( MakeCategories( 1 ) );
	Add( m_Store, { 90 } );
	m_Clock.Advance( 3.0 );
	Add( m_Store, { 20 } );
	EXPECT_THAT( Peaks( m_Store ), ElementsAre( 20u, 20u ) );
}

TEST_F( SampleStoreTest, StoresAFrameRateThatIsNotFiniteAsZero )
{
	m_Store.SetCategories( {} );
	constexpr float INFINITE = std::numeric_limits<float>::infinity();
	for ( const float flFrameRate : { std::nanf( "" ), INFINITE, -INFINITE } )
	{
		m_Store.AddSample( {}, flFrameRate, false, false );
		EXPECT_EQ( View( m_Store ).m_FrameRates[m_Store.SampleCount() - 1], 0.0f );
	}
}

TEST_F( SampleStoreTest, KeepsSlotsAndPeaksRightAcrossTheWrapOfItsCounter )
{
	m_Store.SetCategories( MakeCategories( 1 ) );
	CBudgetSampleStoreTester::SetSampleCount( m_Store, 0xFFFFFFFD );
	Add( m_Store, { 1 } ); // number 0xFFFFFFFD
	Add( m_Store, { 2 } );
	EXPECT_EQ( m_Store.SampleCount(), 0xFFFFFFFFu );
	EXPECT_THAT( Slot( m_Store, 4093 ), ElementsAre( 1u, 1u ) );
	EXPECT_THAT( Slot( m_Store, 4094 ), ElementsAre( 2u, 2u ) );
	Add( m_Store, { 3 } );
	EXPECT_EQ( m_Store.SampleCount(), 0u );
	EXPECT_THAT( Slot( m_Store, 4095 ), ElementsAre( 3u, 3u ) );
	EXPECT_THAT( Peaks( m_Store ), ElementsAre( 3u, 3u ) );
	m_Store.AddSample( std::vector<uint32_t>{ 9 }, 60.0f, true, true );
	EXPECT_THAT( Slot( m_Store, 4095 ), ElementsAre( 3u, 3u ) ) << "no frame counts";
	m_Clock.Advance( 3.0 );
	m_Store.AddSample( std::vector<uint32_t>{ 4 }, 60.0f, false, true );
	EXPECT_EQ( m_Store.SampleCount(), 1u );
	EXPECT_THAT( Slot( m_Store, 0 ), ElementsAre( 4u, 4u ) );
	EXPECT_THAT( Peaks( m_Store ), ElementsAre( 4u, 4u ) );
}

namespace
{
// The store's promises in the plainest way: a list of the frames that are left.
class CModel
{
public:
	struct Frame
	{
		std::vector<uint32_t> m_Values; // "Totals" last
		float m_flFrameRate = 0.0f;
	};

	void SetCategories( size_t nCount )
	{
		m_nCategories = nCount + 1;
		Clear();
	}

	void Clear()
	{
		m_Frames.clear();
		m_nCount = 0;
		m_flHoldUntil = 0.0;
		m_Peaks.assign( m_nCategories, 0 );
	}

	void AddSample( const std::vector<uint32_t> &values, float flRate, bool bAccumulate, bool bTick, double flNow )
	{
		if ( bAccumulate && m_Frames.empty() )
			return;
		m_bReset = !bAccumulate && flNow >= m_flHoldUntil;
		if ( !bAccumulate )
		{
			m_Frames.push_back( { std::vector<uint32_t>( m_nCategories ), 0.0f } );
			m_nCount++;
		}
		if ( m_Frames.size() > 4096 )
			m_Frames.pop_front();
		Frame &frame = m_Frames.back();
		for ( size_t i = 0; i + 1 < m_nCategories; i++ )
		{
			frame.m_Values[i] += values[i];
			frame.m_Values.back() += values[i];
		}
		frame.m_flFrameRate = std::isfinite( flRate ) ? flRate : 0.0f;
		for ( size_t i = 0; i < m_nCategories; i++ )
			UpdatePeak( i, bTick );
		if ( m_bReset )
			m_flHoldUntil = flNow + 3.0;
	}

	size_t m_nCategories = 1;
	std::deque<Frame> m_Frames;
	uint32_t m_nCount = 0;
	double m_flHoldUntil = 0.0;
	bool m_bReset = false;
	std::vector<uint32_t> m_Peaks{ 0 };

private:
	void UpdatePeak( size_t i, bool bTick )
	{
		std::vector<uint32_t> candidates{ m_Frames.back().m_Values[i] };
		if ( !m_bReset )
			candidates.push_back( m_Peaks[i] );
		else if ( bTick && m_Frames.size() >= 2 )
			candidates.push_back( m_Frames[m_Frames.size() - 2].m_Values[i] );
		m_Peaks[i] = *std::max_element( candidates.begin(), candidates.end() );
	}
};

// Compares the newest nFrames frames and everything that is not per frame.
void ExpectSame( const CBudgetSampleStore &store, const CModel &model, size_t nFrames )
{
	ASSERT_EQ( store.SampleCount(), model.m_nCount );
	ASSERT_EQ( store.ArePeaksJustReset(), model.m_bReset );
	ASSERT_EQ( Peaks( store ), model.m_Peaks );
	const BudgetViewData viewData = View( store );
	for ( size_t i = 0; i < std::min( nFrames, model.m_Frames.size() ); i++ )
	{
		const uint32_t nSlot = ( model.m_nCount - 1 - static_cast<uint32_t>( i ) ) % 4096;
		const CModel::Frame &frame = model.m_Frames[model.m_Frames.size() - 1 - i];
		ASSERT_EQ( Slot( store, nSlot ), frame.m_Values ) << i << " frames back";
		ASSERT_EQ( viewData.m_FrameRates[nSlot], frame.m_flFrameRate ) << i << " frames back";
	}
}
} // namespace

TEST_F( SampleStoreTest, AgreesWithADumbModelUnderRandomOperations )
{
	const unsigned nSeed = std::random_device{}();
	SCOPED_TRACE( "seed " + std::to_string( nSeed ) );
	std::mt19937 random( nSeed );
	const auto below = [&random]( uint32_t n ) { return static_cast<uint32_t>( random() % n ); };

	CModel model;
	m_Store.SetCategories( {} );
	for ( int i = 0; i < 40000 && !HasFatalFailure(); i++ )
	{
		const uint32_t nDie = below( 20000 );
		if ( nDie < 2 )
		{
			const size_t nCategories = below( 6 );
			m_Store.SetCategories( MakeCategories( nCategories ) );
			model.SetCategories( nCategories );
		}
		else if ( nDie < 4 )
		{
			m_Store.Clear();
			model.Clear();
		}
		else
		{
			std::vector<uint32_t> values( model.m_nCategories + below( 2 ) );
			std::generate( values.begin(), values.end(),
				[&] { return below( 4 ) ? below( 50000 ) : static_cast<uint32_t>( random() ); } );
			const float flRate = below( 10 ) ? static_cast<float>( below( 1000 ) ) : std::nanf( "" );
			const bool bAccumulate = below( 3 ) == 0;
			const bool bTick = below( 2 ) == 0;
			m_Store.AddSample( values, flRate, bAccumulate, bTick );
			model.AddSample( values, flRate, bAccumulate, bTick, m_Clock.Now() );
			m_Clock.Advance( below( 3 ) * 0.125 );
		}
		ExpectSame( m_Store, model, i % 5000 == 0 ? 4096 : 2 );
	}
	ExpectSame( m_Store, model, 4096 );
}
