// The open scopes of one thread.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "tools/convert/frametimes.h"
#include "tools/convert/report.h"
#include "tools/convert/traceevent.h"

namespace convert
{
// Takes the events of a thread in order of time, nests them, and books the times of what ends. What does not nest is
// repaired and counted.
class CScopeStack
{
public:
	// Times are often rounded before they are written: by so much scopes may overlap without being damaged.
	static constexpr int64_t TOLERANCE = 1000; // nanoseconds

	CScopeStack( CFrameTimes &frame, CReport &report )
		: m_Frame( frame )
		, m_Report( report )
	{
	}

	void SetBase( int32_t nNode ) { m_nBase = nNode; } // the node that the outermost scopes are below
	int32_t Base() const { return m_nBase; }

	// bRoot: the scope stands for the frame itself; it has no node and what is inside is below the base.
	void Begin( const TraceEvent &event, bool bRoot );
	void Complete( const TraceEvent &event, bool bRoot );
	void End( const TraceEvent &event );

	bool IsEmpty() const { return m_Scopes.empty(); }
	void EndBefore( int64_t nTime ); // ends what is known to have ended by then
	void Split( int64_t nTime );     // books the open scopes up to there; they go on in the next frame
	void Finish( int64_t nTime );    // ends everything

private:
	struct Scope
	{
		int64_t m_nBegin;
		int64_t m_nLimit; // where it ends at the latest; at most the limit of the scope around it
		int32_t m_nNode;  // that its own times go to; NONE when they go nowhere
		int32_t m_nBelow; // that its children are below
		uint32_t m_nName;
		bool m_bComplete; // ends at its limit; otherwise an End is expected
	};

	void Push( const TraceEvent &event, int64_t nLimit, bool bRoot );
	void Pop( int64_t nTime );
	void PopUnended( int64_t nTime );
	bool IsOpen( uint32_t nName );

	CFrameTimes &m_Frame;
	CReport &m_Report;
	int32_t m_nBase = CCallTree::ROOT;
	std::vector<Scope> m_Scopes;
	size_t m_nExpectedEnds = 0;

	// How many scopes of a name expect an end. Kept only from the first end on that is not the innermost scope's, so
	// that looking for ends without a begin costs no walk over the stack each time.
	bool m_bCountsNames = false;
	std::unordered_map<uint32_t, size_t> m_OpenNames;
};
} // namespace convert
