// The text that a console and its engines share, so that neither talks to a stranger.
#pragma once

#include <QString>

#include <optional>
#include <string>

// The first line of tokenFile; without a file (empty) the environment's SHOWBUDGET_TOKEN, else the first line of the
// file that SHOWBUDGET_TOKEN_FILE names, else an empty text: there is no token. When a file or a token is no good the
// result is none, and error is one line that names where it came from and never holds any of it.
std::optional<std::string> FindAccessToken( const QString &tokenFile, QString &error );
