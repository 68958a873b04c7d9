// What the host offers to the modules that it loads: its interface factory and the services behind it.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "tessel/factory.h"
#include "tessel/ipostconnectservice.h"
#include "tessel/ischemasystem.h"

// There is one at a time: a module's factory is a plain function and can only reach one set of services.
class CHostServices final
	: private IPostConnectService
	, private ISchemaSystem
{
public:
	static constexpr const char *POST_CONNECT_NAME = "TesselPostConnect_001";
	static constexpr const char *SCHEMA_SYSTEM_NAME = "SchemaSystem_001";

	CHostServices();
	~CHostServices();
	CHostServices( const CHostServices & ) = delete;
	CHostServices &operator=( const CHostServices & ) = delete;

	// The factory for IAppSystem::Connect. Knows the two names above while the object lives.
	static void *CreateInterface( const char *pName, int *pReturnCode );

	ISchemaSystem *SchemaSystem() { return this; }

	// All modules are connected: from now on bindings may be installed, and every registered callback is called. One
	// that is not done stays and is called again the next time.
	void RunPostConnectCallbacks();

	bool AreBindingsInstalled( const char *pModuleName ) const { return m_Installed.count( pModuleName ) != 0; }
	size_t WaitingCallbacks() const { return m_Callbacks.size(); }

private:
	void RegisterCallback( IPostConnectCallback *pCallback ) override;
	void UnregisterCallback( IPostConnectCallback *pCallback ) override;
	void AddResourceManifests( int nCount, void **ppManifests ) override;
	void RemoveResourceManifests( int nCount, void **ppManifests ) override;

	bool MayInstallBindings( const char *pModuleName ) override;
	void BindingsInstalled( const char *pModuleName ) override;

	static CHostServices *s_pServices;

	std::vector<IPostConnectCallback *> m_Callbacks;
	std::multiset<void *> m_Manifests;
	std::set<std::string> m_Installed;
	bool m_bAllConnected = false;
};
