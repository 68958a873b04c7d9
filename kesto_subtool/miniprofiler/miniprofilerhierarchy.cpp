// The model of the mini-profiler: which group a record is in, where rows hang, and which groups are still needed.
#include <algorithm>
#include <iterator>
#include <utility>

#include "keel0/logging.h"
#include "miniprofiler/miniprofilermodel.h"

namespace
{
QString ToText( std::string_view text )
{
	return QString::fromUtf8( text.data(), static_cast<int>( text.size() ) );
}
} // namespace

size_t CMiniProfilerModel::MaxGroups() const
{
	return std::min( MAX_GROUPS, FREE_GROUPS + m_nDescriptionBytes / DESCRIPTION_BYTES_PER_GROUP );
}

CMiniProfilerGroup *CMiniProfilerModel::FindOrCreateGroup(
	const MiniProfilerGroupKey &key, const QString &name, CMiniProfilerGroup *pParent )
{
	if ( CMiniProfilerGroup *pGroup = m_GroupMap.value( key ) )
		return pGroup;
	if ( m_Groups.size() >= MaxGroups() )
	{
		if ( !std::exchange( m_bGroupsFull, true ) )
			Warning(
				"More than %zu groups of mini-profilers: none are added until the grouping changes or more is known "
				"of them\n",
				m_Groups.size() );
		return nullptr;
	}
	m_Groups.push_back(
		std::make_unique<CMiniProfilerGroup>( name, pParent, static_cast<int32_t>( m_Groups.size() ) ) );
	CMiniProfilerGroup &group = *m_Groups.back();
	m_GroupMap.insert( key, &group );
	if ( const auto colour = m_BudgetColours.constFind( name ); colour != m_BudgetColours.constEnd() )
		group.SetBudgetColour( *colour );
	NoteChange( group );
	return &group;
}

// The innermost group of a path; null for an empty one, not pParent.
CMiniProfilerGroup *CMiniProfilerModel::PathGroup( std::string_view path, CMiniProfilerGroup *pParent )
{
	CMiniProfilerGroup *pGroup = nullptr;
	MiniProfilerGroupKey key{ ToText( path ) };
	SplitMiniProfilerPath( path,
		[&]( std::string_view, std::string_view component )
		{
			const QString name = ToText( component );
			key.m_nLength += name.size();
			if ( CMiniProfilerGroup *pFound = FindOrCreateGroup( key, name, pGroup ? pGroup : pParent ) )
				pGroup = pFound;
		} );
	return pGroup;
}

CMiniProfilerGroup *CMiniProfilerModel::BudgetGroup( const CQMiniProfilerRecord &record )
{
	const QString budget = ToText( record.Line( CMiniProfilerDescription::LINE_BUDGET ) );
	return budget.isEmpty() ? nullptr : FindOrCreateGroup( { budget, budget.size() }, budget, nullptr );
}

CMiniProfilerGroup *CMiniProfilerModel::GroupOf( const CQMiniProfilerRecord &record )
{
	const std::string_view file = record.Line( CMiniProfilerDescription::LINE_FILE );
	switch ( m_GroupMode )
	{
		case MiniProfilerGroupMode::None:
			break;
		case MiniProfilerGroupMode::Budget:
			return BudgetGroup( record );
		case MiniProfilerGroupMode::File:
			return PathGroup( WithoutCommonPrefix( file, m_CommonPrefix ), nullptr );
		case MiniProfilerGroupMode::BudgetAndFile:
			return PathGroup( WithoutCommonPrefix( file, m_CommonPrefix ), BudgetGroup( record ) );
		case MiniProfilerGroupMode::Function:
			return PathGroup( record.Line( CMiniProfilerDescription::LINE_FUNCTION ), nullptr );
		case MiniProfilerGroupMode::Project:
			return PathGroup( record.Line( CMiniProfilerDescription::LINE_PROJECT ), nullptr );
	}
	return nullptr;
}

void CMiniProfilerModel::Place( CQMiniProfilerRecord &record )
{
	CMiniProfilerRow *pTarget = MiniProfilerPlacementTarget( record, m_LeafMode );
	if ( pTarget == record.m_pTreeParent )
		return;
	Hang( record, pTarget );
	m_bNested = m_bNested || AsRecord( pTarget );
}

void CMiniProfilerModel::Hang( CQMiniProfilerRecord &record, CMiniProfilerRow *pParent )
{
	record.m_pTreeParent = pParent;
	record.m_nChanges |= MINIPROFILER_ROW_MOVED;
	NoteChange( record );
}

// A record is placed without a look at what hangs below it already, so a branch can grow at both ends.
void CMiniProfilerModel::CutDeepBranches()
{
	std::vector<uint16_t> levels( m_Records.size() ); // 0 is not known yet
	std::vector<CQMiniProfilerRecord *> branch;
	for ( const auto &pRecord : m_Records )
	{
		CQMiniProfilerRecord *pUp = pRecord.get();
		for ( ; pUp && levels[pUp->HistoryIndex()] == 0; pUp = AsRecord( pUp->m_pTreeParent ) )
			branch.push_back( pUp );
		uint16_t nLevel = pUp ? levels[pUp->HistoryIndex()] : 0;
		for ( ; !branch.empty(); branch.pop_back() )
		{
			CQMiniProfilerRecord &record = *branch.back();
			if ( nLevel == MINIPROFILER_MAX_RECORD_LEVELS )
			{
				Hang( record, record.m_pGroup );
				nLevel = 0;
			}
			levels[record.HistoryIndex()] = ++nLevel;
		}
	}
	m_bNested = false;
}

// Every record gets its group before the first one is placed: a record goes below another one only in its own group.
void CMiniProfilerModel::RebuildHierarchy()
{
	for ( const auto &pRecord : m_Records )
		pRecord->m_pGroup = GroupOf( *pRecord );
	for ( const auto &pRecord : m_Records )
		Place( *pRecord );
}

void CMiniProfilerModel::SetHierarchy( MiniProfilerGroupMode groupMode, MiniProfilerLeafMode leafMode )
{
	m_GroupMode = groupMode;
	m_LeafMode = leafMode;
	if ( std::exchange( m_bGroupsFull, false ) ) // or there would be no room for the new ones
	{
		for ( const auto &pRecord : m_Records )
			pRecord->m_pGroup = nullptr;
		PruneGroups();
	}
	RebuildHierarchy();
	PruneGroups();
}

void CMiniProfilerModel::PruneGroups()
{
	std::vector<bool> needed( m_Groups.size() );
	const auto Mark = [&]( const CMiniProfilerGroup &group ) { needed[static_cast<size_t>( group.m_nIndex )] = true; };
	for ( const auto &pRecord : m_Records )
		if ( pRecord->m_pGroup )
			Mark( *pRecord->m_pGroup );
	for ( size_t i = m_Groups.size(); i-- > 0; )
		if ( needed[i] && m_Groups[i]->Parent() )
			Mark( *m_Groups[i]->Parent() );

	const auto bRemoved = [&]( const CMiniProfilerRow *pRow )
	{ return AsGroup( pRow ) && !needed[static_cast<size_t>( AsGroup( pRow )->m_nIndex )]; };
	std::erase_if( m_Changes, bRemoved );
	for ( auto i = m_GroupMap.begin(); i != m_GroupMap.end(); )
		i = bRemoved( *i ) ? m_GroupMap.erase( i ) : std::next( i );

	const auto firstRemoved = std::stable_partition(
		m_Groups.begin(), m_Groups.end(), [&]( const auto &pGroup ) { return !bRemoved( pGroup.get() ); } );
	std::move( firstRemoved, m_Groups.end(), std::back_inserter( m_RemovedGroups ) );
	m_Groups.erase( firstRemoved, m_Groups.end() );
	for ( size_t i = 0; i < m_Groups.size(); i++ )
		m_Groups[i]->m_nIndex = static_cast<int32_t>( i );
}
