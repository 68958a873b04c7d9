// A window for the budget views that is nothing but arrays.
#pragma once

#include <QString>
#include <random>
#include <vector>

#include "keel0/keyvalues.h"
#include "views/ibudgetviewowner.h"

class CFakeBudgetViewOwner : public IBudgetViewOwner
{
public:
	explicit CFakeBudgetViewOwner( int nBudgets = 0, bool bDark = false, float flUIScale = 1.0f )
		: m_Settings( "Settings" )
		, m_Style( BudgetViewStyle::Make( bDark, flUIScale ) )
		, m_FrameRates( BUDGET_RING_SIZE )
	{
		m_Data.m_bLive = true;
		SetBudgets( nBudgets );
	}
	virtual ~CFakeBudgetViewOwner() = default;

	// Budgets "Budget 0" on, each of another colour, the last one white and called "Totals"; all values 0.
	void SetBudgets( int nBudgets )
	{
		m_Categories.clear();
		for ( int i = 0; i < nBudgets - 1; i++ )
		{
			const QByteArray name = QString( "Budget %1" ).arg( i ).toUtf8();
			m_Categories.push_back(
				{ CUtlString( name.constData() ), QColor::fromHsv( i * 37 % 360, 160, 230 ).toRgb() } );
		}
		if ( nBudgets > 0 )
			m_Categories.push_back( { "Totals", QColor( 255, 255, 255 ) } );
		m_Blocks.assign( m_Categories.size() * BUDGET_BLOCK_STRIDE, 0 );
	}

	// By sample number, so that it wraps as the ring does. The sample count is not touched.
	void SetValue( int nBudget, uint32_t nSample, uint32_t nMicroseconds )
	{
		Entry( nBudget, nSample % BUDGET_RING_SIZE ) = nMicroseconds;
	}
	void SetPeak( int nBudget, uint32_t nMicroseconds ) { Entry( nBudget, BUDGET_PEAK_ENTRY ) = nMicroseconds; }

	void FillRings( std::mt19937 &random, uint32_t nMaximum )
	{
		std::uniform_int_distribution<uint32_t> distribution( 0, nMaximum );
		for ( uint32_t &nValue : m_Blocks )
			nValue = distribution( random );
	}

	BudgetViewData GetViewData() const override
	{
		BudgetViewData data = m_Data;
		data.m_Categories = m_Categories;
		data.m_Blocks = m_Blocks;
		data.m_FrameRates = m_FrameRates;
		return data;
	}
	const BudgetViewStyle &GetViewStyle() const override { return m_Style; }
	KeyValues *GetViewSettings() override { return m_bHasSettings ? &m_Settings : nullptr; }
	void OnHistoryCursorChanged() override {}
	void AddCursorLabel( QWidget * ) override {}
	void ToggleSampling() override {}

	KeyValues m_Settings;
	bool m_bHasSettings = true;
	BudgetViewStyle m_Style;
	BudgetViewData m_Data; // counts and flags; the spans are filled in
	std::vector<BudgetCategory> m_Categories;
	std::vector<uint32_t> m_Blocks;
	std::vector<float> m_FrameRates;

private:
	uint32_t &Entry( int nBudget, uint32_t nEntry )
	{
		return m_Blocks[static_cast<size_t>( nBudget ) * BUDGET_BLOCK_STRIDE + nEntry];
	}
};
