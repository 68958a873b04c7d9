#include "recordings/kestofileparser.h"

#include <algorithm>
#include <bit>

#include "keel0/strtools.h"
#include "recordings/framestatistics.h"

static_assert( std::endian::native == std::endian::little, "fields are used as they lie in the file" );

using wire::RecordingToken;

CKestoFileParser::CKestoFileParser( CKestoFile &file, CKestoFile::CReader &reader )
	: m_File( file )
	, m_Source( reader )
	, m_Timings( m_Source, file )
{
}

void CKestoFileParser::Parse()
{
	if ( !ParseHeader() )
		return;
	while ( m_Source.HasBytesLeft() && ParseFrame() )
		AppendFrame();
}

bool CKestoFileParser::ParseHeader()
{
	uint32_t nVersion = 0;
	if ( !m_Source.Get( nVersion ) || nVersion != wire::RECORDING_VERSION )
	{
		m_Source.ReportFailure( "Unsupported file version" );
		return false;
	}
	m_File.m_Nodes.Page( 0 );
	int32_t nRootNode = 0;
	m_Source.Get( nRootNode );
	m_File.m_nRootNode = nRootNode;
	if ( nRootNode < 0 || nRootNode >= wire::RECORDING_MAX_NODES )
		return Fail( "Root node id %d out of range", nRootNode );
	return true;
}

// Formats with one number, reports and is false.
bool CKestoFileParser::Fail( const char *pFormat, int nValue )
{
	char message[64];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
	V_snprintf( message, sizeof( message ), pFormat, nValue );
#pragma GCC diagnostic pop
	m_Source.ReportFailure( message );
	return false;
}

bool CKestoFileParser::ParseFrame()
{
	m_Timings.BeginFrame();
	int8_t nToken = 0;
	if ( !m_Source.Get( nToken ) || nToken == static_cast<int8_t>( RecordingToken::EndOfRecording ) )
		return false;
	if ( nToken != static_cast<int8_t>( RecordingToken::Frame ) )
		return Fail( "Frame header: unexpected token %d", nToken );
	uint32_t nHeader = 0;
	m_Source.Get( nHeader );
	for ( ;; )
	{
		nToken = static_cast<int8_t>( RecordingToken::EndOfFrame );
		m_Source.Get( nToken );
		if ( nToken == static_cast<int8_t>( RecordingToken::EndOfFrame ) )
			return true;
		if ( !ParseRecord( nToken ) )
			return false;
	}
}

bool CKestoFileParser::ParseRecord( int8_t nToken )
{
	switch ( static_cast<RecordingToken>( nToken ) )
	{
		case RecordingToken::Node:
			return ParseNode();
		case RecordingToken::String:
			return ParseTableString();
		case RecordingToken::Timings:
			return m_Timings.ParseRecord();
		default:
			return Fail( "Invalid token %d", nToken );
	}
}

// The text is valid until the next one.
bool CKestoFileParser::ParseText( std::string_view &text )
{
	size_t nLength = 0;
	for ( ;; )
	{
		char c = 0;
		if ( !m_Source.Get( c ) )
		{
			m_Source.ReportFailure( "No String terminator past end of file" );
			return false;
		}
		if ( c == 0 )
			break;
		if ( nLength < sizeof( m_Text ) )
			m_Text[nLength++] = c;
	}
	text = { m_Text, nLength };
	return true;
}

bool CKestoFileParser::ParseTableString()
{
	std::string_view text;
	if ( !ParseText( text ) )
		return false;
	uint32_t nValue = 0;
	m_Source.Get( nValue );
	m_File.m_Strings.push_back( { m_File.m_Texts.Add( text ), nValue } );
	return m_Source.IsGood();
}

// Succeeds with fields that were not delivered too: the frame is then kept, and the failed source ends it.
bool CKestoFileParser::ParseNode()
{
	int32_t nParent = 0;
	m_Source.Get( nParent );
	std::string_view name;
	if ( !ParseText( name ) )
		return false;
	uint32_t nValue = 0;
	m_Source.Get( nValue );
	int32_t nNode = 0;
	m_Source.Get( nNode );
	for ( const int32_t nId : { nParent, nNode } )
		if ( nId < 0 || nId >= wire::RECORDING_MAX_NODES )
			return Fail( "Node id %d out of range", nId );
	DefineNode( nParent, name, nValue, nNode );
	return true;
}

void CKestoFileParser::DefineNode( int32_t nParent, std::string_view name, uint32_t nValue, int32_t nNode )
{
	m_File.m_Nodes.Extend( std::max( nParent, nNode ) + 1 );
	if ( !IsLinkedBelow( nParent, nNode ) )
	{
		m_File.m_Nodes.At( nNode ).m_pName = m_File.m_Texts.Add( name );
		LinkNode( nParent, nNode );
	}
	m_File.m_Nodes.At( nNode ).m_nValue = nValue;
}

// Whether the parent's chain of children has the node. A chain may hold nodes of other parents, and miss some of its
// own, once nodes were linked again; but a node that was never linked is in none.
bool CKestoFileParser::IsLinkedBelow( int32_t nParent, int32_t nNode )
{
	const int32_t nFirstChild = m_File.m_Nodes[nParent].m_nFirstChild;
	const int32_t nLinkedParent = m_File.m_Nodes[nNode].m_nParent;
	if ( nFirstChild < 0 || nLinkedParent < 0 )
		return false;
	if ( !m_bRelinked )
		return nLinkedParent == nParent;
	return m_Siblings.ChainHas( VertexOf( nFirstChild ), VertexOf( nNode ) );
}

// The old chain of a node that was linked before is left as it is: it now continues with the node's new siblings.
void CKestoFileParser::LinkNode( int32_t nParent, int32_t nNode )
{
	CKestoFile::Node &node = m_File.m_Nodes.At( nNode );
	CKestoFile::Node &parent = m_File.m_Nodes.At( nParent );
	if ( node.m_nParent >= 0 && !m_bRelinked )
		MakeSiblingForest();
	node.m_nParent = nParent;
	node.m_nNextSibling = parent.m_nFirstChild;
	parent.m_nFirstChild = nNode;
	if ( m_bRelinked )
		AddToSiblingForest( nNode );
	m_Timings.OnNodesLinked();
}

void CKestoFileParser::MakeSiblingForest()
{
	m_bRelinked = true;
	std::vector<int32_t> linked;
	for ( int32_t i = 0; i < m_File.m_Nodes.Count(); i++ )
		if ( m_File.m_Nodes[i].m_nParent >= 0 )
		{
			m_Vertices.At( i ) = m_Siblings.AddVertex() + 1;
			linked.push_back( i );
		}
	for ( const int32_t nNode : linked )
		AddToSiblingForest( nNode );
}

void CKestoFileParser::AddToSiblingForest( int32_t nNode )
{
	int32_t &nVertex = m_Vertices.At( nNode );
	if ( nVertex == 0 )
		nVertex = m_Siblings.AddVertex() + 1;
	m_Siblings.SetNext( nVertex - 1, VertexOf( m_File.m_Nodes[nNode].m_nNextSibling ) );
}

void CKestoFileParser::AppendFrame()
{
	auto pFrame = CRefPtr<CKestoFile::CTickTimings>::Adopt( new CKestoFile::CTickTimings( m_Timings.TakeFrame() ) );
	m_File.m_Maxima.Extend( pFrame->GetCount() );
	m_File.m_Sums.Extend( pFrame->GetCount() );
	AddStatistics( pFrame->GetStorage() );
	m_File.m_Frames.push_back( std::move( pFrame ) );
}

// Entries of 0 change neither maxima nor sums, so what a frame does not store need not be looked at.
void CKestoFileParser::AddStatistics( const CKestoFile::CTickTimings::Storage &frame )
{
	const int32_t nFrame = m_File.GetFrameCount();
	if ( frame.m_pNodes )
	{
		for ( int32_t i = 0; i < frame.m_nStored; i++ )
		{
			const int32_t nNode = ( *frame.m_pNodes )[static_cast<size_t>( i )];
			AddToStatistics( m_File.m_Maxima.At( nNode ), m_File.m_Sums.At( nNode ), frame.Get( i ), nFrame );
		}
		return;
	}
	constexpr int32_t PAGE_SIZE = CPagedList<CKestoFile::Sum>::PAGE_SIZE;
	for ( int32_t nFirst = 0; nFirst < frame.m_nStored; nFirst += PAGE_SIZE )
		AddToStatistics( m_File.m_Maxima.Page( nFirst / PAGE_SIZE ), m_File.m_Sums.Page( nFirst / PAGE_SIZE ), frame,
			nFirst, std::min( PAGE_SIZE, frame.m_nStored - nFirst ), nFrame );
}
