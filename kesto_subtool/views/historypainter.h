// Replays the layouts of the history views.
#pragma once

#include <span>

#include "views/budgetviewstyle.h"
#include "views/fpsgraphlayout.h"
#include "views/historybarslayout.h"
#include "views/historyscale.h"

class QPainter;

void PaintHistoryAxis( QPainter &painter, const HistoryAxisLayout &layout, const BudgetViewStyle &style );
void PaintHistoryBars( QPainter &painter, const HistoryBarsLayout &layout );
void PaintFPSMarkers( QPainter &painter, std::span<const FPSMarkerLayout> markers, const BudgetViewStyle &style );
void PaintFPSCurve( QPainter &painter, const FPSCurveLayout &layout );
void PaintHistoryCursor( QPainter &painter, const QRect &frame, const BudgetViewStyle &style );
