// One bar of a flame graph.
#pragma once

#include <QColor>
#include <QGraphicsItem>

#include "recordings/flamelayout.h"

class CQFlamegraphWidget;

// Without extent until it is laid out. Deleted by its widget, which outlives it.
class CQFlamegraphRowItem final : public QGraphicsItem
{
public:
	CQFlamegraphRowItem( CQFlamegraphWidget &widget, int32_t nNode, const QColor &colour );

	int32_t GetNode() const { return m_nNode; }
	const FlameBar &GetBar() const { return m_Bar; }
	const QColor &GetColour() const { return m_Colour; }
	void SetBar( const FlameBar &bar, int32_t nDepth );
	void NotifyScaleChange() { prepareGeometryChange(); } // before the widget's map changes

	QRectF boundingRect() const override;
	void paint( QPainter *pPainter, const QStyleOptionGraphicsItem *pOption, QWidget *pWidget ) override;

protected:
	void contextMenuEvent( QGraphicsSceneContextMenuEvent *pEvent ) override;
	QVariant itemChange( GraphicsItemChange change, const QVariant &value ) override;

private:
	CQFlamegraphWidget &m_Widget;
	int32_t m_nNode;
	QColor m_Colour;
	FlameBar m_Bar;
	int32_t m_nDepth = 0;
};
