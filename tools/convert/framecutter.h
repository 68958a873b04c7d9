// Nests the events of a trace and cuts them into frames.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/convert/framesink.h"
#include "tools/convert/frametimes.h"
#include "tools/convert/scopestack.h"
#include "tools/convert/trace.h"

namespace convert
{
struct CutOptions
{
	// Each scope or instant of this name begins a frame, that lasts to the next one. The first of them in time says on
	// which thread they count: scopes of that name on other threads are ordinary ones. Empty: the name that the input
	// says, if it does, in which case those scopes are the frames themselves and have no node.
	std::string m_FrameName;
	int64_t m_nPeriod = 0; // nanoseconds; 0 = no period. Without a name and a period all is one frame.

	// Frames times nodes: with more than these the input is refused.
	static constexpr uint64_t MAX_ENTRIES = uint64_t{ 1 } << 32;
	uint64_t m_nMostEntries = MAX_ENTRIES;

	// Names or ids of the threads and processes that are wanted; empty = all.
	std::vector<std::string> m_Threads;
	std::vector<std::string> m_Processes;
};

// With several threads each has a node below the root, and its scopes are below that; the root's time is that of the
// frame all the same. A scope that reaches over a frame's end is split there; its call counts in the frame in which it
// begins. Of frames of a period in which no scope is open and no sample lies, MAX_EMPTY_FRAMES in a row are kept: two
// samples may be hours apart. Samples are no scopes: each adds its time and a call to every node of its stack, and the
// root's time is the sum of the frame's samples.
class CFrameCutter
{
public:
	static constexpr int64_t MAX_FRAMES = 1'000'000;  // by a period
	static constexpr int64_t MAX_EMPTY_FRAMES = 1000; // in a row, by a period

	CFrameCutter( CTrace &trace, const CutOptions &options, IFrameSink &sink );

	// Told now and then how many events of how many are done.
	using Progress = std::function<void( uint64_t nDone, uint64_t nTotal )>;

	bool Run( const Progress &progress = {} ); // once; false: Problem() says why, or the sink could not write
	const std::string &Problem() const { return m_Problem; }
	uint64_t ScopeCount() const { return m_nScopes; } // of the chosen threads, samples too

private:
	struct ThreadState
	{
		CScopeStack m_Stack;
		bool m_bSelected = false;
		bool m_bProcessSelected = false;
		bool m_bActive = false;   // is in m_Active
		bool m_bHasBase = false;  // m_Stack has its base
		bool m_bInMarker = false; // the last sample's stack had the frame's name
	};

	bool Fail( std::string problem );
	bool SelectThreads();
	bool PrepareFrames();
	std::string ThreadList() const;
	bool ReadGroup( const TraceEvent *&pNext );
	void ArrangeGroup();
	bool Handle( const TraceEvent &event );
	bool HandleScope( ThreadState &state, const TraceEvent &event );
	bool HandleSample( ThreadState &state, const TraceEvent &event );
	bool IsMarker( const ThreadState &state, const TraceEvent &event ) const;
	void SetBase( ThreadState &state, uint32_t nThread );
	bool CutAtMarker( const TraceEvent &event );
	bool CutPeriods( int64_t nTime );
	void LeaveOutEmptyFrames( int64_t nTime );
	bool Cut( int64_t nTime );
	bool EmitFrame( int64_t nEnd );
	bool FinishFrames();

	CTrace &m_Trace;
	CutOptions m_Options;
	IFrameSink &m_Sink;
	CFrameTimes m_Frame;
	std::vector<ThreadState> m_States;
	std::vector<uint32_t> m_Active;  // threads that may have open scopes
	std::vector<TraceEvent> m_Group; // events of the same time
	std::vector<uint32_t> m_StackNames;
	std::vector<int32_t> m_StackNodes;

	size_t m_nSelected = 0; // threads with scopes
	uint64_t m_nScopes = 0;
	bool m_bSeveralProcesses = false;
	bool m_bSampled = false; // there are samples only
	int64_t m_nFirstTime = INT64_MAX;
	int64_t m_nLastTime = INT64_MIN;

	bool m_bMarked = false; // frames begin at markers
	bool m_bFrameIsRoot = false;
	uint32_t m_nFrameName = NO_NAME;
	uint32_t m_nFrameThread = 0xFFFFFFFF; // on which markers count; unknown at first
	bool m_bInFrames = false;             // the first frame began
	uint64_t m_nBeforeFrames = 0;         // scopes before that
	uint32_t m_nFrameCalls = 1;
	int64_t m_nNextCut = INT64_MAX; // by the period
	bool m_bUsed = false;           // the frame has a scope or a sample
	int64_t m_nEmptyFrames = 0;     // in a row, up to the last cut
	int64_t m_nSampleTime = 0;      // of the frame
	uint64_t m_nEntries = 0;
	std::string m_Problem;
};
} // namespace convert
