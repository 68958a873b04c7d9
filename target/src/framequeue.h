// Carries frames from the frame thread to the sender.
#pragma once

#include <cstdint>
#include <span>

#include "bytequeue.h"
#include "tablesizes.h"

namespace showbudget
{
// One frame's budgets: ticks for each budget; then what the scopes did. Lies in the queue in one piece.
struct FrameHeader
{
	uint64_t m_nBegin;        // ticks
	uint64_t m_nEnd;          // ticks; the budgets' ticks add up to the difference
	uint64_t m_nServiceTicks; // what taking this frame cost the frame thread
	uint64_t m_nAverageTicks; // the length of the last m_nAverageFrames frames
	uint32_t m_nAverageFrames;
	uint32_t m_bNewTick;
	uint32_t m_nSites; // registered by then
	uint32_t m_nBudgets;
	uint32_t m_nEntries;
	uint32_t m_bEntries; // whether the scopes were read at all
};

// What all threads together did at one site in one frame. Only sites with calls or ticks have one.
struct FrameEntry
{
	uint32_t m_nSite;
	uint32_t m_nCaller; // SITE_NONE for none
	uint64_t m_nTicks;
	uint64_t m_nCalls;
};

struct Frame
{
	FrameHeader m_Header;
	std::span<const uint64_t> m_BudgetTicks; // by budget index
	std::span<const FrameEntry> m_Entries;
};

// Bytes of a frame in the queue.
constexpr size_t FrameSize( uint32_t nBudgets, uint32_t nEntries )
{
	return sizeof( FrameHeader ) + nBudgets * sizeof( uint64_t ) + nEntries * sizeof( FrameEntry );
}

class CFrameQueue
{
public:
	// Writer: memory for a frame of at most nBytes, aligned to 8; null when the reader is that far behind. Nothing is
	// seen by the reader before Commit.
	uint8_t *Reserve( size_t nBytes ) { return m_Bytes.Reserve( nBytes ); }
	// Writer: publishes the reserved frame with the size that it got in the end.
	void Commit( size_t nBytes ) { m_Bytes.Commit( nBytes ); }

	// Reader: the oldest frame, valid until Pop. False when there is none.
	bool Peek( Frame &frame );
	void Pop() { m_Bytes.Pop(); }
	// Reader: throws away everything that is there.
	void Clear() { m_Bytes.Clear(); }

private:
	CByteQueue<FRAME_QUEUE_BYTES> m_Bytes;
};
} // namespace showbudget
