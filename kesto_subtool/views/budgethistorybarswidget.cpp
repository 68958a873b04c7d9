#include "views/budgethistorybarswidget.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include "keel0/keyvalues.h"
#include "views/budgethistorywidget.h"
#include "views/historypainter.h"

static constexpr const char *ZOOM_KEY = "history_scale";

CQBudgetHistoryBarsWidget::CQBudgetHistoryBarsWidget( IBudgetViewOwner &owner, CQBudgetHistoryWidget &history )
	: QWidget( &history )
	, m_Owner( owner )
	, m_History( history )
	, m_nZoomStep( LoadHistoryZoom( owner.GetViewSettings(), ZOOM_KEY ) )
{
	setMinimumSize( 100, 100 );
	setFocusPolicy( Qt::ClickFocus );
	setFocusProxy( &history );
}

void CQBudgetHistoryBarsWidget::SaveSettings( KeyValues &settings ) const
{
	settings.SetInt( ZOOM_KEY, m_nZoomStep );
}

bool CQBudgetHistoryBarsWidget::event( QEvent *pEvent )
{
	if ( pEvent->type() != QEvent::ToolTip )
		return QWidget::event( pEvent );
	m_History.ShowToolTip( *this, *static_cast<QHelpEvent *>( pEvent ) );
	return true;
}

void CQBudgetHistoryBarsWidget::paintEvent( QPaintEvent * )
{
	const BudgetViewStyle &style = m_Owner.GetViewStyle();
	LayoutHistoryBars( m_Layout, m_Owner.GetViewData(), m_History.MakeView( *this, m_nZoomStep ), style.m_nRowHeight );
	QPainter painter( this );
	PaintHistoryBars( painter, m_Layout, style );
}

void CQBudgetHistoryBarsWidget::resizeEvent( QResizeEvent *pEvent )
{
	QWidget::resizeEvent( pEvent );
	m_History.OnViewResized();
}

void CQBudgetHistoryBarsWidget::wheelEvent( QWheelEvent *pEvent )
{
	pEvent->accept();
	const int nZoomStep = HistoryZoomAfterWheel( m_nZoomStep, pEvent->angleDelta().y() );
	if ( nZoomStep == m_nZoomStep )
		return;
	m_nZoomStep = nZoomStep;
	update();
}

void CQBudgetHistoryBarsWidget::mousePressEvent( QMouseEvent *pEvent )
{
	if ( pEvent->button() == Qt::LeftButton )
		m_History.PressColumn( pEvent->x() );
}

void CQBudgetHistoryBarsWidget::mouseMoveEvent( QMouseEvent *pEvent )
{
	m_History.DragColumn( pEvent->x() );
}

void CQBudgetHistoryBarsWidget::mouseReleaseEvent( QMouseEvent *pEvent )
{
	if ( pEvent->button() == Qt::LeftButton )
		m_History.ReleaseColumn();
}
