// The conversation with one console, without a socket: bytes come in, bytes go out.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "framechunks.h"
#include "tablesizes.h"
#include "target/showbudget.h"
#include "wire/chunkassembler.h"
#include "wire/sessionchunks.h"

namespace showbudget
{
class CConsoleSession;

// What a session asks of the engine's side. A call may send to the session that makes it.
class ISessionOwner
{
public:
	// What the engine introduces itself with to a console that introduced itself like this; with a refusal when the
	// console is not let in.
	virtual wire::Hello Answer( const wire::Hello &hello ) const = 0;
	virtual void OnAdmitted( CConsoleSession &session ) = 0;
	// Sampling or the mini-profiler was switched.
	virtual void OnWantedChanged() = 0;
	// A command line of at most wire::MAX_COMMAND_TEXT bytes, as it came.
	virtual void OnCommand( CConsoleSession &session, std::string_view line ) = 0;
	virtual uint64_t TickFrequency() const = 0;

protected:
	~ISessionOwner() = default;
};

// A frame as every console gets it.
struct SendableFrame
{
	const Frame &m_Frame;
	std::span<const uint32_t> m_Values; // microseconds, in chunk order
	float m_flFrameRate;
};

class CConsoleSession
{
public:
	enum class State
	{
		Greeting, // nothing is sent
		Open,
		Refused, // what is queued says why; nothing more comes in or goes out
		Over     // the console did what no console does
	};

	// `address` is what the console is called before it told its name.
	CConsoleSession( std::string address, ISessionOwner &owner );

	// What the console sent, cut anywhere. Ignored once the console is refused or the session over.
	void OnBytes( std::span<const uint8_t> bytes );

	State GetState() const { return m_State; }
	bool WasAdmitted() const { return m_bAdmitted; }             // it is or was open
	const std::string &EndReason() const { return m_EndReason; } // one line, once the state is Refused or Over
	const std::string &Name() const { return m_Name; }           // one line
	bool IsInLog() const { return m_bInLog; }                    // the owner told of its beginning, and will of its end
	void SetInLog( bool bInLog ) { m_bInLog = bInLog; }
	uint32_t Wanted() const { return m_State == State::Open ? m_nWanted : 0; }

	// These do nothing while the session is not open.
	void SendLine( Severity severity, std::string_view text );
	// Sends what this console wants of the frame, or drops it whole when the console reads too slowly.
	void SendFrame( const SendableFrame &frame );
	// Frames and lines that were lost before they came here. The console is told once it has room for that.
	void CountDropped( uint64_t nFrames );
	void CountDroppedLines( uint64_t nLines );
	// Says that the engine is still there.
	void SendBeat();

	// Moves everything that is queued to `out`. False when there is nothing, or while what was taken before is under
	// way.
	bool TakeQueued( Bytes &out );
	bool IsUnderWay() const { return m_nUnderWay > 0; }
	// What was taken is out.
	void OnSent();

private:
	void OnHeader();
	void OnChunk( std::span<const uint8_t> payload );
	void OnHello( std::span<const uint8_t> payload );
	void OnSampling( std::span<const uint8_t> payload );
	void OnScopesWanted( std::span<const uint8_t> payload );
	void OnNamesWanted( std::span<const uint8_t> payload );
	void SetWanted( uint32_t nWanted );
	void AnnounceBudgets( uint32_t nBudgets );
	void AppendScopes( const SendableFrame &frame );
	void SendNamesAlone();
	void AppendNames( CMiniProfilerWriter &writer );
	void AppendLine( Severity severity, std::string_view text );
	bool HasRoom() const;
	bool TakesChunks() const { return m_State == State::Greeting || m_State == State::Open; }
	void ReportDropped();
	void End( State state, std::string reason );

	ISessionOwner &m_Owner;
	State m_State = State::Greeting;
	bool m_bAdmitted = false;
	bool m_bInLog = false;
	std::string m_Name;
	std::string m_EndReason;

	wire::CChunkAssembler m_Incoming;
	Bytes m_Queued;         // grows while what was taken is under way
	size_t m_nUnderWay = 0; // bytes

	uint32_t m_nWanted = 0;
	uint32_t m_nBudgetsAnnounced = 0;
	bool m_bTickLost = true; // the next sample must open a tick
	uint64_t m_nDropped = 0;
	uint64_t m_nDroppedReported = 0;
	uint64_t m_nLinesDropped = 0; // and not reported yet

	std::vector<uint32_t> m_NamesWanted; // sites
	std::bitset<MAX_SITES> m_NameWanted;
	// By site: 0 when it was never sent, else 1 plus the samples without calls since its last call. A console keeps a
	// short history of each site; once that holds nothing but zeros, the site needs no more of them.
	std::array<uint8_t, MAX_SITES> m_ZerosSent{};
	std::array<bool, MAX_SITES> m_InFrame{};
};
} // namespace showbudget
