#include "tools/comparison.h"

#include <boost/math/distributions/students_t.hpp>

#include <algorithm>
#include <cmath>
#include <map>
#include <string_view>
#include <unordered_map>

#include "tools/nodefigures.h"

namespace
{
// Numbers paths without writing them out: a path is its parent's number and a name.
class CPathNumbers
{
public:
	// By row of the tree, whose names must stay where they are.
	std::vector<int32_t> NumberRows( const CNodeTree &tree )
	{
		std::vector<int32_t> numbers;
		numbers.reserve( tree.Rows().size() );
		for ( const CNodeTree::Row &row : tree.Rows() )
		{
			const bool bRoot = row.m_nParentRow < 0;
			const Key key{ bRoot ? -1 : numbers[static_cast<size_t>( row.m_nParentRow )],
				bRoot ? std::string_view() : tree.Name( row ) };
			numbers.push_back( m_Numbers.try_emplace( key, Count() ).first->second );
		}
		return numbers;
	}

	int32_t Count() const { return static_cast<int32_t>( m_Numbers.size() ); }

private:
	using Key = std::pair<int32_t, std::string_view>;
	struct KeyHash
	{
		size_t operator()( const Key &key ) const
		{
			return std::hash<std::string_view>()( key.second ) * 31 + static_cast<size_t>( key.first );
		}
	};

	std::unordered_map<Key, int32_t, KeyHash> m_Numbers;
};

struct Side
{
	std::vector<int32_t> m_Rows; // by path number: the first row of that path; -1 = none
	CNodeGroups m_Groups;

	bool Has( int32_t nPath ) const { return m_Rows[static_cast<size_t>( nPath )] >= 0; }
};

Side MakeSide( const CNodeTree &tree, const std::vector<int32_t> &numbers, int32_t nPaths )
{
	Side side;
	side.m_Rows.assign( static_cast<size_t>( nPaths ), -1 );
	for ( size_t i = 0; i < numbers.size(); i++ )
	{
		side.m_Groups.Add( tree.Rows()[i].m_nNode, numbers[i] );
		int32_t &nRow = side.m_Rows[static_cast<size_t>( numbers[i] )];
		if ( nRow < 0 )
			nRow = static_cast<int32_t>( i );
	}
	return side;
}

// What the test needs of one set of times.
struct Moments
{
	double m_flCount = 0.0;
	double m_flMean = 0.0;
	double m_flVariance = 0.0;

	Moments() = default;
	explicit Moments( const CDistribution &times )
		: m_flCount( static_cast<double>( times.Count() ) )
		, m_flMean( times.Mean() )
		, m_flVariance( times.Variance() )
	{
	}
};

std::optional<double> WelchProbability( const Moments &a, const Moments &b )
{
	if ( a.m_flCount < 2.0 || b.m_flCount < 2.0 )
		return std::nullopt;
	const double flA = a.m_flVariance / a.m_flCount;
	const double flB = b.m_flVariance / b.m_flCount;
	if ( flA + flB == 0.0 )
		return a.m_flMean == b.m_flMean ? 1.0 : 0.0;
	const double flT = std::fabs( a.m_flMean - b.m_flMean ) / std::sqrt( flA + flB );
	const double flDegrees =
		( flA + flB ) * ( flA + flB ) / ( flA * flA / ( a.m_flCount - 1.0 ) + flB * flB / ( b.m_flCount - 1.0 ) );
	// Nothing throws: what cannot be computed is not a number, which is no probability.
	namespace math = boost::math;
	using Policy = math::policies::policy<math::policies::domain_error<math::policies::ignore_error>,
		math::policies::overflow_error<math::policies::ignore_error>,
		math::policies::evaluation_error<math::policies::ignore_error>>;
	const math::students_t_distribution<double, Policy> distribution( flDegrees );
	const double flProbability = 2.0 * math::cdf( math::complement( distribution, flT ) );
	return std::isfinite( flProbability ) ? std::optional( std::min( flProbability, 1.0 ) ) : std::nullopt;
}

// Fills the figures of one side; the moments are kept by path for the test.
void AddFigures( const CKestoFile &file, const Side &side, std::vector<ComparedNode> &nodes,
	std::optional<NodeFigures> ComparedNode::*pFigures, std::vector<Moments> &moments,
	const std::function<void( double )> &progress )
{
	moments.resize( nodes.size() );
	VisitGroupTimes( file, side.m_Groups,
		[&]( int32_t nPath, const CDistribution &times )
		{
			progress( static_cast<double>( nPath ) / static_cast<double>( nodes.size() ) );
			if ( !side.Has( nPath ) )
				return;
			const auto nIndex = static_cast<size_t>( nPath );
			nodes[nIndex].*pFigures = NodeFigures{ times.Mean(), times.Percentile( 95.0 ) };
			moments[nIndex] = Moments( times );
		} );
}
} // namespace

std::optional<double> WelchProbability( const CDistribution &a, const CDistribution &b )
{
	return WelchProbability( Moments( a ), Moments( b ) );
}

double ComparedNode::Change() const
{
	return m_B.value_or( NodeFigures() ).m_flMean - m_A.value_or( NodeFigures() ).m_flMean;
}

std::optional<double> ComparedNode::ChangePercent() const
{
	if ( !m_A || m_A->m_flMean == 0.0 )
		return std::nullopt;
	return 100.0 * Change() / std::fabs( m_A->m_flMean );
}

std::string Comparison::Path( const ComparedNode &node ) const
{
	const CNodeTree &tree = node.m_bRowOfA ? m_TreeA : m_TreeB;
	return tree.Path( tree.Rows()[static_cast<size_t>( node.m_nRow )] );
}

Comparison CompareRecordings(
	const CKestoFile &a, const CKestoFile &b, const std::function<void( double flDone )> &progress )
{
	Comparison comparison{ CNodeTree( a ), CNodeTree( b ), {} };
	CPathNumbers paths;
	const std::vector<int32_t> numbersA = paths.NumberRows( comparison.m_TreeA );
	const std::vector<int32_t> numbersB = paths.NumberRows( comparison.m_TreeB );
	const Side sideA = MakeSide( comparison.m_TreeA, numbersA, paths.Count() );
	const Side sideB = MakeSide( comparison.m_TreeB, numbersB, paths.Count() );

	std::vector<ComparedNode> &nodes = comparison.m_Nodes;
	nodes.resize( static_cast<size_t>( paths.Count() ) );
	std::vector<Moments> momentsA;
	std::vector<Moments> momentsB;
	const auto halfOf = [&progress]( double flFirst )
	{
		return [&progress, flFirst]( double flDone )
		{
			if ( progress )
				progress( flFirst + flDone / 2.0 );
		};
	};
	AddFigures( a, sideA, nodes, &ComparedNode::m_A, momentsA, halfOf( 0.0 ) );
	AddFigures( b, sideB, nodes, &ComparedNode::m_B, momentsB, halfOf( 0.5 ) );
	for ( size_t i = 0; i < nodes.size(); i++ )
	{
		nodes[i].m_bRowOfA = sideA.m_Rows[i] >= 0;
		nodes[i].m_nRow = ( nodes[i].m_bRowOfA ? sideA : sideB ).m_Rows[i];
		if ( nodes[i].m_A && nodes[i].m_B )
			nodes[i].m_flProbability = WelchProbability( momentsA[i], momentsB[i] );
	}
	std::stable_sort( nodes.begin(), nodes.end(),
		[]( const ComparedNode &left, const ComparedNode &right )
		{ return std::fabs( left.Change() ) > std::fabs( right.Change() ); } );
	return comparison;
}
