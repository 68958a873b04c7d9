// The scale below a flame graph as rectangles, texts and a line.
#pragma once

#include <QFontMetricsF>
#include <QLineF>
#include <QRectF>
#include <QString>
#include <optional>
#include <vector>

#include "recordings/flamelayout.h"
#include "recordings/flamescale.h"

struct FlameScaleLabel
{
	QRectF m_Box;
	QString m_Text;
	Qt::Alignment m_Alignment;
	double m_flFontSize = 1.0; // of the usual one, so that no digit is cut off: "0 ms" would be wrong for 10
};

// In the order of painting.
struct FlameScaleLayout
{
	std::vector<QRectF> m_Outlines;            // of the millisecond band and of the frame-rate band
	std::vector<QRectF> m_Fills;               // every other millisecond, then the last quarter of each budget
	std::vector<FlameScaleLabel> m_OpenLabels; // of the milliseconds that are not filled
	std::optional<QLineF> m_Marker;
	std::vector<FlameScaleLabel> m_MarkerLabels; // none or two
	std::vector<FlameScaleLabel> m_FilledLabels; // of the filled milliseconds, then of the two longest budgets
};

// All three bands.
QRectF FlameScaleRect( const FlameScale &scale, const FlameMap &map );

// flMarker is a time in microseconds; no marker when it is not above 0. Milliseconds outside of flLeft to flRight
// (scene pixels) are left out, as are the most of them when there are more than anybody could tell apart. The metrics
// are those of the usual font.
FlameScaleLayout LayoutFlameScale( const FlameScale &scale, float flMarker, const FlameMap &map, float flLeft,
	float flRight, const QFontMetricsF &metrics );
