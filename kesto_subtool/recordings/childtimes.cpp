#include "recordings/childtimes.h"

CChildTimes::CChildTimes( const CKestoFile &file, const CKestoFile::CTickTimings &frame )
	: m_File( file )
	, m_Frame( frame )
	, m_Chains( static_cast<size_t>( file.GetNodeCount() ) )
	, m_bKnown( m_Chains.size() )
{
}

int32_t CChildTimes::Of( int32_t nNode )
{
	int32_t nChild = m_File.GetNodeFirstChild( nNode );
	for ( ; nChild >= 0 && !m_bKnown[static_cast<size_t>( nChild )]; nChild = m_File.GetNodeNextSibling( nChild ) )
		m_Unknown.push_back( nChild );
	uint32_t nTime = nChild >= 0 ? m_Chains[static_cast<size_t>( nChild )] : 0;
	for ( ; !m_Unknown.empty(); m_Unknown.pop_back() )
	{
		const auto nIndex = static_cast<size_t>( m_Unknown.back() );
		nTime += m_Frame.PeekEntry( m_Unknown.back() ).m_nTime;
		m_Chains[nIndex] = nTime;
		m_bKnown[nIndex] = true;
	}
	return static_cast<int32_t>( nTime );
}
