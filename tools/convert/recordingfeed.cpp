#include "tools/convert/recordingfeed.h"

#include <algorithm>

#include "tools/convert/text.h"

namespace convert
{
CRecordingFeed::CRecordingFeed( const CKestoFile &file, CReport &report )
	: m_File( file )
	, m_Report( report )
{
	FindNodes();
}

// A node that was followed to its siblings before ends a chain of them: what comes behind it was found together with
// it. A damaged recording may have the root in a chain, which was found without that.
void CRecordingFeed::FindNodes()
{
	std::vector<bool> followed( static_cast<size_t>( wire::RECORDING_MAX_NODES ) );
	const int32_t nRoot = m_File.GetRootNode();
	if ( nRoot < 0 || nRoot >= wire::RECORDING_MAX_NODES )
		return;
	m_Found.push_back( { nRoot, CCallTree::NONE, nRoot + 1 } );
	for ( size_t i = 0; i < m_Found.size(); i++ )
	{
		const int32_t nNeededCount = m_Found[i].m_nNeededCount;
		for ( int32_t nChild = m_File.GetNodeFirstChild( m_Found[i].m_nNode );
			  nChild >= 0 && !followed[static_cast<size_t>( nChild )]; nChild = m_File.GetNodeNextSibling( nChild ) )
		{
			followed[static_cast<size_t>( nChild )] = true;
			if ( nChild != nRoot )
				m_Found.push_back( { nChild, static_cast<int32_t>( i ), std::max( nNeededCount, nChild + 1 ) } );
		}
	}
	const auto isFound = [&]( int32_t nNode ) { return nNode == nRoot || followed[static_cast<size_t>( nNode )]; };
	const int32_t nRootParent = m_File.GetNodeParent( nRoot );
	if ( nRootParent >= 0 && !isFound( nRootParent ) )
		m_nRootParent = nRootParent;
	for ( int32_t i = 0; i < m_File.GetNodeCount(); i++ )
		if ( m_File.GetNodeParent( i ) >= 0 && !isFound( i ) )
			m_Report.Add( Note::UnreachableNode );
}

int32_t CRecordingFeed::NodeOf( const CCallTree::Node &node ) const
{
	if ( node.m_nParent != CCallTree::NONE )
		return static_cast<int32_t>( node.m_nName );
	return m_Found.empty() ? 0 : m_Found[0].m_nNode; // where the header was damaged there is no root
}

std::string_view CRecordingFeed::Name( const CCallTree::Node &node )
{
	m_Name = FromLatin1( m_File.GetNodeName( NodeOf( node ) ) );
	return m_Name;
}

NodeRecord CRecordingFeed::Record( const CCallTree::Node &node ) const
{
	const bool bRoot = node.m_nParent == CCallTree::NONE;
	return { NodeOf( node ), m_File.GetNodeValue( NodeOf( node ) ), bRoot ? m_nRootParent : CCallTree::NONE };
}

void CRecordingFeed::CountLosses() const
{
	m_Report.Add( Note::StringsLost, m_File.GetStringTable().size() );
	const auto hasValue = [this]( const Found &found ) { return m_File.GetNodeValue( found.m_nNode ) != 0; };
	m_Report.Add(
		Note::NodeValuesLost, static_cast<uint64_t>( std::count_if( m_Found.begin(), m_Found.end(), hasValue ) ) );
}

// As Run goes through the frames, but by the number of nodes alone.
uint64_t CRecordingFeed::EntryCount() const
{
	std::vector<int32_t> needed;
	for ( const Found &found : m_Found )
		needed.push_back( found.m_nNeededCount );
	std::sort( needed.begin(), needed.end() );
	uint64_t nEntries = 0;
	size_t nNodes = 0;
	for ( int nFrame = 0; nFrame < m_File.GetFrameCount(); nFrame++ )
	{
		const int32_t nCount = m_File.GetFrame( nFrame )->GetCount();
		if ( nFrame + 1 == m_File.GetFrameCount() )
			nNodes = needed.size();
		while ( nNodes < needed.size() && needed[nNodes] <= nCount )
			nNodes++;
		nEntries += nCount > 0 ? nNodes : 0;
	}
	return nEntries;
}

// A node comes into the tree with the first frame that knows it, so that a recording that is made of this one has the
// same lists.
void CRecordingFeed::AddNodes( int32_t nCount )
{
	for ( Found &found : m_Found )
	{
		if ( found.m_nTreeNode != CCallTree::NONE || found.m_nNeededCount > nCount )
			continue;
		const uint32_t nName = static_cast<uint32_t>( found.m_nNode );
		found.m_nTreeNode = found.m_nParent == CCallTree::NONE
								? CCallTree::ROOT
								: m_Tree.AddChild( m_Found[static_cast<size_t>( found.m_nParent )].m_nTreeNode, nName );
	}
}

bool CRecordingFeed::Run( IFrameSink &sink, const std::function<void( int nFrames )> &progress )
{
	int32_t nCount = -1;
	for ( int nFrame = 0; nFrame < m_File.GetFrameCount(); nFrame++ )
	{
		const CKestoFile::CTickTimings &frame = *m_File.GetFrame( nFrame );
		const bool bLast = nFrame + 1 == m_File.GetFrameCount();
		if ( const int32_t nNeeded = bLast ? wire::RECORDING_MAX_NODES : frame.GetCount(); nNeeded > nCount )
			AddNodes( nCount = nNeeded );
		if ( !( frame.GetCount() == 0 ? sink.AddFrameWithoutTimes( m_Tree ) : AddFrame( sink, frame ) ) )
			return false;
		if ( progress )
			progress( nFrame + 1 );
	}
	return true;
}

bool CRecordingFeed::AddFrame( IFrameSink &sink, const CKestoFile::CTickTimings &frame )
{
	m_Times.assign( static_cast<size_t>( m_Tree.Count() ), {} );
	for ( const Found &found : m_Found )
	{
		if ( found.m_nTreeNode == CCallTree::NONE )
			continue;
		const CKestoFile::CTickTimings::Entry entry = frame.PeekEntry( found.m_nNode );
		m_Times[static_cast<size_t>( found.m_nTreeNode )] = {
			entry.m_nCalls, int64_t{ static_cast<int32_t>( entry.m_nTime ) } * 1000 };
	}
	return sink.AddFrame( m_Tree, m_Times );
}
} // namespace convert
