#include "miniprofiler/miniprofilerwidget.h"

CQMiniProfilerWidget::CQMiniProfilerWidget( QWidget *pParent ) : QWidget( pParent ) {}
