// The frame thread's side of the recorder: which scope was entered inside of which, and what that took in each frame.
#pragma once

#include <atomic>
#include <cstdint>

#include "bytequeue.h"
#include "tablesizes.h"
#include "target/showbudget.h"

namespace showbudget
{
// A place in the tree of calls: a site below another node. Node 0 is the frame. The table only grows, so an index stays
// what it is for the life of the process; a parent's is lower than its children's.
struct RecordNode
{
	uint32_t m_nSite; // SITE_NONE for the frame, SITE_OTHER_THREADS for the node of the other threads
	uint32_t m_nParent;
};
constexpr uint32_t NODE_FRAME = 0;
constexpr uint32_t SITE_OTHER_THREADS = MAX_SITES;

struct RecordEntry
{
	uint32_t m_nNode;
	uint32_t m_nCalls;
	uint64_t m_nTicks; // inclusive
};

// One frame as it lies in the queue, in front of its entries. Only nodes with calls or ticks have one; the frame itself
// is the first.
struct RecordFrameHeader
{
	uint64_t m_nBegin; // ticks
	uint64_t m_nEnd;
	uint32_t m_nSession;
	uint32_t m_nFrame; // counts all frames of the session from 0, also those that found no room
	uint32_t m_nEntries;
	uint32_t m_nUnused;
};

// What the sites of one thread, the one that ends the frames, count is taken apart by the path of scopes that they were
// entered through. That costs a scope nothing on its straight way: a site is tied to one node, and its counters are
// settled with that node whenever the site is entered from elsewhere, which is what the slow way is for.
//
// While a site is entered from elsewhere than last time, all that was called inside of it lies on another path, too.
// The ties of those sites are undone then; each costs as much as making it did.
class CRecordTree
{
public:
	// The thread's scopes, on their slow way: the site is about to be entered from pCaller and counted nothing there
	// yet.
	void OnCallerChanged(
		detail::CSiteCounters *pThread, detail::CSiteCounters &counters, detail::CSiteCounters &caller )
	{
		if ( m_pFollowed.load( std::memory_order_relaxed ) == pThread )
			Follow( pThread, counters, caller );
	}
	void OnThreadEnded( detail::CSiteCounters *pThread );

	// Frame thread: ends a frame at nNow, when its open scopes were split. The first one of a session or of a thread
	// only sets the starting line.
	void EndFrame( detail::CSiteCounters *pOwn, uint64_t nNow );
	// Frame thread: nobody records.
	void Idle()
	{
		if ( m_pFollowed.load( std::memory_order_relaxed ) )
			LetGo();
	}

	// Recorder: what the next frame belongs to. The queue may still bring one of the session before.
	void BeginSession( uint32_t nSession, bool bOtherThreads );
	// Recorder: frames of the session that found no room so far.
	uint64_t FramesLost( uint32_t nSession ) const;
	// Any thread: whether nodes found no room.
	bool AnyNodeLost() const { return m_bNodeLost.load( std::memory_order_relaxed ); }

	// Recorder: frames, oldest first, each a RecordFrameHeader and its entries; and the nodes that they speak of.
	CByteQueue<RECORD_QUEUE_BYTES> &Queue() { return m_Queue; }
	const RecordNode &Node( uint32_t nNode ) const { return m_Nodes[nNode]; }

private:
	static constexpr uint32_t NO_NODE = ~uint32_t( 0 );
	static constexpr uint32_t HASH_SIZE = 2 * MAX_RECORD_NODES;

	struct Sum
	{
		uint64_t m_nTicks;
		uint64_t m_nCalls;
	};
	// Sites that were last entered from one caller form a list; SITE_NONE is its end, since that is entered from
	// nowhere.
	struct Tie
	{
		uint32_t m_nNode;
		uint16_t m_nCaller;
		uint16_t m_nFirstInside;
		uint16_t m_nNext;
		uint16_t m_nPrevious;
		bool m_bListed;
		Sum m_Taken; // of the site's counters, settled with some node
	};

	void Follow( detail::CSiteCounters *pThread, detail::CSiteCounters &counters, detail::CSiteCounters &caller );
	static detail::CSiteCounters *Busy( detail::CSiteCounters *pThread )
	{
		return reinterpret_cast<detail::CSiteCounters *>( reinterpret_cast<uintptr_t>( pThread ) | 1 );
	}
	static bool IsBusy( const detail::CSiteCounters *pThread ) { return reinterpret_cast<uintptr_t>( pThread ) & 1; }
	// Ends following any thread. False when that has to wait.
	bool LetGo();
	void Begin( detail::CSiteCounters *pOwn, uint64_t nNow );
	void TieOpenScopes( detail::CSiteCounters *pOwn );
	void TieSite( uint32_t nSite, uint32_t nCaller );
	void List( uint32_t nSite, uint32_t nCaller );
	void Unlist( uint32_t nSite );
	void UntieInside( detail::CSiteCounters *pThread, uint32_t nSite );
	void Settle( const detail::CSiteCounters &counters, Tie &tie );
	static Sum Difference( const Sum &now, const Sum &before );
	void AddToNode( uint32_t nNode, Sum sum );
	uint32_t ChildNode( uint32_t nParent, uint32_t nSite );
	void ReadOtherThreads( const detail::CSiteCounters *pOwn, bool bKeep );
	uint32_t NodeOnOtherThread( const detail::CSiteCounters *pThread, uint32_t nSite );
	bool WriteFrame( uint64_t nNow );
	void ForgetFrame();

	// The thread's counters; null for none. The lowest bit says that a scope of that thread works on the ties. Another
	// thread that takes over the frames meanwhile comes back a frame later instead of waiting.
	std::atomic<detail::CSiteCounters *> m_pFollowed{ nullptr };
	std::atomic<uint64_t> m_nSession{ 0 }; // and in the lowest bit whether other threads are recorded
	std::atomic<uint64_t> m_nLost{ 0 };    // the session in the upper half
	std::atomic<bool> m_bNodeLost{ false };

	uint64_t m_nFollowedSession = 0;
	uint64_t m_nFrameBegin = 0;
	uint32_t m_nFrame = 0;
	uint32_t m_nNodes = 1;
	uint32_t m_nTouched = 0;
	Tie m_Ties[MAX_SITES];
	RecordNode m_Nodes[MAX_RECORD_NODES];
	Sum m_Sums[MAX_RECORD_NODES];         // of the frame
	uint32_t m_Touched[MAX_RECORD_NODES]; // the nodes whose sums are not 0
	uint32_t m_Hash[HASH_SIZE];           // finds a node by its parent and site; 0 is free
	Sum m_OthersTaken[MAX_THREADS][MAX_SITES];
	CByteQueue<RECORD_QUEUE_BYTES> m_Queue;
};
} // namespace showbudget
