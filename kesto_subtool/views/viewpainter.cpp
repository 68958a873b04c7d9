#include "views/viewpainter.h"

#include <QPaintEngine>
#include <cmath>

namespace
{
constexpr int TEXT_MARGIN = 3;  // pixels that ink may reach out of a text's box
constexpr int PATTERN_SIZE = 8; // pixels, of Qt's patterns
constexpr int LARGEST_STAMP = 4096;

bool AllowsShortcuts( const QPainter &painter )
{
	const QTransform transform = painter.deviceTransform();
	const bool bWholePixels = transform.type() <= QTransform::TxTranslate &&
							  transform.dx() == std::floor( transform.dx() ) &&
							  transform.dy() == std::floor( transform.dy() );
	return bWholePixels && painter.paintEngine()->type() == QPaintEngine::Raster && painter.opacity() == 1 &&
		   !painter.testRenderHint( QPainter::Antialiasing ) &&
		   painter.compositionMode() == QPainter::CompositionMode_SourceOver;
}

QRect BoundsOf( const QPoint *pPoints, int nCount )
{
	QRect bounds( pPoints[0], QSize( 1, 1 ) );
	for ( int i = 1; i < nCount; i++ )
		bounds |= QRect( pPoints[i], QSize( 1, 1 ) );
	return bounds;
}

bool IsStampSized( const QRect &rect )
{
	return rect.width() > 0 && rect.width() <= LARGEST_STAMP && rect.height() > 0 && rect.height() <= LARGEST_STAMP;
}

int Modulo( int nValue, int nDivisor )
{
	return ( nValue % nDivisor + nDivisor ) % nDivisor;
}
} // namespace

CViewPainter::CViewPainter( QPainter &painter, CStampCache &stamps )
	: m_Painter( painter )
	, m_Stamps( stamps )
	, m_bShortcuts( AllowsShortcuts( painter ) )
{
	SetPen( painter.pen() );
	SetFont( painter.font() );
}

void CViewPainter::SetPen( const QPen &pen )
{
	m_Pen = pen;
	m_PenColour = pen.color();
	m_bPlainPen = pen == QPen( m_PenColour );
	m_bPenSet = false;
}

void CViewPainter::SetPen( const QColor &colour )
{
	if ( m_bPlainPen && m_PenColour == colour )
		return;
	m_PenColour = colour;
	m_bPlainPen = true;
	m_bPenSet = false;
}

void CViewPainter::SetBrush( const QColor &colour )
{
	m_BrushColour = colour;
	m_bBrushSet = false;
}

QPainter &CViewPainter::Painter()
{
	if ( !m_bPenSet )
		m_Painter.setPen( Pen() );
	if ( !m_bBrushSet )
		m_Painter.setBrush( m_BrushColour );
	m_bPenSet = m_bBrushSet = true;
	return m_Painter;
}

void CViewPainter::SetFont( const QFont &font )
{
	m_Painter.setFont( font );
	if ( m_bShortcuts )
		m_nFont = m_Stamps.FontIndex( font );
}

void CViewPainter::FillRect( const QRect &rect, const QColor &colour, Qt::BrushStyle style )
{
	const QBrush brush( colour, style );
	if ( !m_bShortcuts || !IsStampSized( rect ) )
		return m_Painter.fillRect( rect, brush );

	// The picture is one pattern wider than the rectangle, so that it serves wherever the pattern begins, and two high.
	const QSize size( rect.width() + PATTERN_SIZE, 2 * PATTERN_SIZE );
	const StampKey key{
		.m_Kind = StampKey::Kind::Pattern, .m_nVariant = style, .m_nWidth = size.width(), .m_Brush = colour.rgba() };
	const Stamp *pStamp = m_Stamps.Find( key );
	if ( !pStamp )
	{
		Stamp stamp{ MakeImage( size ), QPoint(), 0 };
		QPainter( &stamp.m_Image ).fillRect( stamp.m_Image.rect(), brush );
		pStamp = m_Stamps.Insert( key, std::move( stamp ) );
	}
	if ( !pStamp )
		return m_Painter.fillRect( rect, brush );

	const QPoint ptPhase = rect.topLeft() - m_Painter.brushOrigin();
	const QPoint ptFrom( Modulo( ptPhase.x(), PATTERN_SIZE ), Modulo( ptPhase.y(), PATTERN_SIZE ) );
	for ( int y = 0; y < rect.height(); y += PATTERN_SIZE )
	{
		const QSize part( rect.width(), std::min( PATTERN_SIZE, rect.height() - y ) );
		m_Painter.drawImage( rect.topLeft() + QPoint( 0, y ), pStamp->m_Image, QRect( ptFrom, part ) );
	}
}

void CViewPainter::DrawRect( const QRect &rect )
{
	if ( !m_bShortcuts || !m_bPlainPen || rect.isEmpty() )
		return Painter().drawRect( rect );

	if ( m_BrushColour.isValid() )
		m_Painter.fillRect( rect, m_BrushColour );
	// The outline runs along the pixels right of and below the rectangle.
	const int nRight = rect.x() + rect.width();
	const int nBottom = rect.y() + rect.height();
	m_Painter.fillRect( rect.x(), rect.y(), rect.width() + 1, 1, m_PenColour );
	m_Painter.fillRect( rect.x(), nBottom, rect.width() + 1, 1, m_PenColour );
	m_Painter.fillRect( rect.x(), rect.y() + 1, 1, rect.height() - 1, m_PenColour );
	m_Painter.fillRect( nRight, rect.y() + 1, 1, rect.height() - 1, m_PenColour );
}

void CViewPainter::DrawLine( int x1, int y1, int x2, int y2 )
{
	if ( m_bShortcuts && m_bPlainPen && ( x1 == x2 || y1 == y2 ) )
	{
		const QPoint ptFrom( std::min( x1, x2 ), std::min( y1, y2 ) );
		const QPoint ptTo( std::max( x1, x2 ), std::max( y1, y2 ) );
		m_Painter.fillRect( QRect( ptFrom, ptTo ), m_PenColour );
	}
	else if ( !( m_bShortcuts && x1 == x2 && y1 < y2 && StampDashes( x1, y1, y2 ) ) )
		Painter().drawLine( x1, y1, x2, y2 );
}

bool CViewPainter::StampDashes( int x, int nTop, int nBottom )
{
	const QRect bounds( QPoint( x, nTop ), QPoint( x, nBottom ) );
	const QPen pen = Pen();
	if ( pen.widthF() > 1 || pen.style() >= Qt::CustomDashLine || !IsStampSized( bounds ) )
		return false;

	const StampKey key{ .m_Kind = StampKey::Kind::Line,
		.m_nHeight = bounds.height(),
		.m_Pen = m_PenColour.rgba(),
		.m_nPenStyle = pen.style() };
	const Stamp *pStamp = m_Stamps.Find( key );
	if ( !pStamp )
	{
		Stamp stamp{ MakeImage( bounds.size() ), QPoint(), 0 };
		QPainter painter( &stamp.m_Image );
		painter.setPen( pen );
		painter.drawLine( 0, 0, 0, nBottom - nTop );
		painter.end();
		pStamp = m_Stamps.Insert( key, std::move( stamp ) );
	}
	if ( pStamp )
		m_Painter.drawImage( bounds.topLeft(), pStamp->m_Image );
	return pStamp != nullptr;
}

void CViewPainter::DrawPolygon( const QPoint *pPoints, int nCount )
{
	if ( !m_bShortcuts || !StampPolygon( StampKey::Kind::Polygon, pPoints, nCount ) )
		Painter().drawPolygon( pPoints, nCount, Qt::OddEvenFill );
}

void CViewPainter::DrawPolyline( const QPoint *pPoints, int nCount )
{
	if ( !m_bShortcuts || !StampPolygon( StampKey::Kind::Polyline, pPoints, nCount ) )
		Painter().drawPolyline( pPoints, nCount );
}

bool CViewPainter::StampPolygon( StampKey::Kind kind, const QPoint *pPoints, int nCount )
{
	const QRect bounds = BoundsOf( pPoints, nCount );
	const bool bPolygon = kind == StampKey::Kind::Polygon;
	const QPen pen = Pen();
	if ( pen.widthF() > 1 || pen.style() >= Qt::CustomDashLine || !IsStampSized( bounds ) )
		return false;

	StampKey key{ .m_Kind = kind,
		.m_Pen = m_PenColour.rgba(),
		.m_nPenStyle = pen.style(),
		.m_Brush = bPolygon ? m_BrushColour.rgba() : 0 };
	key.m_Points.reserve( nCount );
	for ( int i = 0; i < nCount; i++ )
		key.m_Points.push_back( pPoints[i] - bounds.topLeft() );
	const Stamp *pStamp = m_Stamps.Find( key );
	if ( !pStamp )
	{
		Stamp stamp{ MakeImage( bounds.size() ), QPoint(), 0 };
		QPainter painter( &stamp.m_Image );
		painter.setPen( pen );
		painter.setBrush( m_BrushColour );
		if ( bPolygon )
			painter.drawPolygon( key.m_Points.constData(), nCount, Qt::OddEvenFill );
		else
			painter.drawPolyline( key.m_Points.constData(), nCount );
		painter.end();
		pStamp = m_Stamps.Insert( key, std::move( stamp ) );
	}
	if ( pStamp )
		m_Painter.drawImage( bounds.topLeft(), pStamp->m_Image );
	return pStamp != nullptr;
}

void CViewPainter::DrawText( const QRect &box, int nFlags, const QString &text )
{
	if ( !m_bShortcuts || !IsStampSized( box ) ||
		 !( ComposeText( box, nFlags, text ) || StampText( box, nFlags, text ) ) )
		Painter().drawText( box, nFlags, text );
}

bool CViewPainter::ComposeText( const QRect &box, int nFlags, const QString &text )
{
	CFixedPitchText *pFixedPitch = m_Stamps.FixedPitch( m_nFont );
	const bool bAligned = ( nFlags & Qt::AlignRight ) && ( nFlags & Qt::AlignVCenter );
	if ( !pFixedPitch || !bAligned || !pFixedPitch->Fits( text, box.width() ) )
		return false;
	const auto line = pFixedPitch->Compose( text, box.width(), box.height(), m_PenColour.rgba() );
	m_Painter.drawImage( box.topLeft() + QPoint( 0, line.m_nTop ), line.m_Image );
	return true;
}

// A text that does not fit is left to QPainter, which cuts it off at the box.
bool CViewPainter::StampText( const QRect &box, int nFlags, const QString &text )
{
	// A centred text begins at half a pixel or not, depending on the width of its box.
	const int nPhase = nFlags & Qt::AlignHCenter ? box.width() % 2 : 0;
	const StampKey key{ .m_Kind = StampKey::Kind::Text,
		.m_nVariant = m_nFont * 2 + nPhase,
		.m_nWidth = nFlags,
		.m_nHeight = box.height(),
		.m_Pen = m_PenColour.rgba(),
		.m_Text = text };
	const Stamp *pStamp = m_Stamps.Find( key );
	if ( !pStamp )
		pStamp = m_Stamps.Insert( key, MakeText( box, nFlags, text ) );
	if ( !pStamp || pStamp->m_nExtent > box.width() )
		return false;

	const int nSpare = box.width() - pStamp->m_nExtent;
	const int nShift = nFlags & Qt::AlignRight ? nSpare : nFlags & Qt::AlignHCenter ? nSpare / 2 : 0;
	m_Painter.drawImage( box.topLeft() + QPoint( nShift, 0 ) + pStamp->m_Offset, pStamp->m_Image );
	return true;
}

Stamp CViewPainter::MakeText( const QRect &box, int nFlags, const QString &text ) const
{
	const QFontMetricsF metrics = QFontMetricsF( m_Painter.font(), m_Painter.device() );
	int nWidth = static_cast<int>( std::ceil( metrics.horizontalAdvance( text ) ) );
	if ( nFlags & Qt::AlignHCenter )
		nWidth += ( box.width() - nWidth ) % 2 != 0 ? 1 : 0;

	const QSize margin( 2 * TEXT_MARGIN, 2 * TEXT_MARGIN );
	Stamp stamp{ MakeImage( QSize( nWidth, box.height() ) + margin ), QPoint( -TEXT_MARGIN, -TEXT_MARGIN ), nWidth };
	QPainter painter( &stamp.m_Image );
	painter.setLayoutDirection( m_Painter.layoutDirection() ); // else a text would decide for itself
	painter.setFont( m_Painter.font() );
	painter.setPen( Pen() );
	painter.drawText( QRect( TEXT_MARGIN, TEXT_MARGIN, nWidth, box.height() ), nFlags, text );
	return stamp;
}

// Of the painted device's resolution, so that fonts come out as large.
QImage CViewPainter::MakeImage( const QSize &size ) const
{
	constexpr qreal INCHES_PER_METRE = 1 / 0.0254;
	QImage image( size, QImage::Format_ARGB32_Premultiplied );
	image.setDotsPerMeterX( qRound( m_Painter.device()->logicalDpiX() * INCHES_PER_METRE ) );
	image.setDotsPerMeterY( qRound( m_Painter.device()->logicalDpiY() * INCHES_PER_METRE ) );
	image.fill( 0 );
	return image;
}
