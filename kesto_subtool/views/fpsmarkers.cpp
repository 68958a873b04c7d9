#include "views/fpsmarkers.h"

#include <algorithm>
#include <cmath>

#include "keel0/keyvalues.h"

static constexpr float PUSH_GAP = 5.0f;

static float LoadMarker( const KeyValues *pSettings, const char *pKey, float flDefault )
{
	const float flMarker = pSettings ? pSettings->GetFloat( pKey, flDefault ) : flDefault;
	if ( std::isnan( flMarker ) )
		return flDefault;
	return std::clamp( std::trunc( flMarker ), FPS_MARKER_MIN, FPS_MARKER_MAX );
}

FPSMarkers FPSMarkers::Load( const KeyValues *pSettings )
{
	FPSMarkers markers;
	markers.m_flUpper = LoadMarker( pSettings, "fps_upper_marker", markers.m_flUpper );
	markers.m_flLower = LoadMarker( pSettings, "fps_lower_marker", markers.m_flLower );
	return markers;
}

void FPSMarkers::Save( KeyValues &settings ) const
{
	settings.SetFloat( "fps_upper_marker", m_flUpper );
	settings.SetFloat( "fps_lower_marker", m_flLower );
}

bool FPSMarkers::DragUpper( float flRate )
{
	if ( flRate == m_flUpper )
		return false;
	m_flUpper = flRate;
	if ( m_flUpper <= m_flLower )
		m_flLower = std::clamp( m_flUpper - PUSH_GAP, FPS_MARKER_MIN, FPS_MARKER_MAX );
	return true;
}

bool FPSMarkers::DragLower( float flRate )
{
	if ( flRate == m_flLower )
		return false;
	m_flLower = flRate;
	if ( m_flLower >= m_flUpper )
		m_flUpper = std::clamp( m_flLower + PUSH_GAP, FPS_MARKER_MIN, FPS_MARKER_MAX );
	return true;
}
