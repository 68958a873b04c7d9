// One column per sample: the budgets' times stacked from the bottom up.
#pragma once

#include "views/historybarslayout.h"
#include "views/historyplotwidget.h"

// Keeps its zoom as "history_scale".
class CQBudgetHistoryBarsWidget : public CQHistoryPlotWidget
{
	Q_OBJECT

public:
	CQBudgetHistoryBarsWidget( IBudgetViewOwner &owner, CQBudgetHistoryWidget &history );

private:
	void CompleteKey( HistoryPictureKey &key ) const override;
	CHistoryStrip::Reach ColumnReach() const override;
	void PaintColumns( QPainter &painter, const HistoryView &view, const HistoryColumnRange &range ) override;
	std::optional<QRect> CursorRect( const HistoryView &view ) const override;

	HistoryBarsLayout m_Bars; // of the columns that were painted last; kept for its buffers
};
