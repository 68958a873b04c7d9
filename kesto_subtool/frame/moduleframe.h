// What the module as a whole has to do with the host's framework, whatever tool it holds.
#pragma once

#include <cstdint>

#include "frame/resourcemanifests.h"
#include "frame/schemabindings.h"
#include "frame/serviceconnections.h"
#include "frame/shutdowncallbacks.h"
#include "tessel/factory.h"

class CModuleFrame
{
public:
	static constexpr char POST_CONNECT_NAME[] = "TesselPostConnect_001";

	// The table should have rows for POST_CONNECT_NAME and CSchemaBindings::SCHEMA_SYSTEM_NAME; without them the module
	// does without these services.
	CModuleFrame( CServiceConnections services, const CSchemaRegistry &schemaRegistry );
	CModuleFrame( const CModuleFrame & ) = delete;
	CModuleFrame &operator=( const CModuleFrame & ) = delete;

	// Each connects through the factory and counts one connection. The first one that finds the post-connect service
	// registers the module's callback there and offers it the resource manifests.
	void Connect( CreateInterfaceFn pFactory );
	void ConnectInterface( CreateInterfaceFn pFactory, const char *pName );

	// Takes nConnections off the count; when none is left, what the post-connect service was given is taken back, so
	// that a later connection gives it anew. All services are disconnected whatever the count.
	void Disconnect( int32_t nConnections );

	CSchemaBindings &SchemaBindings() { return m_SchemaBindings; }
	CResourceManifestList &ResourceManifests() { return m_ResourceManifests; }
	CShutdownCallbacks &ShutdownCallbacks() { return m_ShutdownCallbacks; }

private:
	void CountConnection();
	void DropConnection();

	CServiceConnections m_Services;
	CSchemaBindings m_SchemaBindings;
	CSchemaInstallCallback m_PostConnectCallback;
	CResourceManifestList m_ResourceManifests;
	CShutdownCallbacks m_ShutdownCallbacks;
	IPostConnectService *m_pRegisteredWith = nullptr; // kept apart from the table, which may be cleared earlier
	int32_t m_nConnections = 0;
};
