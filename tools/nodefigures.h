// Times of nodes over all frames of a recording.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "recordings/kestofile.h"
#include "recordings/pagedlist.h"
#include "tools/nodetree.h"
#include "tools/statistics.h"

// Calls visit( nNode, entry ) for all entries of the frame that are not 0. Costs what the frame stores, not what its
// list is long.
template <typename Visit>
void VisitEntries( const CKestoFile::CTickTimings &frame, const Visit &visit )
{
	const CKestoFile::CTickTimings::Storage &storage = frame.GetStorage();
	for ( int32_t i = 0; i < storage.m_nStored; i++ )
	{
		const CKestoFile::CTickTimings::Entry entry = storage.Get( i );
		if ( entry.m_nCalls != 0 || entry.m_nTime != 0 )
			visit( storage.m_pNodes ? ( *storage.m_pNodes )[static_cast<size_t>( i )] : i, entry );
	}
}

// The root's time in each frame, microseconds.
std::vector<int32_t> FrameTimes( const CKestoFile &file );

// Sums over all frames, in 64 bits where the model's own wrap.
struct NodeTotals
{
	uint64_t m_nCalls = 0;
	int64_t m_nTime = 0;     // microseconds, descendants included
	int64_t m_nSelfTime = 0; // less the times of the direct children; may be negative
	int32_t m_nFrames = 0;   // in which it was called or took time
};

// By node id, any that a recording can have.
CPagedList<NodeTotals> SumNodes( const CKestoFile &file, const CNodeTree &tree );

// Nodes whose times are to be added up frame by frame, as one. A node is in one group at most.
class CNodeGroups
{
public:
	void Add( int32_t nNode, int32_t nGroup ); // groups are numbered from 0
	int32_t Count() const { return m_nCount; }
	int32_t GroupOf( int32_t nNode ) const; // -1 = none

private:
	CPagedList<int32_t> m_Groups; // by node id, plus 1; 0 = none
	int32_t m_nCount = 0;
};

// Hands out the time per frame (microseconds, at the ends of the 32-bit range where the sum is beyond it) of each
// group, in order. Frames in which a group took none count as 0, so all have one number per frame. Memory stays at 64
// MiB plus 40 bytes per group, however many frames and nodes there are, unless one group alone takes more.
void VisitGroupTimes( const CKestoFile &file, const CNodeGroups &groups,
	const std::function<void( int32_t nGroup, const CDistribution &times )> &visit );
