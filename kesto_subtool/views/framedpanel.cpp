#include "views/framedpanel.h"

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
