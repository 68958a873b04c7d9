#include "tools/convert/textsinks.h"

#include <algorithm>

#include "tools/convert/ownkeys.h"
#include "tools/convert/timelinesink.h"

namespace convert
{
static int64_t AddSaturated( int64_t nA, int64_t nB )
{
	int64_t nSum = 0;
	if ( __builtin_add_overflow( nA, nB, &nSum ) )
		return nB < 0 ? INT64_MIN : INT64_MAX;
	return nSum;
}

CFoldedSink::CFoldedSink( INodeTexts &texts, CReport &report, ByteOutput output )
	: m_Texts( texts )
	, m_Report( report )
	, m_Output( std::move( output ) )
{
}

bool CFoldedSink::AddFrame( const CCallTree &tree, std::span<const NodeTimes> times )
{
	m_pTree = &tree;
	m_nFrames++;
	m_Times.resize( std::max( m_Times.size(), times.size() ) );
	for ( size_t i = 0; i < times.size(); i++ )
	{
		m_Times[i] = AddSaturated( m_Times[i], times[i].m_nTime );
		if ( i > 0 && times[i].m_nCalls > 0 )
			m_Report.Add( Note::CallsLost );
	}
	return true;
}

bool CFoldedSink::AddFrameWithoutTimes( const CCallTree &tree )
{
	return AddFrame( tree, {} );
}

bool CFoldedSink::Finish()
{
	if ( m_nFrames > 1 )
		m_Report.Add( Note::FramesMerged, m_nFrames );
	if ( !m_pTree )
		return m_Output.Flush();
	m_Times.resize( static_cast<size_t>( m_pTree->Count() ) );
	KeepOwnTimes();
	std::vector<size_t> lengths; // of the text of the stack around each open node
	std::string stack;
	for ( int32_t nNode = CCallTree::ROOT; nNode != CCallTree::NONE; )
	{
		lengths.push_back( stack.size() );
		if ( lengths.size() <= MAX_DEPTH + 1 && !WriteNode( nNode, stack ) )
			return false;
		int32_t nNext = m_pTree->Get( nNode ).m_nFirstChild;
		while ( nNext == CCallTree::NONE && nNode != CCallTree::NONE )
		{
			stack.resize( lengths.back() );
			lengths.pop_back();
			nNext = m_pTree->Get( nNode ).m_nNextSibling;
			nNode = m_pTree->Get( nNode ).m_nParent;
		}
		nNode = nNext;
	}
	return m_Output.Flush();
}

// Takes the children's times off their parents'. What is too deep stays with the last one that is not.
void CFoldedSink::KeepOwnTimes()
{
	std::vector<size_t> depths( m_Times.size() );
	for ( size_t i = 1; i < m_Times.size(); i++ ) // a parent comes before its children, so their times are still whole
	{
		const size_t nParent = static_cast<size_t>( m_pTree->Get( static_cast<int32_t>( i ) ).m_nParent );
		depths[i] = depths[nParent] + 1;
		if ( depths[i] <= MAX_DEPTH )
			m_Times[nParent] = AddSaturated( m_Times[nParent], -std::max( m_Times[i], -INT64_MAX ) );
		else if ( m_Times[i] != 0 )
			m_Report.Add( Note::DeepStack );
	}
}

static std::string FoldedName( std::string_view name )
{
	std::string result( name.empty() ? "(no name)" : name );
	std::replace( result.begin(), result.end(), ';', ':' );
	std::replace( result.begin(), result.end(), '\n', ' ' );
	std::replace( result.begin(), result.end(), '\r', ' ' );
	return result;
}

// Leaves the node's own stack in `stack`.
bool CFoldedSink::WriteNode( int32_t nNode, std::string &stack )
{
	if ( nNode != CCallTree::ROOT )
	{
		const std::string_view name = m_Texts.Name( m_pTree->Get( nNode ) );
		const std::string folded = FoldedName( name );
		if ( folded != name )
			m_Report.Add( Note::NameCharacters );
		stack.append( stack.empty() ? "" : ";" ).append( folded );
	}
	const int64_t nTime = m_Times[static_cast<size_t>( nNode )];
	if ( nTime < 0 )
		m_Report.Add( Note::Widened );
	if ( nTime > 0 )
		m_Output.m_Text.append( nNode == CCallTree::ROOT ? FOLDED_FRAME_NAME : stack )
			.append( " " )
			.append( FormatMicroseconds( nTime ) )
			.append( "\n" );
	return m_Output.FlushWhenLong();
}

CCsvSink::CCsvSink( INodeTexts &texts, ByteOutput output )
	: m_Texts( texts )
	, m_Output( std::move( output ) )
{
	m_Output.m_Text = "frame,node,parent,depth,name,calls,time_us,exclusive_us\n";
}

// As RFC 4180 has it.
static void AppendCsvField( std::string &line, std::string_view text )
{
	if ( text.find_first_of( "\",\r\n" ) == std::string_view::npos )
	{
		line += text;
		return;
	}
	line += '"';
	for ( const char c : text )
		line.append( c == '"' ? 2 : 1, c );
	line += '"';
}

void CCsvSink::AddDepths( const CCallTree &tree )
{
	m_Depths.reserve( static_cast<size_t>( tree.Count() ) );
	for ( int32_t i = static_cast<int32_t>( m_Depths.size() ); i < tree.Count(); i++ )
		m_Depths.push_back( i == CCallTree::ROOT ? 0 : m_Depths[static_cast<size_t>( tree.Get( i ).m_nParent )] + 1 );
}

bool CCsvSink::AddFrame( const CCallTree &tree, std::span<const NodeTimes> times )
{
	AddDepths( tree );
	m_Exclusive.assign( times.size(), 0 );
	for ( size_t i = times.size(); i-- > 0; )
	{
		m_Exclusive[i] = AddSaturated( m_Exclusive[i], times[i].m_nTime );
		if ( i > 0 )
		{
			int64_t &nParent = m_Exclusive[static_cast<size_t>( tree.Get( static_cast<int32_t>( i ) ).m_nParent )];
			nParent = AddSaturated( nParent, -std::max( times[i].m_nTime, -INT64_MAX ) );
		}
	}
	for ( size_t i = 0; i < times.size(); i++ )
	{
		if ( i > 0 && times[i].m_nCalls == 0 && times[i].m_nTime == 0 )
			continue;
		WriteLine( tree, static_cast<int32_t>( i ), times[i], m_Exclusive[i] );
		if ( !m_Output.FlushWhenLong() )
			return false;
	}
	m_nFrame++;
	return true;
}

bool CCsvSink::AddFrameWithoutTimes( const CCallTree &tree )
{
	AddDepths( tree );
	WriteLine( tree, CCallTree::ROOT, {}, 0 );
	m_nFrame++;
	return m_Output.FlushWhenLong();
}

void CCsvSink::WriteLine( const CCallTree &tree, int32_t nNode, const NodeTimes &times, int64_t nExclusive )
{
	const CCallTree::Node &node = tree.Get( nNode );
	const bool bRoot = nNode == CCallTree::ROOT;
	std::string &line = m_Output.m_Text;
	for ( const std::string &field :
		{ std::to_string( m_nFrame ), std::to_string( nNode ), bRoot ? std::string() : std::to_string( node.m_nParent ),
			std::to_string( m_Depths[static_cast<size_t>( nNode )] ) } )
		line.append( field ).append( "," );
	if ( !bRoot )
		AppendCsvField( line, m_Texts.Name( node ) );
	for ( const std::string &field :
		{ std::to_string( times.m_nCalls ), FormatMicroseconds( times.m_nTime ), FormatMicroseconds( nExclusive ) } )
		line.append( "," ).append( field );
	line.append( "\n" );
}
} // namespace convert
