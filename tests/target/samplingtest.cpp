// Budgets and their values.
#include <gmock/gmock.h>

#include <cmath>

#include "session.h"
#include "wire/sessionchunks.h"

namespace
{
SHOWBUDGET_BUDGET( g_Outer, "Outer test", 10, 20, 30 );
SHOWBUDGET_BUDGET( g_Inner, "Inner test", 40, 50, 60 );
SHOWBUDGET_BUDGET(
	g_Long, "A budget whose name has sixty-two bytes and then two of \xC3\xBC and \xC3\xBC more", 1, 1, 1 );

class Sampling : public CSession
{
protected:
	void SetUp() override
	{
		CSession::SetUp();
		m_pConsole = std::make_unique<CTestConsole>( showbudget::Port() );
		m_pConsole->Greet();
		m_pConsole->WantBudgets( true );
		m_Categories = ReadCategories( m_pConsole->ReceiveType( wire::CHUNK_CATEGORIES ) );
		ASSERT_TRUE( WaitUntilWanted( 1 ) );
		// Its beginning was not measured, so this frame is not sent; it opens the first one that is.
		showbudget::EndFrame();
	}

	Sample Next() { return ReadSample( m_pConsole->ReceiveType( wire::CHUNK_SAMPLE ) ); }
	size_t IndexOf( std::string_view name ) const
	{
		for ( size_t i = 0; i < m_Categories.size(); i++ )
		{
			if ( m_Categories[i].m_Name == name )
				return i;
		}
		ADD_FAILURE() << "no category " << name;
		return 0;
	}
	uint32_t Value( const Sample &sample, std::string_view name ) const
	{
		return sample.m_Values.at( IndexOf( name ) );
	}

	std::unique_ptr<CTestConsole> m_pConsole;
	std::vector<CategoryRecord> m_Categories;
};

TEST_F( Sampling, CategoriesAreTheDeclaredBudgetsWithOtherLast )
{
	const size_t nOuter = IndexOf( "Outer test" );
	EXPECT_EQ( IndexOf( "Inner test" ), nOuter + 1 );
	EXPECT_EQ( m_Categories[nOuter].m_Colour[0], 10 );
	EXPECT_EQ( m_Categories[nOuter].m_Colour[1], 20 );
	EXPECT_EQ( m_Categories[nOuter].m_Colour[2], 30 );
	EXPECT_EQ( m_Categories.back().m_Name, "Other" );
}

TEST_F( Sampling, ALongNameIsCutBetweenCharacters )
{
	const std::string &name = m_Categories[IndexOf( "Inner test" ) + 1].m_Name;
	EXPECT_LE( name.size(), 63u );
	EXPECT_EQ( std::string_view( "A budget whose name has sixty-two bytes and then two of \xC3\xBC and \xC3\xBC more" )
				   .substr( 0, name.size() ),
		name );
	EXPECT_NE( static_cast<unsigned char>( name.back() ), 0xC3 ) << "half a character";
}

TEST_F( Sampling, TwoBudgetsOfOneNameAreOne )
{
	const showbudget::CBudget again( "Outer test", 99, 99, 99 );
	EXPECT_EQ( again.Index(), g_Outer.Index() );
}

TEST_F( Sampling, TheValuesOfAFrameAddUpToItsLength )
{
	constexpr int FRAMES = 20;
	// The frame that is open began inside of SetUp. Between the two EndFrame() calls lies what is summed.
	const uint64_t nBeforeFirst = NowMicroseconds();
	showbudget::EndFrame();
	const uint64_t nAfterFirst = NowMicroseconds();
	Next();
	for ( int i = 0; i < FRAMES; i++ )
	{
		SHOWBUDGET_SCOPE( g_Outer, "Part of the frame" );
		BeBusy( 300 );
		{
			SHOWBUDGET_SCOPE( g_Inner, "Part of the part" );
			BeBusy( 200 );
		}
		if ( i < FRAMES - 1 )
			showbudget::EndFrame();
	}
	const uint64_t nBeforeLast = NowMicroseconds();
	showbudget::EndFrame();
	const uint64_t nAfterLast = NowMicroseconds();

	uint64_t nTotal = 0;
	for ( int i = 0; i < FRAMES; i++ )
		nTotal += Next().Total();
	// The two clocks may be a few parts in 10,000 apart.
	const uint64_t nSlack = 2 + ( nAfterLast - nBeforeFirst ) / 2000;
	EXPECT_GE( nTotal + nSlack, nBeforeLast - nAfterFirst );
	EXPECT_LE( nTotal, nAfterLast - nBeforeFirst + nSlack );
}

TEST_F( Sampling, AScopesTimeIsItsBudgetsLessThatOfScopesInside )
{
	const uint64_t nBegin = NowMicroseconds();
	uint64_t nOuter = 0;
	uint64_t nInner = 0;
	showbudget::EndFrame();
	Next();
	{
		SHOWBUDGET_SCOPE( g_Outer, "Around" );
		nOuter += BeBusy( 2000 );
		{
			SHOWBUDGET_SCOPE( g_Inner, "Within" );
			nInner += BeBusy( 5000 );
		}
		nOuter += BeBusy( 1000 );
	}
	showbudget::EndFrame();
	const uint64_t nElapsed = NowMicroseconds() - nBegin;
	const Sample sample = Next();
	EXPECT_GE( Value( sample, "Outer test" ) + 5, nOuter );
	EXPECT_GE( Value( sample, "Inner test" ) + 8, nInner );
	// Time that was counted twice would not fit into what passed.
	EXPECT_LE( sample.Total(), nElapsed + 8 );
}

TEST_F( Sampling, TimeOutsideOfScopesIsOther )
{
	showbudget::EndFrame();
	Next();
	const uint64_t nBusy = BeBusy( 3000 );
	showbudget::EndFrame();
	const Sample sample = Next();
	EXPECT_GE( Value( sample, "Other" ) + 5, nBusy );
	EXPECT_EQ( Value( sample, "Outer test" ), 0u );
	EXPECT_EQ( Value( sample, "Inner test" ), 0u );
}

TEST_F( Sampling, AScopeThatIsOpenAtTheEndOfAFrameIsSplitThere )
{
	showbudget::EndFrame();
	Next();
	uint64_t nFirst = 0;
	uint64_t nSecond = 0;
	{
		SHOWBUDGET_SCOPE( g_Outer, "Over the end" );
		{
			SHOWBUDGET_SCOPE( g_Inner, "Over the end, too" );
			nFirst = BeBusy( 2000 );
			showbudget::EndFrame();
			nSecond = BeBusy( 3000 );
		}
	}
	showbudget::EndFrame();
	EXPECT_GE( Value( Next(), "Inner test" ) + 5, nFirst );
	const Sample second = Next();
	EXPECT_GE( Value( second, "Inner test" ) + 5, nSecond );
}

uint64_t BusyHelper()
{
	SHOWBUDGET_SCOPE( g_Inner, "Called from two places" );
	return BeBusy( 1500 );
}

TEST_F( Sampling, ASiteThatIsCalledFromTwoScopesIsTakenFromBoth )
{
	const uint64_t nBegin = NowMicroseconds();
	showbudget::EndFrame();
	Next();
	uint64_t nInner = 0;
	for ( int i = 0; i < 3; i++ )
	{
		{
			SHOWBUDGET_SCOPE( g_Outer, "First place" );
			nInner += BusyHelper();
		}
		{
			SHOWBUDGET_SCOPE( g_Long, "Second place" );
			nInner += BusyHelper();
		}
	}
	showbudget::EndFrame();
	const uint64_t nElapsed = NowMicroseconds() - nBegin;
	const Sample sample = Next();
	EXPECT_GE( Value( sample, "Inner test" ) + 10, nInner );
	EXPECT_LE( Value( sample, "Outer test" ), nElapsed - nInner + 10 );
	EXPECT_LE( sample.Total(), nElapsed + 10 );
}

uint64_t Recurse( int nDepth )
{
	SHOWBUDGET_SCOPE( g_Outer, "Recursion" );
	uint64_t nBusy = BeBusy( 500 );
	{
		SHOWBUDGET_SCOPE( g_Inner, "Between" );
		if ( nDepth > 0 )
			nBusy += Recurse( nDepth - 1 );
	}
	return nBusy;
}

TEST_F( Sampling, RecursionCountsNoTimeTwice )
{
	const uint64_t nBegin = NowMicroseconds();
	showbudget::EndFrame();
	Next();
	const uint64_t nBusy = Recurse( 6 );
	showbudget::EndFrame();
	const uint64_t nElapsed = NowMicroseconds() - nBegin;
	const Sample sample = Next();
	EXPECT_GE( Value( sample, "Outer test" ) + Value( sample, "Inner test" ) + 20, nBusy );
	EXPECT_LE( sample.Total(), nElapsed + 8 );
}

TEST_F( Sampling, FramesOfOneTickContinueTheSample )
{
	showbudget::EndFrame( showbudget::Tick::New );
	showbudget::EndFrame( showbudget::Tick::Continued );
	showbudget::EndFrame( showbudget::Tick::Continued );
	showbudget::EndFrame( showbudget::Tick::New );
	EXPECT_NE( Next().m_nMark, 0u );
	EXPECT_EQ( Next().m_nMark, 0u );
	EXPECT_EQ( Next().m_nMark, 0u );
	EXPECT_NE( Next().m_nMark, 0u );
}

TEST_F( Sampling, TheFirstSampleOpensATickWhateverTheFrameIs )
{
	showbudget::EndFrame( showbudget::Tick::Continued );
	showbudget::EndFrame( showbudget::Tick::Continued );
	EXPECT_NE( Next().m_nMark, 0u );
	EXPECT_EQ( Next().m_nMark, 0u );
}

TEST_F( Sampling, TheFrameRateIsThatOfTheLastFrames )
{
	showbudget::EndFrame();
	Next();
	const uint64_t nBegin = NowMicroseconds();
	Sample sample;
	for ( int i = 0; i < 100; i++ )
	{
		BeBusy( 200 );
		showbudget::EndFrame();
		sample = Next();
	}
	// At least 36 of the 63 frames that are averaged are among these, and none of them was faster than 200 us (less
	// what rounding takes).
	EXPECT_TRUE( std::isfinite( sample.m_flFrameRate ) );
	EXPECT_LE( sample.m_flFrameRate, 5100.0f );
	EXPECT_GE( sample.m_flFrameRate, 63.0f * 0.99f / ( static_cast<float>( NowMicroseconds() - nBegin ) * 1.0e-6f ) );
}

TEST_F( Sampling, StoppingEndsTheSamples )
{
	m_pConsole->WantBudgets( false );
	ASSERT_TRUE( WaitUntilWanted( 0 ) );
	showbudget::EndFrame();
	showbudget::EndFrame();
	showbudget::Print( showbudget::Severity::Message, "the end" );
	for ( const Chunk &chunk : m_pConsole->ReceiveUntilLine( "the end" ) )
		EXPECT_NE( chunk.m_Header.m_nType, wire::CHUNK_SAMPLE );
}

TEST_F( Sampling, ABudgetThatIsDeclaredLaterIsAnnouncedBeforeItsFirstValue )
{
	const showbudget::CBudget late( "Declared late", 7, 8, 9 );
	showbudget::EndFrame();
	std::optional<Chunk> chunk = m_pConsole->Receive();
	ASSERT_TRUE( chunk.has_value() );
	ASSERT_EQ( chunk->m_Header.m_nType, wire::CHUNK_CATEGORIES );
	const std::vector<CategoryRecord> categories = ReadCategories( *chunk );
	EXPECT_EQ( categories.size(), m_Categories.size() + 1 );
	EXPECT_EQ( categories[categories.size() - 2].m_Name, "Declared late" );
	EXPECT_EQ( Next().m_Values.size(), categories.size() );
}

TEST_F( Sampling, ASecondConsoleStartsWithItsOwnCategoriesAndAnOpeningSample )
{
	CTestConsole second( showbudget::Port() );
	second.Greet();
	second.WantBudgets( true );
	second.ReceiveType( wire::CHUNK_CATEGORIES );
	showbudget::EndFrame( showbudget::Tick::Continued );
	showbudget::EndFrame( showbudget::Tick::Continued );
	EXPECT_NE( ReadSample( second.ReceiveType( wire::CHUNK_SAMPLE ) ).m_nMark, 0u );
	EXPECT_EQ( ReadSample( second.ReceiveType( wire::CHUNK_SAMPLE ) ).m_nMark, 0u );
}
} // namespace
