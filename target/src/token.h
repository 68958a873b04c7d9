// The word that an engine and its consoles share.
#pragma once

#include <string>
#include <string_view>

namespace showbudget
{
// What Settings::m_pToken says, or where that is null or empty the environment variable SHOWBUDGET_TOKEN, or the first
// line of the file that SHOWBUDGET_TOKEN_FILE names; the first of them that is there. Empty when none is. False, and
// why in `error`, when it can be no token or the file cannot be read; the token itself is never in that text.
bool FindToken( const char *pSetting, std::string &token, std::string &error );

// Takes as long wherever the two differ. `own` is a token.
bool IsSameToken( std::string_view own, std::string_view other );
} // namespace showbudget
