// Draws a cell of the mini-profiler's tree.
#pragma once

#include "miniprofiler/miniprofilercelllayout.h"

class QFont;
class QPainter;
class QStaticText;

// Nothing is drawn outside `cell`. The painter's pen, brush and font are restored. The name is laid out in the
// painter's font.
void PaintMiniProfilerCell( QPainter &painter, const QRect &cell, const MiniProfilerCellLayout &layout,
	const MiniProfilerPalette &palette, const QStaticText &name, const QFont &smallFont );
