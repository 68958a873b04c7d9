#include "tools/convert/scopestack.h"

#include <algorithm>

namespace convert
{
void CScopeStack::Begin( const TraceEvent &event, bool bRoot )
{
	EndBefore( event.m_nTime );
	Push( event, m_Scopes.empty() ? INT64_MAX : m_Scopes.back().m_nLimit, bRoot );
}

void CScopeStack::Complete( const TraceEvent &event, bool bRoot )
{
	EndBefore( event.m_nTime );
	int64_t nEnd = event.m_nTime + event.m_nDuration;
	// One that begins where the one before it ends, but for rounding, is not inside it.
	while ( !m_Scopes.empty() && nEnd - TOLERANCE > m_Scopes.back().m_nLimit &&
			m_Scopes.back().m_nLimit - TOLERANCE <= event.m_nTime )
		Pop( event.m_nTime );
	if ( !m_Scopes.empty() && nEnd > m_Scopes.back().m_nLimit )
	{
		if ( nEnd - TOLERANCE > m_Scopes.back().m_nLimit )
			m_Report.Add( Repair::Overlap );
		nEnd = m_Scopes.back().m_nLimit;
	}
	Push( event, nEnd, bRoot );
}

void CScopeStack::End( const TraceEvent &event )
{
	// A scope whose end was written at the limit of what is around it is still open.
	while ( !m_Scopes.empty() && m_Scopes.back().m_nLimit < event.m_nTime + m_Scopes.back().m_bComplete )
		PopUnended( m_Scopes.back().m_nLimit );
	const bool bAny = event.m_nName == NO_NAME;
	if ( m_nExpectedEnds == 0 || ( !bAny && !IsOpen( event.m_nName ) ) )
	{
		m_Report.Add( Repair::EndWithoutBegin );
		return;
	}
	const auto isMatch = [&]( const Scope &scope )
	{ return !scope.m_bComplete && ( bAny || scope.m_nName == event.m_nName ); };
	while ( !isMatch( m_Scopes.back() ) )
	{
		if ( m_Scopes.back().m_bComplete )
			m_Report.Add( Repair::Overlap );
		PopUnended( event.m_nTime );
	}
	Pop( event.m_nTime );
}

void CScopeStack::EndBefore( int64_t nTime )
{
	while ( !m_Scopes.empty() && m_Scopes.back().m_nLimit <= nTime )
		PopUnended( m_Scopes.back().m_nLimit );
}

void CScopeStack::Split( int64_t nTime )
{
	EndBefore( nTime );
	for ( const Scope &scope : m_Scopes )
		m_Frame.AddSpan( scope.m_nNode, scope.m_nBegin, nTime );
	if ( !m_Scopes.empty() && m_nBase != CCallTree::ROOT )
		m_Frame.AddSpan( m_nBase, m_Scopes.front().m_nBegin, nTime );
}

void CScopeStack::Finish( int64_t nTime )
{
	while ( !m_Scopes.empty() )
		PopUnended( std::min( nTime, m_Scopes.back().m_nLimit ) );
}

void CScopeStack::Push( const TraceEvent &event, int64_t nLimit, bool bRoot )
{
	const bool bOutermost = m_Scopes.empty();
	const int32_t nParent = bOutermost ? m_nBase : m_Scopes.back().m_nBelow;
	const int32_t nNode = bRoot ? CCallTree::NONE : m_Frame.m_Tree.Child( nParent, event.m_nName );
	if ( nNode == CCallTree::NONE && !bRoot )
		m_Report.Add( Note::TooManyNodes );
	const bool bComplete = event.m_Kind == EventKind::Complete;
	m_Scopes.push_back( { event.m_nTime, nLimit, nNode, bRoot ? nParent : nNode, event.m_nName, bComplete } );
	m_Frame.Add( nNode, 0, event.m_nCalls );
	if ( bOutermost && m_nBase != CCallTree::ROOT )
		m_Frame.Add( m_nBase, 0, 1 );
	m_nExpectedEnds += !bComplete;
	if ( m_bCountsNames && !bComplete )
		m_OpenNames[event.m_nName]++;
}

void CScopeStack::Pop( int64_t nTime )
{
	const Scope scope = m_Scopes.back();
	m_Scopes.pop_back();
	m_Frame.AddSpan( scope.m_nNode, scope.m_nBegin, nTime );
	if ( m_Scopes.empty() && m_nBase != CCallTree::ROOT )
		m_Frame.AddSpan( m_nBase, scope.m_nBegin, nTime );
	m_nExpectedEnds -= !scope.m_bComplete;
	if ( m_bCountsNames && !scope.m_bComplete )
		m_OpenNames[scope.m_nName]--;
}

// Ends a scope in place of an end that was expected and did not come.
void CScopeStack::PopUnended( int64_t nTime )
{
	if ( !m_Scopes.back().m_bComplete )
		m_Report.Add( Repair::BeginWithoutEnd );
	Pop( nTime );
}

bool CScopeStack::IsOpen( uint32_t nName )
{
	const Scope &top = m_Scopes.back();
	if ( !top.m_bComplete && top.m_nName == nName )
		return true;
	if ( !m_bCountsNames )
	{
		m_bCountsNames = true;
		for ( const Scope &scope : m_Scopes )
			if ( !scope.m_bComplete )
				m_OpenNames[scope.m_nName]++;
	}
	const auto it = m_OpenNames.find( nName );
	return it != m_OpenNames.end() && it->second > 0;
}
} // namespace convert
