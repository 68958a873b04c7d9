// The right side of the samples strip: a time axis and, on each budget's row, a bar, a peak, a whisker and a caption.
#pragma once

#include <QWidget>

#include "views/budgetbarslayout.h"
#include "views/ibudgetviewowner.h"
#include "views/stampcache.h"

class CQBudgetSamplesWidget;
class QHBoxLayout;
class QScrollBar;

class CQBudgetBarsWidget : public QWidget
{
	Q_OBJECT

public:
	// Both outlive the widget; the strip is its parent until a layout gives it another. The scroll bar is handed to the
	// strip.
	CQBudgetBarsWidget( IBudgetViewOwner &owner, CQBudgetSamplesWidget &strip );

	int ZoomStep() const { return m_nZoomStep; } // BUDGET_BARS_MIN_ZOOM..BUDGET_BARS_MAX_ZOOM
	bool SetZoomStep( int nStep ); // false, and nothing changes, at and beyond a bound or without a change

protected:
	void paintEvent( QPaintEvent *pEvent ) override;
	void resizeEvent( QResizeEvent *pEvent ) override;

private slots:
	void OnValueChanged();

private:
	BudgetBarsView View() const;

	IBudgetViewOwner &m_Owner;
	CQBudgetSamplesWidget &m_Strip;
	CStampCache m_Stamps;
	int m_nCaptionWidth;
	QHBoxLayout *m_pLayout;
	QScrollBar *m_pScrollBar;
	int m_nZoomStep = 0;
};
