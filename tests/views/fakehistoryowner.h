// A window for the history views: adds whole samples and notes what the views asked for.
#pragma once

#include <QWidget>

#include "views/fakebudgetviewowner.h"

class CFakeHistoryOwner final : public CFakeBudgetViewOwner
{
public:
	// nBudgets without the frame total.
	explicit CFakeHistoryOwner( int nBudgets = 3, float flUIScale = 1.0f, bool bDark = true )
		: CFakeBudgetViewOwner( nBudgets + 1, bDark, flUIScale )
	{
	}

	// The next frame; missing values are 0, the frame total is their sum.
	void AddSample( const std::vector<uint32_t> &values, float flFrameRate = 0.0f )
	{
		const uint32_t nSample = m_Data.m_nSampleCount++;
		const int nTotals = static_cast<int>( m_Categories.size() ) - 1;
		uint32_t nTotal = 0;
		for ( int i = 0; i < nTotals; i++ )
		{
			const auto nIndex = static_cast<size_t>( i );
			const uint32_t nValue = nIndex < values.size() ? values[nIndex] : 0;
			SetValue( i, nSample, nValue );
			nTotal += nValue;
		}
		SetValue( nTotals, nSample, nTotal );
		m_FrameRates[nSample % BUDGET_RING_SIZE] = flFrameRate;
	}

	void OnHistoryCursorChanged() override { m_nCursorChanges++; }
	void AddCursorLabel( QWidget *pLabel ) override
	{
		pLabel->setParent( &m_StatusBar );
		m_pCursorLabel = pLabel;
	}
	void ToggleSampling() override { m_nToggles++; }

	QWidget m_StatusBar;
	QWidget *m_pCursorLabel = nullptr;
	int m_nCursorChanges = 0;
	int m_nToggles = 0;
};
