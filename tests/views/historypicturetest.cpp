// The pictures that the views keep show what painting everything anew shows.
#include "views/historypicture.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPainter>
#include <functional>
#include <malloc.h>
#include <random>

#include "views/budgethistorybarswidget.h"
#include "views/budgethistorywidget.h"
#include "views/fakehistoryowner.h"
#include "views/fpsgraphwidget.h"

namespace
{
// Gradients are computed at other places after a move, which may change a colour by a rounding.
constexpr int ROUNDING = 2;

int LargestDifference( const QImage &a, const QImage &b )
{
	if ( a.size() != b.size() )
		return 256;
	int nLargest = 0;
	for ( int y = 0; y < a.height(); y++ )
	{
		for ( int x = 0; x < a.width(); x++ )
		{
			const QRgb first = a.pixel( x, y );
			const QRgb second = b.pixel( x, y );
			nLargest = std::max( { nLargest, std::abs( qRed( first ) - qRed( second ) ),
				std::abs( qGreen( first ) - qGreen( second ) ), std::abs( qBlue( first ) - qBlue( second ) ) } );
		}
	}
	return nLargest;
}

QImage Grab( QWidget &widget )
{
	QImage image( widget.size(), QImage::Format_RGB32 );
	image.fill( Qt::black );
	widget.render( &image, QPoint(), QRegion(), QWidget::DrawChildren );
	return image;
}

// A panel that is repainted all the time, and what it would show if it had never been painted before.
class CHistoryPicture : public testing::TestWithParam<float>
{
protected:
	CHistoryPicture()
		: m_Owner( 3, GetParam() )
		, m_Panel( m_Owner, nullptr )
	{
		m_Owner.m_Data.m_bShowThresholds = true;
		Show( m_Panel );
	}

	static void Show( CQBudgetHistoryWidget &panel )
	{
		panel.resize( 320, 400 );
		panel.show();
		QApplication::processEvents();
	}

	void Add( int nSamples )
	{
		std::uniform_int_distribution<uint32_t> micros( 2000, 20000 );
		for ( int i = 0; i < nSamples; i++ )
			m_Owner.AddSample( { micros( m_Random ), micros( m_Random ), micros( m_Random ) },
				static_cast<float>( micros( m_Random ) ) * 0.005f );
	}

	// What the target adds to the newest sample while it is being filled.
	void AddToNewest()
	{
		const uint32_t nNewest = m_Owner.m_Data.m_nSampleCount - 1;
		for ( int i = 0; i < 4; i++ )
			m_Owner.SetValue( i, nNewest,
				m_Owner.GetViewData().Value( static_cast<size_t>( i ), nNewest % BUDGET_RING_SIZE ) + 9000 );
	}

	void ExpectSameAsNew( const std::string &when )
	{
		CFakeHistoryOwner owner( 3, GetParam() );
		owner.m_Data = m_Owner.m_Data;
		owner.m_Blocks = m_Owner.m_Blocks;
		owner.m_FrameRates = m_Owner.m_FrameRates;
		m_Panel.SaveSettings( owner.m_Settings );
		CQBudgetHistoryWidget fresh( owner, nullptr );
		Show( fresh );
		EXPECT_LE( LargestDifference( Grab( *m_Panel.findChild<CQBudgetHistoryBarsWidget *>() ),
					   Grab( *fresh.findChild<CQBudgetHistoryBarsWidget *>() ) ),
			0 )
			<< "bars " << when;
		EXPECT_LE( LargestDifference( Grab( *m_Panel.findChild<CQFPSGraphWidget *>() ),
					   Grab( *fresh.findChild<CQFPSGraphWidget *>() ) ),
			ROUNDING )
			<< "graph " << when;
	}

	std::mt19937 m_Random{ 11 };
	CFakeHistoryOwner m_Owner;
	CQBudgetHistoryWidget m_Panel;
};
} // namespace

TEST_P( CHistoryPicture, IsRightAfterAnyNumberOfNewSamples )
{
	for ( const int nSamples : { 0, 1, 1, 1, 2, 5, 17, 1, 9, 3, 1, 1, 2, 1, 4, 200, 1, 1, 6, 0, 1, 4090, 1, 2 } )
	{
		Add( nSamples );
		Grab( m_Panel );
		ExpectSameAsNew( "with " + std::to_string( m_Owner.m_Data.m_nSampleCount ) + " samples" );
	}
}

TEST_P( CHistoryPicture, IsRightWhenTheNewestSampleGrows )
{
	Add( 100 );
	for ( int i = 0; i < 5; i++ )
	{
		Grab( m_Panel );
		AddToNewest();
		ExpectSameAsNew( "after the newest one grew" );
		AddToNewest();
		Add( 1 );
		ExpectSameAsNew( "after the next one began" );
	}
}

TEST_P( CHistoryPicture, IsRightAfterTheSamplesWereCleared )
{
	Add( 100 );
	Grab( m_Panel );
	m_Owner.m_Data.m_nSampleCount = 0;
	m_Panel.OnSamplesCleared();
	ExpectSameAsNew( "without samples" );
	Add( 101 ); // as if nothing had been painted in between
	Grab( m_Panel );
	m_Owner.m_Data.m_nSampleCount = 0;
	m_Panel.OnSamplesCleared();
	Add( 102 );
	ExpectSameAsNew( "with other samples of about the same number" );
}

TEST_P( CHistoryPicture, IsRightAfterAnyOptionChanged )
{
	Add( 100 );
	const std::pair<const char *, std::function<void()>> changes[] = {
		{ "units", [&] { m_Owner.m_Data.m_bFPSUnits = true; } },
		{ "averages", [&] { m_Owner.m_Data.m_bFPSAverages = true; } },
		{ "thresholds", [&] { m_Owner.m_Data.m_bShowThresholds = false; } },
	};
	for ( const auto &[pName, Change] : changes )
	{
		Grab( m_Panel );
		Change();
		ExpectSameAsNew( pName );
	}
}

// The sanitizer's allocator keeps what was freed, so there the test could say nothing.
#if !defined( __SANITIZE_ADDRESS__ ) && !( defined( __has_feature ) && __has_feature( address_sanitizer ) )
TEST_P( CHistoryPicture, KeepsTheMemoryWhereItIs )
{
	const auto Run = [&]( int nRepaints )
	{
		QImage image( m_Panel.size(), QImage::Format_RGB32 );
		for ( int i = 0; i < nRepaints; i++ )
		{
			Add( 1 );
			m_Panel.render( &image, QPoint(), QRegion(), QWidget::DrawChildren );
		}
	};
	Run( 300 );
	const size_t nBefore = mallinfo2().uordblks;
	Run( 1000 );
	EXPECT_LE( mallinfo2().uordblks, nBefore + 16384 );
}
#endif

INSTANTIATE_TEST_SUITE_P( AtScale, CHistoryPicture, testing::Values( 1.0f, 2.0f ) );

TEST( HistoryPicture, MoreSamplesThanColumnsArePaintedAnew )
{
	HistoryColumns columns;
	columns.m_nVisible = 20;
	columns.m_nSampleCount = 50;
	HistoryPictureKey key;
	key.m_Size = QSize( 200, 100 );
	const HistoryColumnRange none;
	CHistoryStrip strip;
	using Ranges = std::array<HistoryColumnRange, 2>;
	EXPECT_EQ( strip.Prepare( key, columns, {} ), ( Ranges{ HistoryColumnRange{ 0, 20 }, none } ) );
	columns.m_nSampleCount = 51;
	EXPECT_EQ( strip.Prepare( key, columns, {} ), ( Ranges{ HistoryColumnRange{ 0, 3 }, { 19, 20 } } ) );
	columns.m_nSampleCount = 71;
	EXPECT_EQ( strip.Prepare( key, columns, {} ), ( Ranges{ HistoryColumnRange{ 0, 20 }, none } ) );
	columns.m_nSampleCount = 70; // fewer than before: other samples
	EXPECT_EQ( strip.Prepare( key, columns, {} ), ( Ranges{ HistoryColumnRange{ 0, 20 }, none } ) );
	strip.Invalidate();
	EXPECT_EQ( strip.Prepare( key, columns, {} ), ( Ranges{ HistoryColumnRange{ 0, 20 }, none } ) );
}

TEST( HistoryPicture, ColumnsThatDoNotMoveByWholePixelsArePaintedAnew )
{
	HistoryColumns columns;
	columns.m_nVisible = 20;
	columns.m_nSampleCount = 50;
	HistoryPictureKey key;
	key.m_Size = QSize( 200, 100 );
	key.m_flPixelRatio = 1.25; // a pitch of 6 is 7.5 device pixels
	CHistoryStrip strip;
	strip.Prepare( key, columns, {} );
	columns.m_nSampleCount = 51;
	EXPECT_EQ( strip.Prepare( key, columns, {} )[0].m_nEnd, 20 );
	columns.m_nSampleCount = 53;
	EXPECT_EQ( strip.Prepare( key, columns, {} )[0].m_nEnd, 4 );
}
