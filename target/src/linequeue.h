// Carries lines of text from any thread to the sender without locks.
#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

#include "tablesizes.h"
#include "target/showbudget.h"

namespace showbudget
{
// A bounded queue of many writers and one reader. Every cell carries a number that says whose turn it is: its position
// when it may be written, the position plus 1 when it may be read.
class CLineQueue
{
public:
	struct Line
	{
		Severity m_Severity;
		uint32_t m_nLength;
		char m_Text[MAX_PRINT_BYTES];
	};

	CLineQueue();

	// False when the queue is full; the line is then counted as dropped. Texts over MAX_PRINT_BYTES are cut.
	bool Push( Severity severity, std::string_view text );

	// Reader: the oldest line, valid until Pop; null when there is none.
	const Line *Peek();
	void Pop();
	// Reader: lines that found no room since the last call.
	uint64_t TakeDropped() { return m_nDropped.exchange( 0, std::memory_order_relaxed ); }

private:
	static constexpr uint64_t CELLS = 128;

	struct Cell
	{
		std::atomic<uint64_t> m_nTurn;
		Line m_Line;
	};

	Cell m_Cells[CELLS];
	alignas( 64 ) std::atomic<uint64_t> m_nNextWrite{ 0 };
	alignas( 64 ) uint64_t m_nNextRead = 0;
	std::atomic<uint64_t> m_nDropped{ 0 };
};
} // namespace showbudget
