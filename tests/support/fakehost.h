// A host as a test wants it.
#pragma once

#include "tessel/itesselhost.h"

class CFakeHost final : public ITesselHost
{
public:
	explicit CFakeHost( ITesselConnection *pCurrent = nullptr )
		: m_pCurrent( pCurrent )
	{
	}

	ITesselConnection *GetCurrentConnection() override { return m_pCurrent; }
	bool IsDarkStyle() const override { return m_bDark; }
	float GetUIScale() const override { return m_flUIScale; }

	ITesselConnection *m_pCurrent;
	bool m_bDark = true;
	float m_flUIScale = 1.0f;
};
