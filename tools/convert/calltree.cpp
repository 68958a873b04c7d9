#include "tools/convert/calltree.h"

namespace convert
{
int32_t CCallTree::Child( int32_t nParent, uint32_t nName )
{
	if ( nParent == NONE )
		return NONE;
	// A first child is found without the index, which so stays small where most nodes have only one.
	const int32_t nFirst = Get( nParent ).m_nFirstChild;
	if ( nFirst != NONE && Get( nFirst ).m_nName == nName )
		return nFirst;
	if ( nFirst == NONE )
		return IsFull() ? NONE : AddChild( nParent, nName );
	const uint64_t nKey = CPairIndex::Key( static_cast<uint32_t>( nParent ), nName );
	const uint32_t nFound = m_Index.Find( nKey );
	if ( nFound != CPairIndex::EMPTY )
		return static_cast<int32_t>( nFound );
	if ( IsFull() )
		return NONE;
	const int32_t nNode = AddChild( nParent, nName );
	m_Index.Add( nKey, static_cast<uint32_t>( nNode ) );
	return nNode;
}

int32_t CCallTree::AddChild( int32_t nParent, uint32_t nName )
{
	const int32_t nNode = Count();
	m_Nodes.push_back( { nParent, NONE, NONE, NONE, nName } );
	Node &parent = m_Nodes[static_cast<size_t>( nParent )];
	if ( parent.m_nLastChild == NONE )
		parent.m_nFirstChild = nNode;
	else
		m_Nodes[static_cast<size_t>( parent.m_nLastChild )].m_nNextSibling = nNode;
	parent.m_nLastChild = nNode;
	return nNode;
}
} // namespace convert
