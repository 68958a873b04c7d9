#include "recordings/kestoplayerwidget.h"

CQKestoPlayerWidget::CQKestoPlayerWidget( QWidget *pParent ) : QWidget( pParent ) {}
