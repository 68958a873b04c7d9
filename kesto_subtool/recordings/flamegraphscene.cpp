#include "recordings/flamegraphscene.h"

#include <QGraphicsSceneMouseEvent>
#include <QGraphicsView>
#include <QScrollBar>

CQFlamegraphGraphicsScene::CQFlamegraphGraphicsScene( QGraphicsView &view )
	: QGraphicsScene( &view )
	, m_View( view )
{
	// Every frame moves every item, so an index would be made anew each time.
	setItemIndexMethod( NoIndex );
}

void CQFlamegraphGraphicsScene::mouseMoveEvent( QGraphicsSceneMouseEvent *pEvent )
{
	if ( !( pEvent->buttons() & Qt::MiddleButton ) )
		return;
	const QPoint ptMoved = pEvent->lastScreenPos() - pEvent->screenPos();
	m_View.horizontalScrollBar()->setValue( m_View.horizontalScrollBar()->value() + ptMoved.x() );
	m_View.verticalScrollBar()->setValue( m_View.verticalScrollBar()->value() + ptMoved.y() );
	pEvent->accept();
}
