// A recording that goes nowhere, so that the library measures for it alone.
#pragma once

#include <cstdlib>

#include "target/showbudget.h"

class CBenchRecording
{
public:
	CBenchRecording()
	{
		showbudget::RecordingSettings settings;
		settings.m_pFile = "/dev/null";
		settings.m_nMaxBytes = 0;
		if ( !showbudget::StartRecording( settings ) )
			std::abort();
		showbudget::EndFrame();
	}
	~CBenchRecording() { showbudget::StopRecording(); }
	CBenchRecording( const CBenchRecording & ) = delete;
	CBenchRecording &operator=( const CBenchRecording & ) = delete;
};
