#include "framecollector.h"

#include <algorithm>
#include <utility>

#include "clock.h"
#include "registry.h"
#include "threadcounters.h"

namespace showbudget
{
using detail::CSiteCounters;

namespace
{
// What was counted since the last frame's end, which is now forgotten.
FrameEntry TakeEntry( CSiteCounters *pThread, uint32_t nSite )
{
	CSiteCounters &counters = pThread[nSite];
	const uint64_t nTicks = counters.m_nTicks.load( std::memory_order_relaxed );
	const uint64_t nCalls = counters.m_nCalls.load( std::memory_order_relaxed );
	FrameEntry entry{ nSite, SITE_NONE, nTicks - counters.m_nTicksBefore, nCalls - counters.m_nCallsBefore };
	if ( entry.m_nTicks | entry.m_nCalls )
	{
		if ( const CSiteCounters *pCaller = LastCaller( counters ) )
			entry.m_nCaller = static_cast<uint32_t>( pCaller - pThread );
		counters.m_nTicksBefore = nTicks;
		counters.m_nCallsBefore = nCalls;
	}
	return entry;
}

// Settles what the scopes around a site have of its ticks. The last one gets the part that is not given yet.
uint64_t GiveToCaller( CSiteCounters &counters )
{
	const uint64_t nTicks = counters.m_nTicks.load( std::memory_order_relaxed );
	const uint64_t nGiven = nTicks - counters.m_nTicksGiven;
	counters.m_nTicksGiven = nTicks;
	return nGiven;
}

uint64_t TakeChildTicks( CSiteCounters &counters )
{
	return std::exchange( counters.m_nChildTicks, 0 );
}
} // namespace

bool CFrameCollector::EndFrame( CSiteCounters *pOwn, uint64_t nNow, Tick tick, uint32_t nWanted )
{
	FrameHeader header{};
	header.m_nBegin = m_nFrameBegin;
	header.m_nEnd = nNow;
	header.m_nSites = SiteCount();
	header.m_nBudgets = BudgetCount();
	header.m_bEntries = ( nWanted & m_nWantedBefore & WANT_SCOPES ) != 0;

	const bool bWhole = m_nWantedBefore != 0 && pOwn == m_pOwn;
	m_nWantedBefore = nWanted;
	m_nFrameBegin = nNow;
	if ( !bWhole )
	{
		m_nFramesCounted = 0;
		CountFrame( nNow );
		StartOver( pOwn );
		return true;
	}
	CountFrame( nNow );
	header.m_bNewTick = tick == Tick::New || m_bTickLost;
	uint8_t *pFrame = m_Queue.Reserve( FrameSize( header.m_nBudgets, header.m_nSites + 1 ) );
	if ( !pFrame )
	{
		const bool bTickLost = header.m_bNewTick != 0;
		StartOver( pOwn );
		m_bTickLost = bTickLost;
		return false;
	}
	m_bTickLost = false;
	FillFrame( pFrame, header );
	return true;
}

void CFrameCollector::FillFrame( uint8_t *pFrame, FrameHeader &header )
{
	const uint32_t nAveraged = static_cast<uint32_t>( std::min<uint64_t>( m_nFramesCounted - 1, AVERAGED_FRAMES - 1 ) );
	header.m_nAverageFrames = nAveraged;
	header.m_nAverageTicks = header.m_nEnd - m_FrameEnds[( m_nFramesCounted - 1 - nAveraged ) % AVERAGED_FRAMES];

	auto *pBudgetTicks = reinterpret_cast<uint64_t *>( pFrame + sizeof( FrameHeader ) );
	auto *pEntries = reinterpret_cast<FrameEntry *>( pBudgetTicks + header.m_nBudgets );
	m_nEntryFrame++;
	ReadOwnSites( header, pBudgetTicks, pEntries );
	if ( header.m_bEntries )
		ReadOtherThreads( header, pEntries );
	else if ( m_nWantedBefore & WANT_SCOPES )
		SkipOtherThreads();
	header.m_nServiceTicks = ReadTicks() - header.m_nEnd;
	*reinterpret_cast<FrameHeader *>( pFrame ) = header;
	m_Queue.Commit( FrameSize( header.m_nBudgets, header.m_nEntries ) );
}

// A site's own time is its ticks less its children's; the time of no site is the frame less the children of none. What
// a site took from its last caller is taken from that one's budget, whichever of the two comes first.
void CFrameCollector::ReadOwnSites( FrameHeader &header, uint64_t *pBudgetTicks, FrameEntry *pEntries )
{
	std::fill_n( pBudgetTicks, header.m_nBudgets, 0 );
	pBudgetTicks[BUDGET_OTHER] = header.m_nEnd - header.m_nBegin - TakeChildTicks( m_pOwn[SITE_NONE] );
	for ( const uint16_t nSite : EnteredSites( ThreadIndex( m_pOwn ) ) )
	{
		const FrameEntry entry = TakeEntry( m_pOwn, nSite );
		if ( !( entry.m_nTicks | entry.m_nCalls ) )
			continue;
		pBudgetTicks[BudgetOf( nSite, header )] += entry.m_nTicks - TakeChildTicks( m_pOwn[nSite] );
		pBudgetTicks[BudgetOf( entry.m_nCaller, header )] -= GiveToCaller( m_pOwn[nSite] );
		if ( header.m_bEntries )
			AddEntry( header, pEntries, entry );
	}
}

void CFrameCollector::ReadOtherThreads( FrameHeader &header, FrameEntry *pEntries )
{
	const uint32_t nOwn = ThreadIndex( m_pOwn );
	for ( uint32_t nThread = 0; nThread < ThreadCount(); nThread++ )
	{
		if ( nThread == nOwn )
			continue;
		for ( const uint16_t nSite : EnteredSites( nThread ) )
		{
			// What was registered after this frame was begun to be read has no room in it and waits for the next.
			if ( nSite >= header.m_nSites && nSite != SITE_OVERFLOW )
				continue;
			const FrameEntry entry = TakeEntry( GetCounters( nThread ), nSite );
			if ( entry.m_nTicks | entry.m_nCalls )
				AddEntry( header, pEntries, entry );
		}
	}
}

// One entry for each site, whichever threads were in it.
void CFrameCollector::AddEntry( FrameHeader &header, FrameEntry *pEntries, const FrameEntry &entry )
{
	if ( m_EntryFrames[entry.m_nSite] != m_nEntryFrame )
	{
		m_EntryFrames[entry.m_nSite] = m_nEntryFrame;
		m_EntryIndices[entry.m_nSite] = header.m_nEntries;
		pEntries[header.m_nEntries++] = entry;
		return;
	}
	FrameEntry &sum = pEntries[m_EntryIndices[entry.m_nSite]];
	sum.m_nTicks += entry.m_nTicks;
	sum.m_nCalls += entry.m_nCalls;
	if ( sum.m_nCaller == SITE_NONE )
		sum.m_nCaller = entry.m_nCaller;
}

void CFrameCollector::StartOver( CSiteCounters *pOwn )
{
	m_pOwn = pOwn;
	m_bTickLost = true;
	TakeChildTicks( pOwn[SITE_NONE] );
	for ( const uint16_t nSite : EnteredSites( ThreadIndex( pOwn ) ) )
	{
		TakeEntry( pOwn, nSite );
		GiveToCaller( pOwn[nSite] );
		TakeChildTicks( pOwn[nSite] );
	}
	SkipOtherThreads();
}

void CFrameCollector::SkipOtherThreads()
{
	const uint32_t nOwn = ThreadIndex( m_pOwn );
	for ( uint32_t nThread = 0; nThread < ThreadCount(); nThread++ )
	{
		if ( nThread == nOwn )
			continue;
		for ( const uint16_t nSite : EnteredSites( nThread ) )
			TakeEntry( GetCounters( nThread ), nSite );
	}
}

void CFrameCollector::CountFrame( uint64_t nNow )
{
	m_FrameEnds[m_nFramesCounted % AVERAGED_FRAMES] = nNow;
	m_nFramesCounted++;
}

uint32_t CFrameCollector::BudgetOf( uint32_t nSite, const FrameHeader &header )
{
	uint16_t &nPlusOne = m_BudgetsPlusOne[nSite];
	if ( nPlusOne == 0 )
	{
		// A site with counters is ready; SITE_NONE never is, and has the budget of no scope.
		const Site &site = GetSite( nSite );
		if ( !site.m_bReady.load( std::memory_order_acquire ) )
			return BUDGET_OTHER;
		nPlusOne = static_cast<uint16_t>( site.m_nBudget + 1 );
	}
	return nPlusOne <= header.m_nBudgets ? nPlusOne - 1u : BUDGET_OTHER;
}
} // namespace showbudget
