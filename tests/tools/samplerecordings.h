// Small recordings whose figures can be worked out by hand.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/recordings/recordingwriter.h"

// Below the unnamed root 0: 1 "Physics" with 2 "Solve", and 3 "Render". Chains are the reverse of the definitions, so
// the order of entries is 0, 3, 1, 2.
inline CRecordingWriter BeginSample()
{
	CRecordingWriter writer = CRecordingWriter().Header( 0 ).BeginFrame();
	return writer.Node( 0, "Physics", 1 ).Node( 1, "Solve", 2 ).Node( 0, "Render", 3 );
}

struct SampleFrame
{
	// In units of 4 microseconds.
	uint32_t m_nRoot;
	uint32_t m_nRender;
	uint32_t m_nPhysics;
	uint32_t m_nSolve;
	unsigned m_nSolveCalls = 1;
};

// The definitions stand in the first frame.
inline std::vector<uint8_t> MakeSample( const std::vector<SampleFrame> &frames )
{
	CRecordingWriter writer = BeginSample();
	bool bFirst = true;
	for ( const SampleFrame &frame : frames )
	{
		if ( !bFirst )
			writer.BeginFrame();
		bFirst = false;
		writer.BeginTimings().Entry( 1, frame.m_nRoot ).Entry( 1, frame.m_nRender ).Entry( 1, frame.m_nPhysics );
		writer.Entry( frame.m_nSolveCalls, frame.m_nSolve ).EndFrame();
	}
	return writer.m_Bytes;
}

// Frame times 4, 8, 12 and 40 ms.
inline std::vector<uint8_t> MakeFourFrames()
{
	return MakeSample(
		{ { 1000, 500, 400, 300 }, { 2000, 500, 900, 700 }, { 3000, 600, 900, 800, 7 }, { 10000, 600, 900, 400 } } );
}

// Two frames and a third whose bytes end early.
inline std::vector<uint8_t> MakeDamaged()
{
	std::vector<uint8_t> bytes =
		MakeSample( { { 1000, 500, 400, 300 }, { 2000, 500, 900, 700 }, { 3000, 500, 400, 300 } } );
	bytes.resize( bytes.size() - 5 );
	return bytes;
}
