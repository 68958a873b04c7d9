#include "tools/convert/framecutter.h"

#include <algorithm>
#include <set>

namespace convert
{
static constexpr size_t MAX_GROUP = 1u << 16;
static constexpr uint64_t PROGRESS_EVENTS = 1u << 16;

CFrameCutter::CFrameCutter( CTrace &trace, const CutOptions &options, IFrameSink &sink )
	: m_Trace( trace )
	, m_Options( options )
	, m_Sink( sink )
{
}

bool CFrameCutter::Run( const Progress &progress )
{
	if ( !SelectThreads() || !PrepareFrames() )
		return false;
	if ( !m_Trace.m_Spool.BeginReading() )
		return Fail( m_Trace.m_Spool.Problem() );
	uint64_t nDone = 0;
	uint64_t nNextProgress = 0;
	for ( const TraceEvent *pNext = m_Trace.m_Spool.Next(); pNext; nDone += m_Group.size() )
	{
		if ( !ReadGroup( pNext ) )
			return false;
		if ( progress && nDone >= nNextProgress )
		{
			progress( nDone, m_Trace.m_Spool.Count() );
			nNextProgress = nDone + PROGRESS_EVENTS;
		}
	}
	if ( !m_Trace.m_Spool.Problem().empty() )
		return Fail( m_Trace.m_Spool.Problem() );
	return FinishFrames();
}

bool CFrameCutter::Fail( std::string problem )
{
	if ( m_Problem.empty() )
		m_Problem = std::move( problem );
	return false;
}

static bool IsWanted( const std::vector<std::string> &wanted, std::string_view name, std::string_view id )
{
	return wanted.empty() || std::any_of( wanted.begin(), wanted.end(),
								 [&]( const std::string &text ) { return text == name || text == id; } );
}

bool CFrameCutter::SelectThreads()
{
	const CThreadTable &threads = m_Trace.m_Threads;
	std::set<std::string> processes;
	bool bAnyScopes = false;
	uint64_t nSampledThreads = 0;
	for ( uint32_t i = 0; i < threads.Count(); i++ )
	{
		const Thread &thread = threads.Get( i );
		ThreadState &state = m_States.emplace_back( ThreadState{ CScopeStack( m_Frame, m_Trace.m_Report ) } );
		state.m_bProcessSelected =
			IsWanted( m_Options.m_Processes, threads.ProcessName( thread.m_Process ), thread.m_Process );
		state.m_bSelected = state.m_bProcessSelected && IsWanted( m_Options.m_Threads, thread.m_Name, thread.m_Id );
		bAnyScopes = bAnyScopes || thread.m_nScopes > 0;
		if ( !state.m_bSelected || thread.m_nScopes == 0 )
			continue;
		m_nSelected++;
		m_nScopes += thread.m_nScopes;
		processes.insert( thread.m_Process );
		nSampledThreads += thread.m_nSamples == thread.m_nScopes;
		m_nFirstTime = std::min( m_nFirstTime, thread.m_nFirstTime );
		m_nLastTime = std::max( m_nLastTime, thread.m_nLastTime );
	}
	m_bSeveralProcesses = processes.size() > 1;
	m_bSampled = m_nSelected > 0 && nSampledThreads == m_nSelected;
	if ( m_nSelected == 0 && bAnyScopes )
		return Fail( "no thread with scopes is the one that was asked for; there are " + ThreadList() );
	if ( m_nSelected > 1 )
		m_Trace.m_Report.Say(
			std::to_string( m_nSelected ) + " threads have a node each; --thread chooses among " + ThreadList() );
	return true;
}

std::string CFrameCutter::ThreadList() const
{
	constexpr size_t SHOWN = 8;
	std::string list;
	size_t nListed = 0;
	for ( uint32_t i = 0; i < m_Trace.m_Threads.Count(); i++ )
	{
		if ( m_Trace.m_Threads.Get( i ).m_nScopes == 0 )
			continue;
		if ( nListed++ < SHOWN )
			list += ( list.empty() ? "\"" : ", \"" ) + m_Trace.m_Threads.Label( i, true ) + '"';
	}
	return nListed > SHOWN ? list + " and " + std::to_string( nListed - SHOWN ) + " more" : list;
}

bool CFrameCutter::PrepareFrames()
{
	m_bFrameIsRoot = m_Options.m_FrameName.empty() && m_Options.m_nPeriod == 0 && !m_Trace.m_FrameName.empty();
	const std::string &name = m_bFrameIsRoot ? m_Trace.m_FrameName : m_Options.m_FrameName;
	m_bMarked = !name.empty();
	if ( m_bMarked )
		m_nFrameName = m_Trace.m_Names.Intern( name );
	if ( m_nSelected == 0 )
		return true;
	m_Frame.m_nStart = m_nFirstTime;
	if ( m_Options.m_nPeriod > 0 )
	{
		if ( ( m_nLastTime - m_nFirstTime ) / m_Options.m_nPeriod >= MAX_FRAMES )
			return Fail( "this period makes more than 1000000 frames" );
		m_nNextCut = m_nFirstTime + m_Options.m_nPeriod;
	}
	return true;
}

// Handles the events of the next time and moves on.
bool CFrameCutter::ReadGroup( const TraceEvent *&pNext )
{
	m_Group.clear();
	do
	{
		m_Group.push_back( *pNext );
		pNext = m_Trace.m_Spool.Next();
	} while ( pNext && pNext->m_nTime == m_Group.front().m_nTime && m_Group.size() < MAX_GROUP );
	if ( m_Group.size() > 1 )
		ArrangeGroup();
	return std::all_of( m_Group.begin(), m_Group.end(), [this]( const TraceEvent &event ) { return Handle( event ); } );
}

// Begins and ends of the same time are in the order of the input. Scopes with a duration are written in any order: the
// longer one is the outer one, and a frame's begins before all else does.
void CFrameCutter::ArrangeGroup()
{
	const auto isComplete = []( const TraceEvent &event ) { return event.m_Kind == EventKind::Complete; };
	const auto key = [this]( const TraceEvent &event )
	{ return std::tuple( event.m_nName != m_nFrameName, -event.m_nDuration, event.m_nThread ); };
	for ( auto itFirst = m_Group.begin(); itFirst != m_Group.end(); )
	{
		itFirst = std::find_if( itFirst, m_Group.end(), isComplete );
		const auto itLast = std::find_if_not( itFirst, m_Group.end(), isComplete );
		std::stable_sort(
			itFirst, itLast, [&]( const TraceEvent &a, const TraceEvent &b ) { return key( a ) < key( b ); } );
		while ( itFirst != itLast )
		{
			const auto itSame = std::find_if(
				itFirst, itLast, [&]( const TraceEvent &event ) { return key( event ) != key( *itFirst ); } );
			if ( m_Trace.m_Threads.Get( itFirst->m_nThread ).WritesAtEnd() )
				std::reverse( itFirst, itSame );
			itFirst = itSame;
		}
	}
}

bool CFrameCutter::Handle( const TraceEvent &event )
{
	ThreadState &state = m_States[event.m_nThread];
	if ( !CutPeriods( event.m_nTime ) )
		return false;
	if ( event.m_Kind == EventKind::Sample )
		return HandleSample( state, event );
	return HandleScope( state, event );
}

bool CFrameCutter::IsMarker( const ThreadState &state, const TraceEvent &event ) const
{
	if ( !m_bMarked || event.m_nName != m_nFrameName || !state.m_bProcessSelected || event.m_Kind == EventKind::End )
		return false;
	if ( m_nFrameThread != 0xFFFFFFFF && m_nFrameThread != event.m_nThread )
		return false;
	return !m_bFrameIsRoot || state.m_Stack.IsEmpty();
}

bool CFrameCutter::HandleScope( ThreadState &state, const TraceEvent &event )
{
	if ( m_bFrameIsRoot && event.m_Kind != EventKind::End )
		state.m_Stack.EndBefore( event.m_nTime );
	const bool bMarker = IsMarker( state, event );
	if ( bMarker && !CutAtMarker( event ) )
		return false;
	if ( !state.m_bSelected || event.m_Kind == EventKind::Instant )
		return true;
	if ( event.m_Kind == EventKind::End )
	{
		state.m_Stack.End( event );
		return true;
	}
	SetBase( state, event.m_nThread );
	m_nBeforeFrames += m_bMarked && !m_bInFrames;
	const bool bRoot = bMarker && m_bFrameIsRoot;
	if ( event.m_Kind == EventKind::Begin )
		state.m_Stack.Begin( event, bRoot );
	else
		state.m_Stack.Complete( event, bRoot );
	return true;
}

void CFrameCutter::SetBase( ThreadState &state, uint32_t nThread )
{
	m_bUsed = true;
	if ( !state.m_bActive )
		m_Active.push_back( nThread );
	state.m_bActive = true;
	if ( state.m_bHasBase )
		return;
	state.m_bHasBase = true;
	if ( m_nSelected > 1 )
	{
		const std::string label = m_Trace.m_Threads.Label( nThread, m_bSeveralProcesses );
		state.m_Stack.SetBase( m_Frame.m_Tree.Child( CCallTree::ROOT, m_Trace.m_Names.Intern( label ) ) );
	}
}

bool CFrameCutter::HandleSample( ThreadState &state, const TraceEvent &event )
{
	m_Trace.m_Stacks.Get( event.m_nName, m_StackNames );
	if ( m_bMarked && state.m_bProcessSelected )
	{
		const bool bHas = std::find( m_StackNames.begin(), m_StackNames.end(), m_nFrameName ) != m_StackNames.end();
		const bool bCounts = m_nFrameThread == 0xFFFFFFFF || m_nFrameThread == event.m_nThread;
		if ( bHas && !state.m_bInMarker && bCounts && !CutAtMarker( event ) )
			return false;
		state.m_bInMarker = bHas;
	}
	if ( !state.m_bSelected )
		return true;
	SetBase( state, event.m_nThread );
	m_nBeforeFrames += m_bMarked && !m_bInFrames;
	const int64_t nTime = std::min( event.m_nDuration, m_Trace.m_nLongestSample );
	int32_t nNode = state.m_Stack.Base();
	if ( nNode != CCallTree::ROOT )
		m_Frame.Add( nNode, nTime, event.m_nCalls );
	for ( const uint32_t nName : m_StackNames )
	{
		nNode = m_Frame.m_Tree.Child( nNode, nName );
		if ( nNode == CCallTree::NONE )
		{
			m_Trace.m_Report.Add( Note::TooManyNodes );
			break;
		}
		m_Frame.Add( nNode, nTime, event.m_nCalls );
	}
	if ( __builtin_add_overflow( m_nSampleTime, nTime, &m_nSampleTime ) )
		m_nSampleTime = INT64_MAX;
	return true;
}

bool CFrameCutter::CutAtMarker( const TraceEvent &event )
{
	m_nFrameThread = event.m_nThread;
	if ( m_bInFrames )
	{
		if ( !Cut( event.m_nTime ) )
			return false;
	}
	else
	{
		// What came before is in no frame; what is still open begins with the first one.
		for ( const uint32_t nThread : m_Active )
			m_States[nThread].m_Stack.Split( event.m_nTime );
		m_Frame.Clear();
		m_nSampleTime = 0;
		m_Frame.m_nStart = event.m_nTime;
		m_bInFrames = true;
	}
	m_nFrameCalls = m_bFrameIsRoot ? event.m_nCalls : 1;
	return true;
}

// The frames that end by then. The last one ends with the last event.
bool CFrameCutter::CutPeriods( int64_t nTime )
{
	while ( m_nNextCut <= nTime && m_nNextCut < m_nLastTime )
	{
		m_nEmptyFrames = m_bUsed ? 0 : m_nEmptyFrames + 1;
		if ( m_nEmptyFrames > MAX_EMPTY_FRAMES )
		{
			LeaveOutEmptyFrames( nTime );
			return true;
		}
		if ( !Cut( m_nNextCut ) )
			return false;
		m_nNextCut += m_Options.m_nPeriod;
	}
	return true;
}

// Nothing begins before that time, and nothing is open.
void CFrameCutter::LeaveOutEmptyFrames( int64_t nTime )
{
	const int64_t nLast = std::min( nTime, m_nLastTime - 1 );
	const int64_t nFrames = ( nLast - m_nNextCut ) / m_Options.m_nPeriod + 1;
	m_Trace.m_Report.Add( Note::EmptyFrames, static_cast<uint64_t>( nFrames ) );
	m_Frame.m_nStart += nFrames * m_Options.m_nPeriod;
	m_nNextCut += nFrames * m_Options.m_nPeriod;
}

bool CFrameCutter::Cut( int64_t nTime )
{
	size_t nStillActive = 0;
	for ( const uint32_t nThread : m_Active )
	{
		ThreadState &state = m_States[nThread];
		state.m_Stack.Split( nTime );
		state.m_bActive = !state.m_Stack.IsEmpty();
		if ( state.m_bActive )
			m_Active[nStillActive++] = nThread;
	}
	m_Active.resize( nStillActive );
	m_bUsed = nStillActive > 0;
	return EmitFrame( nTime );
}

bool CFrameCutter::EmitFrame( int64_t nEnd )
{
	NodeTimes &root = m_Frame.At( CCallTree::ROOT );
	root.m_nTime = m_bSampled ? m_nSampleTime : nEnd - m_Frame.m_nStart;
	root.m_nCalls = m_nFrameCalls;
	const std::span<const NodeTimes> times = m_Frame.Times();
	m_nEntries += times.size();
	if ( m_nEntries > m_Options.m_nMostEntries )
		return Fail( "this makes more than " + std::to_string( m_Options.m_nMostEntries ) +
					 " entries (frames times nodes); longer frames make fewer" );
	if ( !m_Sink.AddFrame( m_Frame.m_Tree, times ) )
		return false;
	m_Frame.Clear();
	m_Frame.m_nStart = nEnd;
	m_nSampleTime = 0;
	return true;
}

bool CFrameCutter::FinishFrames()
{
	if ( m_bMarked && !m_bInFrames && m_nSelected > 0 )
		return Fail( "no scope is named \"" + m_Trace.m_Names.Get( m_nFrameName ) + "\", so there are no frames" );
	m_Trace.m_Report.Add( Note::BeforeFirstFrame, m_nBeforeFrames );
	if ( m_nSelected == 0 )
		return true;
	const int64_t nEnd = std::max( m_nLastTime, m_Frame.m_nStart );
	if ( !CutPeriods( nEnd ) )
		return false;
	for ( const uint32_t nThread : m_Active )
		m_States[nThread].m_Stack.Finish( nEnd );
	return EmitFrame( nEnd );
}
} // namespace convert
