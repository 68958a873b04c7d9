// The texts of the status bar as a function of the samples.
#pragma once

#include <QString>

#include "views/budgetviewdata.h"

struct BudgetStatusTexts
{
	QString m_Samples; // "Samples: 12", or "No Samples."
	QString m_FPS;     // "FPS: 60.00": the selected frame's own rate, or the one that the engine averaged
	QString m_Frame;   // "Frame: 16.67": the selected frame's total in milliseconds

	static BudgetStatusTexts Make( const BudgetViewData &data, uint32_t nSampleCount );
};
