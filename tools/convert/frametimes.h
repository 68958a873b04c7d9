// The times of the frame that is being put together.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "tools/convert/calltree.h"

namespace convert
{
class CFrameTimes
{
public:
	CCallTree m_Tree;
	int64_t m_nStart = 0; // of the frame

	// Sums stop at the ends of their range. NONE takes nothing.
	void Add( int32_t nNode, int64_t nTime, uint64_t nCalls )
	{
		if ( nNode == CCallTree::NONE )
			return;
		NodeTimes &times = At( nNode );
		if ( __builtin_add_overflow( times.m_nTime, nTime, &times.m_nTime ) )
			times.m_nTime = INT64_MAX;
		times.m_nCalls += nCalls;
	}

	// The part of a scope that lies in the frame.
	void AddSpan( int32_t nNode, int64_t nBegin, int64_t nEnd )
	{
		Add( nNode, nEnd - std::max( nBegin, m_nStart ), 0 );
	}

	NodeTimes &At( int32_t nNode )
	{
		if ( m_Times.size() <= static_cast<size_t>( nNode ) )
			m_Times.resize( static_cast<size_t>( m_Tree.Count() ) );
		return m_Times[static_cast<size_t>( nNode )];
	}
	std::span<const NodeTimes> Times() // one per node of the tree
	{
		m_Times.resize( static_cast<size_t>( m_Tree.Count() ) );
		return m_Times;
	}
	void Clear() { std::fill( m_Times.begin(), m_Times.end(), NodeTimes{} ); }

private:
	std::vector<NodeTimes> m_Times;
};
} // namespace convert
