// A paint device that draws nothing and writes down what a painter asks of it, so that a test can say "a bar from 0 to
// 312 in the budget's colour" instead of "pixel 17 differs".
//
// What is recorded are the operations that reach the paint engine: after QPainter has mapped coordinates and laid text
// out, before anything becomes a pixel. A shape that is filled and outlined by one call is recorded as two operations,
// the fill first, so that a test need not know whether one call or two made it.
#pragma once

#include <gtest/gtest.h>

#include <QBrush>
#include <QFont>
#include <QLineF>
#include <QPaintDevice>
#include <QPen>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <iosfwd>
#include <memory>
#include <optional>
#include <vector>

class QWidget;

struct PaintOp
{
	enum class Kind
	{
		FillRect,
		OutlineRect,
		Line,
		FillPolygon,
		OutlinePolygon, // closed
		Polyline,       // open
		Text,
		Point,
		Image, // a pixmap, an image or tiles of one
		Path   // anything else; m_Rect is its bounding box
	};

	Kind m_Kind = Kind::Path;

	// Rectangles: as given to QPainter, so QRect( 0, 0, 10, 5 ) covers 10 x 5 pixels when it is filled. Text: its
	// advance width and its font's ascent + descent, placed where it was drawn.
	QRectF m_Rect;
	std::vector<QPointF> m_Points; // lines and polygons, in the order given
	QString m_Text;
	QFont m_Font; // text only

	QColor m_Colour; // of the brush for fills, else of the pen
	Qt::BrushStyle m_BrushStyle = Qt::NoBrush;
	Qt::PenStyle m_PenStyle = Qt::NoPen;
	qreal m_flPenWidth = 0;
	QBrush m_Gradient;            // a gradient brush or pen; else NoBrush
	std::optional<QRectF> m_Clip; // bounding box of the clip in force; not compared

	// What a test expects. A text is given as it was asked for: a box and Qt::Alignment flags; the place follows from
	// the font's metrics.
	static PaintOp FillRect( const QRectF &rect, const QColor &colour, Qt::BrushStyle style = Qt::SolidPattern );
	static PaintOp OutlineRect( const QRectF &rect, const QPen &pen );
	static PaintOp Line( const QLineF &line, const QPen &pen );
	static PaintOp FillPolygon( std::vector<QPointF> points, const QColor &colour );
	static PaintOp OutlinePolygon( std::vector<QPointF> points, const QPen &pen );
	static PaintOp Polyline( std::vector<QPointF> points, const QPen &pen );
	static PaintOp Text( const QRectF &box, int nFlags, const QString &text, const QFont &font, const QColor &colour );

	// Coordinates count as equal within 1/64 pixel, the unit of text layout. Fonts are compared by family, size and
	// weight.
	friend bool operator==( const PaintOp &a, const PaintOp &b );
};

// Whether two drawings are the same; if not, where they differ first.
testing::AssertionResult SameDrawing( const std::vector<PaintOp> &actual, const std::vector<PaintOp> &expected );

std::ostream &operator<<( std::ostream &stream, const PaintOp &op );
void PrintTo( const PaintOp &op, std::ostream *pStream );

class CPaintLog final : public QPaintDevice
{
public:
	explicit CPaintLog( const QSize &size );
	~CPaintLog() override;

	const std::vector<PaintOp> &Ops() const;
	std::vector<PaintOp> OfKind( PaintOp::Kind kind ) const;
	std::vector<QString> Texts() const; // of all text operations, in order
	void Clear();

	QPaintEngine *paintEngine() const override;

	// What the paint event of a widget draws: neither its background nor its children.
	static std::vector<PaintOp> OfWidget( QWidget &widget );

protected:
	int metric( PaintDeviceMetric metric ) const override;

private:
	class CEngine;

	QSize m_Size;
	std::unique_ptr<CEngine> m_pEngine;
};
