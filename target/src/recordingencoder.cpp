#include "recordingencoder.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "text.h"
#include "wire/recordingtokens.h"

namespace showbudget
{
namespace
{
using wire::RecordingToken;

constexpr double MICROSECONDS = 1.0e6;
constexpr int32_t ROOT_ID = 0;
// The root is named by a definition below a node that nothing leads to.
constexpr int32_t ABOVE_ROOT_ID = 1;

// In place of an id.
constexpr int32_t UNKNOWN = -1;
constexpr int32_t FRESH = -2; // about to get one

void Token( Bytes &out, RecordingToken token )
{
	out.push_back( static_cast<uint8_t>( token ) );
}

void U16( Bytes &out, uint32_t nValue )
{
	out.push_back( static_cast<uint8_t>( nValue ) );
	out.push_back( static_cast<uint8_t>( nValue >> 8 ) );
}

void U32( Bytes &out, uint32_t nValue )
{
	U16( out, nValue & 0xFFFF );
	U16( out, nValue >> 16 );
}

void Text( Bytes &out, std::string_view text )
{
	out.insert( out.end(), text.begin(), text.end() );
	out.push_back( 0 );
}

void Entry( Bytes &out, uint32_t nCalls, uint64_t nUnits )
{
	if ( nCalls < wire::RECORDING_LONG_CALLS )
		out.push_back( static_cast<uint8_t>( nCalls ) );
	else
	{
		out.push_back( wire::RECORDING_LONG_CALLS );
		U16( out, std::min<uint32_t>( nCalls, std::numeric_limits<uint16_t>::max() ) );
	}
	if ( nUnits < wire::RECORDING_LONG_TIME )
		return U16( out, static_cast<uint32_t>( nUnits ) );
	U16( out, wire::RECORDING_LONG_TIME );
	U32( out, static_cast<uint32_t>( std::min<uint64_t>( nUnits, wire::RECORDING_MAX_TIME ) ) );
}
} // namespace

CRecordingEncoder::CRecordingEncoder( uint64_t nTickFrequency, std::function<RecordedNode( uint32_t nNode )> nodes )
	: m_NodeOf( std::move( nodes ) )
	, m_flUnitsPerTick( MICROSECONDS / wire::RECORDING_TIME_UNIT / static_cast<double>( nTickFrequency ) )
{
}

void CRecordingEncoder::AppendFileHeader( Bytes &out )
{
	U32( out, wire::RECORDING_VERSION );
	U32( out, ROOT_ID );
}

void CRecordingEncoder::AddString( std::string_view text, uint32_t nValue )
{
	Token( m_Strings, RecordingToken::String );
	Text( m_Strings, text );
	U32( m_Strings, nValue );
}

void CRecordingEncoder::AppendFrame( Bytes &out, const RecordedFrame &frame )
{
	Token( out, RecordingToken::Frame );
	U32( out, frame.m_nFrame );
	out.insert( out.end(), m_Strings.begin(), m_Strings.end() );
	m_Strings.clear();
	DefineNodes( out, frame );
	for ( const RecordEntry &entry : frame.m_Entries )
	{
		FileNode &node = m_Nodes[static_cast<size_t>( m_Ids[entry.m_nNode] )];
		node.m_nTicks = entry.m_nTicks;
		node.m_nCalls = entry.m_nCalls;
	}
	AppendTimings( out, frame );
	Token( out, RecordingToken::EndOfFrame );
}

// Callers first. Of the scopes inside of one caller, those that were entered later are defined earlier: a reader puts
// each in front of the ones before, so they come out in the order in which they ran.
void CRecordingEncoder::DefineNodes( Bytes &out, const RecordedFrame &frame )
{
	if ( m_Nodes.empty() )
	{
		m_Ids.assign( NODE_FRAME + 1, FRESH );
		Define( out, NODE_FRAME );
	}
	std::vector<Place> fresh;
	for ( const RecordEntry &entry : frame.m_Entries )
		CollectFresh( entry.m_nNode, fresh );
	if ( fresh.empty() )
		return;
	std::ranges::sort( fresh, []( const Place &a, const Place &b )
		{ return a.m_nDepth != b.m_nDepth ? a.m_nDepth < b.m_nDepth : a.m_nNode > b.m_nNode; } );
	for ( const Place &place : fresh )
		Define( out, static_cast<uint32_t>( place.m_nNode ) );
	m_Order.clear();
}

// The node and those above it that are not in the file yet.
void CRecordingEncoder::CollectFresh( uint32_t nNode, std::vector<Place> &fresh )
{
	if ( nNode >= m_Ids.size() )
		m_Ids.resize( nNode + 1, UNKNOWN );
	const size_t nFirst = fresh.size();
	uint32_t nDepth = 0; // of the first node above that is known, in the end
	for ( ; m_Ids[nNode] == UNKNOWN; nNode = m_NodeOf( nNode ).m_nParent )
	{
		m_Ids[nNode] = FRESH;
		fresh.push_back( { static_cast<int32_t>( nNode ), 0 } );
	}
	for ( uint32_t n = nNode; n != NODE_FRAME; n = m_NodeOf( n ).m_nParent )
		nDepth++;
	for ( size_t i = fresh.size(); i-- > nFirst; )
		fresh[i].m_nDepth = ++nDepth;
}

void CRecordingEncoder::Define( Bytes &out, uint32_t nNode )
{
	const RecordedNode node = m_NodeOf( nNode );
	const bool bRoot = nNode == NODE_FRAME;
	const auto nId = static_cast<int32_t>( m_Nodes.size() );
	m_Ids[nNode] = nId;
	m_Nodes.resize( m_Nodes.size() + ( bRoot ? 2 : 1 ) );
	const int32_t nParent = bRoot ? ABOVE_ROOT_ID : m_Ids[node.m_nParent];
	int32_t &nFirst = m_Nodes[static_cast<size_t>( nParent )].m_nFirstChild;
	m_Nodes[static_cast<size_t>( nId )].m_nNextSibling = std::exchange( nFirst, nId );

	Token( out, RecordingToken::Node );
	U32( out, static_cast<uint32_t>( nParent ) );
	Text( out, ToLatin1( node.m_Name ) );
	U32( out, node.m_nValue );
	U32( out, static_cast<uint32_t>( nId ) );
}

// Depth first, children in the order of their chain.
void CRecordingEncoder::OrderNodes()
{
	std::vector<int32_t> next{ ROOT_ID }; // of each depth; -1 = no more
	while ( !next.empty() )
	{
		const int32_t nId = next.back();
		if ( nId < 0 )
		{
			next.pop_back();
			continue;
		}
		const FileNode &node = m_Nodes[static_cast<size_t>( nId )];
		m_Order.push_back( { nId, static_cast<uint32_t>( next.size() - 1 ) } );
		next.back() = nId == ROOT_ID ? -1 : node.m_nNextSibling;
		next.push_back( node.m_nFirstChild );
		m_Begins.resize( std::max( m_Begins.size(), next.size() ) );
	}
}

void CRecordingEncoder::AppendTimings( Bytes &out, const RecordedFrame &frame )
{
	if ( m_Order.empty() )
		OrderNodes();
	if ( !std::exchange( m_bOrigin, true ) )
		m_nOrigin = frame.m_nBegin;
	Token( out, RecordingToken::Timings );
	m_Begins[0] = frame.m_nBegin;
	for ( const Place &place : m_Order )
	{
		FileNode &node = m_Nodes[static_cast<size_t>( place.m_nNode )];
		const uint64_t nBegin = m_Begins[place.m_nDepth];
		const uint64_t nEnd = nBegin + node.m_nTicks;
		m_Begins[place.m_nDepth] = nEnd;
		m_Begins[place.m_nDepth + 1] = nBegin;
		Entry( out, node.m_nCalls, node.m_nTicks == 0 ? 0 : UnitsAt( nEnd ) - UnitsAt( nBegin ) );
		node.m_nTicks = 0;
		node.m_nCalls = 0;
	}
}

uint64_t CRecordingEncoder::UnitsAt( uint64_t nTicks ) const
{
	return static_cast<uint64_t>( static_cast<double>( nTicks - m_nOrigin ) * m_flUnitsPerTick );
}
} // namespace showbudget
