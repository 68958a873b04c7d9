// One point per sample: its frame rate, joined to a curve, with two thresholds that the mouse moves.
#pragma once

#include <QWidget>

#include "views/fpsgraphlayout.h"
#include "views/fpsmarkers.h"
#include "views/historypicture.h"
#include "views/historyscale.h"
#include "views/ibudgetviewowner.h"

class CQBudgetHistoryWidget;
class KeyValues;

class CQFPSGraphWidget : public QWidget
{
	Q_OBJECT

public:
	CQFPSGraphWidget( IBudgetViewOwner &owner, CQBudgetHistoryWidget &history );

	const FPSMarkers &Markers() const { return m_Markers; }

	void OnSamplesCleared();
	void SaveSettings( KeyValues &settings ) const; // "fps_graph_scale" and the markers

protected:
	bool event( QEvent *pEvent ) override;
	void paintEvent( QPaintEvent *pEvent ) override;
	void resizeEvent( QResizeEvent *pEvent ) override;
	void wheelEvent( QWheelEvent *pEvent ) override;
	void mousePressEvent( QMouseEvent *pEvent ) override;
	void mouseMoveEvent( QMouseEvent *pEvent ) override;
	void mouseReleaseEvent( QMouseEvent *pEvent ) override;

private:
	void UpdateBackdrop( const HistoryPictureKey &key );
	void UpdateStrip( const HistoryPictureKey &key, const HistoryView &view );
	bool IsDraggingMarker() const { return m_DraggedMarker != FPSMarkerHandle::None; }
	FPSMarkerHandle HandleAt( QPoint ptMouse ) const; // none while thresholds are hidden
	void DragMarker( int y );
	void ShowMarkerToolTip( FPSMarkerHandle handle, QPoint ptGlobal );

	IBudgetViewOwner &m_Owner;
	CQBudgetHistoryWidget &m_History;
	HistoryAxisLayout m_Axis;
	FPSCurveLayout m_Curve; // of the columns that were painted last; kept for its buffers
	CHistoryBackdrop m_Backdrop;
	CHistoryStrip m_Strip;
	FPSMarkers m_Markers;
	FPSMarkerHandle m_DraggedMarker = FPSMarkerHandle::None;
	int m_nZoomStep;
};
