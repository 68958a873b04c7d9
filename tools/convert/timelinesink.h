// Frames one after another as scopes that begin and end, for formats that are time lines.
#pragma once

#include <vector>

#include "tools/convert/framesink.h"

namespace convert
{
// A recording says how long each node took, not when. Here a frame begins where the one before it ends, children begin
// one after another where their parent does, and a node that is shorter than its children together is widened. The
// frame itself is the outermost scope. Nodes without calls and time are left out.
class CTimelineSink : public IFrameSink
{
public:
	explicit CTimelineSink( CReport &report )
		: m_Report( report )
	{
	}
	bool AddFrame( const CCallTree &tree, std::span<const NodeTimes> times ) final;
	bool AddFrameWithoutTimes( const CCallTree &tree ) final;

	static constexpr const char *FRAME_NAME = "Frame"; // of the outermost scope

protected:
	// Times are nanoseconds from the first frame's begin.
	virtual void BeginScope( const CCallTree &tree, int32_t nNode, int64_t nTime, uint64_t nCalls ) = 0;
	virtual void EndScope( int32_t nNode, int64_t nTime ) = 0;
	virtual bool Flush() = 0;

	int64_t EndTime() const { return m_nTime; }

	CReport &m_Report;

private:
	void Measure( const CCallTree &tree, std::span<const NodeTimes> times );

	struct Extent
	{
		int64_t m_nWidth = 0;
		int64_t m_nChildren = 0; // width of the children together
		int64_t m_nNext = 0;     // where the next child begins
	};
	std::vector<Extent> m_Extents;
	std::vector<bool> m_IsShown; // with a node its parent
	int64_t m_nTime = 0;
};

// Microseconds with as many decimals as are needed.
std::string FormatMicroseconds( int64_t nNanoseconds );
} // namespace convert
