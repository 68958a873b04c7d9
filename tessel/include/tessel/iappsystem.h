// The life of a module inside the host's framework.
#pragma once

#include "tessel/factory.h"
#include "tessel/visibility.h"

// The order of the functions is the order of the slots. All calls come on the host's user-interface thread.
class TESSEL_INTERFACE IAppSystem
{
public:
	// Connects every service that the module needs through pFactory. May be called more than once; each call is undone
	// by one Disconnect of the host or counted by the module.
	virtual bool Connect( CreateInterfaceFn pFactory ) = 0;
	virtual void Disconnect() = 0;
	virtual void *FindInterface( const char *pName ) = 0;
	virtual int Initialise() = 0; // 1 = success
	virtual void ShutDown() = 0;
	virtual void Unused6() = 0;
	virtual const void *GetDependencies() = 0;
	virtual int GetFrameworkTier() = 0;
	virtual void ConnectInterface( CreateInterfaceFn pFactory, const char *pName ) = 0;
	virtual bool IsSingleton() = 0;
	virtual int GetBuildKind() = 0;

protected:
	~IAppSystem() = default;
};
