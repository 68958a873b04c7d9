// What every Show Budget window promises at any time, whatever came before.
#pragma once

#include <QLabel>
#include <QScrollBar>
#include <QStatusBar>
#include <set>

#include "miniprofiler/miniprofilerwidget.h"
#include "require.h"
#include "showbudget/budgetwidget.h"
#include "views/budgethistorywidget.h"

namespace fuzz
{
inline void CheckStatusTexts( const CQBudgetWidget &window )
{
	QStringList labels;
	for ( const QLabel *pLabel : window.statusBar()->findChildren<QLabel *>() )
		labels += pLabel->text();
	Require( labels.contains( window.IsRunning() ? "Running." : "Stopped." ), "the state label says what is" );
	const uint32_t nCount = window.Samples().SampleCount();
	Require( labels.contains( nCount == 0 ? QString( "No Samples." ) : QString( "Samples: %1" ).arg( nCount ) ),
		"the samples label counts" );
}

inline void CheckStore( const BudgetViewData &viewData )
{
	Require( viewData.m_Blocks.size() == viewData.m_Categories.size() * BUDGET_BLOCK_STRIDE, "a block per category" );
	Require( viewData.m_FrameRates.size() == BUDGET_RING_SIZE, "a frame rate per slot" );
	const uint32_t nSlot = BudgetSlot( int64_t{ viewData.m_nSampleCount } - 1 );
	Require( std::isfinite( viewData.m_FrameRates[nSlot] ), "a frame rate is a number" );
	uint32_t nSum = 0;
	for ( size_t i = 0; i + 1 < viewData.m_Categories.size(); i++ )
		nSum += viewData.Value( i, nSlot );
	Require( nSum == viewData.Value( viewData.m_Categories.size() - 1, nSlot ), "Totals is the sum" );
	for ( size_t i = 0; i < viewData.m_Categories.size(); i++ )
		Require( viewData.Peak( i ) >= viewData.Value( i, nSlot ), "no value is above its peak" );
}

inline void CheckHistory( const CQBudgetHistoryWidget &history, const BudgetViewData &viewData )
{
	Require( !history.IsCursorMode() || !viewData.m_bLive, "there is a cursor only while sampling is stopped" );
	Require( viewData.m_bLive || viewData.m_nCursor == history.Cursor(), "all views have the history's cursor" );
	const uint32_t nCount = viewData.m_nSampleCount;
	Require( nCount == 0 || history.Cursor() < nCount, "the cursor is on a sample" );
	const auto *pBar = history.findChild<QScrollBar *>( QString(), Qt::FindDirectChildrenOnly );
	Require( pBar, "the history has a scroll bar" );
	Require( pBar->isHidden() || !viewData.m_bLive, "it shows only while sampling is stopped" );
	Require( pBar->isHidden() || uint32_t( pBar->maximum() ) + uint32_t( pBar->pageStep() ) == nCount,
		"its range ends with the newest sample" );
}

inline void CheckTreePlace( const CMiniProfilerRow *pRow, size_t nRows )
{
	for ( size_t nSteps = 0; pRow; pRow = pRow->m_pTreeParent, nSteps++ )
		Require( nSteps <= nRows, "no row hangs below itself" );
}

inline void CheckRecords( const CMiniProfilerModel &model )
{
	std::set<uint64_t> ids;
	std::set<const CQMiniProfilerRecord *> records{ nullptr };
	for ( const auto &pRecord : model.Records() )
	{
		Require( pRecord->Id() != 0 && ids.insert( pRecord->Id() ).second, "a record for each id" );
		Require( pRecord->HistoryIndex() == ids.size() - 1, "the records' histories follow each other" );
		Require( model.History().Count( pRecord->HistoryIndex() ) <= 128, "a history is no longer than its ring" );
		records.insert( pRecord.get() );
	}
	Require( model.History().RecordCount() == ids.size(), "a history for each record" );
	for ( const auto &pRecord : model.Records() )
	{
		Require( records.contains( pRecord->m_pCaller ), "a caller is a record" );
		Require( records.contains( pRecord->m_pStaticParent ), "a static parent is a record" );
		CheckTreePlace( pRecord.get(), ids.size() + model.Groups().size() );
	}
}

inline void CheckWindow( const CQBudgetWidget &window )
{
	CheckStatusTexts( window );
	const BudgetViewData viewData = window.GetViewData();
	Require( viewData.m_bLive == window.IsRunning(), "the views are live while sampling runs" );
	if ( viewData.m_nSampleCount > 0 )
		CheckStore( viewData );
	CheckHistory( *window.findChild<CQBudgetHistoryWidget *>(), viewData );
	CheckRecords( window.findChild<CQMiniProfilerWidget *>()->Model() );
}
} // namespace fuzz
