#include "miniprofiler/miniprofilercellpainter.h"

#include <QFont>
#include <QPainter>
#include <QStaticText>
#include <algorithm>
#include <cmath>

namespace
{
// Four fills: the raster engine draws an outline pixel by pixel, which took a fifth of all painting.
void PaintFrame( QPainter &painter, const QRect &rect, const QColor &outline, const QBrush &fill )
{
	const QRect inner = rect.adjusted( 1, 1, -1, -1 );
	if ( !inner.isEmpty() )
		painter.fillRect( inner, fill );
	painter.fillRect( QRect( rect.left(), rect.top(), rect.width(), 1 ), outline );
	painter.fillRect( QRect( rect.left(), rect.bottom(), rect.width(), 1 ), outline );
	painter.fillRect( QRect( rect.left(), inner.top(), 1, inner.height() ), outline );
	painter.fillRect( QRect( rect.right(), inner.top(), 1, inner.height() ), outline );
}

void PaintHighlight( QPainter &painter, const MiniProfilerHighlight &highlight )
{
	const QBrush fill( highlight.m_Fill, highlight.m_Style );
	if ( highlight.m_Outline )
		PaintFrame( painter, highlight.m_Rect, *highlight.m_Outline, fill );
	else
		painter.fillRect( highlight.m_Rect, fill );
}

void PaintBar( QPainter &painter, const MiniProfilerBar &bar, const MiniProfilerPalette &palette )
{
	if ( bar.m_Outline )
		PaintFrame( painter, bar.m_Rect, *bar.m_Outline, bar.m_Fill );
	else
		painter.fillRect( bar.m_Rect, bar.m_Fill );
	if ( bar.m_Band )
		painter.fillRect( *bar.m_Band, palette.m_Band );
}

void PaintSigma( QPainter &painter, const MiniProfilerSigma &sigma )
{
	if ( sigma.m_bThick )
		painter.setPen( QPen( sigma.m_Colour, 3, Qt::SolidLine, Qt::RoundCap, Qt::BevelJoin ) );
	else
		painter.setPen( sigma.m_Colour );
	painter.drawLines( sigma.m_Lines.data(), static_cast<int>( sigma.m_Lines.size() ) );
}

void PaintPeak( QPainter &painter, const std::array<QPoint, 3> &peak, const MiniProfilerPalette &palette )
{
	painter.setPen( palette.m_PeakOutline );
	painter.setBrush( palette.m_PeakFill );
	painter.drawPolygon( peak.data(), static_cast<int>( peak.size() ) );
}

// What is sure to lie inside is drawn without a clip: with one, the raster engine makes a table of all lines of the
// window as soon as a glyph's margin touches it, for every cell anew.
template <typename Paint>
void PaintInside( QPainter &painter, const QRect &cell, bool bFits, const Paint &paint )
{
	if ( bFits )
	{
		paint();
		return;
	}
	painter.save();
	painter.setClipRect( cell, Qt::IntersectClip );
	paint();
	painter.restore();
}

void PaintGraph(
	QPainter &painter, const QRect &cell, const MiniProfilerCellLayout &layout, const MiniProfilerPalette &palette )
{
	PaintInside( painter, cell, cell.contains( layout.GraphExtent() ),
		[&]
		{
			if ( layout.m_Bar )
				PaintBar( painter, *layout.m_Bar, palette );
			if ( layout.m_Sigma )
				PaintSigma( painter, *layout.m_Sigma );
			if ( layout.m_Peak )
				PaintPeak( painter, *layout.m_Peak, palette );
		} );
}

bool Fits( const QSizeF &size, const QRect &box )
{
	return size.width() <= box.width() && std::floor( size.height() ) <= box.height();
}

// At a point: laying the text out in a rectangle would cost several times as much.
void PaintText(
	QPainter &painter, const QRect &cell, const MiniProfilerTextBox &text, const QFontMetricsF &metrics, qreal flWidth )
{
	const QSizeF size( flWidth, metrics.height() );
	const QPointF origin = AlignedTextOrigin( text.m_Box, text.m_Alignment, size );
	painter.setPen( text.m_Colour );
	PaintInside( painter, cell, Fits( size, text.m_Box ),
		[&] { painter.drawText( origin + QPointF( 0, metrics.ascent() ), text.m_Text ); } );
}

// At the left a width is enough that the number does not exceed, which its widest characters tell without a look at it.
void PaintNumber( QPainter &painter, const QRect &cell, const MiniProfilerTextBox &number )
{
	const QFontMetricsF metrics( painter.font() );
	const auto WidthOfAny = [&]( int nCharacters )
	{ return nCharacters * std::max( metrics.horizontalAdvance( '~' ), metrics.horizontalAdvance( '0' ) ); };
	const bool bLeft = number.m_Alignment & Qt::AlignLeft;
	PaintText( painter, cell, number, metrics,
		bLeft ? WidthOfAny( number.m_Text.size() ) : metrics.horizontalAdvance( number.m_Text ) );
}

void PaintSmallText( QPainter &painter, const QRect &cell, const MiniProfilerTextBox &text, const QFont &smallFont )
{
	const QFont font = painter.font();
	painter.setFont( smallFont );
	const QFontMetricsF metrics( painter.font() );
	PaintText( painter, cell, text, metrics, metrics.horizontalAdvance( text.m_Text ) );
	painter.setFont( font );
}

void PaintName( QPainter &painter, const MiniProfilerTextBox &box, const QStaticText &name )
{
	const QPointF origin = AlignedTextOrigin( box.m_Box, box.m_Alignment, name.size() );
	painter.setPen( box.m_Colour );
	PaintInside( painter, box.m_Box, Fits( name.size(), box.m_Box ), [&] { painter.drawStaticText( origin, name ); } );
}
} // namespace

void PaintMiniProfilerCell( QPainter &painter, const QRect &cell, const MiniProfilerCellLayout &layout,
	const MiniProfilerPalette &palette, const QStaticText &name, const QFont &smallFont )
{
	painter.save();
	if ( layout.m_Background )
		painter.fillRect( cell, *layout.m_Background );
	if ( layout.m_Highlight )
		PaintHighlight( painter, *layout.m_Highlight );
	PaintGraph( painter, cell, layout, palette );
	if ( layout.m_Number )
		PaintNumber( painter, cell, *layout.m_Number );
	if ( layout.m_SmallText )
		PaintSmallText( painter, cell, *layout.m_SmallText, smallFont );
	if ( layout.m_Name )
		PaintName( painter, *layout.m_Name, name );
	painter.restore();
}
