#include "recordings/timingsparser.h"

#include <algorithm>

static constexpr size_t MAX_ENTRY_SIZE = wire::RECORDING_MAX_ENTRY_SIZE;

CTimingsParser::CTimingsParser( CFieldSource &source, const CKestoFile &file )
	: m_Source( source )
	, m_File( file )
{
}

void CTimingsParser::BeginFrame()
{
	m_Stored = {};
	m_bWalked = false;
}

bool CTimingsParser::ParseRecord()
{
	MakePlan();
	const bool bFirstOfFrame = !m_bWalked && !m_Stored.m_pPacked;
	return m_bIsTree && bFirstOfFrame ? ParseByPlan() : ParseByWalk();
}

CKestoFile::CTickTimings::Storage CTimingsParser::TakeFrame()
{
	if ( m_bWalked )
		StoreWalked();
	return std::move( m_Stored );
}

// Entries lie by node id unless that would leave most of the list empty: the header of ten bytes can name a root with
// the id 1,048,575.
static bool IsWorthAList( int32_t nCount, size_t nEntries )
{
	return static_cast<size_t>( nCount ) <= 2 * nEntries;
}

// Costs no more than reading a record of the plan's nodes does, and is done again only when nodes were linked.
void CTimingsParser::MakePlan()
{
	if ( m_bPlanned )
		return;
	m_bPlanned = true;
	m_bIsTree = CollectTree();
	if ( !m_bIsTree )
		return;

	m_nPlanCount = *std::max_element( m_Slots.begin(), m_Slots.end() ) + 1;
	m_nPlanStored = m_nPlanCount;
	m_pPlanNodes = nullptr;
	if ( !IsWorthAList( m_nPlanCount, m_Slots.size() ) )
	{
		auto pNodes = std::make_shared<std::vector<int32_t>>( m_Slots );
		std::sort( pNodes->begin(), pNodes->end() );
		for ( int32_t &nSlot : m_Slots )
			nSlot = static_cast<int32_t>( std::lower_bound( pNodes->begin(), pNodes->end(), nSlot ) - pNodes->begin() );
		m_nPlanStored = static_cast<int32_t>( pNodes->size() );
		m_pPlanNodes = std::move( pNodes );
	}
	m_bFillsAll = m_Slots.size() == static_cast<size_t>( m_nPlanStored );
}

// Fills m_Slots with the nodes in the order of a record. False as soon as a node turns up twice.
bool CTimingsParser::CollectTree()
{
	m_Slots.clear();
	m_nMark++;
	std::vector<int32_t> ancestors;
	for ( int32_t nNode = m_File.GetRootNode(); nNode >= 0; nNode = NextInWalk( nNode, ancestors ) )
	{
		uint32_t &nMark = m_Marks.At( nNode );
		if ( nMark == m_nMark )
			return false;
		nMark = m_nMark;
		m_Slots.push_back( nNode );
	}
	return true;
}

// The node after nNode, depth first; -1 = none. Ancestors are those of nNode that are still to be left, the nearest
// last; the root's siblings do not belong to the walk.
int32_t CTimingsParser::NextInWalk( int32_t nNode, std::vector<int32_t> &ancestors ) const
{
	if ( const int32_t nChild = m_File.GetNodeFirstChild( nNode ); nChild >= 0 )
	{
		ancestors.push_back( nNode );
		return nChild;
	}
	while ( !ancestors.empty() )
	{
		if ( const int32_t nSibling = m_File.GetNodeNextSibling( nNode ); nSibling >= 0 )
			return nSibling;
		nNode = ancestors.back();
		ancestors.pop_back();
	}
	return -1;
}

// False when nothing of the entry was delivered. What is not delivered counts as 0.
bool CTimingsParser::ParseEntry( Entry &entry )
{
	uint8_t nShortCalls = 0;
	const bool bHasCalls = m_Source.Get( nShortCalls );
	entry.m_nCalls = nShortCalls;
	if ( nShortCalls == wire::RECORDING_LONG_CALLS )
	{
		uint16_t nCalls = 0;
		m_Source.Get( nCalls );
		entry.m_nCalls = nCalls;
	}
	uint16_t nShortTime = 0;
	const bool bHasTime = m_Source.Get( nShortTime );
	uint32_t nTime = nShortTime;
	if ( nShortTime == wire::RECORDING_LONG_TIME )
	{
		nTime = 0;
		m_Source.Get( nTime );
	}
	entry.m_nTime = nTime * wire::RECORDING_TIME_UNIT;
	return bHasCalls || bHasTime;
}

// An entry in a window that is sure to hold it; returns where it ends.
const uint8_t *CTimingsParser::ParseLongEntry( const uint8_t *p, int32_t nSlot )
{
	const auto read = [&p]( size_t nBytes )
	{
		uint32_t nValue = 0;
		std::memcpy( &nValue, p, nBytes );
		p += nBytes;
		return nValue;
	};
	uint32_t nCalls = read( 1 );
	if ( nCalls == wire::RECORDING_LONG_CALLS )
		nCalls = read( 2 );
	uint32_t nTime = read( 2 );
	if ( nTime == wire::RECORDING_LONG_TIME )
		nTime = read( 4 );
	m_Stored.Put( nSlot, { nCalls, nTime * wire::RECORDING_TIME_UNIT } );
	return p;
}

// Reads entries into their slots from the nFirst-th of the plan on, as many as the window is sure to hold whatever
// their sizes are. Returns how many those are. A short entry is stored as it lies in the file.
size_t CTimingsParser::ParseEntriesOfWindow( size_t nFirst )
{
	const std::span<const uint8_t> window = m_Source.Window( MAX_ENTRY_SIZE );
	const size_t nEntries = std::min( window.size() / MAX_ENTRY_SIZE, m_Slots.size() - nFirst );
	uint32_t *pPacked = m_Stored.m_pPacked.get();
	const uint8_t *p = window.data();
	const int32_t *pSlot = m_Slots.data() + nFirst;
	for ( const int32_t *pLastSlot = pSlot + nEntries; pSlot != pLastSlot; pSlot++ )
	{
		uint32_t nHead;
		std::memcpy( &nHead, p, sizeof( nHead ) );
		nHead &= 0xffffff;
		if ( ( nHead & 0xff ) == wire::RECORDING_LONG_CALLS || nHead >> 8 == wire::RECORDING_LONG_TIME ) [[unlikely]]
		{
			p = ParseLongEntry( p, *pSlot );
			continue;
		}
		pPacked[*pSlot] = nHead;
		p += wire::RECORDING_MIN_ENTRY_SIZE;
	}
	if ( nEntries > 0 )
		m_Source.SkipTo( p );
	return nEntries;
}

bool CTimingsParser::ParseByPlan()
{
	m_Stored.m_nCount = m_nPlanCount;
	m_Stored.m_nStored = m_nPlanStored;
	m_Stored.m_pNodes = m_pPlanNodes;
	m_Stored.m_pPacked = m_Arena.Allocate( static_cast<size_t>( m_nPlanStored ) );
	if ( !m_bFillsAll )
		std::fill_n( m_Stored.m_pPacked.get(), m_nPlanStored, 0u );

	for ( size_t i = 0; i < m_Slots.size(); )
	{
		const size_t nParsed = ParseEntriesOfWindow( i );
		i += nParsed;
		if ( nParsed > 0 )
			continue;
		Entry entry{};
		ParseEntry( entry );
		m_Stored.Put( m_Slots[i++], entry );
		if ( !m_Source.IsGood() )
			return ReportTruncated();
	}
	m_Stored.SortLong();
	return true;
}

bool CTimingsParser::ParseByWalk()
{
	MoveToWalked();
	std::vector<int32_t> ancestors;
	for ( int32_t nNode = m_File.GetRootNode(); nNode >= 0; nNode = NextInWalk( nNode, ancestors ) )
	{
		m_WalkedNodes.push_back( nNode );
		m_nWalkedCount = std::max( m_nWalkedCount, nNode + 1 );
		const bool bDelivered = ParseEntry( m_Walked.At( nNode ) );
		// A reader that runs dry without a word must not make this walk endless.
		if ( !m_Source.IsGood() || !bDelivered )
			return ReportTruncated();
	}
	return true;
}

bool CTimingsParser::ReportTruncated()
{
	m_Source.ReportFailure( "Timings truncated" );
	return false;
}

void CTimingsParser::MoveToWalked()
{
	if ( m_bWalked )
		return;
	m_bWalked = true;
	m_WalkedNodes.clear();
	m_nWalkedCount = m_Stored.m_nCount;
	for ( int32_t i = 0; i < m_Stored.m_nStored; i++ )
	{
		const int32_t nNode = m_Stored.m_pNodes ? ( *m_Stored.m_pNodes )[static_cast<size_t>( i )] : i;
		m_WalkedNodes.push_back( nNode );
		m_Walked.At( nNode ) = m_Stored.Get( i );
	}
	m_Stored = {};
}

void CTimingsParser::StoreWalked()
{
	std::sort( m_WalkedNodes.begin(), m_WalkedNodes.end() );
	m_WalkedNodes.erase( std::unique( m_WalkedNodes.begin(), m_WalkedNodes.end() ), m_WalkedNodes.end() );
	const bool bList = IsWorthAList( m_nWalkedCount, m_WalkedNodes.size() );
	m_Stored.m_nCount = m_nWalkedCount;
	m_Stored.m_nStored = bList ? m_nWalkedCount : static_cast<int32_t>( m_WalkedNodes.size() );
	m_Stored.m_pPacked = m_Arena.Allocate( static_cast<size_t>( m_Stored.m_nStored ) );
	if ( bList )
		std::fill_n( m_Stored.m_pPacked.get(), m_Stored.m_nStored, 0u );
	for ( size_t i = 0; i < m_WalkedNodes.size(); i++ )
	{
		const int32_t nNode = m_WalkedNodes[i];
		m_Stored.Put( bList ? nNode : static_cast<int32_t>( i ), m_Walked[nNode] );
	}
	if ( !bList )
		m_Stored.m_pNodes = std::make_shared<const std::vector<int32_t>>( m_WalkedNodes );
}
