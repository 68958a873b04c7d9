#include "views/fpsgraphwidget.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QToolTip>

#include "views/budgethistorywidget.h"
#include "views/historypainter.h"

CQFPSGraphWidget::CQFPSGraphWidget( IBudgetViewOwner &owner, CQBudgetHistoryWidget &history )
	: CQHistoryPlotWidget( owner, history, "fps_graph_scale" )
	, m_Markers( FPSMarkers::Load( owner.GetViewSettings() ) )
{
}

void CQFPSGraphWidget::SaveSettings( KeyValues &settings ) const
{
	CQHistoryPlotWidget::SaveSettings( settings );
	m_Markers.Save( settings );
}

bool CQFPSGraphWidget::event( QEvent *pEvent )
{
	if ( pEvent->type() == QEvent::ToolTip )
	{
		const auto *pHelpEvent = static_cast<QHelpEvent *>( pEvent );
		const FPSMarkerHandle handle = HandleAt( pHelpEvent->pos() );
		if ( handle != FPSMarkerHandle::None )
		{
			ShowMarkerToolTip( handle, pHelpEvent->globalPos() );
			return true;
		}
	}
	return CQHistoryPlotWidget::event( pEvent );
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

void CQFPSGraphWidget::CompleteKey( HistoryPictureKey &key ) const
{
	const BudgetViewData viewData = Owner().GetViewData();
	key.m_Unit = HistoryAxisUnit::FramesPerSecond;
	key.m_bAverages = viewData.m_bFPSAverages;
	key.m_bThresholds = viewData.m_bShowThresholds;
	key.m_Markers = m_Markers;
}

void CQFPSGraphWidget::PaintBehindColumns( QPainter &painter, const HistoryPictureKey &key )
{
	if ( key.m_bThresholds )
		PaintFPSMarkers( painter, LayoutFPSMarkers( m_Markers, key.m_Size, key.m_nZoomStep ), Owner().GetViewStyle() );
}

// Segments begin in the middle of a column, where its point and the end of the older segment stay; see LayoutFPSCurve
// for the point.
CHistoryStrip::Reach CQFPSGraphWidget::ColumnReach() const
{
	const int nHalfPitch = History().Measures().Pitch() / 2;
	return { 1 - nHalfPitch, -nHalfPitch - History().Measures().m_nBarWidth / 2 };
}

void CQFPSGraphWidget::PaintColumns( QPainter &painter, const HistoryView &view, const HistoryColumnRange &range )
{
	LayoutFPSCurve( m_Curve, Owner().GetViewData(), view, m_Markers, range );
	PaintFPSCurve( painter, m_Curve );
}

std::optional<QRect> CQFPSGraphWidget::CursorRect( const HistoryView &view ) const
{
	return FPSGraphCursor( view );
}

FPSMarkerHandle CQFPSGraphWidget::HandleAt( QPoint ptMouse ) const
{
	if ( !Owner().GetViewData().m_bShowThresholds )
		return FPSMarkerHandle::None;
	return FPSMarkerHandleAt( m_Markers, ptMouse, contentsRect().size(), ZoomStep() );
}

void CQFPSGraphWidget::mousePressEvent( QMouseEvent *pEvent )
{
	if ( pEvent->button() != Qt::LeftButton )
		return;
	m_DraggedMarker = HandleAt( pEvent->pos() );
	if ( IsDraggingMarker() )
		setCursor( Qt::SizeVerCursor );
	else
		CQHistoryPlotWidget::mousePressEvent( pEvent );
}

void CQFPSGraphWidget::mouseMoveEvent( QMouseEvent *pEvent )
{
	if ( IsDraggingMarker() )
		DragMarker( pEvent->y() );
	else
		CQHistoryPlotWidget::mouseMoveEvent( pEvent );
}

void CQFPSGraphWidget::DragMarker( int y )
{
	if ( !Owner().GetViewData().m_bShowThresholds )
		return;
	const float flRate = FPSMarkerRateAt( y, contentsRect().height(), ZoomStep() );
	const bool bMoved =
		m_DraggedMarker == FPSMarkerHandle::Upper ? m_Markers.DragUpper( flRate ) : m_Markers.DragLower( flRate );
	if ( bMoved )
		update();
}

void CQFPSGraphWidget::mouseReleaseEvent( QMouseEvent *pEvent )
{
	if ( pEvent->button() == Qt::LeftButton && IsDraggingMarker() )
	{
		m_DraggedMarker = FPSMarkerHandle::None;
		unsetCursor();
	}
	CQHistoryPlotWidget::mouseReleaseEvent( pEvent );
}
