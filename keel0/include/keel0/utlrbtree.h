// An ordered map of unique keys: a red-black tree in one growable array.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "keel0/logging.h"

// Nodes are linked by 16-bit indices and freed nodes are reused, so an entry keeps its index from Insert to Remove and
// at most 65,535 entries fit. The rebalancing is the one of Cormen, Leiserson, Rivest and Stein, "Introduction to
// Algorithms", chapter 13. K and V must be default-constructible and movable.
template <typename K, typename V>
class CUtlRBTree
{
public:
	using IndexType = uint16_t;
	using LessFn = bool ( * )( const K &, const K & );

	static constexpr IndexType InvalidIndex() { return 0xFFFF; }
	static constexpr uint32_t MaxElements() { return 0xFFFF; }

	explicit CUtlRBTree( LessFn pLess )
		: m_pLess( pLess )
	{
	} // a strict weak order; not null

	// The entry with that key, or InvalidIndex().
	IndexType Find( const K &key ) const;

	// Adds an entry and returns its index; when the key is there already, the index of that entry, which keeps its
	// value. With all indices in use nothing is added: Warning says so and the result is InvalidIndex().
	IndexType Insert( const K &key, V value );

	// Removes a valid entry; its key and value are reset and its index becomes free for the next Insert.
	void Remove( IndexType nIndex );
	void RemoveAll();

	uint32_t Count() const { return m_nCount; }
	bool IsValidIndex( IndexType nIndex ) const;

	const K &Key( IndexType nIndex ) const { return m_Nodes[nIndex].m_Key; }
	V &Element( IndexType nIndex ) { return m_Nodes[nIndex].m_Value; }
	const V &Element( IndexType nIndex ) const { return m_Nodes[nIndex].m_Value; }

	// In the order of the keys; InvalidIndex() behind the last one and for an empty tree.
	IndexType FirstInorder() const;
	IndexType NextInorder( IndexType nIndex ) const;

	// Whether the tree is a red-black tree in key order with consistent links, counts and free list. For tests.
	bool CheckInvariants() const;
};
