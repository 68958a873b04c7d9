#include "recordings/siblingforest.h"

int32_t CSiblingForest::AddVertex()
{
	m_Vertices.emplace_back();
	return Count() - 1;
}

void CSiblingForest::SetNext( int32_t nVertex, int32_t nNext )
{
	Access( nVertex );
	int32_t &nAhead = m_Vertices[nVertex].m_nChildren[0];
	if ( nAhead >= 0 )
		m_Vertices[nAhead].m_nParent = -1;
	nAhead = -1;
	if ( nNext >= 0 )
		Access( nNext );
	m_Vertices[nVertex].m_nParent = nNext;
}

bool CSiblingForest::ChainHas( int32_t nFirst, int32_t nVertex )
{
	// The chain becomes one splay tree with nFirst at its top; splaying a vertex of the same tree takes that place
	// away.
	Access( nFirst );
	Splay( nVertex );
	return nFirst == nVertex || m_Vertices[nFirst].m_nParent >= 0;
}

bool CSiblingForest::IsTop( int32_t nVertex ) const
{
	const int32_t nParent = m_Vertices[nVertex].m_nParent;
	return nParent < 0 ||
		   ( m_Vertices[nParent].m_nChildren[0] != nVertex && m_Vertices[nParent].m_nChildren[1] != nVertex );
}

void CSiblingForest::Rotate( int32_t nVertex )
{
	const int32_t nParent = m_Vertices[nVertex].m_nParent;
	const int32_t nGrandparent = m_Vertices[nParent].m_nParent;
	const int nSide = m_Vertices[nParent].m_nChildren[1] == nVertex ? 1 : 0;
	if ( !IsTop( nParent ) )
		m_Vertices[nGrandparent].m_nChildren[m_Vertices[nGrandparent].m_nChildren[1] == nParent ? 1 : 0] = nVertex;
	const int32_t nInner = m_Vertices[nVertex].m_nChildren[1 - nSide];
	m_Vertices[nParent].m_nChildren[nSide] = nInner;
	if ( nInner >= 0 )
		m_Vertices[nInner].m_nParent = nParent;
	m_Vertices[nVertex].m_nChildren[1 - nSide] = nParent;
	m_Vertices[nParent].m_nParent = nVertex;
	m_Vertices[nVertex].m_nParent = nGrandparent;
}

void CSiblingForest::Splay( int32_t nVertex )
{
	while ( !IsTop( nVertex ) )
	{
		const int32_t nParent = m_Vertices[nVertex].m_nParent;
		if ( !IsTop( nParent ) )
		{
			const int32_t nGrandparent = m_Vertices[nParent].m_nParent;
			const bool bStraight = ( m_Vertices[nParent].m_nChildren[0] == nVertex ) ==
								   ( m_Vertices[nGrandparent].m_nChildren[0] == nParent );
			Rotate( bStraight ? nParent : nVertex );
		}
		Rotate( nVertex );
	}
}

// Makes the chain from nVertex to its end one splay tree with nVertex at its top.
void CSiblingForest::Access( int32_t nVertex )
{
	Splay( nVertex );
	m_Vertices[nVertex].m_nChildren[1] = -1; // what comes before it keeps pointing to it, as a path of its own
	while ( m_Vertices[nVertex].m_nParent >= 0 )
	{
		const int32_t nAhead = m_Vertices[nVertex].m_nParent;
		Splay( nAhead );
		m_Vertices[nAhead].m_nChildren[1] = nVertex;
		Splay( nVertex );
	}
}
