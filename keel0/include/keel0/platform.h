// Clock, time-stamp counter, clipboard, debug output and the way to stop the process.
#pragma once

#include <cstdint>

#include "keel0/api.h"

// Seconds since some moment before the process began; monotonic, > 0.
KEEL0_API double Plat_FloatTime();

// A monotonic tick counter and its frequency in ticks per second (> 0). The counter is the processor's time-stamp
// counter where that runs at a constant rate, else the system's monotonic clock in nanoseconds.
KEEL0_API uint64_t Plat_CPUTicks();
KEEL0_API uint64_t Plat_CPUTickFrequency();

// Text for a debugger and the process's stderr; not logging.
KEEL0_API void Plat_DebugPrint( const char *pText );

// Hands UTF-8 text to the clipboard sink; without one nothing happens.
KEEL0_API void Plat_SetClipboardText( const char *pText );

// Called for a condition that the process cannot go on with. The default prints the text to stderr and aborts. Never
// null. A replacement (a host's dialog, a test) may return; callers must then leave without doing harm.
KEEL0_API extern void ( *Plat_FatalErrorFunc )( const char *pFormat, ... ) KEEL0_PRINTF( 1, 2 );

// For hosts and tests: another clock for Plat_FloatTime (null restores the real one), and where clipboard text goes
// (null: nowhere). To be set on the user-interface thread.
KEEL0_API void Plat_SetFloatTimeSource( double ( *pSource )() );
KEEL0_API void Plat_SetClipboardSink( void ( *pSink )( const char *pText ) );
