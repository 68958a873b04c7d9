// A clock that stands still until the test moves it.
#pragma once

#include "keel0/platform.h"

// Takes the place of Plat_FloatTime's clock while it lives; one at a time.
class CFakeClock
{
public:
	explicit CFakeClock( double flSeconds = 1000.0 )
	{
		s_flNow = flSeconds;
		Plat_SetFloatTimeSource( [] { return s_flNow; } );
	}
	~CFakeClock() { Plat_SetFloatTimeSource( nullptr ); }
	CFakeClock( const CFakeClock & ) = delete;
	CFakeClock &operator=( const CFakeClock & ) = delete;

	void Set( double flSeconds ) { s_flNow = flSeconds; }
	void Advance( double flSeconds ) { s_flNow += flSeconds; }
	double Now() const { return s_flNow; }

private:
	static inline double s_flNow = 0.0;
};
