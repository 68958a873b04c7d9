// A console on a real socket. It fails the test instead of waiting for ever.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "wire/chunkheader.h"

struct Chunk
{
	wire::ChunkHeader m_Header;
	std::vector<uint8_t> m_Payload;
};

// What a 'PCPU' says, read without the library's own reader.
struct Sample
{
	uint32_t m_nMark = 0;
	float m_flFrameRate = 0.0f;
	std::vector<uint32_t> m_Values;

	uint64_t Total() const;
};

struct CategoryRecord
{
	std::string m_Name;
	uint8_t m_Colour[4]; // red, green, blue, unused
};

// What a 'PMPF' says, read without the library's own writer.
struct ProfilerEntry
{
	uint64_t m_nId;
	uint64_t m_nCaller;
	uint64_t m_nTicks;
	uint64_t m_nCalls;
};
struct ProfilerName
{
	uint64_t m_nId;
	uint64_t m_nParent;
	std::string m_Name;
	std::string m_Description;
};
struct ProfilerFrame
{
	uint64_t m_nServiceTicks = 0;
	bool m_bData = false;
	uint32_t m_nMark = 0;
	uint32_t m_nLayout = 0;
	uint64_t m_nZero = 1;
	uint32_t m_nRegistered = 0;
	uint32_t m_nTransmitted = 0;
	std::vector<ProfilerEntry> m_Entries;
	bool m_bNames = false;
	uint64_t m_nFrequency = 0;
	std::vector<ProfilerName> m_Names;
};

std::vector<CategoryRecord> ReadCategories( const Chunk &chunk );
Sample ReadSample( const Chunk &chunk );
ProfilerFrame ReadProfilerFrame( const Chunk &chunk );

class CTestConsole
{
public:
	CTestConsole(); // has a socket and is not connected
	explicit CTestConsole( uint16_t nPort );
	~CTestConsole();
	CTestConsole( const CTestConsole & ) = delete;
	CTestConsole &operator=( const CTestConsole & ) = delete;

	void Connect( uint16_t nPort );
	void SendBytes( std::span<const uint8_t> bytes );
	void SendText( std::string_view text );
	void Send( uint32_t nType, std::span<const uint8_t> payload, uint16_t nVersion = wire::CHUNK_VERSION );
	// Introduces itself and returns the engine's greeting.
	Chunk Greet( std::string_view token = {} );
	void WantBudgets( bool bOn );
	void WantScopes( bool bOn );
	void WantNames( std::span<const uint64_t> ids );
	void Command( std::string_view line );

	// The next chunk; none, without a failure, when the engine hung up first.
	std::optional<Chunk> Receive();
	// The next chunk of that type; others before it are skipped. Fails when the engine hangs up or sends others only.
	Chunk ReceiveType( uint32_t nType );
	// All chunks up to the 'PRNT' that contains the text, without it.
	std::vector<Chunk> ReceiveUntilLine( std::string_view text );
	// The text of the next 'PRNT'.
	std::string ReceiveLine();
	// Whether the engine hangs up; chunks before that are thrown away.
	bool IsEnded();
	bool HasBytes() const; // right now
	// False when none came in that time. An end counts as bytes.
	bool WaitForBytes( std::chrono::milliseconds time ) const;
	// From now on this end neither answers nor acknowledges anything, as if its machine were gone.
	void GoSilent();
	// Closes with a reset instead of an orderly end.
	void Abort();

private:
	bool ReceiveBytes( std::span<uint8_t> bytes );

	int m_nSocket = -1;
};
