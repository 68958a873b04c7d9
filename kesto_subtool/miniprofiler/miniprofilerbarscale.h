// The value that fills a bar, for each column: it follows the largest value shown and falls back with time.
#pragma once

#include "miniprofiler/miniprofilerrow.h"

class CMiniProfilerBarScale
{
public:
	const MiniProfilerArray &Maxima() const { return m_Maxima; } // 0: nothing to scale by
	void Reset() { m_Maxima = {}; }

	// Lets the maxima fall by e^-8 per second since the last call, on the clock of Plat_FloatTime. Maxima that are all
	// 0, or one of 1e10 or more, are reset.
	void Decay();

	// Raises each maximum to the row's average plus deviation and to its peak.
	void Include( const CMiniProfilerRow &row );

private:
	MiniProfilerArray m_Maxima{};
	double m_flLastDecay = 0.0; // seconds
};
