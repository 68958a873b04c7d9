#include "support/paintlog.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPaintEngine>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QWidget>
#include <algorithm>
#include <cmath>
#include <ostream>

namespace
{
using Kind = PaintOp::Kind;

constexpr qreal TOLERANCE = 1.0 / 64;

bool Near( qreal a, qreal b )
{
	return std::abs( a - b ) <= TOLERANCE;
}

bool Near( const QPointF &a, const QPointF &b )
{
	return Near( a.x(), b.x() ) && Near( a.y(), b.y() );
}

bool Near( const QRectF &a, const QRectF &b )
{
	return Near( a.topLeft(), b.topLeft() ) && Near( a.width(), b.width() ) && Near( a.height(), b.height() );
}

bool SameFont( const QFont &a, const QFont &b )
{
	return a.family() == b.family() && Near( a.pointSizeF(), b.pointSizeF() ) && a.weight() == b.weight();
}

PaintOp MakeStroke( Kind kind, const QPen &pen )
{
	PaintOp op;
	op.m_Kind = kind;
	op.m_Colour = pen.color();
	op.m_PenStyle = pen.style();
	op.m_flPenWidth = pen.widthF();
	if ( pen.brush().gradient() )
		op.m_Gradient = pen.brush();
	return op;
}

PaintOp MakeFill( Kind kind, const QBrush &brush )
{
	PaintOp op;
	op.m_Kind = kind;
	op.m_Colour = brush.color();
	op.m_BrushStyle = brush.style();
	if ( brush.gradient() )
		op.m_Gradient = brush;
	return op;
}

const char *NameOf( Kind kind )
{
	switch ( kind )
	{
		case Kind::FillRect:
			return "FillRect";
		case Kind::OutlineRect:
			return "OutlineRect";
		case Kind::Line:
			return "Line";
		case Kind::FillPolygon:
			return "FillPolygon";
		case Kind::OutlinePolygon:
			return "OutlinePolygon";
		case Kind::Polyline:
			return "Polyline";
		case Kind::Text:
			return "Text";
		case Kind::Point:
			return "Point";
		case Kind::Image:
			return "Image";
		case Kind::Path:
			return "Path";
	}
	return "?";
}
} // namespace

PaintOp PaintOp::FillRect( const QRectF &rect, const QColor &colour, Qt::BrushStyle style )
{
	PaintOp op = MakeFill( Kind::FillRect, QBrush( colour, style ) );
	op.m_Rect = rect;
	return op;
}

PaintOp PaintOp::OutlineRect( const QRectF &rect, const QPen &pen )
{
	PaintOp op = MakeStroke( Kind::OutlineRect, pen );
	op.m_Rect = rect;
	return op;
}

PaintOp PaintOp::Line( const QLineF &line, const QPen &pen )
{
	PaintOp op = MakeStroke( Kind::Line, pen );
	op.m_Points = { line.p1(), line.p2() };
	return op;
}

PaintOp PaintOp::FillPolygon( std::vector<QPointF> points, const QColor &colour )
{
	PaintOp op = MakeFill( Kind::FillPolygon, QBrush( colour ) );
	op.m_Points = std::move( points );
	return op;
}

PaintOp PaintOp::OutlinePolygon( std::vector<QPointF> points, const QPen &pen )
{
	PaintOp op = MakeStroke( Kind::OutlinePolygon, pen );
	op.m_Points = std::move( points );
	return op;
}

PaintOp PaintOp::Polyline( std::vector<QPointF> points, const QPen &pen )
{
	PaintOp op = MakeStroke( Kind::Polyline, pen );
	op.m_Points = std::move( points );
	return op;
}

PaintOp PaintOp::Text( const QRectF &box, int nFlags, const QString &text, const QFont &font, const QColor &colour )
{
	const QFontMetricsF metrics( font );
	const qreal flWidth = metrics.horizontalAdvance( text );
	const qreal flHeight = metrics.ascent() + metrics.descent();

	qreal x = box.x();
	if ( nFlags & Qt::AlignRight )
		x += box.width() - flWidth;
	else if ( nFlags & Qt::AlignHCenter )
		x += ( box.width() - flWidth ) / 2;
	qreal y = box.y();
	if ( nFlags & Qt::AlignBottom )
		y += box.height() - flHeight;
	else if ( nFlags & Qt::AlignVCenter )
		y += ( box.height() - flHeight ) / 2;

	PaintOp op;
	op.m_Kind = Kind::Text;
	op.m_Rect = QRectF( x, y, flWidth, flHeight );
	op.m_Text = text;
	op.m_Font = font;
	op.m_Colour = colour;
	return op;
}

bool operator==( const PaintOp &a, const PaintOp &b )
{
	return a.m_Kind == b.m_Kind && a.m_Colour == b.m_Colour && a.m_Text == b.m_Text && Near( a.m_Rect, b.m_Rect ) &&
		   std::ranges::equal(
			   a.m_Points, b.m_Points, []( const QPointF &p, const QPointF &q ) { return Near( p, q ); } ) &&
		   a.m_BrushStyle == b.m_BrushStyle && a.m_PenStyle == b.m_PenStyle && Near( a.m_flPenWidth, b.m_flPenWidth ) &&
		   a.m_Gradient == b.m_Gradient && ( a.m_Kind != PaintOp::Kind::Text || SameFont( a.m_Font, b.m_Font ) );
}

testing::AssertionResult SameDrawing( const std::vector<PaintOp> &actual, const std::vector<PaintOp> &expected )
{
	const auto [drawn, wanted] = std::ranges::mismatch( actual, expected );
	if ( drawn == actual.end() && wanted == expected.end() )
		return testing::AssertionSuccess();
	auto failure = testing::AssertionFailure() << "operation " << drawn - actual.begin() << " is ";
	drawn == actual.end() ? failure << "missing" : failure << *drawn;
	failure << "\ninstead of ";
	return wanted == expected.end() ? failure << "the end" : failure << *wanted;
}

std::ostream &operator<<( std::ostream &stream, const PaintOp &op )
{
	stream << NameOf( op.m_Kind );
	if ( !op.m_Rect.isNull() )
		stream << " at (" << op.m_Rect.x() << ", " << op.m_Rect.y() << ") size " << op.m_Rect.width() << " x "
			   << op.m_Rect.height();
	for ( const QPointF &point : op.m_Points )
		stream << " (" << point.x() << ", " << point.y() << ")";
	if ( op.m_Kind == Kind::Text )
		stream << " \"" << op.m_Text.toStdString() << "\" " << op.m_Font.family().toStdString() << " "
			   << op.m_Font.pointSizeF();
	stream << " " << op.m_Colour.name( QColor::HexArgb ).toStdString();
	if ( op.m_BrushStyle != Qt::NoBrush )
		stream << " brush style " << op.m_BrushStyle;
	if ( op.m_PenStyle != Qt::NoPen )
		stream << " pen style " << op.m_PenStyle << " width " << op.m_flPenWidth;
	if ( const QGradient *pGradient = op.m_Gradient.gradient() )
		for ( const QGradientStop &stop : pGradient->stops() )
			stream << " stop " << stop.first << " " << stop.second.name().toStdString();
	return stream;
}

void PrintTo( const PaintOp &op, std::ostream *pStream )
{
	*pStream << op;
}

class CPaintLog::CEngine final : public QPaintEngine
{
public:
	CEngine()
		: QPaintEngine( AllFeatures ) // so that QPainter hands everything on as it was asked for
	{
	}

	bool begin( QPaintDevice * ) override
	{
		setActive( true );
		return true;
	}
	bool end() override
	{
		setActive( false );
		return true;
	}
	Type type() const override { return User; }
	void updateState( const QPaintEngineState & ) override {} // read when something is drawn

	using QPaintEngine::drawLines;
	using QPaintEngine::drawPoints;
	using QPaintEngine::drawPolygon;
	using QPaintEngine::drawRects;

	void drawRects( const QRectF *pRects, int nCount ) override
	{
		for ( int i = 0; i < nCount; i++ )
		{
			const QRectF rect = state->transform().mapRect( pRects[i] );
			RecordShape( Kind::FillRect, Kind::OutlineRect, rect, {} );
		}
	}

	void drawLines( const QLineF *pLines, int nCount ) override
	{
		for ( int i = 0; i < nCount; i++ )
			RecordStroke( Kind::Line, {}, Map( { pLines[i].p1(), pLines[i].p2() } ) );
	}

	void drawPoints( const QPointF *pPoints, int nCount ) override
	{
		for ( int i = 0; i < nCount; i++ )
			RecordStroke( Kind::Point, {}, Map( { pPoints[i] } ) );
	}

	void drawPolygon( const QPointF *pPoints, int nCount, PolygonDrawMode mode ) override
	{
		std::vector<QPointF> points = Map( { pPoints, pPoints + nCount } );
		if ( mode == PolylineMode )
			RecordStroke( Kind::Polyline, {}, std::move( points ) );
		else
			RecordShape( Kind::FillPolygon, Kind::OutlinePolygon, {}, std::move( points ) );
	}

	void drawPath( const QPainterPath &path ) override
	{
		const QRectF rect = state->transform().mapRect( path.boundingRect() );
		RecordShape( Kind::Path, Kind::Path, rect, {} );
	}

	void drawPixmap( const QRectF &rect, const QPixmap &, const QRectF & ) override { RecordImage( rect ); }
	void drawImage( const QRectF &rect, const QImage &, const QRectF &, Qt::ImageConversionFlags ) override
	{
		RecordImage( rect );
	}
	void drawTiledPixmap( const QRectF &rect, const QPixmap &, const QPointF & ) override { RecordImage( rect ); }

	void drawTextItem( const QPointF &ptBaseline, const QTextItem &item ) override
	{
		PaintOp op;
		op.m_Kind = Kind::Text;
		op.m_Rect = state->transform().mapRect(
			QRectF( ptBaseline.x(), ptBaseline.y() - item.ascent(), item.width(), item.ascent() + item.descent() ) );
		op.m_Text = item.text();
		op.m_Font = item.font();
		op.m_Colour = state->pen().color();
		if ( !JoinsLast( op ) )
			Record( std::move( op ) );
	}

	std::vector<PaintOp> m_Ops;

private:
	std::vector<QPointF> Map( std::vector<QPointF> points ) const
	{
		for ( QPointF &point : points )
			point = state->transform().map( point );
		return points;
	}

	void Record( PaintOp op )
	{
		if ( painter()->hasClipping() )
			op.m_Clip = state->transform().mapRect( painter()->clipBoundingRect() );
		m_Ops.push_back( std::move( op ) );
	}

	void RecordStroke( Kind kind, const QRectF &rect, std::vector<QPointF> points )
	{
		if ( state->pen().style() == Qt::NoPen )
			return;
		PaintOp op = MakeStroke( kind, state->pen() );
		op.m_Rect = rect;
		op.m_Points = std::move( points );
		Record( std::move( op ) );
	}

	void RecordShape( Kind fill, Kind outline, const QRectF &rect, std::vector<QPointF> points )
	{
		if ( state->brush().style() != Qt::NoBrush )
		{
			PaintOp op = MakeFill( fill, state->brush() );
			op.m_Rect = rect;
			op.m_Points = points;
			Record( std::move( op ) );
		}
		RecordStroke( outline, rect, std::move( points ) );
	}

	void RecordImage( const QRectF &rect )
	{
		PaintOp op;
		op.m_Kind = Kind::Image;
		op.m_Rect = state->transform().mapRect( rect );
		Record( std::move( op ) );
	}

	// Text layout cuts a text into pieces where the script or the physical font changes; the pieces follow each other
	// without a gap.
	bool JoinsLast( const PaintOp &op )
	{
		if ( m_Ops.empty() || m_Ops.back().m_Kind != Kind::Text )
			return false;
		PaintOp &last = m_Ops.back();
		const bool bAdjacent =
			Near( last.m_Rect.right(), op.m_Rect.left() ) && Near( last.m_Rect.center().y(), op.m_Rect.center().y() );
		if ( !bAdjacent || last.m_Colour != op.m_Colour || !SameFont( last.m_Font, op.m_Font ) )
			return false;
		last.m_Text += op.m_Text;
		last.m_Rect.setRight( op.m_Rect.right() );
		return true;
	}
};

CPaintLog::CPaintLog( const QSize &size )
	: m_Size( size )
	, m_pEngine( std::make_unique<CEngine>() )
{
}

CPaintLog::~CPaintLog() = default;

const std::vector<PaintOp> &CPaintLog::Ops() const
{
	return m_pEngine->m_Ops;
}

std::vector<PaintOp> CPaintLog::OfKind( PaintOp::Kind kind ) const
{
	std::vector<PaintOp> ops;
	std::ranges::copy_if( Ops(), std::back_inserter( ops ), [&]( const PaintOp &op ) { return op.m_Kind == kind; } );
	return ops;
}

std::vector<QString> CPaintLog::Texts() const
{
	std::vector<QString> texts;
	for ( const PaintOp &op : OfKind( Kind::Text ) )
		texts.push_back( op.m_Text );
	return texts;
}

void CPaintLog::Clear()
{
	m_pEngine->m_Ops.clear();
}

QPaintEngine *CPaintLog::paintEngine() const
{
	return m_pEngine.get();
}

std::vector<PaintOp> CPaintLog::OfWidget( QWidget &widget )
{
	CPaintLog log( widget.size() );
	widget.render( &log, QPoint(), QRegion(), QWidget::RenderFlags() );
	return log.Ops();
}

// The resolution is the screen's, so that a font has the same metrics here as in a widget.
int CPaintLog::metric( PaintDeviceMetric metric ) const
{
	const int nDpi = qRound( QGuiApplication::primaryScreen()->logicalDotsPerInch() );
	switch ( metric )
	{
		case PdmWidth:
			return m_Size.width();
		case PdmHeight:
			return m_Size.height();
		case PdmWidthMM:
			return qRound( m_Size.width() * 25.4 / nDpi );
		case PdmHeightMM:
			return qRound( m_Size.height() * 25.4 / nDpi );
		case PdmNumColors:
			return 1 << 24;
		case PdmDepth:
			return 32;
		case PdmDpiX:
		case PdmDpiY:
		case PdmPhysicalDpiX:
		case PdmPhysicalDpiY:
			return nDpi;
		case PdmDevicePixelRatio:
			return 1;
		case PdmDevicePixelRatioScaled:
			return static_cast<int>( devicePixelRatioFScale() );
	}
	return 0;
}
