// The host's service that calls modules back once all of them are connected.
// Offered by the host's factory under "TesselPostConnect_001".
#pragma once

#include "tessel/visibility.h"

class TESSEL_INTERFACE IPostConnectCallback
{
public:
	virtual int OnPostConnect() = 0; // 0 = done, 1 = not done

protected:
	~IPostConnectCallback() = default;
};

class TESSEL_INTERFACE IPostConnectService
{
public:
	virtual void RegisterCallback( IPostConnectCallback *pCallback ) = 0;
	virtual void UnregisterCallback( IPostConnectCallback *pCallback ) = 0;
	virtual void AddResourceManifests( int nCount, void **ppManifests ) = 0;
	virtual void RemoveResourceManifests( int nCount, void **ppManifests ) = 0;

protected:
	~IPostConnectService() = default;
};
