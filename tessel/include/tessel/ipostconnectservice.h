// The host's service that calls modules back once all of them are connected.
// Offered by the host's factory under "TesselPostConnect_001".
#pragma once

#include "tessel/visibility.h"

class TESSEL_INTERFACE IPostConnectCallback
{
public:
	// 0 = done, the service forgets the callback; 1 = not done, it may be called again. May register and unregister.
	virtual int OnPostConnect() = 0;

protected:
	~IPostConnectCallback() = default;
};

class TESSEL_INTERFACE IPostConnectService
{
public:
	// The callback stays its owner's and must live until it is unregistered. Unregistering one that is not there does
	// nothing.
	virtual void RegisterCallback( IPostConnectCallback *pCallback ) = 0;
	virtual void UnregisterCallback( IPostConnectCallback *pCallback ) = 0;

	// The array is read during the call; the manifests (nCount >= 0 of them, whose form the host does not know) stay
	// their owner's and must live until they are removed.
	virtual void AddResourceManifests( int nCount, void **ppManifests ) = 0;
	virtual void RemoveResourceManifests( int nCount, void **ppManifests ) = 0;

protected:
	~IPostConnectService() = default;
};
