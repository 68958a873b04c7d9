// What the tool tip of a history column says about its sample.
#pragma once

#include <QColor>
#include <QString>
#include <vector>

#include "views/budgetviewdata.h"

struct SampleDescription
{
	struct Budget
	{
		QString m_Name; // see BudgetNameText
		QColor m_Colour;
		uint32_t m_nMicroseconds = 0;
	};

	uint64_t m_nFrame = 0; // counted from 1, as on the cursor's label
	bool m_bHeld = true;   // false: the ring holds a later frame in its place, and nothing below counts
	uint32_t m_nMicroseconds = 0;
	float m_flFrameRate = 0.0f;
	std::vector<Budget> m_Largest; // at most five that took time, the largest first, without the frame total

	static SampleDescription Of( const BudgetViewData &data, uint32_t nSample );

	QString ToHtml() const; // names are escaped
};
