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

void CQBudgetHistoryBarsWidget::OnSamplesCleared()
{
	m_Strip.Invalidate();
	update();
}

void CQBudgetHistoryBarsWidget::paintEvent( QPaintEvent * )
{
	const HistoryView view = m_History.MakeView( *this, m_nZoomStep );
	HistoryPictureKey key = m_History.MakePictureKey( view );
	if ( m_Owner.GetViewData().m_bFPSUnits )
		key.m_Unit = HistoryAxisUnit::FramesPerSecondOfTime;
	UpdateBackdrop( key );
	UpdateStrip( key, view );

	QPainter painter( this );
	painter.drawPixmap( 0, 0, m_Backdrop.Picture() );
	painter.drawPixmap( 0, 0, m_Strip.Picture() );
	if ( const std::optional<QRect> cursor = HistoryBarsCursor( view ) )
		PaintHistoryCursor( painter, *cursor, m_Owner.GetViewStyle() );
}

void CQBudgetHistoryBarsWidget::UpdateBackdrop( const HistoryPictureKey &key )
{
	if ( !m_Backdrop.Prepare( key ) )
		return;
	const BudgetViewStyle &style = m_Owner.GetViewStyle();
	LayoutHistoryAxis( m_Axis, key.m_Size, m_nZoomStep, key.m_Unit, style.m_nRowHeight );
	QPainter painter( &m_Backdrop.Picture() );
	PaintHistoryAxis( painter, m_Axis, style );
}

void CQBudgetHistoryBarsWidget::UpdateStrip( const HistoryPictureKey &key, const HistoryView &view )
{
	const auto ranges = m_Strip.Prepare( key, view.m_Columns, CHistoryStrip::Reach() );
	QPainter painter( &m_Strip.Picture() );
	for ( const HistoryColumnRange &range : ranges )
	{
		LayoutHistoryBars( m_Bars, m_Owner.GetViewData(), view, range );
		PaintHistoryBars( painter, m_Bars );
	}
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
