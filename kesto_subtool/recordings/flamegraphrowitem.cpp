#include "recordings/flamegraphrowitem.h"

#include <QGraphicsSceneContextMenuEvent>
#include <QPainter>

#include "recordings/flamegraphwidget.h"
#include "recordings/kestotexts.h"
#include "text/showntext.h"

CQFlamegraphRowItem::CQFlamegraphRowItem( CQFlamegraphWidget &widget, int32_t nNode, const QColor &colour )
	: m_Widget( widget )
	, m_nNode( nNode )
	, m_Colour( colour )
{
	setFlag( ItemIsSelectable );
}

void CQFlamegraphRowItem::SetBar( const FlameBar &bar, int32_t nDepth )
{
	prepareGeometryChange();
	m_Bar = bar;
	m_nDepth = nDepth;
	if ( toolTip().isEmpty() )
		setToolTip( ToolTipText( m_Widget.GetNodeText( m_nNode ) ) );
}

QRectF CQFlamegraphRowItem::boundingRect() const
{
	const FlameRect rect = FlameBarRect( m_Bar, m_nDepth, m_Widget.GetMap() );
	return QRectF( rect.m_flX, rect.m_flY, rect.m_flWidth, rect.m_flHeight );
}

void CQFlamegraphRowItem::paint( QPainter *pPainter, const QStyleOptionGraphicsItem *, QWidget * )
{
	const QRectF rect = boundingRect();
	pPainter->setPen( isSelected() ? Qt::cyan : Qt::darkYellow );
	pPainter->setBrush( m_Colour );
	pPainter->drawRoundedRect( rect, 2.0, 2.0 );
	if ( rect.width() <= 4.0 )
		return;
	pPainter->setPen( QColor( 30, 30, 40, 255 ) );
	pPainter->drawText( rect.adjusted( 1, 1, -2, -2 ), Qt::AlignCenter | Qt::TextWordWrap,
		ShownText( m_Widget.GetNodeText( m_nNode ) ) );
}

void CQFlamegraphRowItem::contextMenuEvent( QGraphicsSceneContextMenuEvent *pEvent )
{
	// A menu runs events: this item may be gone when the signal comes back.
	pEvent->accept();
	m_Widget.ReportContextMenu( m_nNode, pEvent->screenPos() );
}

QVariant CQFlamegraphRowItem::itemChange( GraphicsItemChange change, const QVariant &value )
{
	if ( change == ItemSelectedHasChanged )
		m_Widget.ReportSelection( m_nNode, isSelected() );
	return QGraphicsItem::itemChange( change, value );
}
