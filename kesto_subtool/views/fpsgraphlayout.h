// The frame-rate graph as lines and rectangles: axis, threshold markers, the curve with its points.
#pragma once

#include <QLine>
#include <QRect>
#include <QRgb>
#include <QString>
#include <array>
#include <optional>
#include <vector>

#include "views/fpsmarkers.h"
#include "views/historybarslayout.h"

struct FPSGraphLayout
{
	struct Marker
	{
		QLine m_Line;
		QRect m_LeftHandle;
		QRect m_RightHandle;
		QPoint m_TextBaseline;
		QString m_Text;
		QRgb m_Colour = 0;
	};

	// From the older sample's point to its own. Its colour goes from m_Older half way to m_Middle and on to m_Newer.
	struct Segment
	{
		QLine m_Line;
		QRgb m_Older = 0;
		QRgb m_Middle = 0;
		QRgb m_Newer = 0;

		bool IsPlain() const { return m_Older == m_Middle && m_Middle == m_Newer; }
	};

	struct Point
	{
		QRect m_Square;
		QRgb m_Colour = 0;
	};

	HistoryAxisLayout m_Axis;
	std::vector<Marker> m_Markers; // lower, upper; none while thresholds are hidden
	std::vector<Segment> m_Segments;
	std::vector<Point> m_Points;
	std::optional<QRect> m_Cursor;
};

// Where a marker is painted, and where the mouse finds it. The first truncates the difference, the second the length,
// so they differ by a pixel where the length is no whole number; that is deliberate.
int FPSMarkerPaintedY( float flRate, int nHeight, int nZoomStep );
int FPSMarkerGrabY( float flRate, int nHeight, int nZoomStep );

// The frame rate, a whole number within the bounds of markers, that a drag to y asks for.
float FPSMarkerRateAt( int y, int nHeight, int nZoomStep );

enum class FPSMarkerHandle
{
	None,
	Upper,
	Lower
};

// The marker whose handle lies under ptMouse; the upper one where both do.
FPSMarkerHandle FPSMarkerHandleAt( const FPSMarkers &markers, QPoint ptMouse, QSize size, int nZoomStep );

// Lays out into layout, whose buffers are used again.
void LayoutFPSGraph( FPSGraphLayout &layout, const BudgetViewData &data, const HistoryView &view,
	const FPSMarkers &markers, int nRowHeight );
