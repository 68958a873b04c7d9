// Pictures that the history views keep between repaints. Samples arrive faster than a whole view can be painted anew,
// but all that a new sample changes is its own column: the others move over by a pitch.
#pragma once

#include <QPixmap>
#include <array>

#include "views/fpsmarkers.h"
#include "views/historyscale.h"
#include "views/historyview.h"

// Everything besides the samples that decides how a view of the history looks.
struct HistoryPictureKey
{
	QSize m_Size;
	qreal m_flPixelRatio = 1.0;
	int m_nZoomStep = 0;
	int m_nVisible = 0;
	const void *m_pSamples = nullptr; // where they are, so that another store is noticed
	HistoryAxisUnit m_Unit = HistoryAxisUnit::Milliseconds;
	bool m_bAverages = false;
	bool m_bThresholds = false;
	FPSMarkers m_Markers;

	friend bool operator==( const HistoryPictureKey &, const HistoryPictureKey & ) = default;
};

// What lies behind the columns: axis and markers.
class CHistoryBackdrop
{
public:
	// True when the picture must be painted for this key; it is transparent then.
	bool Prepare( const HistoryPictureKey &key );

	QPixmap &Picture() { return m_Picture; }

private:
	HistoryPictureKey m_Key;
	QPixmap m_Picture; // null at first
};

// The columns, on a transparent ground.
//
// Samples that were painted are expected to stay as they are, but for the newest one, to which the target may add until
// the next one begins. Whoever clears the samples calls Invalidate.
class CHistoryStrip
{
public:
	// Where a view's columns end, from HistoryColumns::RightEdge of a column on. What its newer neighbours draw begins
	// at m_nNewer; left of m_nOlder nothing stays on when it is the oldest one and is painted again.
	struct Reach
	{
		int m_nNewer = 0;
		int m_nOlder = 0;
	};

	// Moves what is still right to its place and clears the rest. Returns the columns that must be painted then; the
	// second range is often empty.
	std::array<HistoryColumnRange, 2> Prepare(
		const HistoryPictureKey &key, const HistoryColumns &columns, Reach reach );

	void Invalidate() { m_Picture = QPixmap(); }

	QPixmap &Picture() { return m_Picture; }

private:
	bool MoveLeft( int nPixels );
	void Clear( int nLeft, int nRight );

	HistoryPictureKey m_Key;
	QPixmap m_Picture;
	int64_t m_nNewest = 0; // sample in column 0
};
