// The state of the library that lives as long as the process, so that scopes, frames and lines need not know whether
// the server runs.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "commands.h"
#include "framecollector.h"
#include "framequeue.h"
#include "linequeue.h"
#include "target/showbudget.h"

namespace showbudget
{
struct EngineState
{
	CFrameQueue m_Frames;
	CFrameCollector m_Collector{ m_Frames };
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

// The engine's way to hear of the library: Settings::m_pLog.
struct Log
{
	LogFunction m_pFunction = nullptr;
	void *m_pContext = nullptr;

	void Line( Severity severity, const std::string &line ) const;
};
} // namespace showbudget
