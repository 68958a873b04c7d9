// The figures of a whole recording.
#pragma once

#include <cstdint>
#include <vector>

#include "tools/loadedrecording.h"
#include "tools/nodefigures.h"
#include "tools/nodetree.h"

enum class NodeOrder
{
	Total, // time of a node with its descendants
	Self   // without its direct children
};

struct Summary
{
	struct Node
	{
		size_t m_nRow; // of the tree
		NodeTotals m_Totals;
	};

	int m_nFrames = 0;
	size_t m_nNodes = 0; // in the tree
	int32_t m_nLevels = 0;
	int64_t m_nSize = 0;     // bytes
	int64_t m_nDuration = 0; // microseconds: all frames together
	CDistribution m_FrameTimes;
	int m_nSlowestFrame = -1; // the first of equals; -1 without frames
	std::vector<Node> m_TopNodes;
};

// The recording must have a file, and the tree is that file's. Of nodes with equal times the one earlier in the tree
// comes first.
Summary Summarise( const LoadedRecording &recording, const CNodeTree &tree, size_t nTopNodes, NodeOrder order );
