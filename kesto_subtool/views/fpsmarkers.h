// The two thresholds of the frame-rate graph: where they start, how a drag moves them.
#pragma once

class KeyValues;

constexpr float FPS_MARKER_MIN = 1.0f;
constexpr float FPS_MARKER_MAX = 300.0f;

// In frames per second, whole numbers from FPS_MARKER_MIN to FPS_MARKER_MAX.
struct FPSMarkers
{
	float m_flUpper = 60.0f;
	float m_flLower = 30.0f;

	// Truncates toward zero and clamps what the settings hold (null: the defaults). What is no number gives the
	// default. Saved markers may lie in any order.
	static FPSMarkers Load( const KeyValues *pSettings );
	void Save( KeyValues &settings ) const;

	// Moves a marker to a frame rate within the bounds; false when it stands there already. A marker that meets the
	// other one pushes it and keeps a gap of 5, as far as the bounds allow.
	bool DragUpper( float flRate );
	bool DragLower( float flRate );

	friend bool operator==( const FPSMarkers &, const FPSMarkers & ) = default;
};
