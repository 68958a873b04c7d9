// What a sub-tool may ask of the console that loaded it.
#pragma once

#include "tessel/visibility.h"

class ITesselConnection;

class TESSEL_INTERFACE ITesselHost
{
public:
	virtual ITesselConnection *GetCurrentConnection() = 0; // null when there is none
	virtual bool IsDarkStyle() const = 0;
	virtual float GetUIScale() const = 0; // > 0; 1.0 is 96 dpi

protected:
	~ITesselHost() = default;
};
