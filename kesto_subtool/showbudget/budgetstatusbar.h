// The labels in the status bar of the Show Budget window.
#pragma once

#include "showbudget/budgetstatustexts.h"

class QLabel;
class QStatusBar;
class QWidget;

// The labels belong to the status bar, which must outlive this.
class CBudgetStatusBar
{
public:
	explicit CBudgetStatusBar( QStatusBar &statusBar );

	void SetState( const QString &text );

	// Cheap enough for every sample: the labels show the texts with the next repaint of the window.
	void SetTexts( const BudgetStatusTexts &texts );

	// Inserts a label of the history between the samples and the frame rate.
	void AddCursorLabel( QWidget *pLabel );

private:
	QStatusBar &m_StatusBar;
	QLabel *m_pState;
	QLabel *m_pSamples;
	QLabel *m_pFPS;
	QLabel *m_pFrame;
	int m_nCursorPosition; // among the status bar's items
};
