// One point per sample: its frame rate, joined to a curve, with two thresholds that the mouse moves.
#pragma once

#include "views/fpsgraphlayout.h"
#include "views/fpsmarkers.h"
#include "views/historyplotwidget.h"

class CQFPSGraphWidget : public CQHistoryPlotWidget
{
	Q_OBJECT

public:
	CQFPSGraphWidget( IBudgetViewOwner &owner, CQBudgetHistoryWidget &history );

	const FPSMarkers &Markers() const { return m_Markers; }

	void SaveSettings( KeyValues &settings ) const override; // "fps_graph_scale" and the markers

protected:
	bool event( QEvent *pEvent ) override;
	void mousePressEvent( QMouseEvent *pEvent ) override;
	void mouseMoveEvent( QMouseEvent *pEvent ) override;
	void mouseReleaseEvent( QMouseEvent *pEvent ) override;

private:
	void CompleteKey( HistoryPictureKey &key ) const override;
	void PaintBehindColumns( QPainter &painter, const HistoryPictureKey &key ) override;
	CHistoryStrip::Reach ColumnReach() const override;
	void PaintColumns( QPainter &painter, const HistoryView &view, const HistoryColumnRange &range ) override;
	std::optional<QRect> CursorRect( const HistoryView &view ) const override;

	bool IsDraggingMarker() const { return m_DraggedMarker != FPSMarkerHandle::None; }
	FPSMarkerHandle HandleAt( QPoint ptMouse ) const; // none while thresholds are hidden
	void DragMarker( int y );
	void ShowMarkerToolTip( FPSMarkerHandle handle, QPoint ptGlobal );

	FPSCurveLayout m_Curve; // of the columns that were painted last; kept for its buffers
	FPSMarkers m_Markers;
	FPSMarkerHandle m_DraggedMarker = FPSMarkerHandle::None;
};
