#include "tools/convert/timelinesink.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace convert
{
// Far enough from the end of the range that widths can be added up.
static constexpr int64_t MAX_WIDTH = int64_t{ 1 } << 61;

std::string FormatMicroseconds( int64_t nNanoseconds )
{
	std::string text( nNanoseconds < 0 ? 1 : 0, '-' );
	text += std::to_string( std::abs( nNanoseconds / 1000 ) );
	if ( const int64_t nRest = std::abs( nNanoseconds % 1000 ); nRest != 0 )
	{
		text += '.' + std::to_string( 1000 + nRest ).substr( 1 );
		text.erase( text.find_last_not_of( '0' ) + 1 );
	}
	return text;
}

// A node's id is greater than its parent's.
void CTimelineSink::Measure( const CCallTree &tree, std::span<const NodeTimes> times )
{
	m_Extents.assign( times.size(), {} );
	m_IsShown.assign( times.size(), false );
	for ( size_t i = times.size(); i-- > 0; )
	{
		Extent &extent = m_Extents[i];
		const NodeTimes &node = times[i];
		if ( node.m_nTime < 0 )
			m_Report.Add( Note::NegativeTime );
		if ( node.m_nTime < extent.m_nChildren && extent.m_nChildren > 0 )
			m_Report.Add( Note::Widened );
		extent.m_nWidth = std::min( std::max( node.m_nTime, extent.m_nChildren ), MAX_WIDTH );
		m_IsShown[i] = m_IsShown[i] || i == 0 || node.m_nCalls > 0 || node.m_nTime != 0;
		if ( i == 0 || !m_IsShown[i] )
			continue;
		const auto nParent = static_cast<size_t>( tree.Get( static_cast<int32_t>( i ) ).m_nParent );
		m_Extents[nParent].m_nChildren = std::min( m_Extents[nParent].m_nChildren + extent.m_nWidth, MAX_WIDTH );
		m_IsShown[nParent] = true;
	}
}

bool CTimelineSink::AddFrame( const CCallTree &tree, std::span<const NodeTimes> times )
{
	Measure( tree, times );
	m_Extents[0].m_nWidth = std::min( m_Extents[0].m_nWidth, MAX_WIDTH - std::min( m_nTime, MAX_WIDTH ) );
	const auto extentOf = [this]( int32_t nNode ) -> Extent & { return m_Extents[static_cast<size_t>( nNode )]; };
	const auto begin = [&]( int32_t nNode, int64_t nTime )
	{
		extentOf( nNode ).m_nNext = nTime;
		BeginScope( tree, nNode, nTime, times[static_cast<size_t>( nNode )].m_nCalls );
	};
	// Where a node begins its parent's next child begins behind it; a node's end is its own m_nNext plus what is left.
	const auto firstShown = [&]( int32_t nNode )
	{
		while ( nNode != CCallTree::NONE && !m_IsShown[static_cast<size_t>( nNode )] )
			nNode = tree.Get( nNode ).m_nNextSibling;
		return nNode;
	};
	begin( CCallTree::ROOT, m_nTime );
	int32_t nOpen = CCallTree::ROOT; // the innermost scope; the others are those around it
	int32_t nNext = firstShown( tree.Get( CCallTree::ROOT ).m_nFirstChild );
	while ( nOpen != CCallTree::NONE )
	{
		if ( nNext != CCallTree::NONE )
		{
			Extent &parent = extentOf( nOpen );
			begin( nNext, parent.m_nNext );
			parent.m_nNext += extentOf( nNext ).m_nWidth;
			nOpen = nNext;
			nNext = firstShown( tree.Get( nNext ).m_nFirstChild );
			if ( !Flush() ) // a chain of nodes may be as long as the tree
				return false;
			continue;
		}
		const int32_t nEnded = std::exchange( nOpen, tree.Get( nOpen ).m_nParent );
		const Extent &extent = extentOf( nEnded );
		EndScope( nEnded, extent.m_nNext + extent.m_nWidth - extent.m_nChildren );
		nNext = firstShown( tree.Get( nEnded ).m_nNextSibling );
		if ( !Flush() )
			return false;
	}
	m_nTime += m_Extents[0].m_nWidth;
	return true;
}

bool CTimelineSink::AddFrameWithoutTimes( const CCallTree &tree )
{
	BeginScope( tree, CCallTree::ROOT, m_nTime, 0 );
	EndScope( CCallTree::ROOT, m_nTime );
	return Flush();
}
} // namespace convert
