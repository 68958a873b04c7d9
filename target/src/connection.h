// One console that is connected: its socket, and how long it may take for what.
#pragma once

#include <array>
#include <chrono>
#include <memory>
#include <string>

#include "asioparts.h"
#include "connectiontimes.h"
#include "consolesession.h"

namespace showbudget
{
class CConnection;

// What a connection asks of the server. Everything happens on the server's thread.
class IConnectionOwner
{
public:
	// The connection is over; called once. `reason` is one line.
	virtual void OnClosed( CConnection &connection, const std::string &reason ) = 0;

protected:
	~IConnectionOwner() = default;
};

class CConnection : public std::enable_shared_from_this<CConnection>
{
public:
	CConnection( asio::ip::tcp::socket socket, ISessionOwner &sessionOwner, IConnectionOwner &owner );

	void Start();
	void Close( const std::string &reason );

	CConsoleSession &Session() { return m_Session; }
	const CConsoleSession &Session() const { return m_Session; }
	bool IsAdmitted() const { return !m_bClosed && m_Session.GetState() == CConsoleSession::State::Open; }
	uint32_t Wanted() const { return m_bClosed ? 0 : m_Session.Wanted(); }

	// Hands to the network what was queued, in one piece.
	void Flush();

private:
	using Clock = std::chrono::steady_clock;

	void SetSocketOptions();
	void Read();
	void OnRead( std::span<const uint8_t> bytes );
	void OnWritten( const std::error_code &error );
	void OnSocketError();
	void StartDeadline( std::chrono::milliseconds time, std::string reason );
	void Watch();
	bool IsPeerGone();

	asio::ip::tcp::socket m_Socket;
	asio::steady_timer m_Deadline;
	asio::steady_timer m_WatchTimer;
	IConnectionOwner &m_Owner;
	CConsoleSession m_Session;
	bool m_bClosed = false;
	std::array<uint8_t, 16384> m_Received;
	Bytes m_Sending;
	Clock::time_point m_LastSent;
};
} // namespace showbudget
