// What a sub-tool may ask of the console that loaded it.
#pragma once

#include "tessel/visibility.h"

class ITesselConnection;

class TESSEL_INTERFACE ITesselHost
{
public:
	// The one that the user has selected, connected or not; null when there is none. It stays the host's, and a
	// sub-tool may use it until it is told that the connection ended.
	virtual ITesselConnection *GetCurrentConnection() = 0;
	virtual bool IsDarkStyle() const = 0;
	virtual float GetUIScale() const = 0; // > 0; 1.0 is 96 dpi

protected:
	~ITesselHost() = default;
};
