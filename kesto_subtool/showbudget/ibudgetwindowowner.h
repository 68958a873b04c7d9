// What a Show Budget window asks of the sub-tool that made it.
#pragma once

class ITesselHost;
class KeyValues;

class IBudgetWindowOwner
{
public:
	// The tree that all windows share; null when the host never gave one. Ask again each time: the host may replace it.
	virtual KeyValues *GetSettings() = 0;
	virtual const ITesselHost &GetHost() const = 0;

protected:
	~IBudgetWindowOwner() = default;
};
