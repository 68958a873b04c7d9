// The demo engine as a process of its own.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

class CDemoProcess
{
public:
	// The variables, like "NAME=VALUE", are added to the environment of the test.
	explicit CDemoProcess( const std::vector<std::string> &arguments, const std::vector<std::string> &variables = {} );
	~CDemoProcess(); // kills what still runs
	CDemoProcess( const CDemoProcess & ) = delete;
	CDemoProcess &operator=( const CDemoProcess & ) = delete;

	// Reads what it prints until the text is there; fails the test when the process ends first.
	void WaitForOutput( const std::string &text );
	void Signal( int nSignal ) const;
	// Waits until it ends; its exit status, or minus the signal that ended it.
	int Wait();
	const std::string &Output() const { return m_Output; } // of both streams, as far as it was read

private:
	bool ReadSome();

	pid_t m_nProcess = -1;
	int m_nOutput = -1;
	std::string m_Output;
};
