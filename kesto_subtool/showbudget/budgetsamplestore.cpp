// The ring store of budget samples.
#include "showbudget/budgetsamplestore.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "keel0/platform.h"

void CBudgetSampleStore::SetCategories( std::vector<BudgetCategory> categories )
{
	m_Categories = std::move( categories );
	m_Categories.push_back( { CUtlString( "Totals" ), QColor( 255, 255, 255, 255 ) } );
	const size_t nCount = m_Categories.size();
	m_Blocks = std::vector<uint32_t>( nCount * BUDGET_BLOCK_SIZE );
	m_NewestFrame = std::vector<uint32_t>( nCount );
	m_Peaks = std::vector<uint32_t>( nCount );
	Clear();
}

void CBudgetSampleStore::Clear()
{
	m_nSampleCount = 0;
	m_flPeakResetTime = 0.0f; // so that the next frame resets the peaks
	for ( size_t i = 0; i < m_Categories.size(); i++ )
		SetPeak( i, 0 );
}

void CBudgetSampleStore::AddSample(
	std::span<const uint32_t> values, float flFrameRate, bool bAccumulate, bool bTickSampling )
{
	if ( bAccumulate && m_nSampleCount == 0 )
		return;

	m_bPeaksJustReset = !bAccumulate && Plat_FloatTime() >= m_flPeakResetTime;
	if ( m_bPeaksJustReset )
		m_flPeakResetTime = static_cast<float>( Plat_FloatTime() + PEAK_HOLD_SECONDS );
	if ( !bAccumulate )
		m_nSampleCount++;

	// Unsigned, so that the frame at which the counter wraps has its slot too.
	const uint32_t nSlot = ( m_nSampleCount - 1 ) % BUDGET_RING_SIZE;
	m_FrameRates[nSlot] = std::isfinite( flFrameRate ) ? flFrameRate : 0.0f;
	if ( m_Categories.empty() )
		return;
	FillNewestFrame( values.first( std::min( values.size(), m_Categories.size() - 1 ) ), bAccumulate );
	StoreNewestFrame( nSlot );
	if ( m_bPeaksJustReset )
		ResetPeaks( bTickSampling );
	else
		RaisePeaks();
}

void CBudgetSampleStore::FillNewestFrame( std::span<const uint32_t> values, bool bAccumulate )
{
	if ( !bAccumulate )
		std::fill( m_NewestFrame.begin(), m_NewestFrame.end(), 0 );
	uint32_t nTotal = 0;
	for ( size_t i = 0; i < values.size(); i++ )
	{
		m_NewestFrame[i] += values[i];
		nTotal += values[i];
	}
	m_NewestFrame.back() += nTotal;
}

void CBudgetSampleStore::StoreNewestFrame( uint32_t nSlot )
{
	uint32_t *pSlot = m_Blocks.data() + nSlot;
	for ( const uint32_t nValue : m_NewestFrame )
	{
		*pSlot = nValue;
		pSlot += BUDGET_BLOCK_SIZE;
	}
}

void CBudgetSampleStore::ResetPeaks( bool bTickSampling )
{
	const bool bWithTickBefore = bTickSampling && m_nSampleCount >= 2;
	const uint32_t nSlotBefore = ( m_nSampleCount - 2 ) % BUDGET_RING_SIZE;
	for ( size_t i = 0; i < m_NewestFrame.size(); i++ )
		SetPeak( i, std::max( m_NewestFrame[i], bWithTickBefore ? Block( i )[nSlotBefore] : 0 ) );
}

void CBudgetSampleStore::RaisePeaks()
{
	for ( size_t i = 0; i < m_NewestFrame.size(); i++ )
	{
		if ( m_NewestFrame[i] > m_Peaks[i] )
			SetPeak( i, m_NewestFrame[i] );
	}
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
