#include "views/historypainter.h"

#include <QLinearGradient>
#include <QPainter>

static void DrawLines( QPainter &painter, const std::vector<QLine> &lines )
{
	painter.drawLines( lines.data(), static_cast<int>( lines.size() ) );
}

void PaintHistoryAxis( QPainter &painter, const HistoryAxisLayout &layout, const BudgetViewStyle &style )
{
	painter.setFont( style.m_RowFont );
	painter.setPen( style.m_Colours.m_Grid );
	DrawLines( painter, layout.m_Grid );
	painter.setPen( QPen( style.m_Colours.m_SubGrid, 1, Qt::DashDotLine ) );
	DrawLines( painter, layout.m_SubGrid );
	painter.setPen( style.m_Colours.m_Text );
	for ( const HistoryAxisLayout::Label &label : layout.m_Labels )
		painter.drawText( label.m_Box, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, label.m_Text );
}

void PaintHistoryBars( QPainter &painter, const HistoryBarsLayout &layout )
{
	painter.setPen( Qt::NoPen );
	for ( const HistoryBarsLayout::Budget &budget : layout.m_Budgets )
	{
		painter.setBrush( budget.m_Colour );
		painter.drawRects( layout.m_Bars.data() + budget.m_nFirst, static_cast<int>( budget.m_nCount ) );
	}
}

static void PaintMarker( QPainter &painter, const FPSMarkerLayout &marker )
{
	const QColor colour( marker.m_Colour );
	painter.setPen( colour );
	painter.drawLine( marker.m_Line );
	painter.fillRect( marker.m_LeftHandle, colour );
	painter.fillRect( marker.m_RightHandle, colour );
	painter.setPen( Qt::black );
	painter.setBrush( Qt::NoBrush );
	painter.drawRect( marker.m_LeftHandle );
	painter.drawRect( marker.m_RightHandle );
	painter.setPen( colour );
	painter.drawText( marker.m_TextBaseline, marker.m_Text );
}

void PaintFPSMarkers( QPainter &painter, std::span<const FPSMarkerLayout> markers, const BudgetViewStyle &style )
{
	painter.setFont( style.m_CaptionFont );
	for ( const FPSMarkerLayout &marker : markers )
		PaintMarker( painter, marker );
}

static QPen SegmentPen( const FPSCurveLayout::Segment &segment )
{
	// A gradient of one colour looks the same and takes the paint engine far longer.
	if ( segment.IsPlain() )
		return QPen( QColor( segment.m_Newer ), 1 );
	QLinearGradient gradient( segment.m_Line.p1(), segment.m_Line.p2() );
	gradient.setColorAt( 0.0, QColor( segment.m_Older ) );
	gradient.setColorAt( 0.5, QColor( segment.m_Middle ) );
	gradient.setColorAt( 1.0, QColor( segment.m_Newer ) );
	return QPen( QBrush( gradient ), 1 );
}

void PaintFPSCurve( QPainter &painter, const FPSCurveLayout &layout )
{
	for ( const FPSCurveLayout::Segment &segment : layout.m_Segments )
	{
		painter.setPen( SegmentPen( segment ) );
		painter.drawLine( segment.m_Line );
	}
	for ( const FPSCurveLayout::Point &point : layout.m_Points )
		painter.fillRect( point.m_Square, QColor( point.m_Colour ) );
}

void PaintHistoryCursor( QPainter &painter, const QRect &frame, const BudgetViewStyle &style )
{
	painter.setPen( QPen( style.m_Colours.m_Cursor, HistoryMeasures().m_nGap, Qt::DotLine ) );
	painter.setBrush( Qt::NoBrush );
	painter.drawRect( frame );
}
