// The operations of QPainter that the budget views use, with shortcuts that draw the same pixels sooner (the edges of
// letters come within a few of 255 levels).
//
// QPainter's raster engine draws an outline pixel by pixel and lays every text out anew, which makes a window of 64
// budgets cost far more than the rectangles it consists of. On that engine, while one unit is one pixel, thin upright
// lines are filled instead, and texts, markers and dashes are stamped from pictures that the engine itself made once.
// Everywhere else (printing, recording, scaled screens) each operation goes to QPainter as it is. Where a screen
// smooths texts per colour channel, stamped texts are smoothed in grey.
#pragma once

#include <QPainter>

#include "views/stampcache.h"

class CViewPainter
{
public:
	// Both outlive it. The painter has no brush yet; its state must not be changed by others while this lives.
	CViewPainter( QPainter &painter, CStampCache &stamps );
	CViewPainter( const CViewPainter & ) = delete;
	CViewPainter &operator=( const CViewPainter & ) = delete;

	// The painter gets pen and brush only where an operation needs them there.
	void SetPen( const QPen &pen );
	void SetPen( const QColor &colour ); // solid, one pixel wide
	void SetBrush( const QColor &colour );
	void SetFont( const QFont &font );

	void FillRect( const QRect &rect, const QColor &colour ) { m_Painter.fillRect( rect, colour ); }
	void FillRect( const QRect &rect, const QColor &colour, Qt::BrushStyle style );
	void DrawRect( const QRect &rect ); // filled with the brush, outlined with the pen
	void DrawLine( int x1, int y1, int x2, int y2 );
	void DrawPolygon( const QPoint *pPoints, int nCount ); // odd-even
	void DrawPolyline( const QPoint *pPoints, int nCount );

	// As QPainter::drawText does with a box and flags.
	void DrawText( const QRect &box, int nFlags, const QString &text );

private:
	QPen Pen() const { return m_bPlainPen ? QPen( m_PenColour ) : m_Pen; }
	QPainter &Painter(); // with pen and brush set
	bool StampPolygon( StampKey::Kind kind, const QPoint *pPoints, int nCount );
	bool StampDashes( int x, int nTop, int nBottom );
	bool ComposeText( const QRect &box, int nFlags, const QString &text );
	bool StampText( const QRect &box, int nFlags, const QString &text );
	Stamp MakeText( const QRect &box, int nFlags, const QString &text ) const;
	QImage MakeImage( const QSize &size ) const;

	QPainter &m_Painter;
	CStampCache &m_Stamps;
	const bool m_bShortcuts;
	QColor m_PenColour;
	bool m_bPlainPen = false; // as made of m_PenColour alone
	QPen m_Pen;               // when it is not plain
	bool m_bPenSet = false;   // the painter has it
	QColor m_BrushColour;     // invalid: no brush
	bool m_bBrushSet = true;
	int m_nFont = 0;
};
