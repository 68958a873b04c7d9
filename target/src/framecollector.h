// Takes a frame: reads what the scopes counted since the last one and writes it to the queue.
#pragma once

#include <cstdint>

#include "framequeue.h"
#include "tablesizes.h"
#include "target/showbudget.h"

namespace showbudget
{
// What detail::g_nWanted is made of: what consoles want, and the recorder.
constexpr uint32_t WANT_BUDGETS = 1;
constexpr uint32_t WANT_SCOPES = 2;
constexpr uint32_t WANT_LIVE = WANT_BUDGETS | WANT_SCOPES;
constexpr uint32_t WANT_RECORDING = 4;

// Belongs to the frame thread. The first frame after somebody began to watch only sets the starting line, because its
// beginning was not measured.
class CFrameCollector
{
public:
	explicit CFrameCollector( CFrameQueue &queue )
		: m_Queue( queue )
	{
	}

	// Ends the frame of the calling thread, whose counters are pOwn, at the moment nNow, when its open scopes were
	// split. False when it was whole but the queue had no room for it.
	bool EndFrame( detail::CSiteCounters *pOwn, uint64_t nNow, Tick tick, uint32_t nWanted );
	// Nobody watches.
	void Idle() { m_nWantedBefore = 0; }

private:
	void StartOver( detail::CSiteCounters *pOwn );
	void CountFrame( uint64_t nNow );
	void FillFrame( uint8_t *pFrame, FrameHeader &header );
	void ReadOwnSites( FrameHeader &header, uint64_t *pBudgetTicks, FrameEntry *pEntries );
	void ReadOtherThreads( FrameHeader &header, FrameEntry *pEntries );
	void AddEntry( FrameHeader &header, FrameEntry *pEntries, const FrameEntry &entry );
	void SkipOtherThreads();
	uint32_t BudgetOf( uint32_t nSite, const FrameHeader &header );

	static constexpr uint32_t AVERAGED_FRAMES = 64;

	CFrameQueue &m_Queue;
	detail::CSiteCounters *m_pOwn = nullptr; // the frame thread's
	uint32_t m_nWantedBefore = 0;
	bool m_bTickLost = false; // a frame that opened a tick was not sent
	uint64_t m_nFrameBegin = 0;
	uint64_t m_FrameEnds[AVERAGED_FRAMES]{}; // a ring
	uint64_t m_nFramesCounted = 0;
	uint64_t m_nEntryFrame = 0;          // numbers the frames for m_EntryFrames
	uint64_t m_EntryFrames[MAX_SITES]{}; // the frame that the site's m_EntryIndices is of
	uint32_t m_EntryIndices[MAX_SITES]{};
	uint16_t m_BudgetsPlusOne[MAX_SITES]{}; // 0 until the site was seen ready
};
} // namespace showbudget
