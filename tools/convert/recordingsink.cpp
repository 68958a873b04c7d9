#include "tools/convert/recordingsink.h"

#include <algorithm>

#include "tools/convert/text.h"

namespace convert
{
static constexpr size_t FLUSH_SIZE = 1 << 16;
static constexpr int64_t UNIT = int64_t{ wire::RECORDING_TIME_UNIT } * 1000; // nanoseconds

// A moment, as how long after the last whole unit it is.
static int64_t OffsetInUnit( int64_t nMoment )
{
	return ( nMoment % UNIT + UNIT ) % UNIT;
}

// How many units, rounded to the nearest, the end of a time is behind its begin, which is that long after a whole unit.
static int64_t UnitsFrom( int64_t nBegin, int64_t nTime )
{
	const int64_t nEnd = nBegin + nTime % UNIT + UNIT; // above 0; the unit more comes off again below
	return nTime / UNIT + ( nEnd + UNIT / 2 ) / UNIT - ( nBegin + UNIT / 2 ) / UNIT - 1;
}

CRecordingSink::CRecordingSink( INodeTexts &texts, CReport &report, ByteOutput output, NodeRecords records )
	: m_Texts( texts )
	, m_Report( report )
	, m_Output( std::move( output ) )
	, m_Records( std::move( records ) )
{
}

void CRecordingSink::AddString( std::string_view latin1, uint32_t nValue )
{
	m_Strings.push_back( { std::string( latin1 ), nValue } );
}

bool CRecordingSink::AddFrame( const CCallTree &tree, std::span<const NodeTimes> times )
{
	BeginFrame( tree );
	m_Writer.BeginTimings();
	m_Ends.resize( static_cast<size_t>( tree.Count() ) );
	for ( const int32_t nNode : m_Order )
	{
		const NodeTimes &node = times[static_cast<size_t>( nNode )];
		int64_t &nBegin =
			nNode == CCallTree::ROOT ? m_nFrameBegin : m_Ends[static_cast<size_t>( tree.Get( nNode ).m_nParent )];
		m_Ends[static_cast<size_t>( nNode )] = nBegin;
		WriteEntry( node, UnitsFrom( nBegin, node.m_nTime ) );
		nBegin = OffsetInUnit( nBegin + node.m_nTime % UNIT );
		FlushWhenLong();
	}
	return EndFrame();
}

bool CRecordingSink::AddFrameWithoutTimes( const CCallTree &tree )
{
	BeginFrame( tree );
	return EndFrame();
}

void CRecordingSink::BeginFrame( const CCallTree &tree )
{
	WriteHeader( tree );
	m_Writer.BeginFrame();
	DefineNodes( tree );
	for ( const TableString &string : m_Strings )
		m_Writer.String( string.m_Text, string.m_nValue );
	m_Strings.clear();
}

bool CRecordingSink::EndFrame()
{
	m_Writer.EndFrame();
	FlushWhenLong();
	return m_bGood;
}

void CRecordingSink::FlushWhenLong()
{
	if ( m_Writer.m_Bytes.size() < FLUSH_SIZE )
		return;
	m_bGood = m_bGood && m_Output( m_Writer.m_Bytes );
	m_Writer.m_Bytes.clear();
}

bool CRecordingSink::Finish()
{
	WriteHeader( CCallTree() );
	return m_bGood && m_Output( m_Writer.m_Bytes );
}

NodeRecord CRecordingSink::RecordOf( const CCallTree &tree, int32_t nNode ) const
{
	return m_Records ? m_Records( tree.Get( nNode ) ) : NodeRecord{ nNode };
}

void CRecordingSink::WriteHeader( const CCallTree &tree )
{
	if ( !m_bHeader )
		m_Writer.Header( RecordOf( tree, CCallTree::ROOT ).m_nId );
	m_bHeader = true;
}

// A definition puts its node in front of its parent's other children, so those of one parent are written backwards.
void CRecordingSink::DefineNodes( const CCallTree &tree )
{
	const int32_t nFirst = static_cast<int32_t>( m_Links.size() );
	if ( nFirst == tree.Count() )
		return;
	m_Links.resize( static_cast<size_t>( tree.Count() ) );
	// For each parent its new children, the last one first.
	std::vector<Link> added( static_cast<size_t>( tree.Count() ) );
	for ( int32_t nNode = std::max( nFirst, CCallTree::ROOT + 1 ); nNode < tree.Count(); nNode++ )
	{
		Link &parent = added[static_cast<size_t>( tree.Get( nNode ).m_nParent )];
		added[static_cast<size_t>( nNode )].m_nNextSibling = parent.m_nFirstChild;
		parent.m_nFirstChild = nNode;
	}
	if ( nFirst == CCallTree::ROOT )
		DefineNode( tree, CCallTree::ROOT );
	for ( const Link &parent : added )
		for ( int32_t nNode = parent.m_nFirstChild; nNode != CCallTree::NONE;
			  nNode = added[static_cast<size_t>( nNode )].m_nNextSibling )
			DefineNode( tree, nNode );
	CollectOrder( tree );
}

void CRecordingSink::DefineNode( const CCallTree &tree, int32_t nNode )
{
	const CCallTree::Node &node = tree.Get( nNode );
	const NodeRecord record = RecordOf( tree, nNode );
	if ( nNode == CCallTree::ROOT && record.m_nRootParent == CCallTree::NONE )
		return;
	bool bReplaced = false;
	const std::string name = ToLatin1( m_Texts.Name( node ), bReplaced );
	if ( bReplaced )
		m_Report.Add( Note::NameCharacters );
	if ( name.size() > wire::RECORDING_MAX_TEXT )
		m_Report.Add( Note::NameCut );
	const int32_t nParent = nNode == CCallTree::ROOT ? record.m_nRootParent : RecordOf( tree, node.m_nParent ).m_nId;
	m_Writer.Node( nParent, name, record.m_nValue, record.m_nId );
	FlushWhenLong();
	if ( nNode == CCallTree::ROOT )
		return;
	LinkOf( nNode ).m_nNextSibling = LinkOf( node.m_nParent ).m_nFirstChild;
	LinkOf( node.m_nParent ).m_nFirstChild = nNode;
}

void CRecordingSink::CollectOrder( const CCallTree &tree )
{
	m_Order.clear();
	for ( int32_t nNode = CCallTree::ROOT; nNode != CCallTree::NONE; )
	{
		m_Order.push_back( nNode );
		int32_t nNext = LinkOf( nNode ).m_nFirstChild;
		while ( nNext == CCallTree::NONE && nNode != CCallTree::NONE )
		{
			nNext = LinkOf( nNode ).m_nNextSibling;
			nNode = tree.Get( nNode ).m_nParent;
		}
		nNode = nNext;
	}
}

void CRecordingSink::WriteEntry( const NodeTimes &times, int64_t nRounded )
{
	const int64_t nTime = times.m_nTime;
	constexpr int64_t MAX_UNITS = MAX_MICROSECONDS / wire::RECORDING_TIME_UNIT;
	const int64_t nUnits = std::clamp( nRounded, -MAX_UNITS - 1, MAX_UNITS );
	if ( nTime % UNIT != 0 )
		m_Report.Add( Note::TimeRounded );
	if ( nUnits != nRounded )
		m_Report.Add( Note::LongTime );
	if ( times.m_nCalls > UINT16_MAX )
		m_Report.Add( Note::ManyCalls );
	// The reader multiplies in 32 bits, so 30 bits of a negative number of units are enough to get its sign back.
	const uint32_t nStored = static_cast<uint32_t>( nUnits ) & ( UINT32_MAX / wire::RECORDING_TIME_UNIT );
	m_Writer.Entry( static_cast<uint16_t>( std::min<uint64_t>( times.m_nCalls, UINT16_MAX ) ), nStored );
}
} // namespace convert
