// The left column of the samples strip: a coloured box with the name of each budget.
#pragma once

#include <QWidget>

#include "views/budgetrows.h"
#include "views/ibudgetviewowner.h"
#include "views/stampcache.h"

class CQBudgetSamplesWidget;

class CQBudgetNamesWidget : public QWidget
{
	Q_OBJECT

public:
	// Both outlive the widget; the strip is its parent until a layout gives it another.
	CQBudgetNamesWidget( IBudgetViewOwner &owner, CQBudgetSamplesWidget &strip );

protected:
	void paintEvent( QPaintEvent *pEvent ) override;

	// On a budget: its statistics and its peak as a line of text go to the clipboard.
	void mouseDoubleClickEvent( QMouseEvent *pEvent ) override;

private:
	BudgetRows Rows( const BudgetViewData &samples ) const;

	IBudgetViewOwner &m_Owner;
	CQBudgetSamplesWidget &m_Strip;
	CStampCache m_Stamps;
};
