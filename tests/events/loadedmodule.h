// The built module in a host of its own, loaded by its file and unloaded again.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "frame/fakeservices.h"
#include "keel0/keyvalues.h"
#include "support/fakeconnection.h"
#include "support/fakehost.h"
#include "tessel/iexternalsubtool.h"
#include "tessel/itesselsubtool.h"

class QAction;
class QWidget;

// From loading to unloading. Every operation is allowed once and in any order; one that needs what has gone by then
// does nothing but the host's own side of it.
class CLoadedModule
{
public:
	static constexpr size_t CONNECTIONS = 2;

	// Loaded, connected, initialised and with settings; no window yet.
	CLoadedModule();
	~CLoadedModule();
	CLoadedModule( const CLoadedModule & ) = delete;
	CLoadedModule &operator=( const CLoadedModule & ) = delete;

	// Opens the window of a connection, with all its docks, and gives it categories, samples and scopes. Its timers run
	// then.
	QWidget &OpenWindow( size_t nConnection );
	void SendData( size_t nConnection );

	void EndConnections();
	void CloseWindows();
	void ShutDown(); // and disconnects
	void Unload();

	bool IsLoaded() const { return m_pModule != nullptr; }
	static bool IsMapped(); // whether any of it is in the process's memory

	static QAction &ActionOf( const QWidget &window, const std::string &text );

	CFakeServices m_Services;
	CFakeHost m_Host;
	CFakeConnection m_Connections[CONNECTIONS];
	IExternalTesselSubTool *m_pTool = nullptr;
	ITesselSubTool *m_pSubTool = nullptr;

private:
	bool m_bConnectionsEnded = false;
	bool m_bShutDown = false;
	void *m_pModule;
};
