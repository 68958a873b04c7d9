#include "threadcounters.h"

#include <pthread.h>

#include "clock.h"
#include "engine.h"
#include "registry.h"

namespace showbudget
{
namespace detail
{
__thread CThread t_Thread __attribute__( ( tls_model( "initial-exec" ) ) ) = { NOT_YET, nullptr };
std::atomic<uint32_t> g_nWanted{ 0 };
} // namespace detail

using detail::CSiteCounters;
using detail::t_Thread;

namespace
{
struct ThreadCounters
{
	CSiteCounters m_Sites[MAX_SITES];
	uint16_t m_Entered[MAX_SITES]; // the sites that the thread was in, in the order of their first times
	std::atomic<uint32_t> m_nEntered;
};

ThreadCounters g_Threads[MAX_THREADS];
std::atomic<bool> g_bTaken[MAX_THREADS];
std::atomic<uint32_t> g_nThreads{ 0 };
std::atomic<uint32_t> g_nUnmeasured{ 0 };

// The thread's counters where a scope may go straight to them, which it may not without the time-stamp counter. There
// every scope takes the slow way, and this is how that finds them.
__thread CSiteCounters *t_pCounters __attribute__( ( tls_model( "initial-exec" ) ) ) = nullptr;
__thread bool t_bNoRoom __attribute__( ( tls_model( "initial-exec" ) ) ) = false;

void ReleaseCounters( void *pCounters )
{
	// Scopes of other thread-exit functions that run after this one are attached again and released again.
	auto *pThread = static_cast<ThreadCounters *>( pCounters );
	t_pCounters = nullptr;
	t_Thread = { detail::NOT_YET, nullptr };
	g_Engine.m_RecordTree.OnThreadEnded( pThread->m_Sites );
	g_bTaken[pThread - g_Threads].store( false, std::memory_order_release );
}

// Keys of the first 32 need no allocation to be set, which is why this is not a thread_local with a destructor.
struct ExitKey
{
	ExitKey() { m_bMade = pthread_key_create( &m_Key, ReleaseCounters ) == 0; }
	pthread_key_t m_Key{};
	bool m_bMade = false;
};
ExitKey g_ExitKey;

void RaiseThreadCount( uint32_t nCount )
{
	uint32_t nBefore = g_nThreads.load( std::memory_order_relaxed );
	while ( nBefore < nCount && !g_nThreads.compare_exchange_weak( nBefore, nCount, std::memory_order_release ) )
	{
	}
}

CSiteCounters *TakeCounters()
{
	for ( uint32_t i = 0; i < MAX_THREADS; i++ )
	{
		bool bTaken = false;
		if ( g_bTaken[i].load( std::memory_order_relaxed ) ||
			 !g_bTaken[i].compare_exchange_strong( bTaken, true, std::memory_order_acquire ) )
			continue;
		RaiseThreadCount( i + 1 );
		return g_Threads[i].m_Sites;
	}
	return nullptr;
}
} // namespace

uint32_t ThreadCount()
{
	return g_nThreads.load( std::memory_order_acquire );
}

CSiteCounters *GetCounters( uint32_t nThread )
{
	return g_Threads[nThread].m_Sites;
}

std::span<const uint16_t> EnteredSites( uint32_t nThread )
{
	const ThreadCounters &thread = g_Threads[nThread];
	return { thread.m_Entered, thread.m_nEntered.load( std::memory_order_acquire ) };
}

uint32_t ThreadIndex( const CSiteCounters *pCounters )
{
	return static_cast<uint32_t>( reinterpret_cast<const ThreadCounters *>( pCounters ) - g_Threads );
}

uint32_t UnmeasuredThreads()
{
	return g_nUnmeasured.load( std::memory_order_relaxed );
}

CSiteCounters *AttachThread()
{
	if ( t_pCounters || t_bNoRoom )
		return t_pCounters;
	CSiteCounters *pCounters = TakeCounters();
	if ( !pCounters )
	{
		t_bNoRoom = true;
		g_nUnmeasured.fetch_add( 1, std::memory_order_relaxed );
		return nullptr;
	}
	if ( g_ExitKey.m_bMade )
		pthread_setspecific( g_ExitKey.m_Key, pCounters );
	t_pCounters = pCounters;
	t_Thread.m_pCurrent = pCounters;
	if ( IsCounterUsed() )
		t_Thread.m_nCounters = reinterpret_cast<uintptr_t>( pCounters );
	return pCounters;
}

void ForgetOtherThreads()
{
	for ( uint32_t i = 0; i < MAX_THREADS; i++ )
	{
		if ( g_Threads[i].m_Sites == t_pCounters || !g_bTaken[i].exchange( false, std::memory_order_relaxed ) )
			continue;
		g_Engine.m_RecordTree.OnThreadEnded( g_Threads[i].m_Sites );
	}
}

void SplitOpenScopes( const CSiteCounters *pOwn, uint64_t nNow )
{
	for ( CSiteCounters *p = t_Thread.m_pCurrent; p != pOwn; )
	{
		CSiteCounters *pCaller = p->m_pCaller.load( std::memory_order_relaxed );
		const uint64_t nTicks = nNow - p->m_nBegin;
		p->m_nBegin = nNow;
		detail::AddOwned( p->m_nTicks, nTicks );
		p = pCaller;
	}
}

namespace
{
// The scope around the site is another one than last time: the one before gets what was its part of the time. A site
// without one is new on this thread.
void ChangeCaller( CSiteCounters *pThread, CSiteCounters &counters, CSiteCounters *pCaller )
{
	if ( CSiteCounters *pBefore = LastCaller( counters ) )
	{
		const uint64_t nTicks = counters.m_nTicks.load( std::memory_order_relaxed );
		pBefore->m_nChildTicks += nTicks - counters.m_nTicksGiven;
		counters.m_nTicksGiven = nTicks;
	}
	else
	{
		auto &thread = g_Threads[ThreadIndex( pThread )];
		const uint32_t nEntered = thread.m_nEntered.load( std::memory_order_relaxed );
		thread.m_Entered[nEntered] = static_cast<uint16_t>( &counters - pThread );
		thread.m_nEntered.store( nEntered + 1, std::memory_order_release );
	}
	counters.m_pCaller.store( pCaller, std::memory_order_relaxed );
	g_Engine.m_RecordTree.OnCallerChanged( pThread, counters, *pCaller );
}

bool IsOpen( const CSiteCounters *pThread, const CSiteCounters *pCounters )
{
	const CSiteCounters *p = t_Thread.m_pCurrent;
	while ( p != pThread && p != pCounters )
		p = p->m_pCaller.load( std::memory_order_relaxed );
	return p == pCounters;
}
} // namespace

namespace detail
{
OpenScope EnterSlowly( CSite &site ) noexcept
{
	CSiteCounters *pThread = AttachThread();
	if ( !pThread )
		return 0;
	const uintptr_t nOffset = RegisterSite( site );
	// Another thread is registering the site at this moment. To wait for it would be to block, so this one call, which
	// can only be one of the site's very first, is not counted.
	if ( nOffset == NOT_YET )
		return 0;
	CSiteCounters *pCounters = pThread + nOffset / sizeof( CSiteCounters );
	if ( IsOpen( pThread, pCounters ) )
	{
		AddOwned( pCounters->m_nCalls, 1 );
		return 0;
	}
	if ( pCounters->m_pCaller.load( std::memory_order_relaxed ) != t_Thread.m_pCurrent )
		ChangeCaller( pThread, *pCounters, t_Thread.m_pCurrent );
	AddOwned( pCounters->m_nCalls, 1 );
	t_Thread.m_pCurrent = pCounters;
	pCounters->m_nBegin = ReadTicks();
	const auto nOpen = reinterpret_cast<OpenScope>( pCounters );
	return IsCounterUsed() ? nOpen : -nOpen;
}

void LeaveSlowly( OpenScope nOpen ) noexcept
{
	auto *pCounters = reinterpret_cast<CSiteCounters *>( -nOpen );
	AddOwned( pCounters->m_nTicks, ReadTicks() - pCounters->m_nBegin );
	t_Thread.m_pCurrent = pCounters->m_pCaller.load( std::memory_order_relaxed );
}
} // namespace detail
} // namespace showbudget
