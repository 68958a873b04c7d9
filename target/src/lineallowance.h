// What keeps those who come and go at the port from filling the engine's log.
#pragma once

#include <chrono>
#include <cstdint>

namespace showbudget
{
// So many lines of one kind in so much time; the others are counted, and their number is a line. The server's thread
// only.
class CLineAllowance
{
public:
	static constexpr uint64_t LINES = 20;
	static constexpr std::chrono::seconds TIME{ 10 };

	// The rest of the line that tells a number. Lives as long.
	explicit CLineAllowance( const char *pRest );

	// Whether there may be another line now. Tells of the ones that were not, when their time is over.
	bool Take();

	// Tells at once how many there were besides.
	void TellRest();

private:
	const char *m_pRest;
	std::chrono::steady_clock::time_point m_Since;
	uint64_t m_nTaken = 0; // since then, with those that were not allowed
};
} // namespace showbudget
