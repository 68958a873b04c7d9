// Brings the stacks and the weights of a sampled profile together.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/convert/eventspool.h"
#include "tools/convert/traceevent.h"

namespace convert
{
// The two are lists, one behind the other, and may be most of a large file: the one that comes first waits in a spool.
// What is handed in returns the sample when its other half is there. A stack or a weight that is none is NO_NAME in
// m_nName; so is the sample that one of them is in.
class CSamplePairs
{
public:
	// Folder and events in memory as for a spool.
	CSamplePairs( std::string folder, size_t nRunEvents )
		: m_Folder( std::move( folder ) )
		, m_nRunEvents( nRunEvents )
	{
	}

	std::optional<TraceEvent> AddStack( uint32_t nStack );
	std::optional<TraceEvent> AddWeight( const TraceEvent &weight ); // with duration and calls

	// Ends a profile, another one may follow. Returns how many stacks and weights have found no other half.
	uint64_t End();

	const std::string &Problem() const { return m_Problem; } // with the spool; empty when there is none

private:
	enum class Half
	{
		Stack,
		Weight
	};
	std::optional<TraceEvent> Add( Half half, TraceEvent event );
	void Wait( TraceEvent event );
	const TraceEvent *NextWaiting();

	const std::string m_Folder;
	const size_t m_nRunEvents;
	std::optional<CEventSpool> m_Waiting; // in the order of m_nTime, a number
	Half m_WaitingHalf = Half::Stack;
	bool m_bReading = false; // the other half came, so m_Waiting takes no more
	uint64_t m_nRead = 0;    // of m_Waiting
	uint64_t m_nAlone = 0;
	std::string m_Problem;
};
} // namespace convert
