#include "keel0/mathlib.h"

#include <cmath>

double V_expd( double flValue )
{
	return std::exp( flValue );
}

float V_expf( float flValue )
{
	return std::exp( flValue );
}

float V_log2f( float flValue )
{
	return std::log2( flValue );
}

double V_log10d( double flValue )
{
	return std::log10( flValue );
}
