// Ends a test program that hangs, with the name of what hung.
#pragma once

#include <string>

// While one lives, the program is ended after nSeconds: the text goes to stderr, and the abort that follows shows where
// the program is (the signal interrupts the main thread). One at a time.
class CWatchdog
{
public:
	explicit CWatchdog( const std::string &text, unsigned nSeconds = 150 );
	~CWatchdog();
	CWatchdog( const CWatchdog & ) = delete;
	CWatchdog &operator=( const CWatchdog & ) = delete;
};
