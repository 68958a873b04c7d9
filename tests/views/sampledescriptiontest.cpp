#include "views/sampledescription.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTextDocument>

#include "views/fakehistoryowner.h"

using testing::HasSubstr;
using testing::Not;

namespace
{
std::vector<std::pair<std::string, uint32_t>> Largest( const SampleDescription &description )
{
	std::vector<std::pair<std::string, uint32_t>> budgets;
	for ( const SampleDescription::Budget &budget : description.m_Largest )
		budgets.emplace_back( budget.m_Name.toStdString(), budget.m_nMicroseconds );
	return budgets;
}
} // namespace

TEST( SampleDescription, NamesTheFiveLargestBudgetsWithoutTheTotal )
{
	CFakeHistoryOwner owner( 7 );
	owner.AddSample( { 100, 700, 300, 200, 600, 400, 500 } );
	const SampleDescription description = SampleDescription::Of( owner.GetViewData(), 0 );
	EXPECT_EQ( description.m_nFrame, 1u );
	EXPECT_TRUE( description.m_bHeld );
	EXPECT_EQ( description.m_nMicroseconds, 2800u );
	EXPECT_FLOAT_EQ( description.m_flFrameRate, 1e6f / 2800 );
	EXPECT_EQ( Largest( description ),
		( std::vector<std::pair<std::string, uint32_t>>{ { "Budget 1", 700 }, { "Budget 4", 600 }, { "Budget 6", 500 },
			{ "Budget 5", 400 }, { "Budget 2", 300 } } ) );
	EXPECT_EQ( description.m_Largest[0].m_Colour, owner.m_Categories[1].m_Colour );
}

TEST( SampleDescription, LeavesOutBudgetsWithoutTimeAndKeepsTheOrderOfEqualOnes )
{
	CFakeHistoryOwner owner( 4 );
	owner.AddSample( { 50, 0, 80, 50 } );
	EXPECT_EQ( Largest( SampleDescription::Of( owner.GetViewData(), 0 ) ),
		( std::vector<std::pair<std::string, uint32_t>>{
			{ "Budget 2", 80 }, { "Budget 0", 50 }, { "Budget 3", 50 } } ) );
}

TEST( SampleDescription, SaysWhenTheRingHoldsALaterFrameInstead )
{
	CFakeHistoryOwner owner( 1 );
	for ( uint32_t i = 0; i < BUDGET_RING_SIZE + 3; i++ )
		owner.AddSample( { 1000 } );
	EXPECT_TRUE( SampleDescription::Of( owner.GetViewData(), 3 ).m_bHeld );
	const SampleDescription gone = SampleDescription::Of( owner.GetViewData(), 2 );
	EXPECT_FALSE( gone.m_bHeld );
	EXPECT_THAT( gone.ToHtml().toStdString(), HasSubstr( "no longer kept" ) );
	EXPECT_THAT( gone.ToHtml().toStdString(), Not( HasSubstr( " ms" ) ) );
	EXPECT_FALSE( SampleDescription::Of( owner.GetViewData(), BUDGET_RING_SIZE + 3 ).m_bHeld );
}

TEST( SampleDescription, TextHasNumberTimeRateAndBudgets )
{
	CFakeHistoryOwner owner( 2 );
	owner.AddSample( {} );
	owner.AddSample( { 4500, 8000 } );
	const std::string text = SampleDescription::Of( owner.GetViewData(), 1 ).ToHtml().toStdString();
	EXPECT_THAT( text, HasSubstr( "Frame 2" ) );
	EXPECT_THAT( text, HasSubstr( "12.50 ms, 80.00 fps" ) );
	EXPECT_THAT( text, HasSubstr( "Budget 1" ) );
	EXPECT_THAT( text, HasSubstr( "8.00 ms" ) );
	EXPECT_THAT( text, HasSubstr( "4.50 ms" ) );
	EXPECT_LT( text.find( "Budget 1" ), text.find( "Budget 0" ) );
}

// What a reader sees, by the same engine that a tool tip is shown with.
TEST( SampleDescription, NamesFromTheTargetAreNoMarkup )
{
	for ( const char *pName : { "<img src='x'> & co", "&lt;b&gt;", "a  b   c", "</table><h1>", "%1 %2 %3", "<!-- " } )
	{
		CFakeHistoryOwner owner( 2 );
		owner.m_Categories[0].m_Name = pName;
		owner.AddSample( { 2000, 1000 } );
		QTextDocument document;
		document.setHtml( SampleDescription::Of( owner.GetViewData(), 0 ).ToHtml() );
		const std::string text = document.toPlainText().toStdString();
		EXPECT_THAT( text, HasSubstr( pName ) );
		EXPECT_THAT( text, HasSubstr( "2.00 ms" ) );
		EXPECT_THAT( text, HasSubstr( "Budget 1" ) ) << "the row below is whole";
	}
}
