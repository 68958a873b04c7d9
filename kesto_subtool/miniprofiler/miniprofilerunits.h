// How a time is shown: the nine time-unit formats.
#pragma once

#include <QString>
#include <cstdint>
#include <span>

struct MiniProfilerUnit
{
	QString m_Label;
	QString m_Unit;
	QString m_Format;           // for printf, of one double: "%.Nf"
	uint32_t m_nScale = 0;      // units per second; 0 shows ticks
	float m_flThreshold = 0.0f; // half of the last printed digit

	int Decimals() const { return m_Format[2].digitValue(); }

	// What a number of ticks is multiplied by. nTicksPerSecond > 0.
	double Factor( uint64_t nTicksPerSecond ) const
	{
		return m_nScale == 0 ? 1.0 : m_nScale / static_cast<double>( nTicksPerSecond );
	}
};

constexpr int MINIPROFILER_DEFAULT_UNIT = 5;
std::span<const MiniProfilerUnit> MiniProfilerUnits();
