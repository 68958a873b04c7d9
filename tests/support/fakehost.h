// A host as a test wants it.
#pragma once

#include <gtest/gtest.h>

#include "tessel/itesselhost.h"

class CFakeHost final : public ITesselHost
{
public:
	explicit CFakeHost( ITesselConnection *pCurrent = nullptr )
		: m_pCurrent( pCurrent )
	{
	}

	ITesselConnection *GetCurrentConnection() override { return Checked( m_pCurrent ); }
	bool IsDarkStyle() const override { return Checked( m_bDark ); }
	float GetUIScale() const override { return Checked( m_flUIScale ); }

	// Every call from now on fails the test: the host has ended its sub-tools.
	void End() { m_bEnded = true; }

	ITesselConnection *m_pCurrent;
	bool m_bDark = true;
	float m_flUIScale = 1.0f;

private:
	template <typename T>
	T Checked( T answer ) const
	{
		EXPECT_FALSE( m_bEnded ) << "a host was called that has ended";
		return answer;
	}

	bool m_bEnded = false;
};
