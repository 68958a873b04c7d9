#include "keel0/utlrbtree.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <bit>
#include <map>
#include <memory>
#include <string>

#include "support/logguard.h"
#include "support/randomseed.h"

namespace
{
using testing::ElementsAre;
using testing::IsEmpty;

template <typename K>
bool Less( const K &a, const K &b )
{
	return a < b;
}

template <typename K, typename V>
std::vector<std::pair<K, V>> InOrder( const CUtlRBTree<K, V> &tree )
{
	std::vector<std::pair<K, V>> entries;
	for ( auto i = tree.FirstInorder(); i != tree.InvalidIndex(); i = tree.NextInorder( i ) )
		entries.emplace_back( tree.Key( i ), tree.Element( i ) );
	return entries;
}

// A tree and what it should hold, with the index that each entry got.
struct Compared
{
	struct Expected
	{
		std::string m_Value;
		uint16_t m_nIndex;
	};

	CUtlRBTree<int, std::string> m_Tree{ Less<int> };
	std::map<int, Expected> m_Model;

	void Insert( int nKey, const std::string &value )
	{
		const uint16_t nIndex = m_Tree.Insert( nKey, value );
		ASSERT_NE( nIndex, m_Tree.InvalidIndex() );
		const auto [pEntry, bNew] = m_Model.try_emplace( nKey, Expected{ value, nIndex } );
		EXPECT_EQ( nIndex, pEntry->second.m_nIndex ) << "of key " << nKey << ( bNew ? "" : ", which was there" );
	}

	void Remove( int nKey )
	{
		const uint16_t nIndex = m_Tree.Find( nKey );
		const auto pEntry = m_Model.find( nKey );
		ASSERT_EQ( nIndex != m_Tree.InvalidIndex(), pEntry != m_Model.end() );
		if ( pEntry == m_Model.end() )
			return;
		m_Tree.Remove( nIndex );
		m_Model.erase( pEntry );
		EXPECT_FALSE( m_Tree.IsValidIndex( nIndex ) );
	}

	void Check() const
	{
		ASSERT_TRUE( m_Tree.CheckInvariants() );
		ASSERT_EQ( m_Tree.Count(), m_Model.size() );
		auto i = m_Tree.FirstInorder();
		for ( const auto &[nKey, expected] : m_Model )
		{
			ASSERT_EQ( i, expected.m_nIndex );
			ASSERT_TRUE( m_Tree.IsValidIndex( i ) );
			ASSERT_EQ( m_Tree.Key( i ), nKey );
			ASSERT_EQ( m_Tree.Element( i ), expected.m_Value );
			ASSERT_EQ( m_Tree.Find( nKey ), i );
			i = m_Tree.NextInorder( i );
		}
		ASSERT_EQ( i, m_Tree.InvalidIndex() );
	}
};

TEST( UtlRBTree, AnEmptyTreeHasNothing )
{
	const CUtlRBTree<int, int> tree( Less<int> );
	EXPECT_EQ( tree.Count(), 0u );
	EXPECT_EQ( tree.Find( 1 ), 0xFFFF );
	EXPECT_EQ( tree.FirstInorder(), 0xFFFF );
	EXPECT_FALSE( tree.IsValidIndex( 0 ) );
	EXPECT_FALSE( tree.IsValidIndex( tree.InvalidIndex() ) );
	EXPECT_TRUE( tree.CheckInvariants() );
}

TEST( UtlRBTree, HoldsWhatAMapHoldsUnderRandomInsertionAndRemoval )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	// Few keys meet each other often, many keys make a deep tree.
	for ( const int nKeys : { 3, 12, 60, 400 } )
	{
		Compared compared;
		for ( int nStep = 0; nStep < 3000; nStep++ )
		{
			// Phases in which the tree grows and in which it shrinks, down to nothing.
			const bool bGrows = nStep / 500 % 2 == 0;
			const int nKey = std::uniform_int_distribution( 0, nKeys - 1 )( random );
			if ( std::bernoulli_distribution( bGrows ? 0.7 : 0.25 )( random ) )
				compared.Insert( nKey, std::to_string( nStep ) );
			else
				compared.Remove( nKey );
			compared.Check();
			if ( testing::Test::HasFatalFailure() )
				FAIL() << "after step " << nStep << " with " << nKeys << " keys";
		}
	}
}

TEST( UtlRBTree, AnInsertedKeyThatIsThereKeepsItsValue )
{
	CUtlRBTree<int, std::string> tree( Less<int> );
	const auto nFirst = tree.Insert( 7, "first" );
	EXPECT_EQ( tree.Insert( 7, "second" ), nFirst );
	EXPECT_EQ( tree.Element( nFirst ), "first" );
	EXPECT_EQ( tree.Count(), 1u );
}

TEST( UtlRBTree, AFreedIndexIsTheNextThatIsUsed )
{
	CUtlRBTree<int, int> tree( Less<int> );
	for ( int i = 0; i < 5; i++ )
		EXPECT_EQ( tree.Insert( i, i ), i );
	tree.Remove( 1 );
	tree.Remove( 3 );
	EXPECT_TRUE( tree.CheckInvariants() );
	EXPECT_EQ( tree.Insert( 10, 10 ), 3 );
	EXPECT_EQ( tree.Insert( 11, 11 ), 1 );
	EXPECT_EQ( tree.Insert( 12, 12 ), 5 );
	EXPECT_TRUE( tree.CheckInvariants() );
}

TEST( UtlRBTree, RemovingAnEntryLetsGoOfItsValue )
{
	CUtlRBTree<int, std::shared_ptr<int>> tree( Less<int> );
	const auto pValue = std::make_shared<int>( 1 );
	const auto nIndex = tree.Insert( 1, pValue );
	ASSERT_EQ( pValue.use_count(), 2 );
	tree.Remove( nIndex );
	EXPECT_EQ( pValue.use_count(), 1 );
}

TEST( UtlRBTree, AClearedTreeStartsAnew )
{
	CUtlRBTree<int, int> tree( Less<int> );
	for ( int i = 0; i < 100; i++ )
		tree.Insert( i, i );
	tree.Remove( 50 );
	tree.RemoveAll();
	EXPECT_EQ( tree.Count(), 0u );
	EXPECT_TRUE( tree.CheckInvariants() );
	EXPECT_EQ( tree.Insert( 9, 90 ), 0 );
	EXPECT_THAT( InOrder( tree ), ElementsAre( std::pair( 9, 90 ) ) );
}

TEST( UtlRBTree, AValueCanBeChangedThroughItsIndex )
{
	CUtlRBTree<int, int> tree( Less<int> );
	const auto nIndex = tree.Insert( 3, 30 );
	tree.Element( nIndex ) = 31;
	EXPECT_THAT( InOrder( tree ), ElementsAre( std::pair( 3, 31 ) ) );
}

TEST( UtlRBTree, KeysAreAddressesComparedAsUnsignedNumbers )
{
	CUtlRBTree<uintptr_t, int> tree( Less<uintptr_t> );
	const uintptr_t nHigh = UINTPTR_MAX - 15; // negative, were it signed
	tree.Insert( nHigh, 2 );
	tree.Insert( 16, 1 );
	EXPECT_THAT( InOrder( tree ), ElementsAre( std::pair( uintptr_t{ 16 }, 1 ), std::pair( nHigh, 2 ) ) );
}

TEST( UtlRBTree, TheComparisonFunctionDecidesTheOrder )
{
	CUtlRBTree<int, int> tree( []( const int &a, const int &b ) { return a > b; } );
	for ( const int nKey : { 2, 3, 1 } )
		tree.Insert( nKey, nKey );
	EXPECT_THAT( InOrder( tree ), ElementsAre( std::pair( 3, 3 ), std::pair( 2, 2 ), std::pair( 1, 1 ) ) );
}

TEST( UtlRBTree, TheInvariantCheckSeesKeysOutOfOrder )
{
	static bool s_bReversed;
	s_bReversed = false;
	CUtlRBTree<int, int> tree( []( const int &a, const int &b ) { return s_bReversed ? a > b : a < b; } );
	for ( int i = 0; i < 10; i++ )
		tree.Insert( i, i );
	ASSERT_TRUE( tree.CheckInvariants() );
	s_bReversed = true;
	EXPECT_FALSE( tree.CheckInvariants() );
}

class FullUtlRBTree : public testing::Test
{
protected:
	void SetUp() override
	{
		for ( uint32_t i = 0; i < m_Tree.MaxElements(); i++ )
			ASSERT_EQ( m_Tree.Insert( i, ~i ), i );
	}

	static bool CountingLess( const uint32_t &a, const uint32_t &b )
	{
		s_nComparisons++;
		return a < b;
	}

	inline static uint32_t s_nComparisons = 0;
	CUtlRBTree<uint32_t, uint32_t> m_Tree{ CountingLess };
};

TEST_F( FullUtlRBTree, Holds65535EntriesAndReportsTheNextOne )
{
	EXPECT_EQ( m_Tree.Count(), 65535u );
	{
		CExpectWarnings warnings;
		EXPECT_EQ( m_Tree.Insert( 70000, 1 ), m_Tree.InvalidIndex() );
		EXPECT_THAT( warnings.Take(), ElementsAre( "CUtlRBTree overflow with 65535 elements!\n" ) );
	}
	EXPECT_EQ( m_Tree.Count(), 65535u );
	EXPECT_EQ( m_Tree.Find( 70000 ), m_Tree.InvalidIndex() );
	EXPECT_TRUE( m_Tree.CheckInvariants() );
}

TEST_F( FullUtlRBTree, StillFindsWhatItHolds )
{
	EXPECT_EQ( m_Tree.Insert( 65534, 0 ), 65534 );
	EXPECT_EQ( m_Tree.Element( 65534 ), ~uint32_t{ 65534 } );
}

TEST_F( FullUtlRBTree, TakesANewEntryAfterOneWasRemoved )
{
	m_Tree.Remove( 1234 );
	EXPECT_EQ( m_Tree.Insert( 70000, 5 ), 1234 );
	EXPECT_EQ( m_Tree.Count(), 65535u );
	EXPECT_TRUE( m_Tree.CheckInvariants() );
}

TEST_F( FullUtlRBTree, IsNoDeeperThanARedBlackTreeMayBe )
{
	// 2 log2( n + 1 ) nodes on any way down, and two comparisons at most at each.
	const uint32_t nDeepest = 2 * static_cast<uint32_t>( std::bit_width( m_Tree.MaxElements() ) );
	for ( uint32_t i = 0; i < m_Tree.MaxElements(); i += 97 )
	{
		s_nComparisons = 0;
		ASSERT_EQ( m_Tree.Find( i ), i );
		ASSERT_LE( s_nComparisons, 2 * nDeepest );
	}
}

TEST_F( FullUtlRBTree, CanBeEmptiedInAnyOrder )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	std::vector<uint16_t> indices( m_Tree.MaxElements() );
	for ( size_t i = 0; i < indices.size(); i++ )
		indices[i] = static_cast<uint16_t>( i );
	std::shuffle( indices.begin(), indices.end(), random );
	for ( size_t i = 0; i < indices.size(); i++ )
	{
		m_Tree.Remove( indices[i] );
		if ( i % 8192 == 0 && !m_Tree.CheckInvariants() )
			FAIL() << "after " << i + 1 << " removals";
	}
	EXPECT_EQ( m_Tree.Count(), 0u );
	EXPECT_TRUE( m_Tree.CheckInvariants() );
	EXPECT_THAT( InOrder( m_Tree ), IsEmpty() );
}
} // namespace
