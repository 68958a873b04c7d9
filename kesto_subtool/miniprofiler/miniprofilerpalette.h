// The colours of the mini-profiler's cells.
#pragma once

#include <QColor>
#include <QLinearGradient>

struct MiniProfilerPalette
{
	// From top (0) to bottom (1) of a cell, for painters that want them. The bar delegate fills its cells plainly: with
	// the end of the one and the beginning of the other.
	QLinearGradient m_SelectedGradient;
	QLinearGradient m_HoverGradient;
	QColor m_SelectedFill;
	QColor m_HoverFill;
	QColor m_HoverOutline;
	QColor m_BarOutline;
	QColor m_BarFill;
	QColor m_Band;    // between current and average
	QColor m_PaleBar; // outside the normalised selection
	QColor m_Sigma;
	QColor m_StrongSigma; // selected or right-aligned
	QColor m_PeakOutline;
	QColor m_PeakFill;
	QColor m_Faint; // numbers that are as good as 0
	bool m_bDark = false;

	// The dark colours are given brighter than they are used: each is made 150% darker.
	static const MiniProfilerPalette &For( bool bDark );
};
