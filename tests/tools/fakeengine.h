// An engine on a real socket that says exactly what a test wants, to one console.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <thread>
#include <vector>

class CFakeEngine
{
public:
	// Listens on a free port of the loopback interface. `talk` runs on a thread of its own once a console is connected;
	// the connection is closed when it returns.
	explicit CFakeEngine( std::function<void( CFakeEngine & )> talk );
	~CFakeEngine();
	CFakeEngine( const CFakeEngine & ) = delete;
	CFakeEngine &operator=( const CFakeEngine & ) = delete;

	std::string Address() const; // "127.0.0.1:PORT"

	// For `talk`. All bytes are written out here, without the code that the tests are about.
	void SendBytes( const std::vector<uint8_t> &bytes );
	void SendChunk( const char *pType, const std::vector<uint8_t> &payload, unsigned nVersion = 2 );
	void SendHello( uint32_t nProtocol = 2 );
	void SendBudgets( const std::vector<std::string> &names );
	void SendFrame(
		const std::vector<uint32_t> &values, bool bBeginsTick = true, uint32_t nFrameRateBits = 0x42700000 );

	// The next chunk's type; its payload goes to m_Received. Empty when the console hung up.
	std::string Receive();
	// The console's greeting and the request for budgets, which must be what they should.
	void ExpectGreetingAndStart();
	void WaitForHangUp();

	std::vector<uint8_t> m_Received;

private:
	bool ReceiveBytes( std::span<uint8_t> bytes );

	int m_nListener = -1;
	int m_nConsole = -1;
	uint16_t m_nPort = 0;
	std::thread m_Thread;
};
