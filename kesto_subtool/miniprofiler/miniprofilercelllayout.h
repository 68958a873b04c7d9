// What a cell of the mini-profiler's tree shows, and where.
#pragma once

#include <QColor>
#include <QLine>
#include <QPoint>
#include <QRect>
#include <QString>
#include <array>
#include <optional>

#include "miniprofiler/miniprofilerpalette.h"
#include "miniprofiler/miniprofilerrow.h"
#include "miniprofiler/miniprofilertexts.h"

// What the user chose, and the scale that follows from the rows.
struct MiniProfilerDisplay
{
	MiniProfilerNumbers m_Numbers;             // as of the last regeneration
	int m_nBarMode = MINIPROFILER_INCLUSIVE;   // the column that bars show; 0 for none
	Qt::Alignment m_Alignment = Qt::AlignLeft; // of every text
	MiniProfilerArray m_BarMaxima{};           // the value that fills a bar, for each column
	bool m_bNameTransparent = false;
	bool m_bDrawBars = true;
	bool m_bDrawSigmas = true;
	bool m_bDrawPeaks = true;
	bool m_bTextVisible = true;
	bool m_bGroupColours = false;
	int m_nNormalised = 0; // rows that bars are normalised to; 0: to what is visible
	bool m_bDark = false;
};

struct MiniProfilerCellPlace
{
	QRect m_Rect;
	int m_nColumn = 0;
	bool m_bHovered = false;
	bool m_bSelected = false;
};

struct MiniProfilerHighlight
{
	QRect m_Rect; // both edges included
	QColor m_Fill;
	Qt::BrushStyle m_Style = Qt::SolidPattern;
	std::optional<QColor> m_Outline;
};

struct MiniProfilerBar
{
	QRect m_Rect; // both edges included, as for all rectangles here
	QColor m_Fill;
	std::optional<QColor> m_Outline;
	std::optional<QRect> m_Band; // between current and average
};

struct MiniProfilerSigma
{
	std::array<QLine, 4> m_Lines; // average, span, its two ends
	QColor m_Colour;
	bool m_bThick = false;
};

struct MiniProfilerTextBox
{
	QRect m_Box;
	Qt::Alignment m_Alignment = Qt::AlignLeft;
	QColor m_Colour;
	QString m_Text; // not for names, which the row has laid out already
};

struct MiniProfilerCellLayout
{
	std::optional<QColor> m_Background;
	std::optional<MiniProfilerHighlight> m_Highlight;
	std::optional<MiniProfilerBar> m_Bar;
	std::optional<MiniProfilerSigma> m_Sigma;
	std::optional<std::array<QPoint, 3>> m_Peak;
	std::optional<MiniProfilerTextBox> m_SmallText; // a group's members, or what tells equal names apart
	std::optional<MiniProfilerTextBox> m_Name;
	std::optional<MiniProfilerTextBox> m_Number;

	// All that bar, sigmas and peak touch; null without any.
	QRect GraphExtent() const;
};

MiniProfilerCellLayout LayoutMiniProfilerCell(
	const CMiniProfilerRow &row, const MiniProfilerCellPlace &place, const MiniProfilerDisplay &display );

// Where a text of that size begins in a box.
QPointF AlignedTextOrigin( const QRect &box, Qt::Alignment alignment, const QSizeF &size );
