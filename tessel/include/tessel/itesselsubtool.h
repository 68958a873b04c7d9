// One sub-tool of the console: a window or a set of windows that the user opens from its menu.
#pragma once

#include "tessel/visibility.h"

class ITesselConnection;
class ITesselHost;
class KeyValues;

// The order of the functions is the order of the slots. All calls come on the host's user-interface thread.
class TESSEL_INTERFACE ITesselSubTool
{
public:
	// Called before anything else here. Both pointers stay the host's and outlive the sub-tool.
	virtual void SetHost( ITesselHost *pHost, void *pSecondHost ) = 0;
	virtual void Unused2() = 0;

	// Shows the sub-tool for the host's current connection; false when there is none.
	virtual bool Open() = 0;

	// Writes the state of every window into the kept tree and returns it. The tree stays the sub-tool's and is valid
	// until the next LoadSettings; null when none was ever loaded.
	virtual KeyValues *SaveSettings() = 0;

	// Keeps a copy of *pSettings in place of what was kept and returns the copy, which stays the sub-tool's.
	virtual KeyValues *LoadSettings( const KeyValues *pSettings ) = 0;
	virtual void Unused6() = 0;

	// The connection object is about to go away: after the call the sub-tool does not touch it again.
	virtual void ConnectionEnded( ITesselConnection *pConnection ) = 0;
	virtual void Unused8() = 0;
	virtual void ConnectionStateChanged( ITesselConnection *pConnection ) = 0;
	virtual void Unused10() = 0;
	virtual void Unused11() = 0;
	virtual void Unused12() = 0;
	virtual bool NeedsConnection() = 0; // capability query, always true here
	virtual bool IsHidden() = 0;        // capability query, always false here
	virtual void Unused15() = 0;

protected:
	~ITesselSubTool() = default;
};
