// The warnings that the library gave for one input.
#pragma once

#include <string>
#include <vector>

#include "keel0/logging.h"

class CKeptWarnings
{
public:
	// Those since the last call of Begin. They belong to the process, as the log does.
	static const std::vector<std::string> &Texts() { return s_Texts; }

	static void Begin()
	{
		[[maybe_unused]] static const bool s_bListening = Listen();
		s_Texts.clear();
	}

private:
	static bool Listen()
	{
		Logging_AddListener(
			[]( LoggingSeverity, const char *pText, void * ) { s_Texts.emplace_back( pText ); }, nullptr );
		return true;
	}

	static inline std::vector<std::string> s_Texts;
};
