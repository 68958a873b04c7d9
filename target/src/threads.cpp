#include "threads.h"

#include <pthread.h>

#include "clock.h"
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
	// A thread that ended without leaving its scopes must not leave them open for the next one.
	for ( CSiteCounters *p = t_Thread.m_pCurrent; p && p != pThread->m_Sites;
		  p = p->m_pCaller.load( std::memory_order_relaxed ) )
		p->m_nBegin = 0;
	t_pCounters = nullptr;
	t_Thread = { detail::NOT_YET, nullptr };
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

namespace detail
{
CSiteCounters *EnterSlowly( CSite &site )
{
	CSiteCounters *pThread = AttachThread();
	if ( !pThread )
		return nullptr;
	const uintptr_t nOffset = RegisterSite( site );
	if ( nOffset == NOT_YET )
		return nullptr; // another thread is registering the site: this one call is not counted
	CSiteCounters *pCounters = pThread + nOffset / sizeof( CSiteCounters );
	AddOwned( pCounters->m_nCalls, 1 );
	if ( pCounters->m_nBegin != 0 )
		return nullptr;
	pCounters->m_pCaller.store( t_Thread.m_pCurrent, std::memory_order_relaxed );
	t_Thread.m_pCurrent = pCounters;
	pCounters->m_nBegin = ReadTicks();
	return pCounters;
}

void LeaveSlowly( CSiteCounters *pCounters )
{
	const uint64_t nTicks = ReadTicks() - pCounters->m_nBegin;
	CSiteCounters *pCaller = pCounters->m_pCaller.load( std::memory_order_relaxed );
	pCounters->m_nBegin = 0;
	AddOwned( pCounters->m_nTicks, nTicks );
	AddOwned( pCaller->m_nChildTicks, nTicks );
	t_Thread.m_pCurrent = pCaller;
}
} // namespace detail
} // namespace showbudget
