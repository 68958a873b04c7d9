// The engine's way to hear of the library.
#pragma once

#include <string>

#include "target/showbudget.h"

namespace showbudget
{
// Where lines go from now on: Settings::m_pLog. Null is stderr. When this returns, the function before is not called
// any more.
void SetLog( LogFunction pFunction, void *pContext );

// In a forked child: lines go to stderr.
void ForgetLog();

// Any thread; one line at a time.
void LogLine( Severity severity, const std::string &line );
} // namespace showbudget
