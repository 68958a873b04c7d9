// The frame-rate graph as lines and rectangles: threshold markers, the curve with its points.
#pragma once

#include <QLine>
#include <QRect>
#include <QRgb>
#include <QString>
#include <array>
#include <optional>
#include <vector>

#include "views/budgetviewdata.h"
#include "views/fpsmarkers.h"
#include "views/historyview.h"

struct FPSMarkerLayout
{
	QLine m_Line;
	QRect m_LeftHandle;
	QRect m_RightHandle;
	QPoint m_TextBaseline;
	QString m_Text;
	QRgb m_Colour = 0;
};

struct FPSCurveLayout
{
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

	std::vector<Segment> m_Segments;
	std::vector<Point> m_Points;
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

// The lower marker, then the upper one.
std::array<FPSMarkerLayout, 2> LayoutFPSMarkers( const FPSMarkers &markers, QSize size, int nZoomStep );

// Lays the segments and points of some of the filled columns out into layout, whose buffers are used again. The point
// that the oldest of the segments starts from comes along when it stands in a column itself.
void LayoutFPSCurve( FPSCurveLayout &layout, const BudgetViewData &data, const HistoryView &view,
	const FPSMarkers &markers, const HistoryColumnRange &range );

// The frame around the selected column, while it is on screen.
std::optional<QRect> FPSGraphCursor( const HistoryView &view );
