// The mathematical functions that modules share, so that all of them round alike.
#pragma once

#include "keel0/api.h"

KEEL0_API double V_expd( double flValue );   // e to the power of flValue
KEEL0_API float V_expf( float flValue );     // the same in single precision
KEEL0_API float V_log2f( float flValue );    // logarithm to base 2; of 0: -infinity, below 0: not a number
KEEL0_API double V_log10d( double flValue ); // logarithm to base 10, likewise
