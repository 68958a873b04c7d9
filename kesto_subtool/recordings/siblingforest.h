// Answers whether a node is in a chain of siblings without walking the chain.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// Chains of siblings form a forest: every vertex points to its next one, several may point to the same, and there is no
// way back. Re-linking a vertex moves it together with all that point to it. This is a link-cut forest (paths to the
// root as splay trees, see Sleator and Tarjan, "A Data Structure for Dynamic Trees"): each operation takes amortised
// logarithmic time, whatever the chains look like.
class CSiblingForest
{
public:
	int32_t AddVertex(); // ascending from 0; has no next one yet
	int32_t Count() const { return static_cast<int32_t>( m_Vertices.size() ); }

	// Replaces the vertex's next one; -1 = none. The vertex must not be in the chain that starts at nNext.
	void SetNext( int32_t nVertex, int32_t nNext );

	// Whether the chain that starts at nFirst passes nVertex.
	bool ChainHas( int32_t nFirst, int32_t nVertex );

private:
	struct Vertex
	{
		int32_t m_nParent = -1;              // in the splay tree; of its top: the vertex that its path continues at
		int32_t m_nChildren[2] = { -1, -1 }; // 0: further along the chain, 1: before this vertex
	};

	Vertex &At( int32_t nVertex ) { return m_Vertices[static_cast<size_t>( nVertex )]; }
	const Vertex &At( int32_t nVertex ) const { return m_Vertices[static_cast<size_t>( nVertex )]; }
	bool IsTop( int32_t nVertex ) const;
	void Rotate( int32_t nVertex );
	void Splay( int32_t nVertex );
	void Access( int32_t nVertex );

	std::vector<Vertex> m_Vertices;
};
