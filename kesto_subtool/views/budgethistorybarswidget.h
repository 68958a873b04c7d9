// One column per sample: the budgets' times stacked from the bottom up.
#pragma once

#include <QWidget>

#include "views/historybarslayout.h"
#include "views/historypicture.h"
#include "views/historyscale.h"
#include "views/ibudgetviewowner.h"

class CQBudgetHistoryWidget;
class KeyValues;

class CQBudgetHistoryBarsWidget : public QWidget
{
	Q_OBJECT

public:
	CQBudgetHistoryBarsWidget( IBudgetViewOwner &owner, CQBudgetHistoryWidget &history );

	void SaveSettings( KeyValues &settings ) const; // "history_scale"
	void OnSamplesCleared();

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

	IBudgetViewOwner &m_Owner;
	CQBudgetHistoryWidget &m_History;
	HistoryAxisLayout m_Axis;
	HistoryBarsLayout m_Bars; // of the columns that were painted last; kept for its buffers
	CHistoryBackdrop m_Backdrop;
	CHistoryStrip m_Strip;
	int m_nZoomStep;
};
