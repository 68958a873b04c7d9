#include "views/budgetnameswidget.h"

#include <QMouseEvent>

#include "keel0/platform.h"
#include "views/budgetnamespainter.h"
#include "views/budgetsampleswidget.h"
#include "views/budgetstatistics.h"
#include "views/viewpainter.h"

CQBudgetNamesWidget::CQBudgetNamesWidget( IBudgetViewOwner &owner, CQBudgetSamplesWidget &strip )
	: QWidget( &strip )
	, m_Owner( owner )
	, m_Strip( strip )
{
	setFocusPolicy( Qt::ClickFocus ); // for the keys of the window
	setToolTip( tr( "Double-click a budget to copy its statistics" ) );
}

void CQBudgetNamesWidget::paintEvent( QPaintEvent * )
{
	const BudgetViewData samples = m_Owner.GetViewData();
	QPainter painter( this );
	CViewPainter viewPainter( painter, m_Stamps );
	PaintBudgetNames( viewPainter, LayoutBudgetNames( samples, Rows( samples ), width() ), m_Owner.GetViewStyle() );
}

void CQBudgetNamesWidget::mouseDoubleClickEvent( QMouseEvent *pEvent )
{
	const BudgetViewData samples = m_Owner.GetViewData();
	const int nBudget = Rows( samples ).BudgetAt( pEvent->y() );
	if ( pEvent->button() == Qt::LeftButton && nBudget >= 0 )
		Plat_SetClipboardText( BudgetSummaryText( samples, nBudget ).toUtf8().constData() );
	else
		pEvent->ignore();
}

BudgetRows CQBudgetNamesWidget::Rows( const BudgetViewData &samples ) const
{
	const BudgetViewStyle &style = m_Owner.GetViewStyle();
	return BudgetRows::Make(
		height(), style.m_nRowHeight, style.m_nRowInset, m_Strip.FirstRow(), samples.m_Categories.size() );
}
