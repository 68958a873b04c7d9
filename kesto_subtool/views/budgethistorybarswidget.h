// One column per sample: the budgets' times stacked from the bottom up.
#pragma once

#include <QWidget>

#include "views/historybarslayout.h"
#include "views/ibudgetviewowner.h"

class CQBudgetHistoryWidget;
class KeyValues;

class CQBudgetHistoryBarsWidget : public QWidget
{
	Q_OBJECT

public:
	CQBudgetHistoryBarsWidget( IBudgetViewOwner &owner, CQBudgetHistoryWidget &history );

	void SaveSettings( KeyValues &settings ) const; // "history_scale"

protected:
	bool event( QEvent *pEvent ) override;
	void paintEvent( QPaintEvent *pEvent ) override;
	void resizeEvent( QResizeEvent *pEvent ) override;
	void wheelEvent( QWheelEvent *pEvent ) override;
	void mousePressEvent( QMouseEvent *pEvent ) override;
	void mouseMoveEvent( QMouseEvent *pEvent ) override;
	void mouseReleaseEvent( QMouseEvent *pEvent ) override;

private:
	IBudgetViewOwner &m_Owner;
	CQBudgetHistoryWidget &m_History;
	HistoryBarsLayout m_Layout; // kept for its buffers; laid out anew for every repaint
	int m_nZoomStep;
};
