#include "tools/convert/samplepairs.h"

namespace convert
{
std::optional<TraceEvent> CSamplePairs::AddStack( uint32_t nStack )
{
	TraceEvent event;
	event.m_nName = nStack;
	return Add( Half::Stack, event );
}

std::optional<TraceEvent> CSamplePairs::AddWeight( const TraceEvent &weight )
{
	return Add( Half::Weight, weight );
}

std::optional<TraceEvent> CSamplePairs::Add( Half half, TraceEvent event )
{
	if ( !m_Problem.empty() )
		return {};
	if ( !m_Waiting )
	{
		m_Waiting.emplace( m_Folder, m_nRunEvents );
		m_WaitingHalf = half;
	}
	if ( half == m_WaitingHalf && !m_bReading )
	{
		Wait( event );
		return {};
	}
	const TraceEvent *pOther = half == m_WaitingHalf ? nullptr : NextWaiting();
	if ( !pOther )
	{
		m_nAlone++;
		return {};
	}
	TraceEvent sample = half == Half::Weight ? event : *pOther;
	const uint32_t nStack = half == Half::Stack ? event.m_nName : pOther->m_nName;
	sample.m_nName = sample.m_nName == NO_NAME ? NO_NAME : nStack;
	return sample;
}

void CSamplePairs::Wait( TraceEvent event )
{
	event.m_nTime = static_cast<int64_t>( m_Waiting->Count() );
	if ( !m_Waiting->Add( event ) )
		m_Problem = m_Waiting->Problem();
}

const TraceEvent *CSamplePairs::NextWaiting()
{
	if ( !m_bReading && !m_Waiting->BeginReading() )
		m_Problem = m_Waiting->Problem();
	m_bReading = true;
	const TraceEvent *pNext = m_Problem.empty() ? m_Waiting->Next() : nullptr;
	m_nRead += pNext != nullptr;
	if ( !m_Waiting->Problem().empty() )
		m_Problem = m_Waiting->Problem();
	return pNext;
}

uint64_t CSamplePairs::End()
{
	const uint64_t nWaiting = m_Waiting ? m_Waiting->Count() - m_nRead : 0;
	const uint64_t nAlone = m_nAlone + nWaiting;
	m_Waiting.reset();
	m_bReading = false;
	m_nRead = m_nAlone = 0;
	return nAlone;
}
} // namespace convert
