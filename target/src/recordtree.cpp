#include "recordtree.h"

#include <algorithm>
#include <limits>

#include "threadcounters.h"

namespace showbudget
{
using detail::CSiteCounters;

namespace
{
constexpr uint64_t COUNT_BITS = 32; // of m_nLost
constexpr uint64_t COUNT_MASK = ( uint64_t( 1 ) << COUNT_BITS ) - 1;
} // namespace

// Nobody else can change m_pFollowed between the two marks.
void CRecordTree::Follow( CSiteCounters *pThread, CSiteCounters &counters, CSiteCounters &caller )
{
	CSiteCounters *pExpected = pThread;
	if ( !m_pFollowed.compare_exchange_strong( pExpected, Busy( pThread ) ) )
		return;
	const auto nSite = static_cast<uint32_t>( &counters - pThread );
	Settle( counters, m_Ties[nSite] );
	UntieInside( pThread, nSite );
	TieSite( nSite, static_cast<uint32_t>( &caller - pThread ) );
	m_pFollowed.store( pThread, std::memory_order_release );
}

bool CRecordTree::LetGo()
{
	CSiteCounters *pFollowed = m_pFollowed.load( std::memory_order_relaxed );
	return !IsBusy( pFollowed ) && m_pFollowed.compare_exchange_strong( pFollowed, nullptr );
}

void CRecordTree::OnThreadEnded( CSiteCounters *pThread )
{
	m_pFollowed.compare_exchange_strong( pThread, nullptr );
}

void CRecordTree::BeginSession( uint32_t nSession, bool bOtherThreads )
{
	m_nSession.store( uint64_t{ nSession } << 1 | uint64_t{ bOtherThreads }, std::memory_order_release );
}

uint64_t CRecordTree::FramesLost( uint32_t nSession ) const
{
	const uint64_t nLost = m_nLost.load( std::memory_order_relaxed );
	return nLost >> COUNT_BITS == nSession ? nLost & COUNT_MASK : 0;
}

void CRecordTree::EndFrame( CSiteCounters *pOwn, uint64_t nNow )
{
	const uint64_t nSession = m_nSession.load( std::memory_order_acquire );
	if ( m_pFollowed.load( std::memory_order_relaxed ) != pOwn || nSession != m_nFollowedSession )
	{
		if ( !LetGo() )
			return;
		if ( nSession != m_nFollowedSession )
		{
			m_nFollowedSession = nSession;
			m_nFrame = 0;
			m_nLost.store( nSession >> 1 << COUNT_BITS, std::memory_order_relaxed );
		}
		return Begin( pOwn, nNow );
	}

	for ( const uint16_t nSite : EnteredSites( ThreadIndex( pOwn ) ) )
		Settle( pOwn[nSite], m_Ties[nSite] );
	if ( nSession & 1 )
		ReadOtherThreads( pOwn, true );
	if ( !WriteFrame( nNow ) )
		m_nLost.store( m_nLost.load( std::memory_order_relaxed ) + 1, std::memory_order_relaxed );
	ForgetFrame();
	m_nFrame++;
	m_nFrameBegin = nNow;
}

// Nothing is known of the paths that led to the sites of the thread, but for the scopes that are open.
void CRecordTree::Begin( CSiteCounters *pOwn, uint64_t nNow )
{
	std::fill_n( m_Ties, MAX_SITES, Tie{ NO_NODE, SITE_NONE, SITE_NONE, SITE_NONE, SITE_NONE, false, {} } );
	m_Ties[SITE_NONE].m_nNode = NODE_FRAME;
	for ( const CSiteCounters *p = detail::t_Thread.m_pCurrent; p != pOwn; p = LastCaller( *p ) )
		m_Ties[p - pOwn].m_bListed = true; // that it is open, until it is tied
	for ( const uint16_t nSite : EnteredSites( ThreadIndex( pOwn ) ) )
	{
		const CSiteCounters &counters = pOwn[nSite];
		m_Ties[nSite].m_Taken = {
			counters.m_nTicks.load( std::memory_order_relaxed ), counters.m_nCalls.load( std::memory_order_relaxed ) };
		if ( !m_Ties[nSite].m_bListed )
			MarkCaller( pOwn[nSite] );
	}
	TieOpenScopes( pOwn );
	ForgetFrame();
	if ( m_nFollowedSession & 1 )
		ReadOtherThreads( pOwn, false );
	m_nFrameBegin = nNow;
	m_pFollowed.store( pOwn, std::memory_order_release );
}

// From the outermost inwards.
void CRecordTree::TieOpenScopes( CSiteCounters *pOwn )
{
	uint16_t open[MAX_SITES];
	uint32_t nOpen = 0;
	for ( const CSiteCounters *p = detail::t_Thread.m_pCurrent; p != pOwn; p = LastCaller( *p ) )
		open[nOpen++] = static_cast<uint16_t>( p - pOwn );
	uint32_t nCaller = SITE_NONE;
	while ( nOpen > 0 )
	{
		const uint32_t nSite = open[--nOpen];
		m_Ties[nSite].m_bListed = false;
		TieSite( nSite, nCaller );
		nCaller = nSite;
	}
}

void CRecordTree::TieSite( uint32_t nSite, uint32_t nCaller )
{
	Unlist( nSite );
	m_Ties[nSite].m_nNode = ChildNode( m_Ties[nCaller].m_nNode, nSite );
	List( nSite, nCaller );
}

void CRecordTree::List( uint32_t nSite, uint32_t nCaller )
{
	Tie &tie = m_Ties[nSite];
	uint16_t &nFirst = m_Ties[nCaller].m_nFirstInside;
	tie.m_bListed = true;
	tie.m_nCaller = static_cast<uint16_t>( nCaller );
	tie.m_nPrevious = SITE_NONE;
	tie.m_nNext = nFirst;
	if ( nFirst != SITE_NONE )
		m_Ties[nFirst].m_nPrevious = static_cast<uint16_t>( nSite );
	nFirst = static_cast<uint16_t>( nSite );
}

void CRecordTree::Unlist( uint32_t nSite )
{
	Tie &tie = m_Ties[nSite];
	if ( !tie.m_bListed )
		return;
	tie.m_bListed = false;
	if ( tie.m_nNext != SITE_NONE )
		m_Ties[tie.m_nNext].m_nPrevious = tie.m_nPrevious;
	if ( tie.m_nPrevious != SITE_NONE )
		m_Ties[tie.m_nPrevious].m_nNext = tie.m_nNext;
	else
		m_Ties[tie.m_nCaller].m_nFirstInside = tie.m_nNext;
}

// None of the sites inside is open, because the site itself is not.
void CRecordTree::UntieInside( CSiteCounters *pThread, uint32_t nSite )
{
	while ( const uint32_t nInside = m_Ties[nSite].m_nFirstInside )
	{
		Tie &inside = m_Ties[nInside];
		Settle( pThread[nInside], inside );
		MarkCaller( pThread[nInside] );
		Unlist( nInside );
		inside.m_nNode = NO_NODE;
		// What is inside of it comes next, from the same list.
		while ( const uint32_t nDeeper = inside.m_nFirstInside )
		{
			Unlist( nDeeper );
			List( nDeeper, nSite );
		}
	}
}

void CRecordTree::Settle( const CSiteCounters &counters, Tie &tie )
{
	const Sum now{
		counters.m_nTicks.load( std::memory_order_relaxed ), counters.m_nCalls.load( std::memory_order_relaxed ) };
	AddToNode( tie.m_nNode, Difference( now, tie.m_Taken ) );
	tie.m_Taken = now;
}

// Counters of two processors may be some ticks apart; time does not run backwards for that.
CRecordTree::Sum CRecordTree::Difference( const Sum &now, const Sum &before )
{
	const uint64_t nTicks = now.m_nTicks - before.m_nTicks;
	return { static_cast<int64_t>( nTicks ) > 0 ? nTicks : 0, now.m_nCalls - before.m_nCalls };
}

void CRecordTree::AddToNode( uint32_t nNode, Sum sum )
{
	if ( nNode == NO_NODE || !( sum.m_nTicks | sum.m_nCalls ) )
		return;
	Sum &total = m_Sums[nNode];
	if ( !( total.m_nTicks | total.m_nCalls ) )
		m_Touched[m_nTouched++] = nNode;
	total.m_nTicks += sum.m_nTicks;
	total.m_nCalls += sum.m_nCalls;
}

uint32_t CRecordTree::ChildNode( uint32_t nParent, uint32_t nSite )
{
	if ( nParent == NO_NODE )
		return NO_NODE;
	const uint64_t nKey = uint64_t{ nParent } << 16 | nSite;
	auto nSlot = static_cast<uint32_t>( nKey * 0x9E3779B97F4A7C15u >> 40 ) % HASH_SIZE;
	for ( ; m_Hash[nSlot] != 0; nSlot = ( nSlot + 1 ) % HASH_SIZE )
	{
		const RecordNode &node = m_Nodes[m_Hash[nSlot]];
		if ( node.m_nParent == nParent && node.m_nSite == nSite )
			return m_Hash[nSlot];
	}
	if ( m_nNodes == MAX_RECORD_NODES )
	{
		m_bNodeLost.store( true, std::memory_order_relaxed );
		return NO_NODE;
	}
	m_Nodes[m_nNodes] = { nSite, nParent };
	m_Hash[nSlot] = m_nNodes;
	return m_nNodes++;
}

// The paths of other threads are not followed. A site of theirs is put below the one that it was entered from last.
uint32_t CRecordTree::NodeOnOtherThread( const CSiteCounters *pThread, uint32_t nSite )
{
	constexpr uint32_t MAX_DEPTH = 64; // callers of different moments may form a circle
	uint32_t path[MAX_DEPTH];
	uint32_t nDepth = 0;
	for ( const CSiteCounters *p = pThread + nSite; p && p != pThread; p = LastCaller( *p ) )
	{
		if ( nDepth == MAX_DEPTH )
		{
			nDepth = 1;
			break;
		}
		path[nDepth++] = static_cast<uint32_t>( p - pThread );
	}
	uint32_t nNode = ChildNode( NODE_FRAME, SITE_OTHER_THREADS );
	while ( nDepth > 0 )
		nNode = ChildNode( nNode, path[--nDepth] );
	return nNode;
}

void CRecordTree::ReadOtherThreads( const CSiteCounters *pOwn, bool bKeep )
{
	const uint32_t nOwn = ThreadIndex( pOwn );
	const uint32_t nOthers = ChildNode( NODE_FRAME, SITE_OTHER_THREADS );
	for ( uint32_t nThread = 0; nThread < ThreadCount(); nThread++ )
	{
		const CSiteCounters *pThread = GetCounters( nThread );
		Sum threadSum{};
		for ( const uint16_t nSite : EnteredSites( nThread ) )
		{
			const CSiteCounters &counters = pThread[nSite];
			const Sum now{ counters.m_nTicks.load( std::memory_order_relaxed ),
				counters.m_nCalls.load( std::memory_order_relaxed ) };
			Sum &taken = m_OthersTaken[nThread][nSite];
			const Sum sum = Difference( now, taken );
			taken = now;
			if ( !bKeep || nThread == nOwn || !( sum.m_nTicks | sum.m_nCalls ) )
				continue;
			const uint32_t nNode = NodeOnOtherThread( pThread, nSite );
			AddToNode( nNode, sum );
			if ( nNode != NO_NODE && m_Nodes[nNode].m_nParent == nOthers )
				threadSum.m_nTicks += sum.m_nTicks;
			threadSum.m_nCalls = 1;
		}
		if ( threadSum.m_nCalls )
			AddToNode( nOthers, threadSum );
	}
}

bool CRecordTree::WriteFrame( uint64_t nNow )
{
	uint8_t *pFrame = m_Queue.Reserve( sizeof( RecordFrameHeader ) + ( m_nTouched + 1 ) * sizeof( RecordEntry ) );
	if ( !pFrame )
		return false;
	auto &header = *reinterpret_cast<RecordFrameHeader *>( pFrame );
	header = { m_nFrameBegin, nNow, static_cast<uint32_t>( m_nFollowedSession >> 1 ), m_nFrame, m_nTouched + 1, 0 };
	auto *pEntry = reinterpret_cast<RecordEntry *>( pFrame + sizeof( RecordFrameHeader ) );
	*pEntry++ = { NODE_FRAME, 1, nNow - m_nFrameBegin };
	for ( uint32_t i = 0; i < m_nTouched; i++ )
	{
		const Sum &sum = m_Sums[m_Touched[i]];
		const uint64_t nCalls = std::min<uint64_t>( sum.m_nCalls, std::numeric_limits<uint32_t>::max() );
		*pEntry++ = { m_Touched[i], static_cast<uint32_t>( nCalls ), sum.m_nTicks };
	}
	m_Queue.Commit( sizeof( RecordFrameHeader ) + header.m_nEntries * sizeof( RecordEntry ) );
	return true;
}

void CRecordTree::ForgetFrame()
{
	while ( m_nTouched > 0 )
		m_Sums[m_Touched[--m_nTouched]] = {};
}
} // namespace showbudget
