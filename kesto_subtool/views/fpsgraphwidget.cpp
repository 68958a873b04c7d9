#include "views/fpsgraphwidget.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <QWheelEvent>

#include "keel0/keyvalues.h"
#include "views/budgethistorywidget.h"
#include "views/historypainter.h"

static constexpr const char *ZOOM_KEY = "fps_graph_scale";

CQFPSGraphWidget::CQFPSGraphWidget( IBudgetViewOwner &owner, CQBudgetHistoryWidget &history )
	: QWidget( &history )
	, m_Owner( owner )
	, m_History( history )
	, m_Markers( FPSMarkers::Load( owner.GetViewSettings() ) )
	, m_nZoomStep( LoadHistoryZoom( owner.GetViewSettings(), ZOOM_KEY ) )
{
	setMinimumSize( 100, 100 );
	setFocusPolicy( Qt::ClickFocus );
	setFocusProxy( &history );
}

void CQFPSGraphWidget::SaveSettings( KeyValues &settings ) const
{
	settings.SetInt( ZOOM_KEY, m_nZoomStep );
	m_Markers.Save( settings );
}

bool CQFPSGraphWidget::event( QEvent *pEvent )
{
	if ( pEvent->type() != QEvent::ToolTip )
		return QWidget::event( pEvent );
	const auto *pHelpEvent = static_cast<QHelpEvent *>( pEvent );
	const FPSMarkerHandle handle = HandleAt( pHelpEvent->pos() );
	if ( handle != FPSMarkerHandle::None )
		ShowMarkerToolTip( handle, pHelpEvent->globalPos() );
	else
		m_History.ShowToolTip( *this, *pHelpEvent );
	return true;
}

void CQFPSGraphWidget::ShowMarkerToolTip( FPSMarkerHandle handle, QPoint ptGlobal )
{
	const QString text = handle == FPSMarkerHandle::Upper
							 ? tr( "Upper threshold: at %1 fps and above the curve is green.\nDrag to change it." )
								   .arg( static_cast<int>( m_Markers.m_flUpper ) )
							 : tr( "Lower threshold: at %1 fps and below the curve is red.\nDrag to change it." )
								   .arg( static_cast<int>( m_Markers.m_flLower ) );
	QToolTip::showText( ptGlobal, text, this );
}

void CQFPSGraphWidget::paintEvent( QPaintEvent * )
{
	const BudgetViewStyle &style = m_Owner.GetViewStyle();
	LayoutFPSGraph(
		m_Layout, m_Owner.GetViewData(), m_History.MakeView( *this, m_nZoomStep ), m_Markers, style.m_nRowHeight );
	QPainter painter( this );
	PaintFPSGraph( painter, m_Layout, style );
}

void CQFPSGraphWidget::resizeEvent( QResizeEvent *pEvent )
{
	QWidget::resizeEvent( pEvent );
	m_History.OnViewResized();
}

void CQFPSGraphWidget::wheelEvent( QWheelEvent *pEvent )
{
	pEvent->accept();
	const int nZoomStep = HistoryZoomAfterWheel( m_nZoomStep, pEvent->angleDelta().y() );
	if ( nZoomStep == m_nZoomStep )
		return;
	m_nZoomStep = nZoomStep;
	update();
}

FPSMarkerHandle CQFPSGraphWidget::HandleAt( QPoint ptMouse ) const
{
	if ( !m_Owner.GetViewData().m_bShowThresholds )
		return FPSMarkerHandle::None;
	return FPSMarkerHandleAt( m_Markers, ptMouse, contentsRect().size(), m_nZoomStep );
}

void CQFPSGraphWidget::mousePressEvent( QMouseEvent *pEvent )
{
	if ( pEvent->button() != Qt::LeftButton )
		return;
	m_DraggedMarker = HandleAt( pEvent->pos() );
	if ( IsDraggingMarker() )
		setCursor( Qt::SizeVerCursor );
	else
		m_History.PressColumn( pEvent->x() );
}

void CQFPSGraphWidget::mouseMoveEvent( QMouseEvent *pEvent )
{
	if ( IsDraggingMarker() )
		DragMarker( pEvent->y() );
	else
		m_History.DragColumn( pEvent->x() );
}

void CQFPSGraphWidget::DragMarker( int y )
{
	if ( !m_Owner.GetViewData().m_bShowThresholds )
		return;
	const float flRate = FPSMarkerRateAt( y, contentsRect().height(), m_nZoomStep );
	const bool bMoved =
		m_DraggedMarker == FPSMarkerHandle::Upper ? m_Markers.DragUpper( flRate ) : m_Markers.DragLower( flRate );
	if ( bMoved )
		update();
}

void CQFPSGraphWidget::mouseReleaseEvent( QMouseEvent *pEvent )
{
	if ( pEvent->button() != Qt::LeftButton )
		return;
	if ( IsDraggingMarker() )
	{
		m_DraggedMarker = FPSMarkerHandle::None;
		unsetCursor();
	}
	m_History.ReleaseColumn();
}
