#include "frame/moduleframe.h"

#include <vector>

#include "tessel/ischemasystem.h"

namespace
{
std::vector<void *> AllManifests( CResourceManifestList &list )
{
	std::vector<void *> manifests( static_cast<size_t>( list.Count() ) );
	list.Get( list.Count(), manifests.data(), nullptr );
	return manifests;
}
} // namespace

CModuleFrame::CModuleFrame( CServiceConnections services, const CSchemaRegistry &schemaRegistry )
	: m_Services( services )
	, m_SchemaBindings( schemaRegistry )
	, m_PostConnectCallback( m_SchemaBindings )
{
}

void CModuleFrame::Connect( CreateInterfaceFn pFactory )
{
	m_Services.ConnectAll( pFactory );
	CountConnection();
}

void CModuleFrame::ConnectInterface( CreateInterfaceFn pFactory, const char *pName )
{
	m_Services.Connect( pFactory, pName );
	CountConnection();
}

void CModuleFrame::CountConnection()
{
	m_SchemaBindings.Keep( static_cast<ISchemaSystem *>( m_Services.Find( CSchemaBindings::SCHEMA_SYSTEM_NAME ) ) );
	m_nConnections++;

	auto *pPostConnect = static_cast<IPostConnectService *>( m_Services.Find( POST_CONNECT_NAME ) );
	if ( !pPostConnect || m_pRegisteredWith )
		return;
	m_pRegisteredWith = pPostConnect;
	std::vector<void *> manifests = AllManifests( m_ResourceManifests );
	pPostConnect->RegisterCallback( &m_PostConnectCallback );
	pPostConnect->AddResourceManifests( m_ResourceManifests.Count(), manifests.data() );
}

void CModuleFrame::Disconnect( int32_t nConnections )
{
	for ( int32_t i = 0; i < nConnections; i++ )
		DropConnection();
	if ( const auto *pSchema = static_cast<ISchemaSystem *>( m_Services.Find( CSchemaBindings::SCHEMA_SYSTEM_NAME ) ) )
		m_SchemaBindings.Forget( pSchema );
	m_Services.Clear();
}

void CModuleFrame::DropConnection()
{
	m_nConnections--;
	if ( m_nConnections > 0 || !m_pRegisteredWith )
		return;
	std::vector<void *> manifests = AllManifests( m_ResourceManifests );
	m_pRegisteredWith->RemoveResourceManifests( m_ResourceManifests.Count(), manifests.data() );
	m_pRegisteredWith->UnregisterCallback( &m_PostConnectCallback );
	m_pRegisteredWith = nullptr;
}
