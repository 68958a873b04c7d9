#include "recordings/siblingforest.h"

int32_t CSiblingForest::AddVertex()
{
	m_Vertices.emplace_back();
	return Count() - 1;
}

void CSiblingForest::SetNext( int32_t nVertex, int32_t nNext )
{
	Access( nVertex );
	int32_t &nAhead = At( nVertex ).m_nChildren[0];
	if ( nAhead >= 0 )
		At( nAhead ).m_nParent = -1;
	nAhead = -1;
	if ( nNext >= 0 )
		Access( nNext );
	At( nVertex ).m_nParent = nNext;
}

bool CSiblingForest::ChainHas( int32_t nFirst, int32_t nVertex )
{
	// The chain becomes one splay tree with nFirst at its top; splaying a vertex of the same tree takes that place
	// away.
	Access( nFirst );
	Splay( nVertex );
	return nFirst == nVertex || At( nFirst ).m_nParent >= 0;
}

bool CSiblingForest::IsTop( int32_t nVertex ) const
{
	const int32_t nParent = At( nVertex ).m_nParent;
	return nParent < 0 || ( At( nParent ).m_nChildren[0] != nVertex && At( nParent ).m_nChildren[1] != nVertex );
}

void CSiblingForest::Rotate( int32_t nVertex )
{
	const int32_t nParent = At( nVertex ).m_nParent;
	const int32_t nGrandparent = At( nParent ).m_nParent;
	const int nSide = At( nParent ).m_nChildren[1] == nVertex ? 1 : 0;
	if ( !IsTop( nParent ) )
		At( nGrandparent ).m_nChildren[At( nGrandparent ).m_nChildren[1] == nParent ? 1 : 0] = nVertex;
	const int32_t nInner = At( nVertex ).m_nChildren[1 - nSide];
	At( nParent ).m_nChildren[nSide] = nInner;
	if ( nInner >= 0 )
		At( nInner ).m_nParent = nParent;
	At( nVertex ).m_nChildren[1 - nSide] = nParent;
	At( nParent ).m_nParent = nVertex;
	At( nVertex ).m_nParent = nGrandparent;
}

void CSiblingForest::Splay( int32_t nVertex )
{
	while ( !IsTop( nVertex ) )
	{
		const int32_t nParent = At( nVertex ).m_nParent;
		if ( !IsTop( nParent ) )
		{
			const int32_t nGrandparent = At( nParent ).m_nParent;
			const bool bStraight =
				( At( nParent ).m_nChildren[0] == nVertex ) == ( At( nGrandparent ).m_nChildren[0] == nParent );
			Rotate( bStraight ? nParent : nVertex );
		}
		Rotate( nVertex );
	}
}

// Makes the chain from nVertex to its end one splay tree with nVertex at its top.
void CSiblingForest::Access( int32_t nVertex )
{
	Splay( nVertex );
	At( nVertex ).m_nChildren[1] = -1; // what comes before it keeps pointing to it, as a path of its own
	while ( At( nVertex ).m_nParent >= 0 )
	{
		const int32_t nAhead = At( nVertex ).m_nParent;
		Splay( nAhead );
		At( nAhead ).m_nChildren[1] = nVertex;
		Splay( nVertex );
	}
}
