// The demo engine as a child process of a test.
#pragma once

#include <QProcess>

#include <cstdint>

class CDemoEngine
{
public:
	~CDemoEngine(); // kills what still runs

	// Starts the engine and waits until it listens; fails the test when it does not. Port 0 takes any free one.
	void Start( uint16_t nPort = 0 );
	void KillAndWait(); // SIGKILL: the engine has no chance to say good-bye

	uint16_t Port() const { return m_nPort; }

private:
	QProcess m_Process;
	uint16_t m_nPort = 0;
};
