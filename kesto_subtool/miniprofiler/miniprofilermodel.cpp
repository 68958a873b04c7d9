// The model of the mini-profiler: what chunks bring. Groups and places are in miniprofilerhierarchy.cpp.
#include "miniprofiler/miniprofilermodel.h"

#include <utility>

#include "keel0/logging.h"
#include "miniprofiler/miniprofilerstatistics.h"

CMiniProfilerModel::CMiniProfilerModel( uint64_t nTicksPerSecond )
	: m_nTicksPerSecond( nTicksPerSecond )
{
}

CMiniProfilerModel::~CMiniProfilerModel() = default;

CQMiniProfilerRecord *CMiniProfilerModel::FindOrCreateRecord( uint64_t nId, bool bAdvance )
{
	const uint32_t nRecord = FindOrCreateIndex( nId, bAdvance );
	return nRecord == NO_RECORD ? nullptr : m_Records[nRecord].get();
}

uint32_t CMiniProfilerModel::FindOrCreateIndex( uint64_t nId, bool bAdvance )
{
	if ( nId == 0 )
		return NO_RECORD;
	const auto found = m_RecordMap.find( nId );
	return found != m_RecordMap.end() ? found->second : CreateRecord( nId, bAdvance );
}

uint32_t CMiniProfilerModel::CreateRecord( uint64_t nId, bool bAdvance )
{
	if ( m_Records.size() == MAX_RECORDS )
	{
		if ( m_IgnoredIds.empty() )
			Warning( "More than %zu mini-profilers: further ones are ignored until the mini-profiler is cleared\n",
				MAX_RECORDS );
		if ( m_IgnoredIds.size() < MAX_RECORDS )
			m_IgnoredIds.insert( nId );
		return NO_RECORD;
	}
	const uint32_t nRecord = m_History.Add( bAdvance );
	m_Records.push_back( std::make_unique<CQMiniProfilerRecord>( nId, nRecord ) );
	m_RecordMap.emplace( nId, nRecord );
	m_Links.push_back( { nId, 0, nRecord } );
	m_WantedIds.push_back( nId );
	NoteChange( *m_Records.back() );
	return nRecord;
}

void CMiniProfilerModel::SetRecordName(
	CQMiniProfilerRecord &record, std::string_view name, std::string_view description )
{
	ReleaseName( record );
	record.SetName( QString::fromUtf8( name.data(), static_cast<int>( name.size() ) ) );
	NoteChange( record );
	m_nDescriptionBytes -= record.DescriptionSize();
	record.SetDescription( description );
	m_nDescriptionBytes += record.DescriptionSize();

	const std::string_view budget = record.Line( CMiniProfilerDescription::LINE_BUDGET );
	const auto colour =
		m_BudgetColours.constFind( QString::fromUtf8( budget.data(), static_cast<int>( budget.size() ) ) );
	if ( record.LineCount() > CMiniProfilerDescription::LINE_BUDGET && colour != m_BudgetColours.constEnd() )
		record.SetBudgetColour( *colour );
	NoteDuplicateName( record );

	if ( const std::string_view file = record.Line( CMiniProfilerDescription::LINE_FILE ); !file.empty() )
	{
		if ( m_CommonPrefix.empty() )
			m_CommonPrefix = file;
		else
			m_CommonPrefix.resize( CommonPrefixLength( m_CommonPrefix, file ) );
	}
	record.m_pGroup = GroupOf( record );
	Place( record );
}

void CMiniProfilerModel::SetBudgetColour( const QString &name, const QColor &colour )
{
	if ( m_BudgetColours.size() < MAX_BUDGET_COLOURS || m_BudgetColours.contains( name ) )
		m_BudgetColours.insert( name, colour );
}

// A record that is named again lets go of its name, so that it is no duplicate of itself, and an engine that goes on
// renaming its scopes leaves nothing behind.
void CMiniProfilerModel::ReleaseName( const CQMiniProfilerRecord &record )
{
	const auto use = m_NameMap.find( record.Name() );
	if ( !record.IsNamed() || use == m_NameMap.end() )
		return;
	if ( use->m_pFirst == &record )
		use->m_pFirst = nullptr;
	if ( --use->m_nRecords == 0 )
		m_NameMap.erase( use );
}

void CMiniProfilerModel::NoteDuplicateName( CQMiniProfilerRecord &record )
{
	NameUse &use = m_NameMap[record.Name()];
	if ( use.m_nRecords++ == 0 )
		use.m_pFirst = &record;
	else
	{
		if ( use.m_pFirst )
			use.m_pFirst->SetFlag( MINIPROFILER_ROW_DUPLICATE );
		record.SetFlag( MINIPROFILER_ROW_DUPLICATE );
	}
}

void CMiniProfilerModel::Clear()
{
	m_Changes.clear();
	m_RemovedGroups.clear();
	m_RecordMap.clear();
	m_Links.clear();
	m_nLast = 0;
	m_NameMap.clear();
	m_GroupMap.clear();
	m_CommonPrefix.clear();
	m_Records.clear();
	m_nDescriptionBytes = 0;
	m_Groups.clear();
	m_bGroupsFull = false;
	m_bNested = false;
	m_History.Clear();
	m_WantedIds.clear();
	m_IgnoredIds.clear();
	m_pCostRecord.reset();
	m_CostRecordHistory.Clear();
}

void CMiniProfilerModel::ComputeStatistics( bool bPeaks )
{
	for ( const auto &pGroup : m_Groups )
		pGroup->ResetStatistics();
	ComputeMiniProfilerStatistics( m_History, m_Records, bPeaks );
	if ( m_pCostRecord )
		ComputeMiniProfilerStatistics( m_CostRecordHistory, std::span( &m_pCostRecord, 1 ), bPeaks );

	for ( const auto &pRecord : m_Records )
		if ( pRecord->m_pGroup )
			pRecord->m_pGroup->Merge( *pRecord );
	for ( size_t i = m_Groups.size(); i-- > 0; ) // children come after their parents
		if ( CMiniProfilerGroup *pParent = m_Groups[i]->Parent() )
			pParent->Merge( *m_Groups[i] );
}

CQMiniProfilerRecord &CMiniProfilerModel::CostRecord()
{
	if ( !m_pCostRecord )
	{
		m_pCostRecord = std::make_unique<CQMiniProfilerRecord>( 0, m_CostRecordHistory.Add( false ) );
		m_pCostRecord->SetName( QStringLiteral( "Kesto cost" ) );
	}
	return *m_pCostRecord;
}

std::vector<uint64_t> CMiniProfilerModel::TakeWantedIds()
{
	return std::exchange( m_WantedIds, {} );
}

std::vector<CMiniProfilerRow *> CMiniProfilerModel::TakeChanges()
{
	if ( m_bNested )
		CutDeepBranches();
	return std::exchange( m_Changes, {} );
}

std::vector<std::unique_ptr<CMiniProfilerGroup>> CMiniProfilerModel::TakeRemovedGroups()
{
	return std::exchange( m_RemovedGroups, {} );
}

void CMiniProfilerModel::NoteChange( CMiniProfilerRow &row )
{
	if ( row.m_nChanges & MINIPROFILER_ROW_QUEUED )
		return;
	row.m_nChanges |= MINIPROFILER_ROW_QUEUED;
	m_Changes.push_back( &row );
}

// -- Chunks

void CMiniProfilerModel::BeginData( bool bFirstOfChunk )
{
	if ( bFirstOfChunk )
		m_History.Advance();
	CostRecord();
	m_CostRecordHistory.Advance();
}

void CMiniProfilerModel::SetCounts( uint32_t nRegistered, uint32_t nTransmitted )
{
	m_Counters.m_nRegistered = nRegistered;
	m_Counters.m_nTransmitted = nTransmitted;
}

// The index of an entry's record: mostly the one that followed the entry before in the last chunk, too.
inline uint32_t CMiniProfilerModel::FollowingIndex( uint64_t nId )
{
	if ( !m_Links.empty() )
	{
		const uint32_t nGuess = m_Links[m_nLast].m_nNext;
		if ( m_Links[nGuess].m_nId == nId )
			return m_nLast = nGuess;
	}
	const uint32_t nRecord = FindOrCreateIndex( nId, true );
	if ( nRecord == NO_RECORD )
		return NO_RECORD;
	m_Links[m_nLast].m_nNext = nRecord;
	return m_nLast = nRecord;
}

void CMiniProfilerModel::AddEntry( uint64_t nId, uint64_t nCallerId, const MiniProfilerSample *pSample )
{
	const uint32_t nRecord = FollowingIndex( nId );
	if ( nRecord == NO_RECORD )
		return;
	if ( pSample )
		m_History.SetNewest( nRecord, *pSample );
	// Most scopes are called from where they were called before: that saves a look into the map.
	if ( nCallerId != 0 && nCallerId != m_Links[nRecord].m_nCallerId )
		SetCaller( nRecord, nCallerId );
}

void CMiniProfilerModel::SetCaller( uint32_t nRecord, uint64_t nCallerId )
{
	CQMiniProfilerRecord *pCaller = FindOrCreateRecord( nCallerId, false );
	m_Records[nRecord]->m_pCaller = pCaller;
	m_Links[nRecord].m_nCallerId = pCaller ? nCallerId : 0;
}

void CMiniProfilerModel::AddName(
	uint64_t nId, uint64_t nStaticParentId, std::string_view name, std::string_view description )
{
	CQMiniProfilerRecord *pRecord = FindOrCreateRecord( nId, false );
	if ( !pRecord )
		return;
	SetRecordName( *pRecord, name, description );
	if ( nStaticParentId != 0 )
		pRecord->m_pStaticParent = FindOrCreateRecord( nStaticParentId, false );
}

void CMiniProfilerModel::EndChunk( uint64_t nServiceTicks, uint32_t nLength )
{
	m_CostHistory.Push( nServiceTicks );
	m_Counters.m_nPacketSize = nLength;
}
