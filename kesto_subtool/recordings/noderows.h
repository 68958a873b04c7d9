// The nodes of a recording as rows, one below the other, the way trees and flame graphs show them.
#pragma once

#include <cstdint>
#include <vector>

#include "recordings/kestofile.h"

struct NodeRowLimits
{
	int32_t m_nLevels = 4096; // below the root
	int32_t m_nRows = 1000000;
};

struct NodeRow
{
	int32_t m_nNode;
	int32_t m_nParentRow;        // -1 for the root
	int32_t m_nDepth;            // 0 for the root
	int32_t m_nFirstLeaf;        // rows without children before this one
	int32_t m_nEarlierRowOfNode; // -1 = none
};

// Depth first, children in the order of their chain; row 0 is the root. A node is there as often as the chains lead to
// it, but one that is its own ancestor has no children where it appears again.
class NodeRows
{
public:
	NodeRows() = default; // no rows
	explicit NodeRows( const CKestoFile &file, const NodeRowLimits &limits = {} );

	int32_t Count() const { return static_cast<int32_t>( m_Rows.size() ); }
	const NodeRow &operator[]( int32_t nRow ) const { return m_Rows[static_cast<size_t>( nRow )]; }

	// The row that stands for the node (any int): its last one. Where it has more, they are chained from there through
	// m_nEarlierRowOfNode. -1 when it has none.
	int32_t RowOf( int32_t nNode ) const;

	// Nodes that the limits left out somewhere, each counted once.
	int32_t GetLeftOutCount() const { return m_nLeftOut; }

private:
	void AddRow( int32_t nNode, int32_t nParentRow, int32_t nFirstLeaf );
	void CountLeftOut( const CKestoFile &file, std::vector<int32_t> chains );

	std::vector<NodeRow> m_Rows;
	std::vector<int32_t> m_LastRows; // by node id
	int32_t m_nLeftOut = 0;
};
