// The life of a module inside the host's framework.
#pragma once

#include "tessel/factory.h"
#include "tessel/visibility.h"

// The order of the functions is the order of the slots. All calls come on the host's user-interface thread.
class TESSEL_INTERFACE IAppSystem
{
public:
	// Connects every service that the module needs through pFactory, which is called during this call only; the
	// services stay the host's and outlive the connection. May be called more than once. False when the module cannot
	// be used; the host then disconnects it.
	virtual bool Connect( CreateInterfaceFn pFactory ) = 0;

	// Takes back all Connect and ConnectInterface calls at once; allowed when there were none.
	virtual void Disconnect() = 0;

	virtual void *FindInterface( const char *pName ) = 0; // null when the module has none of that name

	// Between Connect and ShutDown; 1 = success, anything else and the host goes on without the module.
	virtual int Initialise() = 0;

	// The last call but Disconnect. The module deletes whatever windows it still has; their connections may be gone.
	virtual void ShutDown() = 0;
	virtual void Unused6() = 0;
	virtual const void *GetDependencies() = 0; // null = none
	virtual int GetFrameworkTier() = 0;

	// Connects one service more, as Connect does with all of them.
	virtual void ConnectInterface( CreateInterfaceFn pFactory, const char *pName ) = 0;
	virtual bool IsSingleton() = 0;
	virtual int GetBuildKind() = 0;

protected:
	~IAppSystem() = default;
};
