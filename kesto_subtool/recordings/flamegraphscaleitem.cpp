#include "recordings/flamegraphscaleitem.h"

#include <QGraphicsSceneHoverEvent>
#include <QGraphicsSceneMouseEvent>
#include <QPainter>
#include <QStyleOptionGraphicsItem>
#include <algorithm>
#include <utility>

#include "recordings/flamegraphwidget.h"
#include "recordings/flamescalelayout.h"

static const QColor BAND_COLOUR( 210, 210, 210, 255 );

CQFlamegraphScaleItem::CQFlamegraphScaleItem( CQFlamegraphWidget &widget )
	: m_Widget( widget )
{
	setAcceptHoverEvents( true );
	setFlag( ItemUsesExtendedStyleOption ); // the exposed rectangle
}

void CQFlamegraphScaleItem::SetFrameTime( int32_t nTime )
{
	prepareGeometryChange();
	m_Scale.SetFrameTime( nTime );
}

void CQFlamegraphScaleItem::SetDefault()
{
	prepareGeometryChange();
	m_Scale.SetDefault();
}

void CQFlamegraphScaleItem::Reset()
{
	prepareGeometryChange();
	m_Scale.Reset();
}

QRectF CQFlamegraphScaleItem::boundingRect() const
{
	return FlameScaleRect( m_Scale, m_Widget.GetMap() );
}

static QFont SizedFont( const QFont &usual, double flSize )
{
	QFont font = usual;
	if ( usual.pointSizeF() > 0.0 )
		font.setPointSizeF( usual.pointSizeF() * flSize );
	else
		font.setPixelSize( std::max( static_cast<int>( usual.pixelSize() * flSize ), 1 ) );
	return font;
}

static void DrawLabels( QPainter &painter, const std::vector<FlameScaleLabel> &labels )
{
	const QFont usual = painter.font();
	double flSize = 1.0;
	for ( const FlameScaleLabel &label : labels )
	{
		if ( label.m_flFontSize != std::exchange( flSize, label.m_flFontSize ) )
			painter.setFont( SizedFont( usual, flSize ) );
		painter.drawText( label.m_Box, static_cast<int>( label.m_Alignment ), label.m_Text );
	}
	painter.setFont( usual );
}

void CQFlamegraphScaleItem::paint( QPainter *pPainter, const QStyleOptionGraphicsItem *pOption, QWidget * )
{
	// Nothing exposed is how a plain option says that it does not know.
	const QRectF exposed = pOption && !pOption->exposedRect.isEmpty() ? pOption->exposedRect : boundingRect();
	const FlameScaleLayout layout =
		LayoutFlameScale( m_Scale, m_flMarker, m_Widget.GetMap(), static_cast<float>( exposed.left() ),
			static_cast<float>( exposed.right() ), QFontMetricsF( pPainter->font() ) );
	pPainter->setPen( BAND_COLOUR );
	pPainter->setBrush( Qt::NoBrush );
	for ( const QRectF &rect : layout.m_Outlines )
		pPainter->drawRect( rect );
	pPainter->setPen( Qt::NoPen );
	pPainter->setBrush( BAND_COLOUR );
	for ( const QRectF &rect : layout.m_Fills )
		pPainter->drawRect( rect );
	pPainter->setPen( Qt::gray );
	DrawLabels( *pPainter, layout.m_OpenLabels );
	pPainter->setPen( Qt::darkGray );
	if ( layout.m_Marker )
		pPainter->drawLine( *layout.m_Marker );
	DrawLabels( *pPainter, layout.m_MarkerLabels );
	DrawLabels( *pPainter, layout.m_FilledLabels );
}

void CQFlamegraphScaleItem::MoveMarker( const QPointF &ptScene )
{
	m_flMarker = m_Widget.GetMap().TimeAt( static_cast<float>( ptScene.x() ) );
	update();
}

void CQFlamegraphScaleItem::hoverMoveEvent( QGraphicsSceneHoverEvent *pEvent )
{
	MoveMarker( pEvent->scenePos() );
}

void CQFlamegraphScaleItem::mousePressEvent( QGraphicsSceneMouseEvent *pEvent )
{
	if ( pEvent->buttons() & Qt::LeftButton )
		MoveMarker( pEvent->scenePos() );
}

void CQFlamegraphScaleItem::mouseMoveEvent( QGraphicsSceneMouseEvent *pEvent )
{
	if ( pEvent->buttons() & Qt::LeftButton )
		MoveMarker( pEvent->scenePos() );
}
