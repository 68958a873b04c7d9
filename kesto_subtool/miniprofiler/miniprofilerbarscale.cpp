#include "miniprofiler/miniprofilerbarscale.h"

#include <algorithm>

#include "keel0/mathlib.h"
#include "keel0/platform.h"

void CMiniProfilerBarScale::Decay()
{
	constexpr double RATE = -8.0; // per second
	constexpr float LIMIT = 1e10f;
	const double flNow = Plat_FloatTime();
	const double flFactor = V_expd( RATE * ( flNow - m_flLastDecay ) );
	m_flLastDecay = flNow;
	for ( float &flMaximum : m_Maxima )
		flMaximum = static_cast<float>( double{ flMaximum } * flFactor );

	const float flLargest = *std::max_element( m_Maxima.begin(), m_Maxima.end() );
	if ( !( flLargest > 0.0f && flLargest < LIMIT ) )
		Reset();
}

void CMiniProfilerBarScale::Include( const CMiniProfilerRow &row )
{
	for ( size_t i = 0; i < MINIPROFILER_COLUMNS; i++ )
		m_Maxima[i] = std::max( { m_Maxima[i], row.m_Ave[i] + row.m_StDev[i], row.m_Peaks[i] } );
}
