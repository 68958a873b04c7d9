#include "recordings/kestoplayerwidget.h"

#include <QLabel>
#include <QVBoxLayout>

CQKestoPlayerWidget::CQKestoPlayerWidget( QWidget *pParent )
	: QWidget( pParent )
{
	// The palette's colours, so that it reads on dark and on light.
	auto *pText = new QLabel( tr( "The player will show a .kesto recording here, frame by frame: a tree of its scopes "
								  "and a flame graph.\n\nRecordings cannot be opened yet." ),
		this );
	pText->setAlignment( Qt::AlignCenter );
	pText->setWordWrap( true );
	auto *pLayout = new QVBoxLayout( this );
	pLayout->addWidget( pText );
}
