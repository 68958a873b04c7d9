// What the budget views ask of the window that holds them.
#pragma once

#include "views/budgetviewdata.h"
#include "views/budgetviewstyle.h"

class KeyValues;
class QWidget;

class IBudgetViewOwner
{
public:
	virtual BudgetViewData GetViewData() const = 0;
	virtual const BudgetViewStyle &GetViewStyle() const = 0; // fixed for the life of the window
	virtual KeyValues *GetViewSettings() = 0;                // null when there are none: defaults count

	// The history cursor was moved: refresh what depends on the selected sample and repaint the window and, where it
	// floats, the history's dock.
	virtual void OnHistoryCursorChanged() = 0;

	// Puts a label among the permanent widgets of the status bar, in front of the texts that follow the cursor.
	virtual void AddCursorLabel( QWidget *pLabel ) = 0;

	// Starts sampling when it is stopped and stops it when it runs.
	virtual void ToggleSampling() = 0;

protected:
	~IBudgetViewOwner() = default;
};
