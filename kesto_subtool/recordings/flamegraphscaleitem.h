// The scale below a flame graph: milliseconds, frame-rate budgets, and a marker where the mouse was pressed.
#pragma once

#include <QGraphicsItem>

#include "recordings/flamescale.h"

class CQFlamegraphWidget;

class CQFlamegraphScaleItem final : public QGraphicsItem
{
public:
	explicit CQFlamegraphScaleItem( CQFlamegraphWidget &widget );

	void SetFrameTime( int32_t nTime ); // microseconds
	void SetDefault();
	void Reset();
	void NotifyScaleChange() { prepareGeometryChange(); } // before the widget's map changes

	const FlameScale &GetScale() const { return m_Scale; }
	float GetMarker() const { return m_flMarker; } // microseconds; 0 = none

	QRectF boundingRect() const override;
	void paint( QPainter *pPainter, const QStyleOptionGraphicsItem *pOption, QWidget *pWidget ) override;

protected:
	void hoverMoveEvent( QGraphicsSceneHoverEvent *pEvent ) override;
	void mousePressEvent( QGraphicsSceneMouseEvent *pEvent ) override;
	void mouseMoveEvent( QGraphicsSceneMouseEvent *pEvent ) override;

private:
	void MoveMarker( const QPointF &ptScene );

	CQFlamegraphWidget &m_Widget;
	FlameScale m_Scale;
	float m_flMarker = 0.0f;
};
