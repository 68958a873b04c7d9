#include "tools/nodefigures.h"

#include <algorithm>
#include <limits>

namespace
{
constexpr size_t ENTRIES_AT_ONCE = size_t{ 1 } << 24;

using Entry = CKestoFile::CTickTimings::Entry;

int32_t SignedTime( const Entry &entry )
{
	return static_cast<int32_t>( entry.m_nTime );
}

// For each node, the time of its direct children. Chains of a damaged recording may share their ends; each node is
// looked at once, however many chains it is in.
class CChildTotals
{
public:
	CChildTotals( const CKestoFile &file, const CPagedList<NodeTotals> &totals )
		: m_File( file )
		, m_Totals( totals )
		, m_bKnown( static_cast<size_t>( file.GetNodeCount() ) )
	{
	}

	int64_t Of( int32_t nParent )
	{
		std::vector<int32_t> unknown;
		int32_t nNode = m_File.GetNodeFirstChild( nParent );
		for ( ; nNode >= 0 && !m_bKnown[static_cast<size_t>( nNode )]; nNode = m_File.GetNodeNextSibling( nNode ) )
			unknown.push_back( nNode );
		int64_t nTime = nNode >= 0 ? m_Chains[nNode] : 0;
		for ( ; !unknown.empty(); unknown.pop_back() )
		{
			nTime += m_Totals[unknown.back()].m_nTime;
			m_Chains.At( unknown.back() ) = nTime;
			m_bKnown[static_cast<size_t>( unknown.back() )] = true;
		}
		return nTime;
	}

private:
	const CKestoFile &m_File;
	const CPagedList<NodeTotals> &m_Totals;
	CPagedList<int64_t> m_Chains; // by node id: the time of it and of all that follow it in its chain
	std::vector<bool> m_bKnown;
};

// The times of some groups, filled frame by frame.
class CTimesOfGroups
{
public:
	CTimesOfGroups( const CKestoFile &file, const CNodeGroups &groups, const std::vector<size_t> &counts )
		: m_File( file )
		, m_Groups( groups )
		, m_Counts( counts )
	{
	}

	// Takes as many groups from nFirst on as fit at once, and one at least; returns the first that was left.
	int32_t Collect( int32_t nFirst )
	{
		m_nFirst = nFirst;
		m_Times.clear();
		size_t nEntries = 0;
		int32_t nGroup = nFirst;
		for ( ; nGroup < m_Groups.Count(); nGroup++ )
		{
			nEntries += CountOf( nGroup );
			if ( nGroup > nFirst && nEntries > ENTRIES_AT_ONCE )
				break;
			m_Times.emplace_back().reserve( CountOf( nGroup ) );
		}
		m_LastFrames.assign( m_Times.size(), -1 );
		for ( int nFrame = 0; nFrame < m_File.GetFrameCount(); nFrame++ )
			VisitEntries( *m_File.GetFrame( nFrame ),
				[&]( int32_t nNode, const Entry &entry ) { Add( nFrame, nNode, SignedTime( entry ) ); } );
		return nGroup;
	}

	CDistribution Take( int32_t nGroup )
	{
		std::vector<int32_t> times = std::move( m_Times[static_cast<size_t>( nGroup - m_nFirst )] );
		const size_t nZeros = static_cast<size_t>( m_File.GetFrameCount() ) - times.size();
		return CDistribution( std::move( times ), nZeros );
	}

private:
	size_t CountOf( int32_t nGroup ) const { return m_Counts[static_cast<size_t>( nGroup )]; }

	void Add( int nFrame, int32_t nNode, int32_t nTime )
	{
		const int32_t nGroup = m_Groups.GroupOf( nNode );
		const auto nIndex = static_cast<size_t>( nGroup - m_nFirst );
		if ( nGroup < m_nFirst || nIndex >= m_Times.size() )
			return;
		std::vector<int32_t> &times = m_Times[nIndex];
		if ( m_LastFrames[nIndex] != nFrame )
		{
			m_LastFrames[nIndex] = nFrame;
			times.push_back( nTime );
			return;
		}
		using Limits = std::numeric_limits<int32_t>;
		times.back() = static_cast<int32_t>(
			std::clamp<int64_t>( int64_t{ times.back() } + nTime, Limits::min(), Limits::max() ) );
	}

	const CKestoFile &m_File;
	const CNodeGroups &m_Groups;
	const std::vector<size_t> &m_Counts; // entries by group
	int32_t m_nFirst = 0;
	std::vector<std::vector<int32_t>> m_Times; // from group m_nFirst on
	std::vector<int> m_LastFrames;             // the frame of each group's last time
};
} // namespace

std::vector<int32_t> FrameTimes( const CKestoFile &file )
{
	std::vector<int32_t> times;
	times.reserve( static_cast<size_t>( file.GetFrameCount() ) );
	for ( int i = 0; i < file.GetFrameCount(); i++ )
		times.push_back( SignedTime( file.GetFrame( i )->PeekEntry( file.GetRootNode() ) ) );
	return times;
}

CPagedList<NodeTotals> SumNodes( const CKestoFile &file, const CNodeTree &tree )
{
	CPagedList<NodeTotals> totals;
	for ( int i = 0; i < file.GetFrameCount(); i++ )
		VisitEntries( *file.GetFrame( i ),
			[&]( int32_t nNode, const Entry &entry )
			{
				NodeTotals &node = totals.At( nNode );
				node.m_nCalls += entry.m_nCalls;
				node.m_nTime += SignedTime( entry );
				node.m_nFrames++;
			} );
	CChildTotals childTotals( file, totals );
	for ( const CNodeTree::Row &row : tree.Rows() )
	{
		NodeTotals &node = totals.At( row.m_nNode );
		node.m_nSelfTime = node.m_nTime - childTotals.Of( row.m_nNode );
	}
	return totals;
}

void CNodeGroups::Add( int32_t nNode, int32_t nGroup )
{
	m_Groups.At( nNode ) = nGroup + 1;
	m_nCount = std::max( m_nCount, nGroup + 1 );
}

int32_t CNodeGroups::GroupOf( int32_t nNode ) const
{
	return m_Groups[nNode] - 1;
}

void VisitGroupTimes( const CKestoFile &file, const CNodeGroups &groups,
	const std::function<void( int32_t nGroup, const CDistribution &times )> &visit )
{
	std::vector<size_t> counts( static_cast<size_t>( groups.Count() ) );
	for ( int i = 0; i < file.GetFrameCount(); i++ )
		VisitEntries( *file.GetFrame( i ),
			[&]( int32_t nNode, const Entry & )
			{
				if ( const int32_t nGroup = groups.GroupOf( nNode ); nGroup >= 0 )
					counts[static_cast<size_t>( nGroup )]++;
			} );
	CTimesOfGroups times( file, groups, counts );
	for ( int32_t nGroup = 0; nGroup < groups.Count(); )
		for ( const int32_t nEnd = times.Collect( nGroup ); nGroup < nEnd; nGroup++ )
			visit( nGroup, times.Take( nGroup ) );
}
