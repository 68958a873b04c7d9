// How long a sample counts.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "tools/convert/decimal.h"
#include "tools/convert/importers.h"
#include "tools/convert/traceevent.h"

namespace convert
{
// A weight is a time in a unit; or, when the user says how long a sample is, a number of samples.
class CSampleWeight
{
public:
	explicit CSampleWeight( const ImportOptions &options )
		: m_flSampleTime( options.m_flSampleTime )
	{
	}

	bool IsGiven() const { return m_flSampleTime.has_value(); }

	// The time of so many samples, when it is given; at most what does not fit anyway.
	int64_t Time( double flSamples ) const
	{
		constexpr double TOO_MUCH = 2.0 * static_cast<double>( MAX_TIME );
		return static_cast<int64_t>(
			std::clamp( std::round( flSamples * *m_flSampleTime * 1000.0 ), -TOO_MUCH, TOO_MUCH ) );
	}

	// Sets duration and calls; false when the text is no number.
	bool Parse( std::string_view text, int nUnit, TraceEvent &event ) const
	{
		if ( !IsGiven() )
		{
			const std::optional<int64_t> nTime = ParseTime( text, nUnit );
			event.m_nDuration = nTime.value_or( 0 );
			return nTime.has_value();
		}
		const std::optional<double> flSamples = ParseNumber( text );
		if ( !flSamples )
			return false;
		event.m_nDuration = Time( *flSamples );
		event.m_nCalls = static_cast<uint32_t>( std::clamp( std::round( *flSamples ), 0.0, 4294967295.0 ) );
		return true;
	}

private:
	std::optional<double> m_flSampleTime;
};
} // namespace convert
