#include "tools/convert/chromesink.h"

#include "tools/convert/ownkeys.h"

namespace convert
{
CChromeSink::CChromeSink( INodeTexts &texts, CReport &report, ByteOutput output, std::string_view title )
	: CTimelineSink( report )
	, m_Texts( texts )
	, m_Output( std::move( output ) )
	, m_Json( m_Output )
{
	m_Json.StartObject();
	m_Json.KeyOf( "displayTimeUnit" );
	m_Json.Text( "ms" );
	m_Json.KeyOf( KESTO_KEY );
	m_Json.StartObject();
	m_Json.KeyOf( KESTO_FRAME_KEY );
	m_Json.Text( FRAME_NAME );
	m_Json.EndObject();
	m_Json.KeyOf( "traceEvents" );
	m_Json.StartArray();
	m_Json.StartObject();
	m_Json.KeyOf( "name" );
	m_Json.Text( "process_name" );
	Event( "M", 0 );
	m_Json.KeyOf( "args" );
	m_Json.StartObject();
	m_Json.KeyOf( "name" );
	m_Json.Text( title );
	m_Json.EndObject();
	m_Json.EndObject();
}

// The members that all events have.
void CChromeSink::Event( const char *pPhase, int64_t nTime )
{
	m_Json.KeyOf( "ph" );
	m_Json.Text( pPhase );
	m_Json.KeyOf( "ts" );
	m_Json.Number( FormatMicroseconds( nTime ) );
	m_Json.KeyOf( "pid" );
	m_Json.Number( "1" );
	m_Json.KeyOf( "tid" );
	m_Json.Number( "1" );
}

void CChromeSink::BeginScope( const CCallTree &tree, int32_t nNode, int64_t nTime, uint64_t nCalls )
{
	m_Json.StartObject();
	m_Json.KeyOf( "name" );
	m_Json.Text( nNode == CCallTree::ROOT ? FRAME_NAME : m_Texts.Name( tree.Get( nNode ) ) );
	Event( "B", nTime );
	if ( nCalls != 1 )
	{
		m_Json.KeyOf( "args" );
		m_Json.StartObject();
		m_Json.KeyOf( KESTO_CALLS_KEY );
		m_Json.Number( std::to_string( nCalls ) );
		m_Json.EndObject();
	}
	m_Json.EndObject();
}

void CChromeSink::EndScope( int32_t /*nNode*/, int64_t nTime )
{
	m_Json.StartObject();
	Event( "E", nTime );
	m_Json.EndObject();
}

bool CChromeSink::Finish()
{
	m_Json.EndArray();
	m_Json.EndObject();
	m_Output.m_Buffer.m_Text += '\n';
	return m_Output.m_Buffer.Flush();
}
} // namespace convert
