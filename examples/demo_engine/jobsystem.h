// Spreads work over a few threads.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace demo
{
class CJobSystem
{
public:
	CJobSystem();
	~CJobSystem();
	CJobSystem( const CJobSystem & ) = delete;
	CJobSystem &operator=( const CJobSystem & ) = delete;

	// Calls `job` for every batch from 0 to nBatches - 1, on the workers and on the calling thread, and returns when
	// all are done. One caller at a time.
	void Run( uint32_t nBatches, const std::function<void( uint32_t nBatch )> &job );

private:
	void Work();
	void TakeBatches();

	std::mutex m_Mutex;
	std::condition_variable m_WorkCame;
	std::condition_variable m_WorkDone;
	const std::function<void( uint32_t )> *m_pJob = nullptr;
	std::atomic<uint32_t> m_nNextBatch{ 0 };
	uint32_t m_nBatches = 0;
	uint32_t m_nWorking = 0; // workers that are inside of the job
	uint64_t m_nRound = 0;
	bool m_bEnd = false;
	std::vector<std::thread> m_Workers;
};
} // namespace demo
