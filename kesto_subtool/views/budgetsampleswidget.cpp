#include "views/budgetsampleswidget.h"

#include <QHBoxLayout>
#include <QScrollBar>
#include <QSplitter>
#include <QWheelEvent>

#include "keel0/keyvalues.h"
#include "views/budgetbarswidget.h"
#include "views/budgetnameswidget.h"
#include "views/framedpanel.h"

CQBudgetSamplesWidget::CQBudgetSamplesWidget( IBudgetViewOwner &owner, QWidget *pParent )
	: QWidget( pParent )
	, m_Owner( owner )
	, m_pLayout( new QHBoxLayout( this ) )
	, m_pNames( new CQBudgetNamesWidget( owner, *this ) )
	, m_pBars( new CQBudgetBarsWidget( owner, *this ) )
	, m_pSplitter( new QSplitter( Qt::Horizontal, this ) )
{
	m_pLayout->setContentsMargins( 0, 0, 0, 0 );
	m_pNames->setMinimumSize( 100, 100 );

	m_pSplitter->addWidget( new CQFramedPanel( m_pNames ) );
	m_pSplitter->addWidget( new CQFramedPanel( m_pBars ) );
	m_pSplitter->setHandleWidth( 4 );
	m_pSplitter->setChildrenCollapsible( false );
	const float flScale = owner.GetViewStyle().m_flUIScale;
	m_pSplitter->setSizes( { static_cast<int>( flScale * 200 ), static_cast<int>( flScale * 800 ) } );
	m_pLayout->addWidget( m_pSplitter );
}

QSize CQBudgetSamplesWidget::sizeHint() const
{
	const float flScale = m_Owner.GetViewStyle().m_flUIScale;
	return QSize( static_cast<int>( flScale * 1200 ), static_cast<int>( flScale * 550 ) );
}

void CQBudgetSamplesWidget::SaveSettings( KeyValues &settings ) const
{
	settings.SetInt( "samples_scale", m_pBars->ZoomStep() );
}

int CQBudgetSamplesWidget::FirstRow() const
{
	return m_pScrollBar->isHidden() ? 0 : m_pScrollBar->value();
}

void CQBudgetSamplesWidget::wheelEvent( QWheelEvent *pEvent )
{
	const int nChange = pEvent->angleDelta().y() >= 1 ? 1 : -1;
	if ( m_pBars->SetZoomStep( m_pBars->ZoomStep() + nChange ) )
		update();
}
