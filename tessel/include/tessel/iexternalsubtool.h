// The interfaces under which a module that is not part of the host offers a sub-tool.
#pragma once

#include "tessel/iappsystem.h"

class TESSEL_INTERFACE IExternalSubTool : public IAppSystem
{
protected:
	~IExternalSubTool() = default;
};

// What a module's CreateInterface returns for "Tessel_SubTool_001_…". The host reaches the sub-tool itself with
// dynamic_cast<ITesselSubTool *>.
class TESSEL_INTERFACE IExternalTesselSubTool : public IExternalSubTool
{
protected:
	~IExternalTesselSubTool() = default;
};
