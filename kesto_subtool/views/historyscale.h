// The vertical scale of the history bars and of the frame-rate graph: zoom steps, pixels per grid step, the axis.
#pragma once

#include <QLine>
#include <QRect>
#include <QString>
#include <vector>

class KeyValues;

constexpr int HISTORY_ZOOM_LIMIT = 5; // zoom steps go from -5 to 5

// The zoom step that the settings (null: none) hold, clamped to the limits; 0 by default.
int LoadHistoryZoom( const KeyValues *pSettings, const char *pKey );

// The zoom step after a wheel turn: one up for a vertical angle delta of at least 1, else (0 included) one down, within
// the limits.
int HistoryZoomAfterWheel( int nZoomStep, int nAngleDelta );

// 0.3 at step -5, 1.65 at 0, 3.0 at 5, in single precision.
float HistoryZoomFactor( int nZoomStep );

// A grid step is 5 ms or 1/60 s for the bars, 50 frames per second for the graph: 30 pixels at step -5, 300 at 5.
int HistoryPixelsPerStep( int nZoomStep );

// Toward zero, for any input: what is not a number is 0, what leaves the range that painting needs stays at its end.
int TruncateToPixels( float flPixels );

enum class HistoryAxisUnit
{
	Milliseconds,          // "5 ms", "10 ms", …
	FramesPerSecondOfTime, // "60.00 fps", "30.00 fps", …: the frame rates that the times mean
	FramesPerSecond        // "50 fps", "100 fps", …
};

struct HistoryAxisLayout
{
	struct Label
	{
		QRect m_Box; // right-aligned, vertically centred, one line
		QString m_Text;
	};

	std::vector<QLine> m_Grid;
	std::vector<QLine> m_SubGrid; // four below each grid line; none at the smallest zoom
	std::vector<Label> m_Labels;
};

// Lays out the axis of a view, from its bottom up, into layout, whose buffers are used again.
void LayoutHistoryAxis( HistoryAxisLayout &layout, QSize size, int nZoomStep, HistoryAxisUnit unit, int nRowHeight );
