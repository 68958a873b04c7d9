#include "views/historyplotwidget.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include "keel0/keyvalues.h"
#include "views/budgethistorywidget.h"
#include "views/historypainter.h"

CQHistoryPlotWidget::CQHistoryPlotWidget(
	IBudgetViewOwner &owner, CQBudgetHistoryWidget &history, const char *pZoomKey )
	: QWidget( &history )
	, m_Owner( owner )
	, m_History( history )
	, m_pZoomKey( pZoomKey )
	, m_nZoomStep( LoadHistoryZoom( owner.GetViewSettings(), pZoomKey ) )
{
	setMinimumSize( 100, 100 );
	setFocusPolicy( Qt::ClickFocus );
	setFocusProxy( &history );
}

void CQHistoryPlotWidget::SaveSettings( KeyValues &settings ) const
{
	settings.SetInt( m_pZoomKey, m_nZoomStep );
}

void CQHistoryPlotWidget::OnSamplesCleared()
{
	m_Strip.Invalidate();
	update();
}

void CQHistoryPlotWidget::PaintBehindColumns( QPainter &, const HistoryPictureKey & ) {}

bool CQHistoryPlotWidget::event( QEvent *pEvent )
{
	if ( pEvent->type() != QEvent::ToolTip )
		return QWidget::event( pEvent );
	m_History.ShowToolTip( *this, *static_cast<QHelpEvent *>( pEvent ) );
	return true;
}

void CQHistoryPlotWidget::paintEvent( QPaintEvent * )
{
	const HistoryView view = m_History.MakeView( *this, m_nZoomStep );
	HistoryPictureKey key = m_History.MakePictureKey( view );
	CompleteKey( key );
	UpdateBackdrop( key );
	UpdateStrip( key, view );

	QPainter painter( this );
	painter.drawPixmap( 0, 0, m_Backdrop.Picture() );
	painter.drawPixmap( 0, 0, m_Strip.Picture() );
	if ( const std::optional<QRect> cursor = CursorRect( view ) )
		PaintHistoryCursor( painter, *cursor, m_Owner.GetViewStyle() );
}

void CQHistoryPlotWidget::UpdateBackdrop( const HistoryPictureKey &key )
{
	if ( !m_Backdrop.Prepare( key ) )
		return;
	const BudgetViewStyle &style = m_Owner.GetViewStyle();
	LayoutHistoryAxis( m_Axis, key.m_Size, m_nZoomStep, key.m_Unit, style.m_nRowHeight );
	QPainter painter( &m_Backdrop.Picture() );
	PaintHistoryAxis( painter, m_Axis, style );
	PaintBehindColumns( painter, key );
}

void CQHistoryPlotWidget::UpdateStrip( const HistoryPictureKey &key, const HistoryView &view )
{
	const auto ranges = m_Strip.Prepare( key, view.m_Columns, ColumnReach() );
	QPainter painter( &m_Strip.Picture() );
	for ( const HistoryColumnRange &range : ranges )
		PaintColumns( painter, view, range );
}

void CQHistoryPlotWidget::resizeEvent( QResizeEvent *pEvent )
{
	QWidget::resizeEvent( pEvent );
	m_History.OnViewResized();
}

void CQHistoryPlotWidget::wheelEvent( QWheelEvent *pEvent )
{
	pEvent->accept();
	const int nZoomStep = HistoryZoomAfterWheel( m_nZoomStep, pEvent->angleDelta().y() );
	if ( nZoomStep == m_nZoomStep )
		return;
	m_nZoomStep = nZoomStep;
	update();
}

void CQHistoryPlotWidget::mousePressEvent( QMouseEvent *pEvent )
{
	if ( pEvent->button() == Qt::LeftButton )
		m_History.PressColumn( pEvent->x() );
}

void CQHistoryPlotWidget::mouseMoveEvent( QMouseEvent *pEvent )
{
	m_History.DragColumn( pEvent->x() );
}

void CQHistoryPlotWidget::mouseReleaseEvent( QMouseEvent *pEvent )
{
	if ( pEvent->button() == Qt::LeftButton )
		m_History.ReleaseColumn();
}
