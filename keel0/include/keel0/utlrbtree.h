// An ordered map of unique keys: a red-black tree in one growable array.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "keel0/logging.h"

// Nodes are linked by 16-bit indices and freed nodes are reused, so an entry keeps its index from Insert to Remove and
// at most 65,535 entries fit. The rebalancing is the one of Cormen, Leiserson, Rivest and Stein, "Introduction to
// Algorithms", chapter 13. K and V must be default-constructible, K copyable and V movable.
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

private:
	// What a node is; kept in the node's tag.
	enum Tag : uint16_t
	{
		Red,
		Black,
		Free // on the free list, linked by m_nRight
	};

	struct Node
	{
		IndexType m_nLeft = InvalidIndex();
		IndexType m_nRight = InvalidIndex();
		IndexType m_nParent = InvalidIndex();
		uint16_t m_nTag = Red;
		K m_Key{};
		V m_Value{};
	};

	bool IsRed( IndexType nIndex ) const { return nIndex != InvalidIndex() && m_Nodes[nIndex].m_nTag == Red; }
	IndexType Leftmost( IndexType nIndex ) const;
	IndexType TakeNode();
	void Rotate( IndexType nIndex, IndexType Node::*pDown, IndexType Node::*pUp );
	void Replace( IndexType nOld, IndexType nNew );
	void RebalanceAfterInsert( IndexType nIndex );
	void RebalanceAfterRemove( IndexType nIndex, IndexType nParent );
	int BlackHeight( IndexType nIndex, IndexType nParent, uint32_t &nNodesLeft ) const;
	bool IsFreeListConsistent() const;
	bool IsInOrder() const;

	std::vector<Node> m_Nodes;
	IndexType m_nRoot = InvalidIndex();
	IndexType m_nFirstFree = InvalidIndex();
	uint32_t m_nCount = 0;
	LessFn m_pLess;
};

template <typename K, typename V>
auto CUtlRBTree<K, V>::Find( const K &key ) const -> IndexType
{
	IndexType nIndex = m_nRoot;
	while ( nIndex != InvalidIndex() )
	{
		const Node &node = m_Nodes[nIndex];
		if ( m_pLess( key, node.m_Key ) )
			nIndex = node.m_nLeft;
		else if ( m_pLess( node.m_Key, key ) )
			nIndex = node.m_nRight;
		else
			break;
	}
	return nIndex;
}

template <typename K, typename V>
auto CUtlRBTree<K, V>::Insert( const K &key, V value ) -> IndexType
{
	IndexType nParent = InvalidIndex();
	bool bLeft = false;
	for ( IndexType nIndex = m_nRoot; nIndex != InvalidIndex(); )
	{
		const Node &node = m_Nodes[nIndex];
		bLeft = m_pLess( key, node.m_Key );
		if ( !bLeft && !m_pLess( node.m_Key, key ) )
			return nIndex;
		nParent = nIndex;
		nIndex = bLeft ? node.m_nLeft : node.m_nRight;
	}

	const IndexType nNew = TakeNode();
	if ( nNew == InvalidIndex() )
		return nNew;
	Node &node = m_Nodes[nNew];
	node = Node{};
	node.m_nParent = nParent;
	node.m_Key = key; // outside the array that may just have grown: what lies inside was found above
	node.m_Value = std::move( value );
	if ( nParent == InvalidIndex() )
		m_nRoot = nNew;
	else
		( bLeft ? m_Nodes[nParent].m_nLeft : m_Nodes[nParent].m_nRight ) = nNew;
	m_nCount++;
	RebalanceAfterInsert( nNew );
	return nNew;
}

template <typename K, typename V>
void CUtlRBTree<K, V>::Remove( IndexType nIndex )
{
	const IndexType nLeft = m_Nodes[nIndex].m_nLeft;
	const IndexType nRight = m_Nodes[nIndex].m_nRight;
	uint16_t nRemovedColour = m_Nodes[nIndex].m_nTag;
	IndexType nMoved = nLeft != InvalidIndex() ? nLeft : nRight; // takes the removed place; may be none
	IndexType nMovedParent = m_Nodes[nIndex].m_nParent;

	if ( nLeft == InvalidIndex() || nRight == InvalidIndex() )
	{
		Replace( nIndex, nMoved );
	}
	else
	{
		// The next entry in order has no left child: it leaves its place to its right one and takes this entry's.
		const IndexType nNext = Leftmost( nRight );
		nRemovedColour = m_Nodes[nNext].m_nTag;
		nMoved = m_Nodes[nNext].m_nRight;
		nMovedParent = m_Nodes[nNext].m_nParent == nIndex ? nNext : m_Nodes[nNext].m_nParent;
		if ( nMovedParent != nNext )
		{
			Replace( nNext, nMoved );
			m_Nodes[nNext].m_nRight = nRight;
			m_Nodes[nRight].m_nParent = nNext;
		}
		Replace( nIndex, nNext );
		m_Nodes[nNext].m_nLeft = nLeft;
		m_Nodes[nLeft].m_nParent = nNext;
		m_Nodes[nNext].m_nTag = m_Nodes[nIndex].m_nTag;
	}

	Node &freed = m_Nodes[nIndex];
	freed = Node{};
	freed.m_nTag = Free;
	freed.m_nRight = m_nFirstFree;
	m_nFirstFree = nIndex;
	m_nCount--;
	if ( nRemovedColour == Black )
		RebalanceAfterRemove( nMoved, nMovedParent );
}

template <typename K, typename V>
void CUtlRBTree<K, V>::RemoveAll()
{
	m_Nodes.clear();
	m_nRoot = InvalidIndex();
	m_nFirstFree = InvalidIndex();
	m_nCount = 0;
}

template <typename K, typename V>
bool CUtlRBTree<K, V>::IsValidIndex( IndexType nIndex ) const
{
	return nIndex < m_Nodes.size() && m_Nodes[nIndex].m_nTag != Free;
}

template <typename K, typename V>
auto CUtlRBTree<K, V>::FirstInorder() const -> IndexType
{
	return m_nRoot == InvalidIndex() ? InvalidIndex() : Leftmost( m_nRoot );
}

template <typename K, typename V>
auto CUtlRBTree<K, V>::NextInorder( IndexType nIndex ) const -> IndexType
{
	if ( m_Nodes[nIndex].m_nRight != InvalidIndex() )
		return Leftmost( m_Nodes[nIndex].m_nRight );
	IndexType nParent = m_Nodes[nIndex].m_nParent;
	while ( nParent != InvalidIndex() && m_Nodes[nParent].m_nRight == nIndex )
	{
		nIndex = nParent;
		nParent = m_Nodes[nIndex].m_nParent;
	}
	return nParent;
}

template <typename K, typename V>
auto CUtlRBTree<K, V>::Leftmost( IndexType nIndex ) const -> IndexType
{
	while ( m_Nodes[nIndex].m_nLeft != InvalidIndex() )
		nIndex = m_Nodes[nIndex].m_nLeft;
	return nIndex;
}

// A node from the free list or a new one; InvalidIndex() with a warning when all indices are in use.
template <typename K, typename V>
auto CUtlRBTree<K, V>::TakeNode() -> IndexType
{
	if ( m_nFirstFree != InvalidIndex() )
	{
		const IndexType nIndex = m_nFirstFree;
		m_nFirstFree = m_Nodes[nIndex].m_nRight;
		return nIndex;
	}
	if ( m_Nodes.size() >= MaxElements() )
	{
		Warning( "CUtlRBTree overflow with %u elements!\n", m_nCount );
		return InvalidIndex();
	}
	m_Nodes.emplace_back();
	return static_cast<IndexType>( m_Nodes.size() - 1 );
}

// Turns a node down to its pDown side; its pUp child takes its place.
template <typename K, typename V>
void CUtlRBTree<K, V>::Rotate( IndexType nIndex, IndexType Node::*pDown, IndexType Node::*pUp )
{
	const IndexType nUp = m_Nodes[nIndex].*pUp;
	const IndexType nMiddle = m_Nodes[nUp].*pDown;
	m_Nodes[nIndex].*pUp = nMiddle;
	if ( nMiddle != InvalidIndex() )
		m_Nodes[nMiddle].m_nParent = nIndex;
	Replace( nIndex, nUp );
	m_Nodes[nUp].*pDown = nIndex;
	m_Nodes[nIndex].m_nParent = nUp;
}

// Lets nOld's parent point at nNew (which may be none) instead.
template <typename K, typename V>
void CUtlRBTree<K, V>::Replace( IndexType nOld, IndexType nNew )
{
	const IndexType nParent = m_Nodes[nOld].m_nParent;
	if ( nParent == InvalidIndex() )
		m_nRoot = nNew;
	else if ( m_Nodes[nParent].m_nLeft == nOld )
		m_Nodes[nParent].m_nLeft = nNew;
	else
		m_Nodes[nParent].m_nRight = nNew;
	if ( nNew != InvalidIndex() )
		m_Nodes[nNew].m_nParent = nParent;
}

template <typename K, typename V>
void CUtlRBTree<K, V>::RebalanceAfterInsert( IndexType nIndex )
{
	while ( IsRed( m_Nodes[nIndex].m_nParent ) )
	{
		IndexType nParent = m_Nodes[nIndex].m_nParent;
		const IndexType nGrandparent = m_Nodes[nParent].m_nParent; // exists: a red node is never the root
		const bool bLeft = m_Nodes[nGrandparent].m_nLeft == nParent;
		IndexType Node::*pNear = bLeft ? &Node::m_nLeft : &Node::m_nRight;
		IndexType Node::*pFar = bLeft ? &Node::m_nRight : &Node::m_nLeft;
		const IndexType nUncle = m_Nodes[nGrandparent].*pFar;
		if ( IsRed( nUncle ) )
		{
			m_Nodes[nParent].m_nTag = Black;
			m_Nodes[nUncle].m_nTag = Black;
			m_Nodes[nGrandparent].m_nTag = Red;
			nIndex = nGrandparent;
			continue;
		}
		if ( m_Nodes[nParent].*pFar == nIndex )
		{
			Rotate( nParent, pNear, pFar );
			std::swap( nIndex, nParent );
		}
		m_Nodes[nParent].m_nTag = Black;
		m_Nodes[nGrandparent].m_nTag = Red;
		Rotate( nGrandparent, pFar, pNear );
	}
	m_Nodes[m_nRoot].m_nTag = Black;
}

// nIndex (which may be none, hence its parent) is one black node short.
template <typename K, typename V>
void CUtlRBTree<K, V>::RebalanceAfterRemove( IndexType nIndex, IndexType nParent )
{
	while ( nIndex != m_nRoot && !IsRed( nIndex ) )
	{
		const bool bLeft = m_Nodes[nParent].m_nLeft == nIndex;
		IndexType Node::*pNear = bLeft ? &Node::m_nLeft : &Node::m_nRight;
		IndexType Node::*pFar = bLeft ? &Node::m_nRight : &Node::m_nLeft;
		IndexType nSibling = m_Nodes[nParent].*pFar; // exists: its side has a black node more
		if ( IsRed( nSibling ) )
		{
			m_Nodes[nSibling].m_nTag = Black;
			m_Nodes[nParent].m_nTag = Red;
			Rotate( nParent, pNear, pFar );
			nSibling = m_Nodes[nParent].*pFar;
		}
		if ( !IsRed( m_Nodes[nSibling].m_nLeft ) && !IsRed( m_Nodes[nSibling].m_nRight ) )
		{
			m_Nodes[nSibling].m_nTag = Red;
			nIndex = nParent;
			nParent = m_Nodes[nIndex].m_nParent;
			continue;
		}
		if ( !IsRed( m_Nodes[nSibling].*pFar ) )
		{
			m_Nodes[m_Nodes[nSibling].*pNear].m_nTag = Black;
			m_Nodes[nSibling].m_nTag = Red;
			Rotate( nSibling, pFar, pNear );
			nSibling = m_Nodes[nParent].*pFar;
		}
		m_Nodes[nSibling].m_nTag = m_Nodes[nParent].m_nTag;
		m_Nodes[nParent].m_nTag = Black;
		m_Nodes[m_Nodes[nSibling].*pFar].m_nTag = Black;
		Rotate( nParent, pNear, pFar );
		nIndex = m_nRoot;
	}
	if ( nIndex != InvalidIndex() )
		m_Nodes[nIndex].m_nTag = Black;
}

template <typename K, typename V>
bool CUtlRBTree<K, V>::CheckInvariants() const
{
	uint32_t nNodesLeft = m_nCount;
	return m_nCount <= m_Nodes.size() && !IsRed( m_nRoot ) && BlackHeight( m_nRoot, InvalidIndex(), nNodesLeft ) >= 0 &&
		   nNodesLeft == 0 && IsFreeListConsistent() && IsInOrder();
}

// The number of black nodes on every way down from nIndex, or -1 where something is wrong. nNodesLeft is how many nodes
// may still come, so that a loop in the links ends.
template <typename K, typename V>
int CUtlRBTree<K, V>::BlackHeight( IndexType nIndex, IndexType nParent, uint32_t &nNodesLeft ) const
{
	if ( nIndex == InvalidIndex() )
		return 0;
	if ( nNodesLeft == 0 || !IsValidIndex( nIndex ) || m_Nodes[nIndex].m_nParent != nParent )
		return -1;
	nNodesLeft--;
	const Node &node = m_Nodes[nIndex];
	if ( IsRed( nIndex ) && ( IsRed( node.m_nLeft ) || IsRed( node.m_nRight ) ) )
		return -1;
	const int nLeftHeight = BlackHeight( node.m_nLeft, nIndex, nNodesLeft );
	const int nRightHeight = BlackHeight( node.m_nRight, nIndex, nNodesLeft );
	if ( nLeftHeight < 0 || nLeftHeight != nRightHeight )
		return -1;
	return nLeftHeight + ( node.m_nTag == Black ? 1 : 0 );
}

// Whether the list holds every node that is not in the tree.
template <typename K, typename V>
bool CUtlRBTree<K, V>::IsFreeListConsistent() const
{
	size_t nExpected = m_Nodes.size() - m_nCount;
	IndexType nIndex = m_nFirstFree;
	for ( ; nIndex != InvalidIndex() && nExpected > 0; nExpected-- )
	{
		if ( nIndex >= m_Nodes.size() || m_Nodes[nIndex].m_nTag != Free )
			return false;
		nIndex = m_Nodes[nIndex].m_nRight;
	}
	return nIndex == InvalidIndex() && nExpected == 0;
}

template <typename K, typename V>
bool CUtlRBTree<K, V>::IsInOrder() const
{
	IndexType nIndex = FirstInorder();
	while ( nIndex != InvalidIndex() )
	{
		const IndexType nNext = NextInorder( nIndex );
		if ( nNext != InvalidIndex() && !m_pLess( m_Nodes[nIndex].m_Key, m_Nodes[nNext].m_Key ) )
			return false;
		nIndex = nNext;
	}
	return true;
}
