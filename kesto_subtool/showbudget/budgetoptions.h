// The options of the Show Budget window that are kept between runs.
#pragma once

class KeyValues;

struct BudgetOptions
{
	bool m_bFPSLabels = false;     // "fps_labels": bars and axes in frames per second
	bool m_bShowAverages = true;   // "show_averages": whiskers and captions over the bars
	bool m_bShowThresholds = true; // "fps_show_thresholds": markers in the frame-rate graph
	bool m_bFPSAverages = false;   // "fps_averages": the frame rate that the engine averaged

	static BudgetOptions Read( const KeyValues *pSettings ); // null: the defaults
	void Write( KeyValues &settings ) const;                 // each as 1 or 0
};
