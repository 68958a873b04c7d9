// The scopes of one engine: records, groups, and what has been heard about them. Knows no widget; the tree view follows
// through TakeChanges.
#pragma once

#include <QColor>
#include <QHash>
#include <QString>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <tsl/robin_map.h>
#include <tsl/robin_set.h>
#include <vector>

#include "miniprofiler/iminiprofilersink.h"
#include "miniprofiler/miniprofilergrouping.h"
#include "miniprofiler/miniprofilerhistory.h"
#include "miniprofiler/miniprofileroverhead.h"
#include "miniprofiler/miniprofilerrow.h"

class CMiniProfilerModel final : public IMiniProfilerSink
{
public:
	// Records that are kept at most; ids beyond are ignored until Clear.
	static constexpr size_t MAX_RECORDS = 131072;

	// Groups at most; fewer as long as little is known of the records, whose descriptions they are made from: memory
	// must not outgrow what was sent. Beyond them a record is filed under the innermost group that there is.
	static constexpr size_t MAX_GROUPS = 131072;
	static constexpr size_t FREE_GROUPS = 8192;
	static constexpr size_t DESCRIPTION_BYTES_PER_GROUP = 40; // for each further one

	// Names of budgets whose colours are kept at most.
	static constexpr int MAX_BUDGET_COLOURS = 65536;

	// nTicksPerSecond (> 0) counts until an engine tells its own.
	explicit CMiniProfilerModel( uint64_t nTicksPerSecond );
	~CMiniProfilerModel();
	CMiniProfilerModel( const CMiniProfilerModel & ) = delete;
	CMiniProfilerModel &operator=( const CMiniProfilerModel & ) = delete;

	// Null for id 0 and for a new id when the model is full. A new record's id joins the wanted names; with bAdvance it
	// takes part in the present interval.
	CQMiniProfilerRecord *FindOrCreateRecord( uint64_t nId, bool bAdvance );

	// Names the record, takes its description apart, and files and places it as the hierarchy says.
	void SetRecordName( CQMiniProfilerRecord &record, std::string_view name, std::string_view description );

	// Deletes every record and group and forgets names, wanted names and the common prefix. Budget colours, costs,
	// counters, the tick frequency and the hierarchy stay. Whoever shows rows must have let go of them.
	void Clear();

	// A budget of that name already there gets the new colour. Records take their colour when they are named.
	void SetBudgetColour( const QString &name, const QColor &colour );
	QColor BudgetColour( const QString &name ) const { return m_BudgetColours.value( name ); } // invalid: unknown

	// Files and places every record anew and removes the groups that no record needs any more.
	void SetHierarchy( MiniProfilerGroupMode groupMode, MiniProfilerLeafMode leafMode );

	// The same without a new mode and without removing groups: callers may have changed.
	void RebuildHierarchy();

	// Statistics of all records, and of the groups from the innermost out.
	void ComputeStatistics( bool bPeaks );

	std::span<const std::unique_ptr<CQMiniProfilerRecord>> Records() const { return m_Records; }
	std::span<const std::unique_ptr<CMiniProfilerGroup>> Groups() const { return m_Groups; }
	const CMiniProfilerHistory &History() const { return m_History; }
	const CMiniProfilerGroup *FindGroup( const QString &key ) const { return m_GroupMap.value( { key, key.size() } ); }

	// The record of the profiler system's own cost, id 0: made when it is first asked for. It is in no list.
	CQMiniProfilerRecord &CostRecord();
	uint32_t CostSampleCount() const { return m_pCostRecord ? m_CostRecordHistory.Count( 0 ) : 0; }

	const CMiniProfilerCostHistory &CostHistory() const { return m_CostHistory; }
	const MiniProfilerCounters &Counters() const { return m_Counters; }
	uint64_t TickFrequency() const { return m_nTicksPerSecond; }
	const std::string &CommonPrefix() const { return m_CommonPrefix; } // of all source files

	// Different ids that found no room since Clear, counted up to MAX_RECORDS.
	size_t IgnoredIds() const { return m_IgnoredIds.size(); }

	// The ids whose names are wanted, oldest first; the list is then empty.
	std::vector<uint64_t> TakeWantedIds();

	// The rows that are new (without an item), were renamed or moved since the last call, in order of the first change;
	// a parent group before its children. Their m_nChanges are the caller's to clear.
	std::vector<CMiniProfilerRow *> TakeChanges();
	bool HasChanges() const { return !m_Changes.empty() || !m_RemovedGroups.empty(); }

	// Groups that are no longer in the list but may have an item still; they end when the result does.
	std::vector<std::unique_ptr<CMiniProfilerGroup>> TakeRemovedGroups();

	void SetPaused( bool bPaused ) { m_bPaused = bPaused; }

	// IMiniProfilerSink
	bool IsPaused() const override { return m_bPaused; }
	void BeginData( bool bFirstOfChunk ) override;
	void SetCounts( uint32_t nRegistered, uint32_t nTransmitted ) override;
	void AddEntry( uint64_t nId, uint64_t nCallerId, const MiniProfilerSample *pSample ) override;
	void SetTickFrequency( uint64_t nTicksPerSecond ) override { m_nTicksPerSecond = nTicksPerSecond; }
	void SetNamesSent( int32_t nCount ) override { m_Counters.m_nNamesSent = nCount; }
	void AddName(
		uint64_t nId, uint64_t nStaticParentId, std::string_view name, std::string_view description ) override;
	void EndChunk( uint64_t nServiceTicks, uint32_t nLength ) override;

	// Ids are addresses, so their low bits are alike.
	struct IdHash
	{
		size_t operator()( uint64_t nId ) const
		{
			nId *= 0x9E3779B97F4A7C15;
			return nId ^ nId >> 32;
		}
	};
	using RecordMap = tsl::robin_map<uint64_t, uint32_t, IdHash>; // to history indices

private:
	static constexpr uint32_t NO_RECORD = UINT32_MAX;

	uint32_t FindOrCreateIndex( uint64_t nId, bool bAdvance ); // NO_RECORD where FindOrCreateRecord gives null
	uint32_t CreateRecord( uint64_t nId, bool bAdvance );
	uint32_t FollowingIndex( uint64_t nId );
	void SetCaller( uint32_t nRecord, uint64_t nCallerId );
	void ReleaseName( const CQMiniProfilerRecord &record );
	void NoteDuplicateName( CQMiniProfilerRecord &record );
	size_t MaxGroups() const;
	CMiniProfilerGroup *FindOrCreateGroup(
		const MiniProfilerGroupKey &key, const QString &name, CMiniProfilerGroup *pParent );
	CMiniProfilerGroup *PathGroup( std::string_view path, CMiniProfilerGroup *pParent );
	CMiniProfilerGroup *BudgetGroup( const CQMiniProfilerRecord &record );
	CMiniProfilerGroup *GroupOf( const CQMiniProfilerRecord &record );
	void Place( CQMiniProfilerRecord &record );
	void Hang( CQMiniProfilerRecord &record, CMiniProfilerRow *pParent );
	void CutDeepBranches();
	void PruneGroups();
	void NoteChange( CMiniProfilerRow &row );

	std::vector<std::unique_ptr<CQMiniProfilerRecord>> m_Records; // by history index
	CMiniProfilerHistory m_History;
	RecordMap m_RecordMap;

	// What a chunk needs to know of a record that has not changed, small enough that thousands stay in the cache.
	struct Link
	{
		uint64_t m_nId = 0;
		uint64_t m_nCallerId = 0; // 0 without a caller
		uint32_t m_nNext = 0;     // the record that followed in the chunk: engines send them in much the same order
	};
	std::vector<Link> m_Links; // by history index
	uint32_t m_nLast = 0;      // the record of the latest entry
	std::vector<uint64_t> m_WantedIds;
	tsl::robin_set<uint64_t, IdHash> m_IgnoredIds;

	size_t m_nDescriptionBytes = 0; // of all records

	std::vector<std::unique_ptr<CMiniProfilerGroup>> m_Groups; // parents before their children
	QHash<MiniProfilerGroupKey, CMiniProfilerGroup *> m_GroupMap;

	// Who has a name. Once the first one has been given another name, all that are left are known duplicates.
	struct NameUse
	{
		CQMiniProfilerRecord *m_pFirst = nullptr;
		uint32_t m_nRecords = 0;
	};
	QHash<QString, NameUse> m_NameMap;
	QHash<QString, QColor> m_BudgetColours;
	std::string m_CommonPrefix;

	std::unique_ptr<CQMiniProfilerRecord> m_pCostRecord;
	CMiniProfilerHistory m_CostRecordHistory;
	CMiniProfilerCostHistory m_CostHistory;
	MiniProfilerCounters m_Counters;
	uint64_t m_nTicksPerSecond;

	MiniProfilerGroupMode m_GroupMode = MiniProfilerGroupMode::None;
	MiniProfilerLeafMode m_LeafMode = MiniProfilerLeafMode::None;
	bool m_bPaused = false;

	bool m_bGroupsFull = false; // and it was said
	bool m_bNested = false;     // records were placed below others since TakeChanges

	std::vector<CMiniProfilerRow *> m_Changes;
	std::vector<std::unique_ptr<CMiniProfilerGroup>> m_RemovedGroups;
};
