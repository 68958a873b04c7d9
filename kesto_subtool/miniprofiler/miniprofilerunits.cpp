#include "miniprofiler/miniprofilerunits.h"

#include <array>

namespace
{
MiniProfilerUnit Make( const char *pUnit, const char *pDigits, const char *pFormat, uint32_t nScale, float flThreshold )
{
	const QString unit = QString::fromUtf8( pUnit );
	return { unit + ' ' + pDigits, unit, pFormat, nScale, flThreshold };
}
} // namespace

std::span<const MiniProfilerUnit> MiniProfilerUnits()
{
	static const std::array<MiniProfilerUnit, 9> s_Units = {
		Make( "ms", "#", "%.0f", 1000, 0.5f ),
		Make( "ms", "#.#", "%.1f", 1000, 0.05f ),
		Make( "ms", "#.##", "%.2f", 1000, 0.005f ),
		Make( "ms", "#.###", "%.3f", 1000, 0.0005f ),
		Make( "μs", "#", "%.0f", 1000000, 0.5f ),
		Make( "μs", "#.#", "%.1f", 1000000, 0.05f ),
		Make( "μs", "#.##", "%.2f", 1000000, 0.005f ),
		Make( "μs", "#.###", "%.3f", 1000000, 0.0005f ),
		MiniProfilerUnit{ "Ticks", "ticks", "%.0f", 0, 0.5f },
	};
	return s_Units;
}
