// The host framework's register of the types that its modules describe.
// Offered by the host's factory under "SchemaSystem_001".
#pragma once

#include "tessel/visibility.h"

class TESSEL_INTERFACE ISchemaSystem
{
public:
	// False while modules are still being connected; a module then waits for its post-connect callback.
	virtual bool MayInstallBindings( const char *pModuleName ) = 0;

	// All that the module describes is registered. The text is valid during the call only.
	virtual void BindingsInstalled( const char *pModuleName ) = 0;

protected:
	~ISchemaSystem() = default;
};
