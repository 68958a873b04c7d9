#include "tools/convert/speedscopesink.h"

#include <algorithm>

#include "tools/convert/ownkeys.h"

namespace convert
{
CSpeedscopeSink::CSpeedscopeSink( INodeTexts &texts, CReport &report, ByteOutput output, std::string_view title )
	: CTimelineSink( report )
	, m_Texts( texts )
	, m_Output( std::move( output ) )
	, m_Json( m_Output )
{
	const auto member = [this]( const char *pKey, std::string_view text )
	{
		m_Json.KeyOf( pKey );
		m_Json.Text( text );
	};
	m_Json.StartObject();
	member( "$schema", "https://www.speedscope.app/file-format-schema.json" );
	member( "name", title );
	member( "exporter", "kesto" );
	m_Json.KeyOf( KESTO_KEY );
	m_Json.StartObject();
	member( KESTO_FRAME_KEY, FRAME_NAME );
	m_Json.EndObject();
	m_Json.KeyOf( "profiles" );
	m_Json.StartArray();
	m_Json.StartObject();
	member( "type", "evented" );
	member( "name", title );
	member( "unit", "microseconds" );
	m_Json.KeyOf( "startValue" );
	m_Json.Number( "0" );
	m_Json.KeyOf( "events" );
	m_Json.StartArray();
}

void CSpeedscopeSink::Event( const char *pType, int32_t nNode, int64_t nTime )
{
	m_Json.StartObject();
	m_Json.KeyOf( "type" );
	m_Json.Text( pType );
	m_Json.KeyOf( "frame" );
	m_Json.Number( std::to_string( nNode ) );
	m_Json.KeyOf( "at" );
	m_Json.Number( FormatMicroseconds( nTime ) );
	m_Json.EndObject();
}

void CSpeedscopeSink::BeginScope( const CCallTree &tree, int32_t nNode, int64_t nTime, uint64_t nCalls )
{
	m_pTree = &tree;
	m_nFrames = std::max( m_nFrames, nNode + 1 );
	if ( nCalls != 1 )
		m_Report.Add( Note::CallsLost );
	Event( "O", nNode, nTime );
}

void CSpeedscopeSink::EndScope( int32_t nNode, int64_t nTime )
{
	Event( "C", nNode, nTime );
}

bool CSpeedscopeSink::Finish()
{
	m_Json.EndArray();
	m_Json.KeyOf( "endValue" );
	m_Json.Number( FormatMicroseconds( EndTime() ) );
	m_Json.EndObject();
	m_Json.EndArray();
	m_Json.KeyOf( "shared" );
	m_Json.StartObject();
	m_Json.KeyOf( "frames" );
	m_Json.StartArray();
	for ( int32_t nNode = 0; nNode < m_nFrames; nNode++ )
	{
		m_Json.StartObject();
		m_Json.KeyOf( "name" );
		m_Json.Text( nNode == CCallTree::ROOT ? FRAME_NAME : m_Texts.Name( m_pTree->Get( nNode ) ) );
		m_Json.EndObject();
		m_Output.m_Buffer.FlushWhenLong();
	}
	m_Json.EndArray();
	m_Json.EndObject();
	m_Json.EndObject();
	m_Output.m_Buffer.m_Text += '\n';
	return m_Output.m_Buffer.Flush();
}
} // namespace convert
