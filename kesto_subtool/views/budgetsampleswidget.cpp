#include "views/budgetsampleswidget.h"

CQBudgetSamplesWidget::CQBudgetSamplesWidget( IBudgetViewOwner &owner, QWidget *pParent )
	: QWidget( pParent ), m_Owner( owner )
{
}

QSize CQBudgetSamplesWidget::sizeHint() const
{
	const float flScale = m_Owner.GetViewStyle().m_flUIScale;
	return QSize( static_cast<int>( flScale * 1200 ), static_cast<int>( flScale * 550 ) );
}

void CQBudgetSamplesWidget::SaveSettings( KeyValues & ) const {}
