#include "views/framerate.h"

uint32_t SampleFrameTime( const BudgetViewData &data, int64_t nSample )
{
	return data.m_Categories.empty() ? 0 : data.Value( data.m_Categories.size() - 1, BudgetSlot( nSample ) );
}

float SampleFrameRate( const BudgetViewData &data, int64_t nSample )
{
	if ( data.m_bFPSAverages )
		return data.m_FrameRates[BudgetSlot( nSample )];
	const uint32_t nMicroseconds = SampleFrameTime( data, nSample );
	return nMicroseconds == 0 ? 0.0f : 1.0f / ( static_cast<float>( nMicroseconds ) * 0.000001f );
}

// How far flRate has come from flFrom to flTo, 0 .. 1. The comparisons are written so that what is not a number fails
// them and ends up as 0.
static float Progress( float flRate, float flFrom, float flTo )
{
	if ( flTo == flFrom )
		return flRate >= flTo ? 1.0f : 0.0f;
	const float flProgress = ( flRate - flFrom ) / ( flTo - flFrom );
	if ( !( flProgress > 0.0f ) )
		return 0.0f;
	return flProgress < 1.0f ? flProgress : 1.0f;
}

QRgb FrameRateColour( float flRate, float flLower, float flUpper )
{
	const float flMiddle = ( flUpper + flLower ) * 0.5f;
	if ( !( flRate > flLower ) )
		return qRgb( 255, 0, 0 );
	if ( !( flRate > flMiddle ) )
		return qRgb( 255, static_cast<int>( 255.0f * Progress( flRate, flLower, flMiddle ) ), 0 );
	if ( !( flRate > flUpper ) )
		return qRgb( static_cast<int>( 255.0f - 255.0f * Progress( flRate, flMiddle, flUpper ) ), 255, 0 );
	return qRgb( 0, 255, 0 );
}
