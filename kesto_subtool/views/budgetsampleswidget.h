// The upper panel of the Show Budget window: budget names and bars side by side.
#pragma once

#include <QWidget>

#include "views/ibudgetviewowner.h"

class KeyValues;

class CQBudgetSamplesWidget : public QWidget
{
	Q_OBJECT

public:
	CQBudgetSamplesWidget( IBudgetViewOwner &owner, QWidget *pParent );

	QSize sizeHint() const override;
	void SaveSettings( KeyValues &settings ) const; // "samples_scale"

private:
	IBudgetViewOwner &m_Owner;
};
