#include "views/budgetbarslayout.h"

#include <algorithm>
#include <string>

#include "views/budgetscale.h"
#include "views/fixeddecimals.h"

namespace
{
constexpr int LABEL_REACH = 40; // pixels to either side of a grid line

BudgetAxisMark MakeMark( int x, int nRowHeight, const QString &label )
{
	return { x, QRect( QPoint( x - LABEL_REACH, 0 ), QPoint( x + LABEL_REACH, nRowHeight ) ), label };
}

QString StepLabel( int nStep, bool bFPSUnits, const char *pSuffix )
{
	if ( bFPSUnits )
		return QString::asprintf( "%.2f%s", 60.0 / nStep, pSuffix );
	return QString::asprintf( "%d%s", 5 * nStep, pSuffix );
}

void LayoutPeak( BudgetBarRow &row, uint32_t nPeak, int nLength, const QRect &box, int nRowHeight )
{
	row.m_bPeak = nLength > 0;
	if ( row.m_bPeak )
	{
		const int nCentre = box.top() + ( box.bottom() - box.top() + 1 ) / 2;
		const int nHalf = nRowHeight / 3;
		row.m_Diamond = { QPoint( nLength, nCentre - nHalf ), QPoint( nLength + nHalf, nCentre ),
			QPoint( nLength, nCentre + nHalf ), QPoint( nLength - nHalf, nCentre ) };
	}

	const float flMilliseconds = static_cast<float>( nPeak ) * 0.001f;
	if ( flMilliseconds >= 0.01f )
	{
		row.m_PeakBox = QRect( QPoint( nLength, box.top() ), box.bottomRight() );
		std::string text = "  ";
		AppendDecimals( text, flMilliseconds, 0, 2 );
		row.m_PeakText = QString::fromLatin1( text.data(), static_cast<int>( text.size() ) );
	}
}
} // namespace

BudgetRows BudgetBarsView::Rows( const BudgetViewData &data, const BudgetViewStyle &style ) const
{
	return BudgetRows::Make(
		m_Size.height(), style.m_nRowHeight, style.m_nRowInset, m_nFirstRow, data.m_Categories.size() );
}

BudgetAxisLayout LayoutBudgetAxis(
	const BudgetViewData &data, const BudgetViewStyle &style, const BudgetBarsView &view )
{
	const int nWidth = view.UsableWidth();
	const int nRowHeight = style.m_nRowHeight;
	const int nPixels = BudgetBarsPixelsPerStep( view.m_nZoomStep );
	const bool bMinimal = view.m_nZoomStep == BUDGET_BARS_MIN_ZOOM; // bare numbers, no minor lines
	const char *pSuffix = bMinimal ? "" : data.m_bFPSUnits ? " fps" : " ms";

	BudgetAxisLayout layout;
	layout.m_Header = QRect( QPoint( 0, 0 ), QPoint( nWidth - 2, nRowHeight - 1 ) );
	layout.m_nTop = nRowHeight;
	layout.m_nBottom = nRowHeight + view.m_Size.height();
	layout.m_bMinor = !bMinimal;

	int nSteps = nWidth / nPixels + 1;
	if ( nSteps < 0 )
		nSteps = 1;
	layout.m_Steps.resize( static_cast<size_t>( nSteps ) );
	for ( int i = 0; i < nSteps; i++ )
	{
		BudgetAxisStep &step = layout.m_Steps[static_cast<size_t>( i )];
		const int x = i * nPixels;
		if ( i > 0 )
			step.m_Major = MakeMark( x, nRowHeight, StepLabel( i, data.m_bFPSUnits, pSuffix ) );
		for ( int j = 1; j <= 4; j++ )
			step.m_MinorX[static_cast<size_t>( j - 1 )] = x + j * ( nPixels / 5 );
	}

	const int nMillisecondX = static_cast<int>( static_cast<float>( nPixels ) * 0.06f );
	if ( data.m_bFPSUnits && nMillisecondX <= nWidth )
		layout.m_Millisecond = MakeMark( nMillisecondX, nRowHeight, QString::asprintf( "1000%s", pSuffix ) );
	return layout;
}

std::vector<BudgetBarRow> LayoutBudgetBars(
	const BudgetViewData &data, const BudgetViewStyle &style, const BudgetBarsView &view )
{
	std::vector<BudgetBarRow> barRows;
	if ( data.m_nSampleCount == 0 )
		return barRows;

	const int nWidth = view.UsableWidth();
	const int nPixels = BudgetBarsPixelsPerStep( view.m_nZoomStep );
	const float flUnitFactor = BudgetUnitFactor( data.m_bFPSUnits );
	const uint32_t nSlot = BudgetSlot( data.SelectedSample() );
	const BudgetRows rows = view.Rows( data, style );
	barRows.reserve( static_cast<size_t>( rows.Count() ) );
	for ( int nBudget = rows.m_nFirst; nBudget < rows.m_nEnd; nBudget++ )
	{
		const auto nCategory = static_cast<size_t>( nBudget );
		const QRect box = rows.Box( nBudget, 0, nWidth - 1 );
		BudgetBarRow &row = barRows.emplace_back();
		row.m_Colour = data.m_Categories[nCategory].m_Colour;

		const int nLength = std::min( BudgetLength( data.Value( nCategory, nSlot ), flUnitFactor, nPixels ), nWidth );
		if ( nLength > 0 )
			row.m_Bar = QRect( box.topLeft(), QPoint( nLength - 1, box.bottom() ) );

		const uint32_t nPeak = data.Peak( nCategory );
		const int nPeakLength = BudgetLength( nPeak, flUnitFactor, nPixels );
		LayoutPeak( row, nPeak, std::max( std::min( nPeakLength, nWidth ), 0 ), box, style.m_nRowHeight );
	}
	return barRows;
}
