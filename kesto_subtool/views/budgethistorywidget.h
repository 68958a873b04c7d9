// The lower panel of the Show Budget window: history columns, frame-rate graph and the history cursor.
#pragma once

#include <QWidget>
#include <cstdint>

#include "views/ibudgetviewowner.h"

class KeyValues;

class CQBudgetHistoryWidget : public QWidget
{
	Q_OBJECT

public:
	CQBudgetHistoryWidget( IBudgetViewOwner &owner, QWidget *pParent );

	QSize sizeHint() const override;

	// On while sampling is stopped: the cursor goes to the newest sample and its label shows; off hides the label.
	void SetCursorMode( bool bOn );
	bool IsCursorMode() const { return m_bCursorMode; }

	uint32_t Cursor() const { return m_nCursor; } // a sample number, not a slot; 0 without samples

	// The samples were cleared: scroll range, position and cursor label follow the counter, which is 0.
	void OnSamplesCleared();

	void SaveSettings( KeyValues &settings ) const;

private:
	IBudgetViewOwner &m_Owner;
	uint32_t m_nCursor = 0;
	bool m_bCursorMode = false;
};
