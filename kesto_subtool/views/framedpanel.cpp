#include "views/framedpanel.h"

#include <QPainter>
#include <QVBoxLayout>

CQFramedPanel::CQFramedPanel( QWidget *pChild, QWidget *pParent )
	: QFrame( pParent )
{
	setFrameShape( QFrame::Box );
	setFrameShadow( QFrame::Sunken );
	setLineWidth( 1 );
	setMidLineWidth( 2 );

	auto *pLayout = new QVBoxLayout( this );
	pLayout->setContentsMargins( 4, 4, 4, 4 );
	pLayout->addWidget( pChild );
}

// Two sides of a ring that is one pixel thick.
static void FillTopLeft( QPainter &painter, const QRect &ring, const QColor &colour )
{
	painter.fillRect( ring.left(), ring.top(), ring.width(), 1, colour );
	painter.fillRect( ring.left(), ring.top(), 1, ring.height(), colour );
}

static void FillBottomRight( QPainter &painter, const QRect &ring, const QColor &colour )
{
	painter.fillRect( ring.left(), ring.bottom(), ring.width(), 1, colour );
	painter.fillRect( ring.right(), ring.top(), 1, ring.height(), colour );
}

void CQFramedPanel::paintEvent( QPaintEvent * )
{
	const QColor dark = palette().dark().color();
	const QColor light = palette().light().color();
	const QColor middle = palette().mid().color();
	const QRect outer = rect();
	const QRect inner = outer.adjusted( 3, 3, -3, -3 );
	QPainter painter( this );
	FillBottomRight( painter, outer, light );
	FillTopLeft( painter, outer, dark );
	for ( const int nInset : { 1, 2 } )
	{
		const QRect ring = outer.adjusted( nInset, nInset, -nInset, -nInset );
		FillTopLeft( painter, ring, middle );
		FillBottomRight( painter, ring, middle );
	}
	FillBottomRight( painter, inner, dark );
	FillTopLeft( painter, inner, light );
}
