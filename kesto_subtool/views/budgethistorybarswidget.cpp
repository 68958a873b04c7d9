#include "views/budgethistorybarswidget.h"

#include "views/historypainter.h"

CQBudgetHistoryBarsWidget::CQBudgetHistoryBarsWidget( IBudgetViewOwner &owner, CQBudgetHistoryWidget &history )
	: CQHistoryPlotWidget( owner, history, "history_scale" )
{
}

void CQBudgetHistoryBarsWidget::CompleteKey( HistoryPictureKey &key ) const
{
	if ( Owner().GetViewData().m_bFPSUnits )
		key.m_Unit = HistoryAxisUnit::FramesPerSecondOfTime;
}

CHistoryStrip::Reach CQBudgetHistoryBarsWidget::ColumnReach() const
{
	return {};
}

void CQBudgetHistoryBarsWidget::PaintColumns(
	QPainter &painter, const HistoryView &view, const HistoryColumnRange &range )
{
	LayoutHistoryBars( m_Bars, Owner().GetViewData(), view, range );
	PaintHistoryBars( painter, m_Bars );
}

std::optional<QRect> CQBudgetHistoryBarsWidget::CursorRect( const HistoryView &view ) const
{
	return HistoryBarsCursor( view );
}
