// Lines of text for whoever watches: the console of the host, a test, or stderr.
#pragma once

#include "keel0/api.h"

enum class LoggingSeverity
{
	Message,
	Warning,
	Error
};

// pText is one whole formatted text, zero-terminated, as the caller wrote it (usually ending in a line feed); it is
// valid during the call only. Called on the thread that logs.
using LoggingListenerFn = void ( * )( LoggingSeverity, const char *pText, void *pContext );

// Format as printf does and hand the text to every listener in the order in which they were added; with no listener the
// text goes to stderr. Safe on any thread; listeners are called for one text at a time, so they need no lock among
// themselves and must not wait for a thread that logs. A listener may log (the text is then handed on after the present
// one, to every listener) and may add or remove listeners, which counts for the next call. What listeners log about
// texts of listeners goes to stderr beyond LOGGING_MAX_DEPTH, so that they cannot keep each other busy for ever.
constexpr int LOGGING_MAX_DEPTH = 8;
KEEL0_API void Msg( const char *pFormat, ... ) KEEL0_PRINTF( 1, 2 );
KEEL0_API void Warning( const char *pFormat, ... ) KEEL0_PRINTF( 1, 2 );
KEEL0_API void Logging_Error( const char *pFormat, ... ) KEEL0_PRINTF( 1, 2 ); // severity Error; returns

// A pair of function and context is added once, however often it is given; removing one that is not there does nothing.
// Once Logging_RemoveListener returns, no other thread calls that listener any more.
KEEL0_API void Logging_AddListener( LoggingListenerFn, void *pContext );
KEEL0_API void Logging_RemoveListener( LoggingListenerFn, void *pContext );
