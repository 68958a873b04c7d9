#include "tools/summary.h"

#include <algorithm>
#include <numeric>

static std::vector<size_t> RowsByTime( const CNodeTree &tree, const CPagedList<NodeTotals> &totals, NodeOrder order )
{
	const auto timeOf = [&]( size_t nRow )
	{
		const NodeTotals &node = totals[tree.Rows()[nRow].m_nNode];
		return order == NodeOrder::Self ? node.m_nSelfTime : node.m_nTime;
	};
	std::vector<size_t> rows( tree.Rows().size() );
	std::iota( rows.begin(), rows.end(), size_t{ 0 } );
	std::stable_sort( rows.begin(), rows.end(), [&]( size_t nA, size_t nB ) { return timeOf( nA ) > timeOf( nB ); } );
	return rows;
}

Summary Summarise( const LoadedRecording &recording, const CNodeTree &tree, size_t nTopNodes, NodeOrder order )
{
	const CKestoFile &file = *recording.m_pFile;
	const CPagedList<NodeTotals> totals = SumNodes( file, tree );
	const std::vector<int32_t> times = FrameTimes( file );

	Summary summary;
	summary.m_nFrames = file.GetFrameCount();
	summary.m_nNodes = tree.Rows().size();
	summary.m_nLevels = tree.Levels();
	summary.m_nSize = recording.m_nSize;
	summary.m_nDuration = std::accumulate( times.begin(), times.end(), int64_t{ 0 } );
	if ( !times.empty() )
		summary.m_nSlowestFrame = static_cast<int>( std::max_element( times.begin(), times.end() ) - times.begin() );
	summary.m_FrameTimes = CDistribution( times );
	std::vector<size_t> rows = RowsByTime( tree, totals, order );
	rows.resize( std::min( rows.size(), nTopNodes ) );
	for ( const size_t nRow : rows )
		summary.m_TopNodes.push_back( { nRow, totals[tree.Rows()[nRow].m_nNode] } );
	return summary;
}
