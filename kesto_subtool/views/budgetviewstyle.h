// Fonts, colours and measures that all budget views share.
#pragma once

#include <QColor>
#include <QFont>

// The colours of the host's display style.
struct BudgetViewColours
{
	QColor m_Text;       // header labels, peak values
	QColor m_Grid;       // main grid lines
	QColor m_SubGrid;    // minor grid lines
	QColor m_Statistics; // whiskers
	QColor m_Cursor;     // history cursor

	static BudgetViewColours ForStyle( bool bDark );
};

struct BudgetViewStyle
{
	QFont m_RowFont;          // "Verdana", 9 points
	QFont m_CaptionFont;      // "Courier New", 10 points
	int m_nRowHeight = 0;     // of the row font: metrics height + 2, pixels
	int m_nCaptionHeight = 0; // of the caption font, likewise
	int m_nRowInset = 2;      // pixels
	float m_flUIScale = 1.0f; // > 0; 1.0 is 96 dpi
	BudgetViewColours m_Colours;

	static BudgetViewStyle Make( bool bDark, float flUIScale );
};
