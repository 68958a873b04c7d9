// The ring store of budget samples.
#include "showbudget/budgetsamplestore.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "keel0/platform.h"

namespace
{
// Whether a value is above its limit. Without an early end, because compilers turn that into vector instructions.
bool IsAnyAbove( const uint32_t *pValues, const uint32_t *pLimits, size_t nCount )
{
	constexpr uint32_t SIGN = 0x80000000u; // vector instructions compare signed numbers
	int32_t nAbove = 0;
	for ( size_t i = 0; i < nCount; i++ )
		nAbove |= static_cast<int32_t>( pValues[i] ^ SIGN ) > static_cast<int32_t>( pLimits[i] ^ SIGN ) ? 1 : 0;
	return nAbove != 0;
}
} // namespace

void CBudgetSampleStore::SetCategories( std::vector<BudgetCategory> categories )
{
	m_Categories = std::move( categories );
	m_Categories.push_back( { CUtlString( "Totals" ), QColor( 255, 255, 255, 255 ) } );
	const size_t nCount = m_Categories.size();
	m_Blocks = std::vector<uint32_t>( nCount * BUDGET_BLOCK_STRIDE );
	m_Peaks = std::vector<uint32_t>( nCount );
	Clear();
}

void CBudgetSampleStore::Clear()
{
	m_nSampleCount = 0;
	m_flPeakResetTime = 0.0; // so that the next frame resets the peaks
	for ( size_t i = 0; i < m_Categories.size(); i++ )
		SetPeak( i, 0 );
}

void CBudgetSampleStore::AddSample(
	std::span<const uint32_t> values, float flFrameRate, bool bAccumulate, bool bTickSampling )
{
	if ( bAccumulate && m_nSampleCount == 0 )
		return;

	m_bPeaksJustReset = false;
	if ( !bAccumulate )
		OpenFrame();

	// Unsigned, so that the frame at which the counter wraps has its slot too.
	const uint32_t nSlot = ( m_nSampleCount - 1 ) % BUDGET_RING_SIZE;
	m_FrameRates[nSlot] = std::isfinite( flFrameRate ) ? flFrameRate : 0.0f;
	if ( m_Categories.empty() )
		return;
	if ( m_bPeaksJustReset )
		ResetPeaks( bTickSampling );
	values = values.first( std::min( values.size(), m_Categories.size() - 1 ) );
	if ( bAccumulate )
		AddToFrame( values, nSlot );
	else
		WriteFrame( values, nSlot );
}

// Reads the clock once only: that is a large part of what a sample costs.
void CBudgetSampleStore::OpenFrame()
{
	const double flNow = Plat_FloatTime();
	m_bPeaksJustReset = flNow >= m_flPeakResetTime;
	if ( m_bPeaksJustReset )
		m_flPeakResetTime = flNow + PEAK_HOLD_SECONDS;
	m_nSampleCount++;
}

// To what the new frame must exceed: with tick sampling the frame before it, else nothing.
void CBudgetSampleStore::ResetPeaks( bool bTickSampling )
{
	const bool bFromFrameBefore = bTickSampling && m_nSampleCount >= 2;
	const uint32_t nSlotBefore = ( m_nSampleCount - 2 ) % BUDGET_RING_SIZE;
	for ( size_t i = 0; i < m_Categories.size(); i++ )
		SetPeak( i, bFromFrameBefore ? Block( i )[nSlotBefore] : 0 );
}

void CBudgetSampleStore::WriteFrame( std::span<const uint32_t> values, uint32_t nSlot )
{
	const size_t nTotals = m_Categories.size() - 1;
	uint32_t nTotal = 0;
	uint32_t *pEntry = m_Blocks.data() + nSlot;
	for ( const uint32_t nValue : values )
	{
		*pEntry = nValue;
		nTotal += nValue;
		pEntry += BUDGET_BLOCK_STRIDE;
	}
	for ( size_t i = values.size(); i < nTotals; i++ )
		Block( i )[nSlot] = 0;
	Block( nTotals )[nSlot] = nTotal;

	RaisePeak( nTotals, nTotal );
	if ( !IsAnyAbove( values.data(), m_Peaks.data(), values.size() ) )
		return;
	for ( size_t i = 0; i < values.size(); i++ )
		RaisePeak( i, values[i] );
}

void CBudgetSampleStore::AddToFrame( std::span<const uint32_t> values, uint32_t nSlot )
{
	const size_t nTotals = m_Categories.size() - 1;
	uint32_t nTotal = 0;
	for ( size_t i = 0; i < values.size(); i++ )
	{
		nTotal += values[i];
		RaisePeak( i, Block( i )[nSlot] += values[i] );
	}
	RaisePeak( nTotals, Block( nTotals )[nSlot] += nTotal );
}

void CBudgetSampleStore::RaisePeak( size_t nCategory, uint32_t nValue )
{
	if ( nValue > m_Peaks[nCategory] )
		SetPeak( nCategory, nValue );
}

void CBudgetSampleStore::SetPeak( size_t nCategory, uint32_t nValue )
{
	m_Peaks[nCategory] = nValue;
	Block( nCategory )[BUDGET_PEAK_ENTRY] = nValue;
}

void CBudgetSampleStore::FillViewData( BudgetViewData &data ) const
{
	data.m_Categories = m_Categories;
	data.m_Blocks = m_Blocks;
	data.m_FrameRates = m_FrameRates;
	data.m_nSampleCount = m_Categories.empty() ? 0 : m_nSampleCount;
}
