#include "views/budgethistorywidget.h"

CQBudgetHistoryWidget::CQBudgetHistoryWidget( IBudgetViewOwner &owner, QWidget *pParent )
	: QWidget( pParent ), m_Owner( owner )
{
}

QSize CQBudgetHistoryWidget::sizeHint() const
{
	const float flScale = m_Owner.GetViewStyle().m_flUIScale;
	return QSize( static_cast<int>( flScale * 1200 ), static_cast<int>( flScale * 250 ) );
}

void CQBudgetHistoryWidget::SetCursorMode( bool bOn )
{
	m_bCursorMode = bOn;
	const uint32_t nCount = m_Owner.GetViewData().m_nSampleCount;
	if ( bOn )
		m_nCursor = nCount > 0 ? nCount - 1 : 0;
}

void CQBudgetHistoryWidget::OnSamplesCleared()
{
	m_nCursor = 0;
}

void CQBudgetHistoryWidget::SaveSettings( KeyValues & ) const {}
