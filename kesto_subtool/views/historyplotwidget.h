// What the two views of the history share: axis behind, columns before it, cursor on top; zoom, cursor drag, tool tips.
#pragma once

#include <QWidget>
#include <optional>

#include "views/historypicture.h"
#include "views/historyscale.h"
#include "views/ibudgetviewowner.h"

class CQBudgetHistoryWidget;
class KeyValues;
class QPainter;

class CQHistoryPlotWidget : public QWidget
{
	Q_OBJECT

public:
	virtual void SaveSettings( KeyValues &settings ) const; // the zoom
	void OnSamplesCleared();

protected:
	// pZoomKey is the settings' key of the zoom and must outlive the widget.
	CQHistoryPlotWidget( IBudgetViewOwner &owner, CQBudgetHistoryWidget &history, const char *pZoomKey );

	// Sets what tells this view's pictures from others: the unit, and what else decides how they look.
	virtual void CompleteKey( HistoryPictureKey &key ) const = 0;

	// What lies over the axis and behind the columns; nothing by default.
	virtual void PaintBehindColumns( QPainter &painter, const HistoryPictureKey &key );

	virtual CHistoryStrip::Reach ColumnReach() const = 0;
	virtual void PaintColumns( QPainter &painter, const HistoryView &view, const HistoryColumnRange &range ) = 0;
	virtual std::optional<QRect> CursorRect( const HistoryView &view ) const = 0; // none when it is not seen

	IBudgetViewOwner &Owner() const { return m_Owner; }
	CQBudgetHistoryWidget &History() const { return m_History; }
	int ZoomStep() const { return m_nZoomStep; }

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

	IBudgetViewOwner &m_Owner;
	CQBudgetHistoryWidget &m_History;
	const char *m_pZoomKey;
	HistoryAxisLayout m_Axis;
	CHistoryBackdrop m_Backdrop;
	CHistoryStrip m_Strip;
	int m_nZoomStep;
};
