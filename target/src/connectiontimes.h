// How long a connection waits for what.
#pragma once

#include <chrono>

#include "wire/chunks.h"

namespace showbudget
{
struct ConnectionTimes
{
	std::chrono::milliseconds m_Greeting{ 5000 }; // until the console has introduced itself
	std::chrono::milliseconds m_Ending{ 1000 };   // until a refused console has hung up
	std::chrono::milliseconds m_Beat{ wire::BEAT_MILLISECONDS };
	std::chrono::milliseconds m_Unanswered{ 3500 }; // with bytes sent again and again and no sign of the other machine
};

// Changed by tests only, while there is no session.
inline ConnectionTimes g_Times;
} // namespace showbudget
