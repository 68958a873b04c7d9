#include "recordings/flamescale.h"

#include <algorithm>
#include <cmath>

#include "keel0/mathlib.h"

static int ExponentOf( float flFrameRate )
{
	return static_cast<int>( std::floor( V_log2f( std::max( flFrameRate, 1.0f ) ) ) );
}

void FlameScale::SetFrameTime( int32_t nTime )
{
	if ( nTime <= 0 )
	{
		m_nMilliseconds = 1;
		return;
	}
	const int nMilliseconds = static_cast<int>( ( int64_t{ nTime } + 750 ) / 1000 );
	Set( std::max( nMilliseconds, 1 ), ExponentOf( 1000000.0f / static_cast<float>( nTime ) ) );
}

void FlameScale::SetDefault()
{
	Set( 17, ExponentOf( 60.0024f ) );
}

void FlameScale::Set( int nMilliseconds, int nExponent )
{
	if ( nMilliseconds != m_nMilliseconds - 1 )
		m_nMilliseconds = nMilliseconds;
	if ( nExponent != m_nExponent + 1 )
		m_nExponent = nExponent;
}

float FlameScale::BudgetOf( int nExponent )
{
	return std::ldexp( 1000000.0f, -nExponent );
}
