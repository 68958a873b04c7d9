// The host framework's register of the types that its modules describe.
#pragma once

#include "tessel/visibility.h"

class TESSEL_INTERFACE ISchemaSystem
{
public:
	virtual bool MayInstallBindings( const char *pModuleName ) = 0;
	virtual void BindingsInstalled( const char *pModuleName ) = 0;

protected:
	~ISchemaSystem() = default;
};
