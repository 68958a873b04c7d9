// A test that has a session: the library listens on a free port and its own messages are kept.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "target/showbudget.h"
#include "target/src/connectiontimes.h"
#include "testconsole.h"

// Waits, without sleeping, for something that another thread brings about; fails when it never comes.
bool WaitUntil( const std::function<bool()> &condition );

// Keeps the thread busy until the time-stamp of the system's clock has moved on that far; returns how far it really
// did.
uint64_t BeBusy( uint64_t nMicroseconds );
// Of the system's clock.
uint64_t NowMicroseconds();
// What the process has allocated and not freed.
size_t AllocatedBytes();

class CSession : public testing::Test
{
protected:
	void SetUp() override { Start(); }
	void TearDown() override;

	virtual showbudget::Settings MakeSettings();
	void Start();
	// Stops and starts with other times; TearDown brings back the usual ones.
	void RestartWith( const showbudget::ConnectionTimes &times );
	std::vector<std::string> LogLines();
	bool WaitForLog( const std::string &part );

	// Waits until the library has taken in what consoles want; 1 is budgets, 2 is scopes.
	static bool WaitUntilWanted( uint32_t nWanted );

private:
	std::mutex m_Mutex;
	std::vector<std::string> m_Log;
};
