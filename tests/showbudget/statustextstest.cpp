#include <gtest/gtest.h>

#include <QString>

#include "showbudget/budgetsamplestore.h"
#include "showbudget/budgetstatustexts.h"
#include "support/fakeclock.h"

namespace
{
// Three frames of one budget: 10 ms, 20 ms, 40 ms, at averages of 90, 80 and 70 frames per second.
class StatusTextsTest : public testing::Test
{
protected:
	StatusTextsTest()
	{
		m_Store.SetCategories( { { CUtlString( "Render" ), Qt::red } } );
		float flFrameRate = 90.0f;
		for ( const uint32_t nMicroseconds : { 10000u, 20000u, 40000u } )
		{
			m_Store.AddSample( std::vector<uint32_t>{ nMicroseconds }, flFrameRate, false, false );
			flFrameRate -= 10.0f;
		}
		m_Store.FillViewData( m_ViewData );
		m_ViewData.m_bLive = true;
	}

	std::string Texts( uint32_t nSampleCount ) const
	{
		const BudgetStatusTexts texts = BudgetStatusTexts::Make( m_ViewData, nSampleCount );
		return ( texts.m_Samples + "|" + texts.m_FPS + "|" + texts.m_Frame ).toStdString();
	}

	CFakeClock m_Clock;
	CBudgetSampleStore m_Store;
	BudgetViewData m_ViewData;
};
} // namespace

TEST_F( StatusTextsTest, SayThatThereAreNoSamples )
{
	EXPECT_EQ( Texts( 0 ), "No Samples.|FPS:|Frame:" );
}

TEST_F( StatusTextsTest, ShowTheNewestFrameWhileLive )
{
	EXPECT_EQ( Texts( 3 ), "Samples: 3|FPS: 25.00|Frame: 40.00" );
}

TEST_F( StatusTextsTest, ShowTheFrameBeforeTheOneStillFillingWithTickSampling )
{
	m_ViewData.m_bTickSampling = true;
	EXPECT_EQ( Texts( 3 ), "Samples: 3|FPS: 50.00|Frame: 20.00" );
}

TEST_F( StatusTextsTest, ShowSlotZeroWithTickSamplingAndOneFrame )
{
	m_ViewData.m_bTickSampling = true;
	m_ViewData.m_nSampleCount = 1;
	EXPECT_EQ( Texts( 1 ), "Samples: 1|FPS: 100.00|Frame: 10.00" );
}

TEST_F( StatusTextsTest, ShowTheCursorsFrameWhileStoppedWhateverTickSamplingSays )
{
	m_ViewData.m_bLive = false;
	for ( const bool bTickSampling : { false, true } )
	{
		m_ViewData.m_bTickSampling = bTickSampling;
		m_ViewData.m_nCursor = 0;
		EXPECT_EQ( Texts( 3 ), "Samples: 3|FPS: 100.00|Frame: 10.00" );
		m_ViewData.m_nCursor = 1;
		EXPECT_EQ( Texts( 3 ), "Samples: 3|FPS: 50.00|Frame: 20.00" );
	}
}

TEST_F( StatusTextsTest, TakeTheCursorsSlotModuloTheRing )
{
	m_ViewData.m_bLive = false;
	// Sample 1's slot, up to the last sample number that there is.
	for ( const uint32_t nCursor : { 4096u + 1, 0x7FFFF001u, 0x80000001u, 0xFFFFF001u } )
	{
		m_ViewData.m_nSampleCount = nCursor + 1;
		m_ViewData.m_nCursor = nCursor;
		EXPECT_EQ( Texts( nCursor + 1 ), "Samples: " + std::to_string( nCursor + 1 ) + "|FPS: 50.00|Frame: 20.00" );
	}
}

TEST_F( StatusTextsTest, ShowTheEnginesAveragedFrameRateOnRequest )
{
	m_ViewData.m_bFPSAverages = true;
	EXPECT_EQ( Texts( 3 ), "Samples: 3|FPS: 70.00|Frame: 40.00" );
}

TEST_F( StatusTextsTest, ShowARateOfZeroForAFrameWithoutTime )
{
	m_Store.AddSample( std::vector<uint32_t>{ 0 }, 60.0f, false, false );
	m_Store.FillViewData( m_ViewData );
	EXPECT_EQ( Texts( 4 ), "Samples: 4|FPS: 0.00|Frame: 0.00" );
}

TEST_F( StatusTextsTest, RoundToTwoDecimals )
{
	m_Store.AddSample( std::vector<uint32_t>{ 16667 }, 60.0f, false, false );
	m_Store.FillViewData( m_ViewData );
	EXPECT_EQ( Texts( 4 ), "Samples: 4|FPS: 60.00|Frame: 16.67" ); // 59.9988
}
