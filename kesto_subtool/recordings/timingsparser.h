// Reads the timings of one frame after another, in the order in which the nodes hang together.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "recordings/entryarena.h"
#include "recordings/fieldsource.h"
#include "recordings/kestofile.h"

// A timings record holds no node ids: its entries follow the chains of children from the root on. Where those form a
// tree, which is the rule, the order of its nodes is worked out once and every record is then read in one loop (the
// plan). Where a node is reached twice or is its own ancestor, the chains are walked for each record; such a walk may
// have no other end than that of the data.
class CTimingsParser
{
public:
	// Both must outlive the parser.
	CTimingsParser( CFieldSource &source, const CKestoFile &file );

	void OnNodesLinked() { m_bPlanned = false; }

	// Forgets what the current frame has so far.
	void BeginFrame();

	// Reads one record into the current frame. A later record of a frame overwrites the entries that it names. False
	// when the source failed, which was reported then.
	bool ParseRecord();

	// What the current frame has, which it then has no more.
	CKestoFile::CTickTimings::Storage TakeFrame();

private:
	using Entry = CKestoFile::CTickTimings::Entry;
	using Storage = CKestoFile::CTickTimings::Storage;

	void MakePlan();
	bool CollectTree();
	int32_t NextInWalk( int32_t nNode, std::vector<int32_t> &ancestors ) const;

	bool ParseEntry( Entry &entry );
	size_t ParseEntriesOfWindow( size_t nFirst );
	const uint8_t *ParseLongEntry( const uint8_t *p, int32_t nSlot );
	bool ParseByPlan();
	bool ParseByWalk();
	bool ReportTruncated();

	void MoveToWalked();
	void StoreWalked();

	CFieldSource &m_Source;
	const CKestoFile &m_File;
	CEntryArena m_Arena;

	// The plan: for each entry of a record its slot, and the shape of what is stored.
	bool m_bPlanned = false;
	bool m_bIsTree = false;
	bool m_bFillsAll = false; // no stored entry is left out by the record
	std::vector<int32_t> m_Slots;
	int32_t m_nPlanCount = 0;
	int32_t m_nPlanStored = 0;
	std::shared_ptr<const std::vector<int32_t>> m_pPlanNodes;

	// The current frame: as it will be kept, or (m_bWalked) by node id while several records or a walk fill it.
	Storage m_Stored;
	bool m_bWalked = false;
	CPagedList<Entry> m_Walked;
	std::vector<int32_t> m_WalkedNodes; // what m_Walked has for this frame, in the order of the entries
	int32_t m_nWalkedCount = 0;

	// While the plan is made: a node counts as visited when its mark is the current one.
	CPagedList<uint32_t> m_Marks;
	uint32_t m_nMark = 0;
};
