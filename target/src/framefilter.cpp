#include "framefilter.h"

#include <utility>

namespace showbudget
{
void CFrameFilter::Add( RecordedFrame &&frame, const std::function<void( const RecordedFrame & )> &keep )
{
	const bool bSlow = frame.m_Entries.front().m_nTicks > m_nSlowerThan;
	const bool bKeep = m_nSlowerThan == 0 || bSlow || m_nAfter > 0;
	m_nAfter = bSlow ? m_nAround : m_nAfter - ( m_nAfter > 0 );
	m_Waiting.push_back( std::move( frame ) );
	while ( !m_Waiting.empty() && ( bKeep || m_Waiting.size() > m_nAround ) )
	{
		if ( bKeep )
			keep( m_Waiting.front() );
		PutBack( std::move( m_Waiting.front() ) );
		m_Waiting.pop_front();
	}
}

RecordedFrame CFrameFilter::TakeEmpty()
{
	if ( m_Empty.empty() )
		return {};
	RecordedFrame frame = std::move( m_Empty.back() );
	m_Empty.pop_back();
	return frame;
}

void CFrameFilter::PutBack( RecordedFrame &&frame )
{
	frame.m_Entries.clear();
	m_Empty.push_back( std::move( frame ) );
}
} // namespace showbudget
