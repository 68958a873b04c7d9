// The scene of a flame graph, which pans its view.
#pragma once

#include <QGraphicsScene>

class QGraphicsView;

class CQFlamegraphGraphicsScene final : public QGraphicsScene
{
	Q_OBJECT

public:
	explicit CQFlamegraphGraphicsScene( QGraphicsView &view ); // owned by the view

protected:
	// Pans while the middle button is held. Deliberately never hands a move on, so that items get neither moves nor
	// hover events from the mouse; selection and the marker follow presses alone.
	void mouseMoveEvent( QGraphicsSceneMouseEvent *pEvent ) override;

private:
	QGraphicsView &m_View;
};
