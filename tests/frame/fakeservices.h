// The host framework's services as a test wants them.
#pragma once

#include <cstdarg>
#include <cstring>
#include <string>
#include <vector>

#include "keel0/bufferstring.h"
#include "keel0/platform.h"
#include "tessel/ipostconnectservice.h"
#include "tessel/ischemasystem.h"

class CFakeSchemaSystem final : public ISchemaSystem
{
public:
	bool MayInstallBindings( const char *pModuleName ) override
	{
		m_Asked.push_back( pModuleName );
		return m_bMayInstall;
	}
	void BindingsInstalled( const char *pModuleName ) override { m_Installed.push_back( pModuleName ); }

	bool m_bMayInstall = true;
	std::vector<std::string> m_Asked;
	std::vector<std::string> m_Installed;
};

class CFakePostConnect final : public IPostConnectService
{
public:
	void RegisterCallback( IPostConnectCallback *pCallback ) override
	{
		m_Calls.push_back( "register" );
		m_Callbacks.push_back( pCallback );
	}
	void UnregisterCallback( IPostConnectCallback *pCallback ) override
	{
		m_Calls.push_back( "unregister" );
		std::erase( m_Callbacks, pCallback );
	}
	void AddResourceManifests( int nCount, void **ppManifests ) override
	{
		m_Calls.push_back( "add " + std::to_string( nCount ) );
		m_Manifests.assign( ppManifests, ppManifests + nCount );
	}
	void RemoveResourceManifests( int nCount, void ** ) override
	{
		m_Calls.push_back( "remove " + std::to_string( nCount ) );
		m_Manifests.clear();
	}

	std::vector<std::string> m_Calls;
	std::vector<IPostConnectCallback *> m_Callbacks;
	std::vector<void *> m_Manifests;
};

// A host's factory with these services, while it lives; one at a time.
class CFakeServices
{
public:
	CFakeServices() { s_pCurrent = this; }
	~CFakeServices() { s_pCurrent = nullptr; }
	CFakeServices( const CFakeServices & ) = delete;
	CFakeServices &operator=( const CFakeServices & ) = delete;

	static void *Factory( const char *pName, int *pReturnCode )
	{
		void *pFound = s_pCurrent->Find( pName );
		if ( pReturnCode )
			*pReturnCode = pFound ? 0 : 1;
		return pFound;
	}

	CFakePostConnect m_PostConnect;
	CFakeSchemaSystem m_Schema;
	std::vector<std::string> m_Asked;
	bool m_bHasPostConnect = true;

private:
	void *Find( const char *pName )
	{
		m_Asked.push_back( pName );
		if ( std::strcmp( pName, "TesselPostConnect_001" ) == 0 && m_bHasPostConnect )
			return static_cast<IPostConnectService *>( &m_PostConnect );
		if ( std::strcmp( pName, "SchemaSystem_001" ) == 0 )
			return static_cast<ISchemaSystem *>( &m_Schema );
		return nullptr;
	}

	static inline CFakeServices *s_pCurrent = nullptr;
};

// Collects fatal errors instead of ending the process; one at a time.
class CExpectFatalErrors
{
public:
	CExpectFatalErrors()
		: m_pBefore( Plat_FatalErrorFunc )
	{
		s_Texts.clear();
		Plat_FatalErrorFunc = &Record;
	}
	~CExpectFatalErrors() { Plat_FatalErrorFunc = m_pBefore; }
	CExpectFatalErrors( const CExpectFatalErrors & ) = delete;
	CExpectFatalErrors &operator=( const CExpectFatalErrors & ) = delete;

	const std::vector<std::string> &Texts() const { return s_Texts; }

private:
	static void Record( const char *pFormat, ... )
	{
		va_list arguments;
		va_start( arguments, pFormat );
		CBufferString text;
		text.AppendFormatV( pFormat, arguments );
		va_end( arguments );
		s_Texts.push_back( text.Get() );
	}

	decltype( Plat_FatalErrorFunc ) m_pBefore;
	static inline std::vector<std::string> s_Texts;
};
