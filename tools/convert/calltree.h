// The nodes of a recording that is being made: which names were called from where.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "tools/convert/pairindex.h"
#include "wire/recordingtokens.h"

namespace convert
{
// Node 0 is the root. A node's id is greater than its parent's, so that walking ids down visits children first.
class CCallTree
{
public:
	static constexpr int32_t NONE = -1;
	static constexpr int32_t ROOT = 0;

	struct Node
	{
		int32_t m_nParent = NONE;
		int32_t m_nFirstChild = NONE; // children in the order in which they were added
		int32_t m_nLastChild = NONE;
		int32_t m_nNextSibling = NONE;
		uint32_t m_nName = 0; // in whatever names the nodes
	};

	// The child of that name, which is added when it is new; NONE when the tree is full, and below NONE.
	int32_t Child( int32_t nParent, uint32_t nName );

	// A new child, even when there is one of that name already; the tree must not be full.
	int32_t AddChild( int32_t nParent, uint32_t nName );

	bool IsFull() const { return Count() >= wire::RECORDING_MAX_NODES; }
	int32_t Count() const { return static_cast<int32_t>( m_Nodes.size() ); }
	const Node &Get( int32_t nNode ) const { return m_Nodes[static_cast<size_t>( nNode )]; }

private:
	std::vector<Node> m_Nodes{ Node{} };
	CPairIndex m_Index; // of all children but the first ones
};

// What a frame says of a node.
struct NodeTimes
{
	uint64_t m_nCalls = 0;
	int64_t m_nTime = 0; // nanoseconds
};
} // namespace convert
