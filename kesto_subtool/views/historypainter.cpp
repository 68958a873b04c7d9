#include "views/historypainter.h"

#include <QLinearGradient>
#include <QPainter>

static QPen CursorPen( const BudgetViewStyle &style )
{
	return QPen( style.m_Colours.m_Cursor, HistoryMeasures().m_nGap, Qt::DotLine );
}

static void DrawLines( QPainter &painter, const std::vector<QLine> &lines )
{
	painter.drawLines( lines.data(), static_cast<int>( lines.size() ) );
}

static void PaintAxis( QPainter &painter, const HistoryAxisLayout &axis, const BudgetViewStyle &style )
{
	painter.setFont( style.m_RowFont );
	painter.setPen( style.m_Colours.m_Grid );
	DrawLines( painter, axis.m_Grid );
	painter.setPen( QPen( style.m_Colours.m_SubGrid, 1, Qt::DashDotLine ) );
	DrawLines( painter, axis.m_SubGrid );
	painter.setPen( style.m_Colours.m_Text );
	for ( const HistoryAxisLayout::Label &label : axis.m_Labels )
		painter.drawText( label.m_Box, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, label.m_Text );
}

static void PaintCursor( QPainter &painter, const std::optional<QRect> &cursor, const BudgetViewStyle &style )
{
	if ( !cursor )
		return;
	painter.setPen( CursorPen( style ) );
	painter.setBrush( Qt::NoBrush );
	painter.drawRect( *cursor );
}

void PaintHistoryBars( QPainter &painter, const HistoryBarsLayout &layout, const BudgetViewStyle &style )
{
	PaintAxis( painter, layout.m_Axis, style );
	painter.setPen( Qt::NoPen );
	for ( const HistoryBarsLayout::Budget &budget : layout.m_Budgets )
	{
		painter.setBrush( budget.m_Colour );
		painter.drawRects( layout.m_Bars.data() + budget.m_nFirst, static_cast<int>( budget.m_nCount ) );
	}
	PaintCursor( painter, layout.m_Cursor, style );
}

static void PaintMarkers( QPainter &painter, const FPSGraphLayout &layout, const BudgetViewStyle &style )
{
	painter.setFont( style.m_CaptionFont );
	for ( const FPSGraphLayout::Marker &marker : layout.m_Markers )
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
}

static QPen SegmentPen( const FPSGraphLayout::Segment &segment )
{
	QLinearGradient gradient( segment.m_Line.p1(), segment.m_Line.p2() );
	gradient.setColorAt( 0.0, QColor( segment.m_Older ) );
	gradient.setColorAt( 0.5, QColor( segment.m_Middle ) );
	gradient.setColorAt( 1.0, QColor( segment.m_Newer ) );
	return QPen( QBrush( gradient ), 1 );
}

static void PaintSegments( QPainter &painter, const std::vector<FPSGraphLayout::Segment> &segments )
{
	for ( const FPSGraphLayout::Segment &segment : segments )
	{
		if ( segment.IsPlain() )
			painter.setPen( QColor( segment.m_Newer ) );
		else
			painter.setPen( SegmentPen( segment ) );
		painter.drawLine( segment.m_Line );
	}
}

static void PaintPoints( QPainter &painter, const std::vector<FPSGraphLayout::Point> &points )
{
	for ( const FPSGraphLayout::Point &point : points )
		painter.fillRect( point.m_Square, QColor( point.m_Colour ) );
}

void PaintFPSGraph( QPainter &painter, const FPSGraphLayout &layout, const BudgetViewStyle &style )
{
	PaintAxis( painter, layout.m_Axis, style );
	PaintMarkers( painter, layout, style );
	PaintSegments( painter, layout.m_Segments );
	PaintPoints( painter, layout.m_Points );
	PaintCursor( painter, layout.m_Cursor, style );
}
