#include "tools/convert/trace.h"

#include <algorithm>

namespace convert
{
bool CTrace::Add( TraceEvent event, int64_t nOffset )
{
	if ( event.m_nTime < -MAX_TIME || event.m_nTime > MAX_TIME || event.m_nDuration > MAX_TIME )
	{
		m_Report.Add( Repair::UnusableEvent, nOffset );
		return true;
	}
	if ( event.m_nDuration < 0 )
	{
		m_Report.Add( Repair::NegativeTime, nOffset );
		event.m_nDuration = 0;
	}
	Thread &thread = m_Threads.Get( event.m_nThread );
	CountDisorder( thread, event, nOffset );
	if ( event.m_Kind != EventKind::Instant )
	{
		const bool bSample = event.m_Kind == EventKind::Sample;
		const int64_t nLasts = event.m_Kind == EventKind::Complete ? event.m_nDuration : bSample;
		thread.m_nScopes += event.m_Kind != EventKind::End;
		thread.m_nSamples += bSample;
		thread.m_nFirstTime = std::min( thread.m_nFirstTime, event.m_nTime );
		thread.m_nLastTime = std::max( thread.m_nLastTime, event.m_nTime + nLasts );
	}
	return m_Spool.Add( event );
}

// Begins and ends are written when they happen. Scopes with a duration are written when they begin or when they end:
// both is in order.
void CTrace::CountDisorder( Thread &thread, const TraceEvent &event, int64_t nOffset )
{
	if ( event.m_Kind == EventKind::Begin || event.m_Kind == EventKind::End || event.m_Kind == EventKind::Sample )
	{
		if ( event.m_nTime < thread.m_nLastBeginOrEnd )
			m_Report.Add( Repair::Unordered, nOffset );
		else
			thread.m_nLastBeginOrEnd = event.m_nTime;
	}
	if ( event.m_Kind != EventKind::Complete )
		return;
	const int64_t nEnd = event.m_nTime + event.m_nDuration;
	if ( event.m_nTime < thread.m_nLastComplete && nEnd < thread.m_nLastCompleteEnd )
		m_Report.Add( Repair::Unordered, nOffset );
	thread.m_nWrittenAtBegin += event.m_nTime > thread.m_nLastComplete && nEnd < thread.m_nLastCompleteEnd;
	thread.m_nWrittenAtEnd += event.m_nTime < thread.m_nLastComplete && nEnd > thread.m_nLastCompleteEnd;
	thread.m_nLastComplete = event.m_nTime;
	thread.m_nLastCompleteEnd = nEnd;
}
} // namespace convert
