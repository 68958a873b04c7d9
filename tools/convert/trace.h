// An input, read once: its events in order of time, and what is known of it as a whole.
#pragma once

#include <string>

#include "tools/convert/eventspool.h"
#include "tools/convert/nametable.h"
#include "tools/convert/report.h"
#include "tools/convert/stacktable.h"
#include "tools/convert/threadtable.h"
#include "tools/convert/traceevent.h"

namespace convert
{
class CTrace
{
public:
	explicit CTrace( CReport &report, std::string spoolFolder, size_t nRunEvents = CEventSpool::RUN_EVENTS )
		: m_Report( report )
		, m_Names( report )
		, m_Spool( std::move( spoolFolder ), nRunEvents )
	{
	}

	// For importers, in the order of the input. Times out of range are repaired or left out, and counted with the
	// offset of the event. False when the spool failed.
	bool Add( TraceEvent event, int64_t nOffset );

	CReport &m_Report;
	CNameTable m_Names;
	CStackTable m_Stacks;
	CThreadTable m_Threads;
	CEventSpool m_Spool;

	int64_t m_nLongestSample = MAX_TIME; // nanoseconds; samples count for no more

	// The name of the scope that the input says is a frame, when it says so.
	std::string m_FrameName;

private:
	void CountDisorder( Thread &thread, const TraceEvent &event, int64_t nOffset );
};
} // namespace convert
