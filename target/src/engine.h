// The state of the library that lives as long as the process, so that scopes, frames and lines need not know whether
// the server or a recording runs.
#pragma once

#include <atomic>
#include <cstdint>

#include "commands.h"
#include "framecollector.h"
#include "framequeue.h"
#include "linequeue.h"
#include "recordtree.h"
#include "target/showbudget.h"

namespace showbudget
{
struct EngineState
{
	CFrameQueue m_Frames;
	CFrameCollector m_Collector{ m_Frames };
	CRecordTree m_RecordTree;
	CLineQueue m_Lines;
	CCommands m_Commands;
	std::atomic<uint64_t> m_nFramesLost{ 0 }; // no room in the queue; only the frame thread adds
	std::atomic<uint32_t> m_nConsoles{ 0 };   // that would see a line

	// Tells the server's thread that there is something for it. An event descriptor that is never closed, because the
	// instrumented threads may be about to write to it at any time.
	std::atomic<int> m_nWakeDescriptor{ -1 };
	void Wake() const;
};
extern EngineState g_Engine;

// Makes a forked child forget the session; once for the process.
void HandleForks();
} // namespace showbudget
