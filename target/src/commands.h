// Console commands: what the engine offers, and what consoles asked for.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string_view>

#include "tablesizes.h"
#include "target/showbudget.h"
#include "wire/sessionchunks.h"

namespace showbudget
{
class CCommands
{
public:
	// Any thread, not for scopes.
	bool Register( const char *pName, const char *pHelp, CommandFunction pFunction, void *pContext );

	// Sender: queues a command line. False when the frame thread has not taken the last QUEUED ones.
	bool Push( std::string_view line );

	// In a forked child: what was asked of its parent is none of its business, and nobody holds the lock.
	void ForgetQueued();

	// Frame thread: calls what was asked for. Costs two loads when nothing was.
	void Run()
	{
		if ( m_nWritten.load( std::memory_order_acquire ) != m_nRead.load( std::memory_order_relaxed ) )
			RunQueued();
	}

	static constexpr uint32_t QUEUED = 16;

private:
	struct Command
	{
		char m_Name[64];
		char m_Help[256];
		CommandFunction m_pFunction;
		void *m_pContext;
	};
	struct Line
	{
		char m_Text[wire::MAX_COMMAND_TEXT + 1];
	};

	void RunQueued();
	void RunLine( char *pLine );
	const Command *Find( std::string_view name ) const;
	void PrintHelp() const;

	std::mutex m_Mutex; // of Register
	std::atomic<uint32_t> m_nCommands{ 0 };
	Command m_Commands[MAX_COMMANDS]{}; // those below the count never change
	std::atomic<uint64_t> m_nWritten{ 0 };
	std::atomic<uint64_t> m_nRead{ 0 };
	Line m_Lines[QUEUED]{};
};
} // namespace showbudget
