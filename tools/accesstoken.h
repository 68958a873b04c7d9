// The word that an engine and its consoles may share.
#pragma once

#include <optional>
#include <string>

// SHOWBUDGET_TOKEN of the environment, or the first line of the file that SHOWBUDGET_TOKEN_FILE names; empty when there
// is neither. None when the file cannot be read or what it holds can be no token: `problem` then says which, and not
// what the token is.
std::optional<std::string> FindAccessToken( std::string &problem );
