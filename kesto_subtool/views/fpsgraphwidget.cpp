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

void CQFPSGraphWidget::OnSamplesCleared()
{
	m_Strip.Invalidate();
	update();
}

void CQFPSGraphWidget::paintEvent( QPaintEvent * )
{
	const BudgetViewData viewData = m_Owner.GetViewData();
	const HistoryView view = m_History.MakeView( *this, m_nZoomStep );
	HistoryPictureKey key = m_History.MakePictureKey( view );
	key.m_Unit = HistoryAxisUnit::FramesPerSecond;
	key.m_bAverages = viewData.m_bFPSAverages;
	key.m_bThresholds = viewData.m_bShowThresholds;
	key.m_Markers = m_Markers;
	UpdateBackdrop( key );
	UpdateStrip( key, view );

	QPainter painter( this );
	painter.drawPixmap( 0, 0, m_Backdrop.Picture() );
	painter.drawPixmap( 0, 0, m_Strip.Picture() );
	if ( const std::optional<QRect> cursor = FPSGraphCursor( view ) )
		PaintHistoryCursor( painter, *cursor, m_Owner.GetViewStyle() );
}

void CQFPSGraphWidget::UpdateBackdrop( const HistoryPictureKey &key )
{
	if ( !m_Backdrop.Prepare( key ) )
		return;
	const BudgetViewStyle &style = m_Owner.GetViewStyle();
	LayoutHistoryAxis( m_Axis, key.m_Size, m_nZoomStep, key.m_Unit, style.m_nRowHeight );
	QPainter painter( &m_Backdrop.Picture() );
	PaintHistoryAxis( painter, m_Axis, style );
	if ( key.m_bThresholds )
		PaintFPSMarkers( painter, LayoutFPSMarkers( m_Markers, key.m_Size, m_nZoomStep ), style );
}

void CQFPSGraphWidget::UpdateStrip( const HistoryPictureKey &key, const HistoryView &view )
{
	// Segments begin in the middle of a column, where its point and the end of the older segment stay; see
	// LayoutFPSCurve for the point.
	const int nHalfPitch = m_History.Measures().Pitch() / 2;
	const CHistoryStrip::Reach reach{ 1 - nHalfPitch, -nHalfPitch - m_History.Measures().m_nBarWidth / 2 };
	const auto ranges = m_Strip.Prepare( key, view.m_Columns, reach );
	QPainter painter( &m_Strip.Picture() );
	for ( const HistoryColumnRange &range : ranges )
	{
		LayoutFPSCurve( m_Curve, m_Owner.GetViewData(), view, m_Markers, range );
		PaintFPSCurve( painter, m_Curve );
	}
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
