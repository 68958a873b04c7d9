#define SHOWBUDGET_PROJECT "core"
#include "jobsystem.h"

#include <algorithm>

#include "budgets.h"

namespace demo
{
CJobSystem::CJobSystem()
{
	constexpr unsigned int MAX_WORKERS = 3;
	const unsigned int nProcessors = std::max( 2u, std::thread::hardware_concurrency() );
	for ( unsigned int i = 0; i < std::min( nProcessors - 1, MAX_WORKERS ); i++ )
		m_Workers.emplace_back( [this] { Work(); } );
}

CJobSystem::~CJobSystem()
{
	{
		std::lock_guard lock( m_Mutex );
		m_bEnd = true;
	}
	m_WorkCame.notify_all();
	for ( std::thread &worker : m_Workers )
		worker.join();
}

void CJobSystem::Run( uint32_t nBatches, const std::function<void( uint32_t )> &job )
{
	{
		std::lock_guard lock( m_Mutex );
		m_pJob = &job;
		m_nBatches = nBatches;
		m_nNextBatch.store( 0, std::memory_order_relaxed );
		m_nRound++;
	}
	m_WorkCame.notify_all();
	TakeBatches();

	// The time that the frame waits for its workers belongs to the budget of whatever it waits for: the scope around
	// the call. Only what the mini-profiler shows has a name of its own.
	std::unique_lock lock( m_Mutex );
	m_WorkDone.wait( lock, [this] { return m_nWorking == 0; } );
	m_pJob = nullptr;
}

void CJobSystem::TakeBatches()
{
	for ( uint32_t nBatch = m_nNextBatch++; nBatch < m_nBatches; nBatch = m_nNextBatch++ )
		( *m_pJob )( nBatch );
}

void CJobSystem::Work()
{
	uint64_t nRoundDone = 0;
	std::unique_lock lock( m_Mutex );
	for ( ;; )
	{
		m_WorkCame.wait( lock, [&] { return m_bEnd || ( m_pJob && m_nRound != nRoundDone ); } );
		if ( m_bEnd )
			return;
		nRoundDone = m_nRound;
		m_nWorking++;
		lock.unlock();
		TakeBatches();
		lock.lock();
		if ( --m_nWorking == 0 )
			m_WorkDone.notify_one();
	}
}
} // namespace demo
