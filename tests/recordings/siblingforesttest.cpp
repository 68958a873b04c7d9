#include "recordings/siblingforest.h"

#include <gtest/gtest.h>

#include <random>

namespace
{
// The same with one number per vertex.
class CPlainForest
{
public:
	bool ChainHas( int nFirst, int nVertex ) const
	{
		for ( int i = nFirst; i >= 0; i = m_Next[static_cast<size_t>( i )] )
			if ( i == nVertex )
				return true;
		return false;
	}

	std::vector<int> m_Next;
};

TEST( SiblingForest, AgreesWithWalkedChainsUnderRandomLinks )
{
	for ( uint32_t nSeed = 0; nSeed < 60; nSeed++ )
	{
		std::mt19937 random( nSeed );
		const int nVertices = 1 + static_cast<int>( random() % 40 );
		const auto any = [&] { return static_cast<int>( random() % static_cast<unsigned>( nVertices ) ); };
		CSiblingForest forest;
		CPlainForest plain;
		for ( int i = 0; i < nVertices; i++ )
		{
			ASSERT_EQ( forest.AddVertex(), i );
			plain.m_Next.push_back( -1 );
		}
		for ( int nStep = 0; nStep < 2000; nStep++ )
		{
			const int nVertex = any();
			const int nNext = random() % 8 == 0 ? -1 : any();
			if ( nNext < 0 || !plain.ChainHas( nNext, nVertex ) )
			{
				forest.SetNext( nVertex, nNext );
				plain.m_Next[static_cast<size_t>( nVertex )] = nNext;
			}
			const int nFirst = any();
			const int nWanted = any();
			ASSERT_EQ( forest.ChainHas( nFirst, nWanted ), plain.ChainHas( nFirst, nWanted ) )
				<< "seed " << nSeed << " step " << nStep;
		}
	}
}
} // namespace
