// What a fuzz target demands of the code that it feeds, in every build.
#pragma once

#include <cstdio>
#include <cstdlib>

// Ends the process, which a fuzzer and a replay count as a fault, when something does not hold.
inline void Require( bool bHolds, const char *pWhat )
{
	if ( bHolds )
		return;
	std::fprintf( stderr, "this does not hold: %s\n", pWhat );
	std::abort();
}
