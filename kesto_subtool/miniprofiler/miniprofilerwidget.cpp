#include "miniprofiler/miniprofilerwidget.h"

#include <QLabel>
#include <QVBoxLayout>

CQMiniProfilerWidget::CQMiniProfilerWidget( QWidget *pParent )
	: QWidget( pParent )
{
	// The palette's colours, so that it reads on dark and on light.
	auto *pText = new QLabel( tr( "The mini-profiler will list the engine's scopes here: how often each one was called "
								  "and how long it took, grouped by budget.\n\nNothing is recorded yet." ),
		this );
	pText->setAlignment( Qt::AlignCenter );
	pText->setWordWrap( true );
	auto *pLayout = new QVBoxLayout( this );
	pLayout->addWidget( pText );
}

void CQMiniProfilerWidget::Clear() {}

void CQMiniProfilerWidget::SetBudgetColour( const QString &name, const QColor &colour )
{
	m_BudgetColours.insert( name, colour );
}

QColor CQMiniProfilerWidget::BudgetColour( const QString &name ) const
{
	return m_BudgetColours.value( name );
}

void CQMiniProfilerWidget::SetPaused( bool bPaused )
{
	if ( bPaused == m_bPaused )
		return;
	m_bPaused = bPaused;
	emit OnPauseStateChanged( bPaused );
}
