#include "trafficmeter.h"

#include <array>

void CTrafficMeter::Measure( double flNow )
{
	const double flSeconds = flNow - m_flSince;
	if ( flSeconds <= 0.0 )
		return;
	m_flChunksPerSecond = static_cast<double>( m_nChunks ) / flSeconds;
	m_flBytesPerSecond = static_cast<double>( m_nBytes ) / flSeconds;
	m_nChunks = 0;
	m_nBytes = 0;
	m_flSince = flNow;
}

void CTrafficMeter::Restart( double flNow )
{
	*this = CTrafficMeter();
	m_flSince = flNow;
}

QString FormatByteRate( double flBytesPerSecond )
{
	static constexpr std::array units = { "B/s", "kB/s", "MB/s", "GB/s" };
	size_t nUnit = 0;
	// 999.95 would be shown as 1000.0 of its unit.
	while ( nUnit + 1 < units.size() && flBytesPerSecond >= ( nUnit == 0 ? 999.5 : 999.95 ) )
	{
		flBytesPerSecond /= 1000.0;
		nUnit++;
	}
	return QStringLiteral( "%1 %2" ).arg( flBytesPerSecond, 0, 'f', nUnit == 0 ? 0 : 1 ).arg( units[nUnit] );
}
