// Listens for consoles and sends them what the engine measures, on a thread of its own.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "asioparts.h"
#include "connection.h"
#include "engine.h"
#include "framechunks.h"
#include "lineallowance.h"

namespace showbudget
{
class CServer final
	: public IConnectionOwner
	, public ISessionOwner
{
public:
	CServer( const Settings &settings, std::string token );
	~CServer();
	CServer( const CServer & ) = delete;
	CServer &operator=( const CServer & ) = delete;

	// False when it cannot listen; the reason was logged.
	bool Start();
	// Ends all connections and the thread.
	void Stop();
	uint16_t Port() const { return m_nPort; }

private:
	bool Listen();
	void WarnOfOthers() const;
	void Run();
	void AcceptNext();
	void OnAccepted( const std::error_code &error, asio::ip::tcp::socket socket );
	void AddConnection( asio::ip::tcp::socket socket );
	void WaitForWork();
	void LookForFrames();
	void SendAll();
	void SendLines();
	void SendFrames();
	void WarnOnce();

	uint32_t AdmittedConsoles() const;

	wire::Hello Answer( const wire::Hello &hello ) const override;
	void OnAdmitted( CConsoleSession &session ) override;
	void OnWantedChanged() override;
	void OnCommand( CConsoleSession &session, std::string_view line ) override;
	uint64_t TickFrequency() const override { return m_nTickFrequency; }
	void OnClosed( CConnection &connection, const std::string &reason ) override;

	const std::string m_EngineName;
	const std::string m_Token;
	const bool m_bCommands;
	std::string m_Address;
	uint16_t m_nPort;

	asio::io_context m_Context{ 1 };
	asio::ip::tcp::acceptor m_Acceptor{ m_Context };
	asio::steady_timer m_AcceptPause{ m_Context };
	asio::posix::stream_descriptor m_Wake{ m_Context };
	uint64_t m_nWakeCount = 0;
	asio::steady_timer m_FrameTimer{ m_Context };
	bool m_bLooking = false;                                 // for frames, from time to time
	std::vector<std::shared_ptr<CConnection>> m_Connections; // oldest first
	std::thread m_Thread;

	CLineAllowance m_Strangers{ "more connections ended without having been let in" };
	CLineAllowance m_Visitors{ "more consoles connected" };

	uint64_t m_nTickFrequency = 0;
	std::unique_ptr<CMicroseconds> m_pMicroseconds;
	uint64_t m_nFramesLostSeen = 0;
	bool m_bWarnedOfBudgets = false;
	bool m_bWarnedOfSites = false;
	bool m_bWarnedOfThreads = false;
};
} // namespace showbudget
