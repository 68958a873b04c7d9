// The nodes of a recording that hang together, and the paths to them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "recordings/kestofile.h"

// Depth first from the root, children in the order of their chain. Each node is there once, where it is found first;
// the chains of a damaged recording may lead to it again. The root is there when the recording has frames or nodes.
class CNodeTree
{
public:
	struct Row
	{
		int32_t m_nNode;
		int32_t m_nParentRow; // -1 for the root
		int32_t m_nDepth;     // 0 for the root
	};

	// The file must outlive the tree.
	explicit CNodeTree( const CKestoFile &file );

	const std::vector<Row> &Rows() const { return m_Rows; } // a parent stands before its children
	int32_t Levels() const { return m_nLevels; }            // the root alone is one level

	std::string_view Name( const Row &row ) const { return m_File.GetNodeName( row.m_nNode ); }

	// The names from below the root to the node, with "/" between them; the root's own name for the root, or "(root)"
	// when it has none. Of more than MAX_PATH_NAMES names the last ones stand behind ".../". Latin-1.
	std::string Path( const Row &row ) const;
	static constexpr int MAX_PATH_NAMES = 64;

	// Whether the text is the whole path to the node (of any length), or the node's name.
	bool IsNamed( const Row &row, std::string_view latin1 ) const;

private:
	bool HasPath( const Row &row, std::string_view latin1 ) const;

	const CKestoFile &m_File;
	std::vector<Row> m_Rows;
	int32_t m_nLevels = 0;
};
