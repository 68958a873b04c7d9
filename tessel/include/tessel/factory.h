// The function through which one module asks another for an interface by its version string.
#pragma once

// Returns the interface named pName, or null when there is none. pReturnCode may be null; otherwise it receives 0 for
// success and 1 for an unknown name. The pointer stays valid until the module that gave it is unloaded.
using CreateInterfaceFn = void *(*)( const char *pName, int *pReturnCode );
