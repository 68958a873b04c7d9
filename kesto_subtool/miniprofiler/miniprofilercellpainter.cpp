#include "miniprofiler/miniprofilercellpainter.h"

#include <QFont>
#include <QPainter>
#include <QStaticText>

namespace
{
// QPainter outlines a rectangle one pixel further right and down than it fills it.
QRect Outline( const QRect &rect )
{
	return rect.adjusted( 0, 0, -1, -1 );
}

void PaintHighlight( QPainter &painter, const MiniProfilerHighlight &highlight )
{
	if ( highlight.m_Outline )
	{
		painter.setPen( *highlight.m_Outline );
		painter.setBrush( QBrush( highlight.m_Fill, highlight.m_Style ) );
		painter.drawRect( Outline( highlight.m_Rect ) );
	}
	else
		painter.fillRect( highlight.m_Rect, QBrush( highlight.m_Fill, highlight.m_Style ) );
}

void PaintBar( QPainter &painter, const MiniProfilerBar &bar, const MiniProfilerPalette &palette )
{
	if ( bar.m_Outline )
	{
		painter.setPen( *bar.m_Outline );
		painter.setBrush( bar.m_Fill );
		painter.drawRect( Outline( bar.m_Rect ) );
	}
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

void PaintText( QPainter &painter, const MiniProfilerTextBox &text )
{
	// At a point: laying the text out in a rectangle would cost several times as much.
	const QFontMetricsF metrics( painter.font() );
	const qreal flWidth = text.m_Alignment & Qt::AlignLeft ? 0.0 : metrics.horizontalAdvance( text.m_Text );
	const QPointF origin = AlignedTextOrigin( text.m_Box, text.m_Alignment, QSizeF( flWidth, metrics.height() ) );
	painter.setPen( text.m_Colour );
	painter.drawText( origin + QPointF( 0, metrics.ascent() ), text.m_Text );
}

void PaintName( QPainter &painter, const MiniProfilerTextBox &box, const QStaticText &name )
{
	painter.setPen( box.m_Colour );
	painter.setClipRect( box.m_Box, Qt::IntersectClip );
	painter.drawStaticText( AlignedTextOrigin( box.m_Box, box.m_Alignment, name.size() ), name );
}

void PaintContent( QPainter &painter, const MiniProfilerCellLayout &layout, const MiniProfilerPalette &palette,
	const QStaticText &name, const QFont &smallFont )
{
	if ( layout.m_Bar )
		PaintBar( painter, *layout.m_Bar, palette );
	if ( layout.m_Sigma )
		PaintSigma( painter, *layout.m_Sigma );
	if ( layout.m_Peak )
		PaintPeak( painter, *layout.m_Peak, palette );
	if ( layout.m_Number )
		PaintText( painter, *layout.m_Number );
	if ( layout.m_SmallText )
	{
		const QFont font = painter.font();
		painter.setFont( smallFont );
		PaintText( painter, *layout.m_SmallText );
		painter.setFont( font );
	}
	if ( layout.m_Name )
		PaintName( painter, *layout.m_Name, name );
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
	painter.setClipRect( cell, Qt::IntersectClip );
	PaintContent( painter, layout, palette, name, smallFont );
	painter.restore();
}
