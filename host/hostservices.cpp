#include "hostservices.h"

#include <algorithm>
#include <cstring>
#include <utility>

CHostServices *CHostServices::s_pServices = nullptr;

CHostServices::CHostServices()
{
	s_pServices = this;
}

CHostServices::~CHostServices()
{
	s_pServices = nullptr;
}

void *CHostServices::CreateInterface( const char *pName, int *pReturnCode )
{
	void *pInterface = nullptr;
	if ( s_pServices && std::strcmp( pName, POST_CONNECT_NAME ) == 0 )
		pInterface = static_cast<IPostConnectService *>( s_pServices );
	else if ( s_pServices && std::strcmp( pName, SCHEMA_SYSTEM_NAME ) == 0 )
		pInterface = static_cast<ISchemaSystem *>( s_pServices );
	if ( pReturnCode )
		*pReturnCode = pInterface ? 0 : 1;
	return pInterface;
}

void CHostServices::RunPostConnectCallbacks()
{
	m_bAllConnected = true;
	// A callback may register or unregister callbacks.
	for ( IPostConnectCallback *pCallback : std::vector( m_Callbacks ) )
	{
		const auto isThere = [this, pCallback]()
		{ return std::find( m_Callbacks.begin(), m_Callbacks.end(), pCallback ) != m_Callbacks.end(); };
		if ( isThere() && pCallback->OnPostConnect() == 0 && isThere() )
			UnregisterCallback( pCallback );
	}
}

void CHostServices::RegisterCallback( IPostConnectCallback *pCallback )
{
	m_Callbacks.push_back( pCallback );
}

void CHostServices::UnregisterCallback( IPostConnectCallback *pCallback )
{
	std::erase( m_Callbacks, pCallback );
}

void CHostServices::AddResourceManifests( int nCount, void **ppManifests )
{
	m_Manifests.insert( ppManifests, ppManifests + nCount );
}

void CHostServices::RemoveResourceManifests( int nCount, void **ppManifests )
{
	for ( int i = 0; i < nCount; i++ )
		if ( const auto found = m_Manifests.find( ppManifests[i] ); found != m_Manifests.end() )
			m_Manifests.erase( found );
}

bool CHostServices::MayInstallBindings( const char * )
{
	return m_bAllConnected;
}

void CHostServices::BindingsInstalled( const char *pModuleName )
{
	m_Installed.insert( pModuleName );
}
