// The upper panel of the Show Budget window: budget names and bars side by side.
#pragma once

#include <QWidget>

#include "views/ibudgetviewowner.h"

class CQBudgetBarsWidget;
class CQBudgetNamesWidget;
class KeyValues;
class QHBoxLayout;
class QScrollBar;
class QSplitter;

class CQBudgetSamplesWidget : public QWidget
{
	Q_OBJECT

public:
	// The owner outlives the widget.
	CQBudgetSamplesWidget( IBudgetViewOwner &owner, QWidget *pParent );

	QSize sizeHint() const override;
	void SaveSettings( KeyValues &settings ) const; // "samples_scale"

	// The bars panel hands its scroll bar over when it is made, so that names and bars scroll in step.
	void SetScrollBar( QScrollBar *pScrollBar ) { m_pScrollBar = pScrollBar; }

	// The budget in the first row of names and bars: the scroll bar's value, 0 while it is hidden.
	int FirstRow() const;

protected:
	// Zooms the bars.
	void wheelEvent( QWheelEvent *pEvent ) override;

private:
	IBudgetViewOwner &m_Owner;
	QScrollBar *m_pScrollBar = nullptr;
	QHBoxLayout *m_pLayout;
	CQBudgetNamesWidget *m_pNames;
	CQBudgetBarsWidget *m_pBars;
	QSplitter *m_pSplitter;
};
