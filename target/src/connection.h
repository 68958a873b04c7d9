// One console that is connected: what it asked for and what is on its way to it.
#pragma once

#include <array>
#include <bitset>
#include <chrono>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "asioparts.h"
#include "framechunks.h"
#include "tablesizes.h"
#include "target/showbudget.h"
#include "wire/chunkheader.h"

namespace showbudget
{
class CConnection;

// How long a console may take to introduce itself. Changed by tests only, before they connect.
inline std::chrono::milliseconds g_GreetingTime{ 5000 };

// What a connection asks of the server. Everything happens on the server's thread.
class IConnectionOwner
{
public:
	// A valid greeting came. False when the console is one too many.
	virtual bool AdmitConsole( CConnection &connection ) = 0;
	// Sampling or the mini-profiler was switched.
	virtual void OnWantedChanged() = 0;
	virtual void OnCommand( CConnection &connection, std::string_view line ) = 0;
	// The connection is over; called once. pReason is one line.
	virtual void OnClosed( CConnection &connection, const char *pReason ) = 0;
	// What the engine introduces itself with.
	virtual const Bytes &Greeting() const = 0;
	virtual uint64_t TickFrequency() const = 0;

protected:
	~IConnectionOwner() = default;
};

// A frame as every console gets it.
struct SendableFrame
{
	const Frame &m_Frame;
	std::span<const uint32_t> m_Values; // microseconds, in chunk order
	float m_flFrameRate;
};

class CConnection : public std::enable_shared_from_this<CConnection>
{
public:
	CConnection( asio::ip::tcp::socket socket, IConnectionOwner &owner );

	void Start();
	void Close( const char *pReason );
	// Ends the connection once everything that was queued is out; pReason is sent as a line and logged.
	void CloseAfterSending( std::string reason );

	bool IsAdmitted() const { return m_State == State::Open; }
	uint32_t Wanted() const { return m_nWanted; }
	const std::string &Name() const { return m_Name; } // "console at ADDRESS:PORT", and what it calls itself

	// Nothing is sent before the console was admitted.
	void SendLine( Severity severity, std::string_view text );
	// Sends what this console wants of the frame, or drops it whole when the console reads too slowly.
	void SendFrame( const SendableFrame &frame );
	// Frames that were lost before they came here. The next one that comes opens a tick if one of them did.
	void CountDropped( uint64_t nFrames );
	// Hands to the network what was queued, in one piece.
	void Flush();

private:
	enum class State
	{
		Greeting,
		Open,
		Ending, // only sends what is queued
		Closed
	};

	void SetSocketOptions();
	void ReadHeader();
	void ReadPayload();
	void OnChunk( std::span<const uint8_t> payload );
	void OnHello( std::span<const uint8_t> payload );
	void OnSampling( std::span<const uint8_t> payload );
	void OnScopesWanted( std::span<const uint8_t> payload );
	void OnNamesWanted( std::span<const uint8_t> payload );
	void OnWritten( const std::error_code &error );
	void SetWanted( uint32_t nWanted );
	void AnnounceBudgets( uint32_t nBudgets );
	void AppendScopes( const SendableFrame &frame );
	void SendNamesAlone();
	void AppendNames( CMiniProfilerWriter &writer );
	bool HasRoom() const;
	void ReportDropped();
	void StartDeadline( const char *pReason );

	asio::ip::tcp::socket m_Socket;
	asio::steady_timer m_Deadline;
	IConnectionOwner &m_Owner;
	State m_State = State::Greeting;
	std::string m_Name;
	std::string m_EndReason;

	std::array<uint8_t, wire::CHUNK_HEADER_SIZE> m_HeaderBytes{};
	wire::ChunkHeader m_Header;
	Bytes m_Payload;

	Bytes m_Queued; // grows while m_Sending is on its way
	Bytes m_Sending;
	bool m_bWriting = false;

	uint32_t m_nWanted = 0;
	uint32_t m_nBudgetsAnnounced = 0;
	bool m_bTickLost = true; // the next sample must open a tick
	uint64_t m_nDropped = 0;
	uint64_t m_nDroppedReported = 0;

	std::vector<uint32_t> m_NamesWanted; // sites
	std::bitset<MAX_SITES> m_NameWanted;
	// By site: 0 when it was never sent, else 1 plus the samples without calls since its last call. A console keeps a
	// short history of each site; once that holds nothing but zeros, the site needs no more of them.
	std::array<uint8_t, MAX_SITES> m_ZerosSent{};
	std::array<bool, MAX_SITES> m_InFrame{};
};
} // namespace showbudget
