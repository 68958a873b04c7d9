// One point per sample: its frame rate, joined to a curve, with two thresholds that the mouse moves.
#pragma once

#include <QWidget>

#include "views/fpsgraphlayout.h"
#include "views/fpsmarkers.h"
#include "views/ibudgetviewowner.h"

class CQBudgetHistoryWidget;
class KeyValues;

class CQFPSGraphWidget : public QWidget
{
	Q_OBJECT

public:
	CQFPSGraphWidget( IBudgetViewOwner &owner, CQBudgetHistoryWidget &history );

	const FPSMarkers &Markers() const { return m_Markers; }

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
	bool IsDraggingMarker() const { return m_DraggedMarker != FPSMarkerHandle::None; }
	FPSMarkerHandle HandleAt( QPoint ptMouse ) const; // none while thresholds are hidden
	void DragMarker( int y );
	void ShowMarkerToolTip( FPSMarkerHandle handle, QPoint ptGlobal );

	IBudgetViewOwner &m_Owner;
	CQBudgetHistoryWidget &m_History;
	FPSGraphLayout m_Layout; // kept for its buffers; laid out anew for every repaint
	FPSMarkers m_Markers;
	FPSMarkerHandle m_DraggedMarker = FPSMarkerHandle::None;
	int m_nZoomStep;
};
